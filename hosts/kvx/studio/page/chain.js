// The effects one after another: order, on and off, opacity.
import { byName, make, say } from './dom.js';
import { changeLive, changeLook, commit, doc, effectOf, look } from './state.js';

let dragged = null;

function move(from, to) {
  if (to < 0 || to >= doc.effects.length || from === to) return;
  const name = effectOf(doc.effects[from]).name;
  commit(() => {
    const [link] = doc.effects.splice(from, 1);
    doc.effects.splice(to, 0, link);
    look.selected = to;
  });
  say(`${name} is now ${to + 1} of ${doc.effects.length}.`);
}

function remove(at) {
  const name = effectOf(doc.effects[at]).name;
  commit(() => {
    doc.effects.splice(at, 1);
    if (look.selected >= at && look.selected > 0) look.selected -= 1;
  });
  say(`${name} removed.`);
}

function select(at) {
  changeLook(() => { look.selected = at; });
}

// The control that has the focus stays the same one of the effect that it belongs to.
function keepFocus(work) {
  const had = document.activeElement?.closest('#chain li');
  const control = had && document.activeElement.dataset.control;
  work();
  if (!had) return;
  const items = byName('chain').children;
  const item = items[Math.min(look.selected, items.length - 1)];
  const target = item?.querySelector(`[data-control="${control}"]`);
  if (target && !target.disabled) target.focus();
  else item?.querySelector('[data-control="name"]')?.focus();
}

function makeItem(link, at) {
  const { name } = effectOf(link);
  const count = doc.effects.length;
  const button = (control, label, text, work, disabled = false) => {
    const element = make('button', { type: 'button', 'aria-label': label, title: label, 'data-control': control, disabled }, text);
    element.addEventListener('click', () => {
      look.selected = at;
      work();
    });
    return element;
  };
  const on = make('input', { type: 'checkbox', checked: !link.off, 'aria-label': `${name} on`, 'data-control': 'on', title: 'On or off' });
  on.addEventListener('change', () => commit(() => {
    link.off = !on.checked;
    look.selected = at;
  }));
  const title = button('name', `${name}, ${at + 1} of ${count}`, name, () => select(at));
  title.className = 'link-name';
  if (at === look.selected) title.setAttribute('aria-current', 'true');
  const opacity = make('input', { type: 'number', min: '0', max: '100', step: '1', value: String(link.opacity), 'aria-label': `Opacity of ${name} in percent`, 'data-control': 'opacity' });
  opacity.addEventListener('input', () => {
    const value = Number(opacity.value);
    if (opacity.value !== '' && value >= 0 && value <= 100) changeLive(() => { link.opacity = value; });
  });
  opacity.addEventListener('change', () => {
    opacity.value = String(link.opacity);
    commit(() => { look.selected = at; });
  });
  const item = make('li', { className: `link${link.off ? ' off' : ''}${at === look.selected ? ' selected' : ''}`, draggable: true },
    make('span', { className: 'grip', 'aria-hidden': 'true' }, '⠿'), on, title,
    make('label', { className: 'opacity', title: 'Opacity' }, opacity, '%'),
    make('span', { className: 'moves-buttons' },
      button('up', `Move ${name} up`, '↑', () => move(at, at - 1), at === 0),
      button('down', `Move ${name} down`, '↓', () => move(at, at + 1), at === count - 1),
      button('remove', `Remove ${name}`, '×', () => remove(at))));
  item.addEventListener('keydown', event => {
    if (!event.altKey || (event.key !== 'ArrowUp' && event.key !== 'ArrowDown')) return;
    event.preventDefault();
    look.selected = at;
    move(at, at + (event.key === 'ArrowUp' ? -1 : 1));
  });
  item.addEventListener('dragstart', event => {
    dragged = at;
    event.dataTransfer.effectAllowed = 'move';
    event.dataTransfer.setData('text/plain', name);
    item.classList.add('dragged');
  });
  item.addEventListener('dragend', () => {
    dragged = null;
    item.classList.remove('dragged');
  });
  item.addEventListener('dragover', event => {
    if (dragged === null) return;
    event.preventDefault();
    item.classList.toggle('above', at < dragged);
    item.classList.toggle('below', at > dragged);
  });
  item.addEventListener('dragleave', () => item.classList.remove('above', 'below'));
  item.addEventListener('drop', event => {
    if (dragged === null) return;
    event.preventDefault();
    event.stopPropagation();
    move(dragged, at);
  });
  return item;
}

let drawn = '';
export function showChain(what) {
  if (what === 'live') return;
  const key = JSON.stringify([doc.effects.map(link => [link.id, link.off, link.opacity]), look.selected]);
  if (key === drawn) return;
  drawn = key;
  keepFocus(() => byName('chain').replaceChildren(...doc.effects.map(makeItem)));
  byName('chain-empty').hidden = doc.effects.length > 0;
}

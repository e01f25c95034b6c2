// A control for every parameter of the chosen effect.
import { byName, make, say } from './dom.js';
import { changeLive, commit, effectOf, isKeyed, look, paramValue, selectedLink, valueAt } from './state.js';

const kPlaces = ['top left', 'top', 'top right', 'left', 'middle', 'right', 'bottom left', 'bottom', 'bottom right'];
const kLongestList = 64;

const rows = [];  // of the effect that is shown
let drawn = '';

const isColor = param => ['colour', 'first colour', 'last colour'].includes(param.kind);
const isText = param => param.min === undefined;
const canBeKeyed = param => !isText(param) && !isColor(param) && param.kind !== 'check box';

// As people write it: 0.7 for the float 0.699999988.
const display = value => (typeof value === 'number' ? String(Number(value.toPrecision(6))) : value);

function set(link, param, value) {
  const now = link.params[param.name];
  if (isKeyed(now)) {
    now[look.frame] = value;
  } else if (value === (param.default ?? '')) {
    delete link.params[param.name];
  } else {
    link.params[param.name] = value;
  }
}

function limited(param, value) {
  const inside = Math.min(param.max, Math.max(param.min, value));
  return param.whole ? Math.round(inside) : inside;
}

function reset(link, param) {
  commit(() => { delete link.params[param.name]; });
  say(`${param.name} is at its default.`);
}

function toggleKey(link, param) {
  const now = link.params[param.name];
  commit(() => {
    if (!isKeyed(now)) {
      link.params[param.name] = { [look.frame]: paramValue(link, param) };
    } else if (look.frame in now) {
      const here = valueAt(now, look.frame);
      delete now[look.frame];
      if (!Object.keys(now).length) {
        delete link.params[param.name];
        set(link, param, here);
      }
    } else {
      now[look.frame] = limited(param, valueAt(now, look.frame));
    }
  });
  say(isKeyed(link.params[param.name]) && look.frame in link.params[param.name]
    ? `Key for ${param.name} at frame ${look.frame}.` : `No key for ${param.name} at frame ${look.frame}.`);
}

// Each maker gives the elements of the control and a function that shows a value.

function makeSlider(link, param, id) {
  const step = param.whole ? '1' : 'any';
  const slider = make('input', { type: 'range', id, min: String(param.min), max: String(param.max), step });
  const number = make('input', { type: 'number', min: String(param.min), max: String(param.max), step, 'aria-label': `${param.name}, number` });
  const mark = make('i', { className: 'default-mark', title: `default ${display(param.default)}` });
  const share = param.max > param.min ? (param.default - param.min) / (param.max - param.min) : 0;
  mark.style.left = `calc(8px + (100% - 16px) * ${share})`;
  slider.addEventListener('input', () => changeLive(() => set(link, param, Number(slider.value))));
  slider.addEventListener('change', () => commit());
  slider.addEventListener('dblclick', () => reset(link, param));
  number.addEventListener('input', () => {
    const value = Number(number.value);
    if (number.value !== '' && value >= param.min && value <= param.max) changeLive(() => set(link, param, limited(param, value)));
  });
  number.addEventListener('change', () => {
    const value = Number(number.value);
    if (number.value !== '' && Number.isFinite(value)) set(link, param, limited(param, value));
    number.value = display(paramValue(link, param));
    commit();
  });
  return {
    elements: [make('span', { className: 'slider' }, slider, mark), number],
    show(value) {
      slider.value = String(value);
      if (document.activeElement !== number) number.value = display(value);
    },
  };
}

function makeCheckBox(link, param, id) {
  const box = make('input', { type: 'checkbox', id });
  box.addEventListener('change', () => commit(() => set(link, param, box.checked ? param.max : param.min)));
  return { elements: [box], show: value => { box.checked = value !== param.min; } };
}

function makeColor(link, param, id) {
  const picker = make('input', { type: 'color', id });
  const code = make('output', { className: 'dim' });
  picker.addEventListener('input', () => changeLive(() => set(link, param, limited(param, parseInt(picker.value.slice(1), 16)))));
  picker.addEventListener('change', () => commit());
  return {
    elements: [picker, code],
    show(value) {
      picker.value = `#${(value & 0xffffff).toString(16).padStart(6, '0')}`;
      code.textContent = picker.value;
    },
  };
}

function makePlaces(link, param, id) {
  const group = make('span', { className: 'places', role: 'radiogroup', id, 'aria-label': param.name });
  const buttons = [];
  for (let value = param.min; value <= Math.min(param.max, param.min + 8); ++value) {
    const radio = make('input', { type: 'radio', name: id, 'aria-label': kPlaces[value - param.min] });
    radio.addEventListener('change', () => commit(() => set(link, param, value)));
    buttons.push([value, radio]);
    group.append(radio);
  }
  return { elements: [group], show: now => buttons.forEach(([value, radio]) => { radio.checked = value === now; }) };
}

function makeList(link, param, id) {
  const list = make('select', { id });
  for (let value = param.min; value <= param.max; ++value) list.append(make('option', { value: String(value) }, String(value)));
  list.addEventListener('change', () => commit(() => set(link, param, Number(list.value))));
  return { elements: [list], show: value => { list.value = String(Math.round(value)); } };
}

function makeText(link, param, id) {
  const field = make('input', { type: 'text', id, maxLength: 500 });
  field.addEventListener('input', () => changeLive(() => set(link, param, field.value)));
  field.addEventListener('change', () => commit());
  return { elements: [field], show: value => { if (document.activeElement !== field) field.value = value; } };
}

function makerFor(param) {
  if (isText(param)) return makeText;
  if (param.kind === 'check box') return makeCheckBox;
  if (isColor(param)) return makeColor;
  if (param.kind === 'nine positions' && param.max - param.min <= 8) return makePlaces;
  if (param.kind === 'mosaic list' && param.max - param.min < kLongestList) return makeList;
  return makeSlider;
}

function makeRow(link, param, at) {
  const id = `param-${at}`;
  const control = makerFor(param)(link, param, id);
  const label = make('label', { htmlFor: id, title: 'Double click: default' }, param.name);
  label.addEventListener('dblclick', () => reset(link, param));
  const back = make('button', { type: 'button', className: 'small', title: `Default: ${isText(param) ? 'empty' : display(param.default)}`, 'aria-label': `Reset ${param.name}` }, '↺');
  back.addEventListener('click', () => {
    reset(link, param);
    byName(id)?.focus();
  });
  const key = make('button', { type: 'button', className: 'small key-button', 'aria-label': `Key for ${param.name} at this frame` }, '◆');
  key.addEventListener('click', () => toggleKey(link, param));
  key.hidden = !canBeKeyed(param);
  const row = make('div', { className: 'param' }, make('span', { className: 'head' }, label, key, back), make('span', { className: 'control' }, ...control.elements));
  return {
    element: row,
    show() {
      const value = link.params[param.name];
      control.show(paramValue(link, param));
      back.disabled = value === undefined;
      const here = isKeyed(value) && look.frame in value;
      key.classList.toggle('here', here);
      key.classList.toggle('keyed', isKeyed(value));
      key.setAttribute('aria-pressed', String(here));
      key.title = here ? 'Remove the key at this frame' : isKeyed(value) ? 'Set a key at this frame' : 'Let the value change over time: set a key at this frame';
    },
  };
}

function build(link) {
  const effect = effectOf(link);
  rows.length = 0;
  const tune = byName('tune');
  tune.replaceChildren(make('h2', {}, effect.name));
  const facts = [effect.family];
  if (effect.moving) facts.push('moves on a still');
  if (effect.ordered) facts.push('remembers frames');
  if (effect.random) facts.push('draws by chance');
  tune.append(make('p', { className: 'dim' }, facts.join(', ')));
  const visible = effect.params.filter(param => !param.hidden);
  const hidden = effect.params.filter(param => param.hidden);
  if (!visible.length) tune.append(make('p', { className: 'empty' }, 'This effect has nothing to set but its opacity in the chain.'));
  const add = (params, to, from) => params.forEach((param, i) => {
    const row = makeRow(link, param, from + i);
    rows.push(row);
    to.append(row.element);
  });
  add(visible, tune, 0);
  if (hidden.length) {
    const more = make('details', {}, make('summary', {}, 'Parameters that hosts do not show'));
    add(hidden, more, visible.length);
    tune.append(more);
  }
}

export function showTune() {
  const link = selectedLink();
  const key = link ? `${look.selected} ${link.id}` : '';
  // After undo the same effect is another object.
  if (key !== drawn || (link && rows.link !== link)) {
    const focused = document.activeElement?.id;
    drawn = key;
    rows.link = link;
    if (link) {
      build(link);
    } else {
      byName('tune').replaceChildren();
      rows.length = 0;
    }
    if (focused?.startsWith('param-')) byName(focused)?.focus();
  }
  for (const row of rows) row.show();
}

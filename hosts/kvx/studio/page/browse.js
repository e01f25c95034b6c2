// The effects by family, with small pictures of the user's own input.
import { ask, thumbnailAddress } from './api.js';
import { byName, calm, make, press, say } from './dom.js';
import { changeLook, commit, doc, effectOf, info, look, selectedLink } from './state.js';

const cards = [];
const sections = [];
let favourites = new Set();
let onlyFavourites = false;

function newLink(effect) {
  return { id: effect.id, opacity: 100, off: false, params: {} };
}

function add(effect) {
  if (doc.effects.length >= info.mostEffects) {
    say(`A chain holds at most ${info.mostEffects} effects.`);
    return;
  }
  commit(() => {
    doc.effects.push(newLink(effect));
    look.selected = doc.effects.length - 1;
  });
  say(`${effect.name} added to the chain.`);
}

// In place of the chosen effect.
function choose(effect) {
  const link = selectedLink();
  if (!link) {
    add(effect);
    return;
  }
  if (link.id !== effect.id) commit(() => doc.effects.splice(look.selected, 1, newLink(effect)));
  say(`${effect.name} chosen.`);
}

async function toggleFavourite(card) {
  const id = card.effect.id;
  if (!favourites.delete(id)) favourites.add(id);
  showFavourite(card);
  if (onlyFavourites) filter();
  try {
    await ask('favourites', { favourites: [...favourites] });
  } catch (error) {
    say(error.message);
    card.star.title = error.message;
  }
}

function showFavourite(card) {
  const marked = favourites.has(card.effect.id);
  press(card.star, marked);
  card.star.textContent = marked ? '★' : '☆';
}

function makeCard(effect) {
  const picture = make('img', { alt: '', width: 240, height: Math.max(1, Math.round(240 * info.clip.height / info.clip.width)) });
  const frame = make('span', { className: 'thumb' }, picture);
  const name = make('span', { className: 'name' }, effect.name);
  const choice = make('button', { type: 'button', className: 'choice' }, frame, name);
  if (effect.moving) {
    name.append(make('span', { className: 'moves', title: 'moves on a still picture' }, 'moves'));
  }
  const plus = make('button', { type: 'button', className: 'plus', title: 'Add to the chain', 'aria-label': `Add ${effect.name} to the chain` }, '+');
  const star = make('button', { type: 'button', className: 'star', title: 'Favourite', 'aria-label': `Favourite: ${effect.name}` });
  const card = {
    effect, picture, frame, choice, star, state: 'waiting',
    words: `${effect.name} ${effect.id} ${effect.family} ${effect.params.map(p => p.name).join(' ')}`.toLowerCase(),
    element: make('li', { className: 'card' }, choice, make('span', { className: 'corner' }, star, plus)),
  };
  choice.addEventListener('click', event => (event.shiftKey ? add(effect) : choose(effect)));
  plus.addEventListener('click', () => add(effect));
  star.addEventListener('click', () => toggleFavourite(card));
  if (effect.moving) {
    for (const kind of ['pointerenter', 'focusin']) card.element.addEventListener(kind, () => play(card));
    for (const kind of ['pointerleave', 'focusout']) card.element.addEventListener(kind, () => rest(card));
  }
  return card;
}

// A moving effect moves while one looks at it: frames below each other, shown one after another.
function play(card) {
  if (card.timer || calm.matches) return;
  if (!card.strip) {
    card.strip = make('img', { alt: '', className: 'strip', src: thumbnailAddress(card.effect.id, true) });
  }
  let frame = 0;
  card.timer = setInterval(() => {
    if (!card.strip.complete || !card.strip.naturalWidth) return;
    if (!card.strip.parentNode) card.frame.append(card.strip);
    frame = (frame + 1) % info.stripFrames;
    card.strip.style.transform = `translateY(${-100 * frame / info.stripFrames}%)`;
  }, 160);
}
function rest(card) {
  clearInterval(card.timer);
  card.timer = 0;
  card.strip?.remove();
}

// Pictures are asked for two at a time, those nearest to the eye first.
let loading = 0;
function distance(card) {
  const box = card.element.getBoundingClientRect();
  if (!box.width) return 1e9;
  if (box.bottom >= 0 && box.top <= innerHeight) return box.top / 1e4;
  return box.top > innerHeight ? box.top - innerHeight : -box.bottom;
}
function loadMore() {
  while (loading < 2) {
    let best = null;
    let least = Infinity;
    for (const card of cards) {
      if (card.state !== 'waiting') continue;
      const away = distance(card);
      if (away < least) [best, least] = [card, away];
    }
    if (!best) return;
    best.state = 'loading';
    loading += 1;
    const done = state => () => {
      best.state = state;
      best.element.dataset.state = state;
      loading -= 1;
      loadMore();
    };
    best.picture.onload = done('there');
    best.picture.onerror = done('failed');
    best.picture.src = thumbnailAddress(best.effect.id);
  }
}

let filtered = null;  // the query that the cards show
function filter() {
  filtered = look.query;
  const words = look.query.toLowerCase().split(/\s+/).filter(Boolean);
  let shown = 0;
  for (const card of cards) {
    const fits = words.every(word => card.words.includes(word)) && (!onlyFavourites || favourites.has(card.effect.id));
    card.element.hidden = !fits;
    if (fits) shown += 1;
  }
  for (const section of sections) section.hidden = !section.querySelector('.card:not([hidden])');
  byName('found').textContent = shown === cards.length ? `${shown} effects` : `${shown} of ${cards.length} effects`;
  const nothing = byName('nothing-found');
  nothing.hidden = shown > 0;
  nothing.querySelector('p').textContent = onlyFavourites && !words.length
    ? 'No favourites yet. The star on an effect marks it.' : `No effect matches “${look.query}”.`;
}

export function showChosen() {
  const link = selectedLink();
  const chosen = link ? effectOf(link) : null;
  const used = new Set(doc.effects.map(each => each.id));
  for (const card of cards) {
    card.element.classList.toggle('chosen', card.effect === chosen);
    card.element.classList.toggle('used', used.has(card.effect.id));
    if (card.effect === chosen) card.choice.setAttribute('aria-current', 'true');
    else card.choice.removeAttribute('aria-current');
  }
}

export function showQuery() {
  if (byName('search').value !== look.query) byName('search').value = look.query;
  if (filtered !== look.query) filter();
}

// Arrow keys go from effect to effect; up and down by what lies there.
function walk(event) {
  const shown = cards.filter(card => !card.element.hidden);
  const at = shown.findIndex(card => card.choice === event.target);
  if (at < 0 || event.altKey || event.ctrlKey) return;
  const box = event.target.getBoundingClientRect();
  const inLine = step => {
    for (let i = at + step; shown[i]; i += step) {
      const other = shown[i].choice.getBoundingClientRect();
      if (other.top !== box.top && Math.abs(other.left - box.left) < box.width / 2) return shown[i];
    }
    return null;
  };
  const to = { ArrowLeft: () => shown[at - 1], ArrowRight: () => shown[at + 1], ArrowUp: () => inLine(-1),
    ArrowDown: () => inLine(1) }[event.key];
  if (!to) return;
  event.preventDefault();
  to()?.choice.focus();
}

export function startBrowse() {
  favourites = new Set(info.favourites);
  const families = byName('families');
  for (const family of info.families) {
    const effects = info.effects.filter(effect => effect.family === family);
    if (!effects.length) continue;
    const list = make('ul', { className: 'cards' });
    for (const effect of effects) {
      const card = makeCard(effect);
      cards.push(card);
      showFavourite(card);
      list.append(card.element);
    }
    const section = make('section', {}, make('h2', {}, family[0].toUpperCase() + family.slice(1)), list);
    sections.push(section);
    families.append(section);
  }
  families.addEventListener('keydown', walk);
  byName('search').addEventListener('input', event => changeLook(() => { look.query = event.target.value; }));
  byName('only-favourites').addEventListener('click', event => {
    onlyFavourites = !onlyFavourites;
    press(event.target, onlyFavourites);
    filter();
  });
  byName('nothing-found').querySelector('button').addEventListener('click', () => {
    onlyFavourites = false;
    press(byName('only-favourites'), false);
    changeLook(() => { look.query = ''; });
    byName('search').focus();
  });
  showQuery();
  showChosen();
  loadMore();
}

// What is shown: the document (the chain and its frame) and how one looks at it. Both live in the address; an entry of
// the history is one step of the document, so that the browser's back and forward are undo and redo.

export const doc = { effects: [], frames: null, pad: '', seed: null };
export const look = { selected: 0, frame: 0, split: 0.5, zoom: null, query: '', tab: 'effects' };
export let info = null;  // what the studio says of clip and effects
const byId = new Map();

const listeners = [];
// `what` is 'live' while a control moves, 'doc' for a step of the document, 'look' for the rest.
export function onChange(listener) {
  listeners.push(listener);
}
function notify(what) {
  for (const listener of listeners) listener(what);
}

let committed = '';
let index = 0;
let top = 0;
let writing = 0;

function address(text) {
  return '#' + encodeURIComponent(`{"doc":${text},"look":${JSON.stringify(look)}}`);
}

export function effectOf(link) {
  return byId.get(link.id);
}

// While a control moves.
export function changeLive(change) {
  change();
  notify('live');
}

// A step that can be undone.
export function commit(change) {
  if (change) change();
  const text = JSON.stringify(doc);
  if (text !== committed) {
    flushLook();
    committed = text;
    index += 1;
    top = index;
    sessionStorage.setItem('top', String(top));
    history.pushState({ index }, '', address(committed));
  }
  notify('doc');
}

export function changeLook(change) {
  change();
  clearTimeout(writing);
  writing = setTimeout(flushLook, 250);
  notify('look');
}

function flushLook() {
  clearTimeout(writing);
  history.replaceState({ index }, '', address(committed));
}

export const canUndo = () => index > 0;
export const canRedo = () => index < top;
export function undo() {
  if (canUndo()) history.back();
}
export function redo() {
  if (canRedo()) history.forward();
}

function isNumber(value) {
  return typeof value === 'number' && Number.isFinite(value);
}

// Takes over only what makes sense: addresses can be written by anybody.
function cleanLink(link) {
  const effect = byId.get(link?.id);
  if (!effect) return null;
  const params = {};
  for (const param of effect.params) {
    const value = link.params?.[param.name];
    if (isNumber(value) || typeof value === 'string') {
      params[param.name] = value;
    } else if (value && typeof value === 'object') {
      const keys = Object.entries(value).filter(([frame, at]) => /^\d+$/.test(frame) && isNumber(at));
      if (keys.length) params[param.name] = Object.fromEntries(keys);
    }
  }
  const opacity = isNumber(link.opacity) ? Math.min(100, Math.max(0, link.opacity)) : 100;
  return { id: effect.id, opacity, off: link.off === true, params };
}

// What a loaded recipe says of chance; the page keeps it for those who take the recipe or the line away.
export function cleanSeed(seed) {
  return Number.isInteger(seed) && seed >= 0 && seed <= 0xFFFFFFFF ? seed : null;
}

export function cleanEffects(effects) {
  return Array.isArray(effects) ? effects.slice(0, info.mostEffects).map(cleanLink).filter(Boolean) : [];
}

function load(text) {
  let stored = {};
  try {
    stored = JSON.parse(decodeURIComponent(text.slice(1)));
  } catch {
    // an address without a state
  }
  doc.effects = cleanEffects(stored.doc?.effects);
  doc.frames = isNumber(stored.doc?.frames) ? Math.min(10000, Math.max(1, Math.round(stored.doc.frames))) : null;
  doc.seed = cleanSeed(stored.doc?.seed);
  doc.pad = /^\d{1,4}x\d{1,4}$/.test(stored.doc?.pad) ? stored.doc.pad : '';
  const seen = stored.look ?? {};
  look.selected = isNumber(seen.selected) ? seen.selected : 0;
  look.frame = isNumber(seen.frame) ? Math.max(0, Math.round(seen.frame)) : 0;
  look.split = seen.split === null ? null : isNumber(seen.split) ? Math.min(1, Math.max(0, seen.split)) : 0.5;
  look.zoom = seen.zoom && ['scale', 'x', 'y'].every(key => isNumber(seen.zoom[key])) && seen.zoom.scale > 0
    ? { scale: seen.zoom.scale, x: seen.zoom.x, y: seen.zoom.y } : null;
  look.query = typeof seen.query === 'string' ? seen.query.slice(0, 100) : '';
  look.tab = ['effects', 'adjust', 'take'].includes(seen.tab) ? seen.tab : 'effects';
  committed = JSON.stringify(doc);
}

export function start(description) {
  info = description;
  for (const effect of info.effects) byId.set(effect.id, effect);
  load(location.hash);
  index = history.state?.index ?? 0;
  top = Math.max(index, history.state ? Number(sessionStorage.getItem('top') ?? 0) : 0);
  history.replaceState({ index }, '', address(committed));
  addEventListener('popstate', event => {
    clearTimeout(writing);
    load(location.hash);
    if (event.state) {
      index = event.state.index;
    } else {
      index += 1;
      top = index;
      history.replaceState({ index }, '', address(committed));
    }
    notify('doc');
  });
}

// What follows from the state.

export function selectedLink() {
  if (!doc.effects.length) return null;
  look.selected = Math.min(doc.effects.length - 1, Math.max(0, Math.round(look.selected)));
  return doc.effects[look.selected];
}

export const isKeyed = value => value !== null && typeof value === 'object';

// The value at a frame, linear between keys, as the renderer has it.
export function valueAt(value, frame) {
  if (!isKeyed(value)) return value;
  const frames = Object.keys(value).map(Number).sort((a, b) => a - b);
  if (frame <= frames[0]) return value[frames[0]];
  const next = frames.find(at => at >= frame);
  if (next === undefined) return value[frames.at(-1)];
  const last = frames[frames.indexOf(next) - 1];
  return value[last] + (value[next] - value[last]) * (frame - last) / (next - last);
}

export function paramValue(link, param) {
  const value = link.params[param.name];
  return value === undefined ? param.default ?? '' : valueAt(value, look.frame);
}

const active = () => doc.effects.filter(link => !link.off);

function changesOverTime() {
  return active().some(link => effectOf(link).moving || effectOf(link).ordered || Object.values(link.params).some(isKeyed));
}

export function automaticFrames() {
  return changesOverTime() ? 100 : 1;
}

export function totalFrames() {
  return info.clip.endless ? doc.frames ?? automaticFrames() : info.clip.frames;
}

export function recipe() {
  return {
    effects: active().map(link => ({
      effect: link.id,
      opacity: link.opacity,
      ...(Object.keys(link.params).length ? { params: link.params } : {}),
    })),
    ...(doc.seed === null ? {} : { seed: doc.seed }),
  };
}

// What the studio is told.
export function project() {
  return { recipe: recipe(), frames: info.clip.endless ? totalFrames() : 1, ...(doc.pad ? { pad: doc.pad } : {}) };
}

export function frameSize() {
  const [width, height] = doc.pad ? doc.pad.split('x').map(Number) : [info.clip.width, info.clip.height];
  return { width, height };
}

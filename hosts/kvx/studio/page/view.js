// The picture: before and after, zoomed and moved, always by the pixels that the renderer gives.
import { askPreview } from './api.js';
import { byName, press, show } from './dom.js';
import { changeLook, doc, effectOf, frameSize, info, look, project, recipe, selectedLink, totalFrames } from './state.js';

const canvas = byName('canvas');
const view = byName('view');
const divider = byName('divider');
const ink = canvas.getContext('2d');

const kDraftWidth = 1280;
const kExactWidth = 2560;
const kLargest = 4096;
const kSettle = 180;  // milliseconds without a change after which the exact picture is wanted
const kMostZoom = 32;

// Each: {canvas, region, key, opaque}. `whole` shows all of the frame, `part` what is visible of it when zoomed.
const shown = { after: {}, before: {} };
let playing = null;  // pictures of a running loop instead
let pixelRatio = 1;

function fitScale() {
  const { width, height } = frameSize();
  return Math.max(1e-3, Math.min(canvas.width / width, canvas.height / height, 8));
}

// The place of the frame on the canvas: device pixels for a pixel of the frame, and where its corner lies.
function placement() {
  const { width, height } = frameSize();
  const scale = look.zoom?.scale ?? fitScale();
  const x = look.zoom?.x ?? width / 2;
  const y = look.zoom?.y ?? height / 2;
  const left = canvas.width / 2 - x * scale;
  const top = canvas.height / 2 - y * scale;
  return { scale, left: Math.round(left), top: Math.round(top) };
}

// What is visible of the frame, and how large it is wanted.
export function regionWanted(draft, limit = 0) {
  const { width, height } = frameSize();
  const { scale, left, top } = placement();
  limit ||= draft ? kDraftWidth : scale < 1 ? kExactWidth : kLargest;
  let region = { x: 0, y: 0, width, height };
  if (look.zoom && scale > fitScale() * 1.001) {
    const margin = 48;
    const x = Math.max(0, Math.floor((-left - margin) / scale));
    const y = Math.max(0, Math.floor((-top - margin) / scale));
    const right = Math.min(width, Math.ceil((canvas.width - left + margin) / scale));
    const bottom = Math.min(height, Math.ceil((canvas.height - top + margin) / scale));
    if (right > x && bottom > y) region = { x, y, width: right - x, height: bottom - y };
  }
  const shrink = Math.min(1, scale);
  return {
    ...region,
    fitWidth: Math.max(1, Math.min(limit, Math.ceil(region.width * shrink))),
    fitHeight: Math.max(1, Math.min(limit, Math.ceil(region.height * shrink))),
  };
}

function paint(picture, from, to) {
  if (!picture?.canvas) return;
  const { scale, left, top } = placement();
  const { x, y, width, height } = picture.region;
  ink.save();
  ink.beginPath();
  ink.rect(from, 0, to - from, canvas.height);
  ink.clip();
  ink.imageSmoothingEnabled = scale < 1 || picture.canvas.width < width;
  ink.imageSmoothingQuality = 'high';
  ink.drawImage(picture.canvas, Math.round(left + x * scale), Math.round(top + y * scale),
    Math.round(width * scale), Math.round(height * scale));
  ink.restore();
}

// A checkerboard, where something is transparent.
let board = null;
function paintBoard() {
  const { width, height } = frameSize();
  const { scale, left, top } = placement();
  const size = Math.round(10 * pixelRatio);
  if (board?.width !== 2 * size) {
    board = new OffscreenCanvas(2 * size, 2 * size);
    const brush = board.getContext('2d');
    brush.fillStyle = '#9a9a9a';
    brush.fillRect(0, 0, 2 * size, 2 * size);
    brush.fillStyle = '#c8c8c8';
    brush.fillRect(0, 0, size, size);
    brush.fillRect(size, size, size, size);
  }
  ink.fillStyle = ink.createPattern(board, 'repeat');
  ink.fillRect(left, top, Math.round(width * scale), Math.round(height * scale));
}

export function draw() {
  ink.clearRect(0, 0, canvas.width, canvas.height);
  const after = playing?.after ? [playing.after] : [shown.after.whole, shown.after.part];
  const before = playing?.before ? [playing.before] : [shown.before.whole, shown.before.part];
  const cut = comparing() ? Math.round(look.split * canvas.width) : 0;
  if ([...after, ...before].some(picture => picture && !picture.opaque)) paintBoard();
  for (const picture of after) paint(picture, cut, canvas.width);
  if (cut > 0) for (const picture of before) paint(picture, 0, cut);
}

// Without an effect there is nothing to compare.
export function comparing() {
  return look.split !== null && recipe().effects.length > 0;
}

function showControls() {
  const { width, height } = frameSize();
  view.style.setProperty('--ratio', String(height / width));
  const on = comparing();
  for (const id of ['divider', 'tag-before', 'tag-after']) byName(id).hidden = !on;
  press(byName('compare'), look.split !== null);
  if (on) {
    divider.style.left = `${look.split * 100}%`;
    divider.setAttribute('aria-valuenow', Math.round(look.split * 100));
    divider.setAttribute('aria-valuetext', `${Math.round(look.split * 100)} % before`);
  }
  const { scale } = placement();
  byName('zoom').textContent = `${Math.round(scale * 1000) / 10} %`;
  press(byName('zoom-fit'), !look.zoom);
  press(byName('zoom-full'), scale === 1);
  canvas.classList.toggle('movable', Boolean(look.zoom));
  canvas.setAttribute('aria-label', `${info.clip.name}, frame ${look.frame + 1} of ${totalFrames()}${look.zoom
    ? '. Arrow keys move it.' : ''}`);
  showHint();
}

function showHint() {
  const link = selectedLink();
  const effect = link && effectOf(link);
  let hint = '';
  if (!link) hint = 'Choose an effect to begin.';
  else if (effect.family === 'background fills' && !doc.pad) {
    hint = 'Background fills paint the open sides of a frame: under Frame, choose a size that the picture does not fill.';
  } else if (effect.random && !link.off) hint = `${effect.name} draws by chance: every render differs a little.`;
  byName('hint').textContent = hint;
}

// Asking for pictures. One request at a time; what came meanwhile is asked for in its last state only.

const lanes = {
  after: { wanted: null, running: false, abort: null },
  before: { wanted: null, running: false, abort: null },
};
let settle = 0;
let busySince = 0;

function requestFor(side, draft) {
  const region = regionWanted(draft);
  const before = side === 'before';
  const frame = Math.min(look.frame, totalFrames() - 1);
  const told = before ? { ...project(), recipe: { effects: [] } } : project();
  return { body: { ...told, frame, draft, before, keep: before, ...region }, region };
}

async function pump(side) {
  const lane = lanes[side];
  if (lane.running) return;
  lane.running = true;
  while (lane.wanted) {
    const { draft, since } = lane.wanted;
    lane.wanted = null;
    const { body, region } = requestFor(side, draft);
    const key = JSON.stringify(body);
    const zoomed = region.width !== frameSize().width || region.height !== frameSize().height;
    const place = zoomed ? 'part' : 'whole';
    if (shown[side][place]?.key === key) continue;
    lane.abort = draft ? null : new AbortController();
    try {
      const picture = await askPreview(body, lane.abort?.signal);
      shown[side][place] = { canvas: picture.canvas, region, key, opaque: picture.opaque };
      // What shows other values than the newest picture must not shine through.
      if (place === 'part') {
        if (side === 'after') shown.after.whole = null;
      } else {
        shown[side].part = null;
      }
      if (side === 'after') {
        show(byName('view-message'), '');
        showState(picture);
        if (info.clip.frames && picture.frames !== info.clip.frames) {
          info.clip.frames = picture.frames;
          changeLook(() => {});
        }
        if (draft && !picture.exact && !lane.wanted) wantExact();
      }
      draw();
      if (side === 'after') {
        performance.clearMeasures('preview');
        performance.measure('preview', { start: since, end: performance.now() });
      }
    } catch (error) {
      // 409: a newer request overtook this one.
      if (error.name !== 'AbortError' && error.status !== 409 && side === 'after') {
        show(byName('view-message'), error.message);
      }
    }
  }
  lane.running = false;
  lane.abort = null;
  showBusy();
}

function showBusy() {
  view.setAttribute('aria-busy', String(lanes.after.running || lanes.before.running || settle !== 0));
  if (lanes.after.running) {
    if (!busySince) busySince = performance.now();
    setTimeout(() => {
      if (lanes.after.running && busySince && performance.now() - busySince > 450) view.classList.add('busy');
    }, 500);
  } else {
    busySince = 0;
    view.classList.remove('busy');
  }
}

function showState(picture) {
  const { width, height } = frameSize();
  const chain = recipe().effects.length > 0;
  const how = !chain ? 'no effect' : picture.exact ? 'exact' : 'draft, from a smaller frame or from part of the clip';
  byName('view-state').textContent = `${width} × ${height}, ${how}${chain && picture.milliseconds >= 0.5 ? `, ${picture.milliseconds.toFixed(0)} ms` : ''}`;
}

function wantExact() {
  clearTimeout(settle);
  settle = setTimeout(() => {
    settle = 0;
    ask('after', false);
  }, kSettle);
}

function ask(side, draft) {
  const lane = lanes[side];
  lane.wanted = { draft, since: performance.now() };
  if (draft) lane.abort?.abort();  // an exact picture that would be old when it comes
  pump(side);
  showBusy();
}

// `draft` while values change; moving and zooming ask for the exact pixels at once.
let shownSize = '';
export function refresh(draft) {
  clearTimeout(settle);
  settle = 0;
  const size = JSON.stringify(frameSize());
  if (size !== shownSize) {
    shown.after = {};
    shown.before = {};
  }
  showControls();
  // New values show when their picture is there.
  if (!draft || size !== shownSize) draw();
  shownSize = size;
  if (playing) return;
  ask('after', draft);
  if (comparing()) ask('before', draft && !shown.before.whole);
}

export function showPlaying(pictures) {
  playing = pictures;
  if (pictures) byName('view-state').textContent = 'Playing, from smaller frames';
  draw();
}

// Zooming and moving.

function zoomTo(scale, atX = canvas.width / 2, atY = canvas.height / 2) {
  const now = placement();
  const least = Math.min(fitScale(), 1);
  const next = Math.min(kMostZoom, Math.max(least, scale));
  const x = (atX - now.left) / now.scale;
  const y = (atY - now.top) / now.scale;
  moveTo({ scale: next, x: x + (canvas.width / 2 - atX) / next, y: y + (canvas.height / 2 - atY) / next });
}

function moveTo(zoom) {
  const { width, height } = frameSize();
  zoom.x = Math.min(width, Math.max(0, zoom.x));
  zoom.y = Math.min(height, Math.max(0, zoom.y));
  changeLook(() => { look.zoom = zoom; });
}

function moveBy(dx, dy) {
  const { scale } = placement();
  if (look.zoom) moveTo({ scale, x: look.zoom.x - dx / scale, y: look.zoom.y - dy / scale });
}

export const zoomFit = () => changeLook(() => { look.zoom = null; });
export function zoomFull() {
  zoomTo(1);
}
export const zoomBy = factor => zoomTo(placement().scale * factor);
export function toggleCompare() {
  changeLook(() => { look.split = look.split === null ? 0.5 : null; });
}

function setSplit(split) {
  changeLook(() => { look.split = Math.min(1, Math.max(0, split)); });
}

const pointers = new Map();

function startPointers() {
  canvas.addEventListener('pointerdown', event => {
    canvas.setPointerCapture(event.pointerId);
    pointers.set(event.pointerId, { x: event.clientX, y: event.clientY });
  });
  canvas.addEventListener('pointermove', event => {
    const last = pointers.get(event.pointerId);
    if (!last) return;
    const other = [...pointers].find(([id]) => id !== event.pointerId)?.[1];
    if (other) {
      const box = canvas.getBoundingClientRect();
      const grown = Math.hypot(event.clientX - other.x, event.clientY - other.y) /
        Math.max(1, Math.hypot(last.x - other.x, last.y - other.y));
      zoomTo(placement().scale * grown, ((event.clientX + other.x) / 2 - box.left) * pixelRatio,
        ((event.clientY + other.y) / 2 - box.top) * pixelRatio);
    } else {
      moveBy((event.clientX - last.x) * pixelRatio, (event.clientY - last.y) * pixelRatio);
    }
    pointers.set(event.pointerId, { x: event.clientX, y: event.clientY });
  });
  for (const kind of ['pointerup', 'pointercancel']) {
    canvas.addEventListener(kind, event => pointers.delete(event.pointerId));
  }
  canvas.addEventListener('wheel', event => {
    event.preventDefault();
    const box = canvas.getBoundingClientRect();
    zoomTo(placement().scale * 1.0015 ** -event.deltaY, (event.clientX - box.left) * pixelRatio,
      (event.clientY - box.top) * pixelRatio);
  }, { passive: false });
  canvas.addEventListener('dblclick', () => (look.zoom ? zoomFit() : zoomFull()));
  canvas.addEventListener('keydown', event => {
    const step = 60 * pixelRatio;
    const by = { ArrowLeft: [step, 0], ArrowRight: [-step, 0], ArrowUp: [0, step], ArrowDown: [0, -step] }[event.key];
    if (!by || !look.zoom) return;
    event.preventDefault();
    moveBy(...by);
  });
  divider.addEventListener('pointerdown', event => divider.setPointerCapture(event.pointerId));
  divider.addEventListener('pointermove', event => {
    if (!divider.hasPointerCapture(event.pointerId)) return;
    const box = view.getBoundingClientRect();
    setSplit((event.clientX - box.left) / box.width);
  });
  divider.addEventListener('keydown', event => {
    const to = { ArrowLeft: look.split - 0.02, ArrowRight: look.split + 0.02, PageDown: look.split - 0.1,
      PageUp: look.split + 0.1, Home: 0, End: 1 }[event.key];
    if (to === undefined) return;
    event.preventDefault();
    setSplit(to);
  });
}

export function startView() {
  startPointers();
  byName('compare').addEventListener('click', toggleCompare);
  byName('zoom-fit').addEventListener('click', zoomFit);
  byName('zoom-full').addEventListener('click', zoomFull);
  byName('zoom-in').addEventListener('click', () => zoomBy(1.5));
  byName('zoom-out').addEventListener('click', () => zoomBy(1 / 1.5));
  new ResizeObserver(() => {
    pixelRatio = devicePixelRatio || 1;
    canvas.width = Math.max(1, Math.round(canvas.clientWidth * pixelRatio));
    canvas.height = Math.max(1, Math.round(canvas.clientHeight * pixelRatio));
    refresh(false);
  }).observe(canvas);
}

// Frames: scrubbing, a short loop, marks for values over time.
import { askPreview } from './api.js';
import { byName, calm, make, press, say } from './dom.js';
import { automaticFrames, changeLook, commit, doc, effectOf, info, isKeyed, look, project, selectedLink,
  totalFrames } from './state.js';
import { comparing, refresh, regionWanted, showPlaying } from './view.js';

const kLoopSeconds = 2;
const kLoopWidth = 800;

let loop = null;

export function goTo(frame) {
  const last = totalFrames() - 1;
  changeLook(() => { look.frame = Math.min(last, Math.max(0, Math.round(frame) || 0)); });
}

function loopRange() {
  const total = totalFrames();
  const length = Math.max(2, Math.round(kLoopSeconds * info.clip.fps));
  if (total <= 2 * length) return { first: 0, end: total };
  const first = Math.min(look.frame, total - length);
  return { first, end: first + length };
}

const sleep = milliseconds => new Promise(resolve => setTimeout(resolve, milliseconds));

async function fetchFrame(frame, before) {
  const region = regionWanted(true, kLoopWidth);
  const told = before ? { ...project(), recipe: { effects: [] } } : project();
  const picture = await askPreview({ ...told, ...region, frame, before, draft: true, keep: true });
  return { canvas: picture.canvas, region, opaque: picture.opaque };
}

// The first round shows frames as they come, later ones at the clip's own speed.
async function run(mine) {
  const { first, end } = loopRange();
  const frames = new Map();
  let frame = first;
  while (loop === mine) {
    const started = performance.now();
    let pictures = frames.get(frame);
    if (!pictures || (comparing() && !pictures.before)) {
      pictures = { after: pictures?.after ?? await fetchFrame(frame, false),
        before: comparing() ? await fetchFrame(frame, true) : null };
      frames.set(frame, pictures);
    }
    if (loop !== mine) return;
    look.frame = frame;
    showFrame();
    showPlaying(pictures);
    frame = frame + 1 < end ? frame + 1 : first;
    await sleep(Math.max(4, 1000 / info.clip.fps - (performance.now() - started)));
  }
}

export function stop() {
  if (!loop) return;
  loop = null;
  press(byName('play'), false);
  byName('play').textContent = 'Play';
  showPlaying(null);
  changeLook(() => {});
  refresh(false);
}

export async function play() {
  if (totalFrames() < 2) {
    say('There is only one frame.');
    return;
  }
  const mine = {};
  loop = mine;
  press(byName('play'), true);
  byName('play').textContent = 'Stop';
  try {
    await run(mine);
  } catch (error) {
    if (loop !== mine) return;
    stop();
    const message = byName('view-message');
    message.hidden = false;
    message.textContent = error.message;
  }
}

export const togglePlay = () => (loop ? stop() : play());

// Values or the view changed: a running loop begins anew with them.
let again = 0;
export function restart() {
  if (!loop) return;
  loop = {};
  showPlaying(null);
  clearTimeout(again);
  again = setTimeout(() => {
    if (loop) play();
  }, 250);
}

// A moving effect on a still shows at once what it does.
let lastMoving = '';
export function playIfNew() {
  const moving = doc.effects.filter(link => !link.off && effectOf(link).moving).map(link => link.id).join();
  const isNew = moving && moving !== lastMoving;
  const known = lastMoving !== '' || isNew;
  lastMoving = moving;
  if (isNew && known && info.clip.endless && !loop && !calm.matches) play();
}

function showFrame() {
  const total = totalFrames();
  byName('scrub').value = String(look.frame);
  if (document.activeElement !== byName('frame')) byName('frame').value = String(look.frame);
  byName('scrub').setAttribute('aria-valuetext', `frame ${look.frame} of ${total}`);
  byName('time').textContent = `${(look.frame / info.clip.fps).toFixed(2)} of ${(total / info.clip.fps).toFixed(2)} s`;
}

function showKeys() {
  const link = selectedLink();
  const frames = new Set();
  for (const value of Object.values(link?.params ?? {})) {
    if (isKeyed(value)) Object.keys(value).forEach(frame => frames.add(Number(frame)));
  }
  const last = Math.max(1, totalFrames() - 1);
  byName('keys').replaceChildren(...[...frames].filter(frame => frame <= last).map(frame => {
    const mark = make('i', { className: 'key', title: `key at frame ${frame}` });
    mark.style.left = `${100 * frame / last}%`;
    return mark;
  }));
}

export function showTimeline() {
  const total = totalFrames();
  if (look.frame > total - 1) look.frame = total - 1;
  byName('scrub').max = String(total - 1);
  byName('frame').max = String(total - 1);
  byName('timeline').classList.toggle('single', total < 2);
  byName('length').disabled = !info.clip.endless;
  byName('timeline').hidden = !info.clip.endless && total < 2;
  if (document.activeElement !== byName('length')) byName('length').value = String(total);
  byName('length-auto').hidden = !info.clip.endless || doc.frames === null;
  byName('length-auto').title = `Back to ${automaticFrames()}`;
  showFrame();
  showKeys();
}

export function startTimeline() {
  byName('play').addEventListener('click', togglePlay);
  byName('scrub').addEventListener('input', event => {
    if (loop) stop();
    goTo(Number(event.target.value));
  });
  byName('frame').addEventListener('change', event => {
    if (loop) stop();
    goTo(Number(event.target.value));
    event.target.value = String(look.frame);
  });
  byName('length').addEventListener('change', event => {
    const frames = Math.min(10000, Math.max(1, Math.round(Number(event.target.value)) || 1));
    commit(() => { doc.frames = frames; });
    event.target.value = String(totalFrames());
  });
  byName('length-auto').addEventListener('click', () => commit(() => { doc.frames = null; }));
  lastMoving = doc.effects.filter(link => !link.off && effectOf(link).moving).map(link => link.id).join();
  showTimeline();
}

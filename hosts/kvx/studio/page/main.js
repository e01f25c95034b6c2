// Puts the page together.
import { ask, listen } from './api.js';
import { showChosen, showQuery, startBrowse } from './browse.js';
import { showChain } from './chain.js';
import { byName, make, show } from './dom.js';
import { canRedo, canUndo, changeLook, commit, doc, info, look, onChange, redo, start, undo } from './state.js';
import { isRendering, showJob, showTake, startTake } from './take.js';
import { goTo, playIfNew, restart, showTimeline, startTimeline, stop, togglePlay } from './timeline.js';
import { showTune } from './tune.js';
import { refresh, startView, toggleCompare, zoomBy, zoomFit, zoomFull } from './view.js';

function showTab() {
  document.body.dataset.tab = look.tab;
  for (const tab of document.querySelectorAll('[role=tab]')) {
    const chosen = tab.dataset.tab === look.tab;
    tab.setAttribute('aria-selected', String(chosen));
    tab.tabIndex = chosen ? 0 : -1;
  }
}

let seen = '';  // what the stage last showed of the look
function showAll(what) {
  showChain(what);
  showTune();
  if (what === 'live') {
    restart();
    showTake();
    refresh(true);
    return;
  }
  byName('undo').disabled = !canUndo();
  byName('redo').disabled = !canRedo();
  byName('pad').value = doc.pad;
  showTab();
  showQuery();
  showChosen();
  showTimeline();
  const now = JSON.stringify([look.frame, look.zoom, look.split, look.selected]);
  if (what === 'doc') {
    restart();
    showTake();
    refresh(true);
    playIfNew();
  } else if (now !== seen) {
    const [frame, zoom] = JSON.parse(seen || '[]');
    if (JSON.stringify(zoom) !== JSON.stringify(look.zoom)) restart();
    refresh(frame !== look.frame);
  }
  seen = now;
}

// Frames that people want to fill: the picture is fitted into them.
function fillPads() {
  const sizes = ['1920x1080', '1080x1920', '1080x1080', '1280x720', '3840x2160'];
  if (doc.pad && !sizes.includes(doc.pad)) sizes.push(doc.pad);
  const own = make('option', { value: '' }, `${info.clip.width} × ${info.clip.height}, as it is`);
  byName('pad').replaceChildren(own, ...sizes.map(size => make('option', { value: size }, `${size.replace('x', ' × ')}, padded`)));
  byName('pad').addEventListener('change', event => commit(() => {
    doc.pad = event.target.value;
    look.zoom = null;
  }));
}

function startKeys() {
  const plain = {
    '/': () => {
      changeLook(() => { look.tab = 'effects'; });
      byName('search').focus();
    },
    ' ': togglePlay,
    ',': () => goTo(look.frame - 1),
    '.': () => goTo(look.frame + 1),
    0: zoomFit,
    1: zoomFull,
    '+': () => zoomBy(1.5),
    '-': () => zoomBy(1 / 1.5),
    b: toggleCompare,
  };
  addEventListener('keydown', event => {
    const field = event.target.closest?.('input:not([type=range]):not([type=checkbox]):not([type=radio]), select, textarea');
    if (event.ctrlKey || event.metaKey) {
      const key = event.key.toLowerCase();
      if (field?.type === 'text' || field?.type === 'search') return;
      if (key === 'z' && !event.shiftKey) undo();
      else if ((key === 'z' && event.shiftKey) || key === 'y') redo();
      else return;
      event.preventDefault();
      return;
    }
    if (event.altKey || field || byName('help').open) return;
    const onControl = event.target.closest?.('button, summary, input, [role=slider]');
    if (event.key === ' ' && onControl) return;
    const work = plain[event.key.toLowerCase()];
    if (!work) return;
    event.preventDefault();
    work();
  });
  for (const tab of document.querySelectorAll('[role=tab]')) {
    tab.addEventListener('click', () => changeLook(() => { look.tab = tab.dataset.tab; }));
    tab.addEventListener('keydown', event => {
      const to = { ArrowLeft: tab.previousElementSibling, ArrowRight: tab.nextElementSibling }[event.key];
      to?.focus();
      to?.click();
    });
  }
  byName('undo').addEventListener('click', undo);
  byName('redo').addEventListener('click', redo);
  byName('help-open').addEventListener('click', () => byName('help').showModal());
  addEventListener('beforeunload', event => {
    if (isRendering()) event.preventDefault();
  });
  document.addEventListener('visibilitychange', () => {
    if (document.hidden) stop();
  });
}

async function begin() {
  try {
    start(await ask('describe'));
  } catch (error) {
    show(byName('banner'), error.message);
    byName('clip').textContent = '';
    return;
  }
  const { name, width, height, endless, frames, fps } = info.clip;
  const length = endless ? '' : `, ${frames} frames at ${Number(fps.toFixed(3))} a second`;
  byName('clip').textContent = `${name}: ${width} × ${height}${length}`;
  document.title = `${name}: kvx studio`;
  fillPads();
  onChange(showAll);
  startBrowse();
  startTimeline();
  startTake();
  startKeys();
  startView();
  showAll('doc');
  let down = 0;
  listen(showJob, alive => {
    clearTimeout(down);
    if (alive) show(byName('banner'), '');
    else down = setTimeout(() => show(byName('banner'), 'The studio does not answer. If it was ended, start kvx studio again; its new address is another one.'), 1500);
  });
}

begin();

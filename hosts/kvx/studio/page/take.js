// What one leaves with: recipe, command lines, pictures, the rendered file.
import { ask, askBlob } from './api.js';
import { byName, make, say, show } from './dom.js';
import { cleanEffects, cleanSeed, commit, doc, info, look, project, recipe } from './state.js';

const kLargestRecipe = 1 << 20;

let suggested = '';
let ownName = false;  // the user wrote a name
let recipeText = '';
let asked = 0;

const complain = message => show(byName('take-message'), message);

async function copy(line, button) {
  try {
    await navigator.clipboard.writeText(line.textContent);
    button.textContent = 'Copied';
    say('Copied.');
  } catch {
    getSelection().selectAllChildren(line);
    button.textContent = 'Press Ctrl C';
  }
  setTimeout(() => { button.textContent = 'Copy'; }, 1500);
}

function makeLine({ program, line, note }) {
  const block = make('div', { className: 'line' });
  const heading = make('span', { className: 'head' }, make('h3', {}, program));
  block.append(heading);
  if (line) {
    const code = make('code', { tabIndex: 0 }, line);
    const button = make('button', { type: 'button', 'aria-label': `Copy the ${program} line` }, 'Copy');
    button.addEventListener('click', () => copy(code, button));
    heading.append(button);
    block.append(code);
  }
  if (note) block.append(make('p', { className: 'dim' }, note[0].toUpperCase() + note.slice(1) + '.'));
  return block;
}

async function refreshLines() {
  const mine = ++asked;
  try {
    const told = await ask('lines', { ...project(), ...(ownName ? { name: byName('output').value } : {}) });
    if (mine !== asked) return;
    suggested = told.name;
    recipeText = told.recipe;
    if (!ownName) byName('output').value = suggested;
    byName('lines').replaceChildren(...told.lines.map(makeLine));
  } catch (error) {
    if (mine === asked) byName('lines').replaceChildren(make('p', { className: 'wrong' }, error.message));
  }
}

let later = 0;
export function showTake() {
  const any = recipe().effects.length > 0;
  byName('take-body').hidden = !any;
  byName('take-empty').hidden = any;
  byName('recipe-save').disabled = !any;
  clearTimeout(later);
  later = setTimeout(refreshLines, 150);
}

function download(blob, name) {
  const link = make('a', { href: URL.createObjectURL(blob), download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60000);
}

const stem = () => suggested.replace(/(_%\d*d)?\.\w+$/, '');

async function loadRecipe(file) {
  complain('');
  if (file.size > kLargestRecipe) {
    complain(`${file.name} is too large for a recipe.`);
    return;
  }
  try {
    const told = await ask('recipe', { text: await file.text() });
    commit(() => {
      doc.effects = cleanEffects(told.effects.map(({ effect, opacity, params }) => ({ id: effect, opacity, params })));
      doc.seed = cleanSeed(told.seed);
      look.selected = 0;
    });
    say(`${file.name} loaded: ${doc.effects.length} effects.`);
  } catch (error) {
    complain(`${file.name}: ${error.message}`);
    byName('take-message').scrollIntoView({ block: 'nearest' });
  }
}

function startDrop() {
  const isFile = event => event.dataTransfer?.types.includes('Files');
  addEventListener('dragover', event => {
    if (!isFile(event)) return;
    event.preventDefault();
    byName('drop').hidden = false;
  });
  addEventListener('dragleave', event => {
    if (!event.relatedTarget) byName('drop').hidden = true;
  });
  addEventListener('drop', event => {
    byName('drop').hidden = true;
    if (!isFile(event)) return;
    event.preventDefault();
    if (event.dataTransfer.files.length) loadRecipe(event.dataTransfer.files[0]);
  });
}

const duration = seconds => (seconds < 90 ? `${Math.ceil(seconds)} s` : `${Math.floor(seconds / 60)} min ${Math.round(seconds % 60)} s`);

let lastPhase = 'none';
export function showJob(job) {
  if (job.phase === 'none') return;
  byName('job').hidden = false;
  const bar = byName('job-bar');
  bar.hidden = job.phase !== 'running';
  if (job.total) {
    bar.max = job.total;
    bar.value = job.done;
  } else {
    bar.removeAttribute('value');
  }
  const frames = job.total ? `${job.done} of ${job.total} frames` : `${job.done} frames`;
  byName('job-text').textContent = {
    running: `${frames}, ${job.fps} a second${job.left ? `, ${duration(job.left)} left` : ''}`,
    done: `${job.file} is written: ${job.done} frames in ${duration(job.seconds)}.`,
    cancelled: `Cancelled: ${job.message}.`,
    failed: `Not written: ${job.message}`,
  }[job.phase];
  byName('job').classList.toggle('failed', job.phase === 'failed');
  byName('job-cancel').hidden = job.phase !== 'running';
  byName('render-start').disabled = job.phase === 'running';
  if (job.phase !== lastPhase && lastPhase === 'running') {
    ownName = false;
    refreshLines();
  }
  lastPhase = job.phase;
}

export const isRendering = () => lastPhase === 'running';

async function startRender(event) {
  event.preventDefault();
  complain('');
  try {
    showJob(await ask('render', { ...project(), name: byName('output').value }));
  } catch (error) {
    complain(error.message);
  }
}

export function startTake() {
  byName('output').addEventListener('input', () => {
    ownName = byName('output').value !== '';
    clearTimeout(later);
    later = setTimeout(refreshLines, 300);
  });
  byName('render').addEventListener('submit', startRender);
  byName('job-cancel').addEventListener('click', () => ask('cancel', {}).catch(error => complain(error.message)));
  byName('recipe-save').addEventListener('click', async () => {
    await refreshLines();
    if (recipeText) download(new Blob([recipeText], { type: 'application/json' }), `${stem()}.json`);
  });
  byName('recipe-load').addEventListener('click', () => byName('recipe-file').click());
  byName('recipe-file').addEventListener('change', event => {
    if (event.target.files.length) loadRecipe(event.target.files[0]);
    event.target.value = '';
  });
  byName('picture-save').addEventListener('click', async event => {
    const button = event.target;
    button.disabled = true;
    complain('');
    try {
      const blob = await askBlob('picture', { ...project(), frame: look.frame });
      download(blob, `${stem() || info.clip.name}-frame-${look.frame}.png`);
    } catch (error) {
      complain(error.message);
    }
    button.disabled = false;
  });
  startDrop();
  showTake();
}

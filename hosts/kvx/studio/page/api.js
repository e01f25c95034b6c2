// Talking to the studio behind this page.

// Stays over a reload, so that a render that this page began goes on.
const page = sessionStorage.getItem('page') ?? Math.random().toString(36).slice(2) + Date.now().toString(36);
sessionStorage.setItem('page', page);

export class StudioError extends Error {
  constructor(message, status) {
    super(message);
    this.status = status;
  }
}

async function send(name, body, signal) {
  let response;
  try {
    response = await fetch(`${name}?page=${page}`, body === undefined ? { signal } : {
      method: 'POST',
      headers: { 'Content-Type': 'application/json' },
      body: JSON.stringify(body),
      signal,
    });
  } catch (error) {
    if (error.name === 'AbortError') throw error;
    throw new StudioError('The studio does not answer. If it was ended, start kvx studio again.', 0);
  }
  if (response.ok) return response;
  let message = `The studio answered ${response.status}.`;
  try {
    message = (await response.json()).error ?? message;
  } catch {
    // no more is known
  }
  throw new StudioError(message, response.status);
}

export async function ask(name, body) {
  return (await send(name, body)).json();
}

export async function askBlob(name, body) {
  return (await send(name, body)).blob();
}

let number = Date.now();

// One preview: its pixels on a canvas of their own, and what is known of them.
export async function askPreview(request, signal) {
  const response = await send('preview', { ...request, number: ++number }, signal);
  const width = Number(response.headers.get('X-Kvx-Width'));
  const height = Number(response.headers.get('X-Kvx-Height'));
  const pixels = new Uint8ClampedArray(await response.arrayBuffer());
  const canvas = new OffscreenCanvas(width, height);
  canvas.getContext('2d').putImageData(new ImageData(pixels, width, height), 0, 0);
  return {
    canvas,
    opaque: response.headers.get('X-Kvx-Opaque') === '1',
    exact: response.headers.get('X-Kvx-Exact') === '1',
    milliseconds: Number(response.headers.get('X-Kvx-Milliseconds')),
    frames: Number(response.headers.get('X-Kvx-Frames')),
  };
}

export function thumbnailAddress(id, strip) {
  return `thumbnail?page=${page}&effect=${id}${strip ? '&strip' : ''}`;
}

// Keeps a stream open for as long as the page is; the studio stops this page's work when it ends.
export function listen(onJob, onAlive) {
  const events = new EventSource(`events?page=${page}`);
  events.onopen = () => onAlive(true);
  events.onmessage = event => onJob(JSON.parse(event.data));
  events.onerror = () => onAlive(false);
}

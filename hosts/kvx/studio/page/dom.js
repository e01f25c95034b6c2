// Small helpers for the document.

export const byName = id => document.getElementById(id);

// An element with properties (names with a dash are attributes) and children.
export function make(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name.includes('-') || name === 'role') element.setAttribute(name, value);
    else element[name] = value;
  }
  element.append(...children);
  return element;
}

export function show(element, message) {
  element.hidden = !message;
  element.textContent = message ?? '';
}

// For those who do not see the page.
export function say(text) {
  byName('say').textContent = text;
}

export function press(button, pressed) {
  button.setAttribute('aria-pressed', String(pressed));
}

export const calm = matchMedia('(prefers-reduced-motion: reduce)');

// Short forms for the elements of the page. Text goes into text nodes alone, never into markup.

export function byId<T extends Element = HTMLElement>(id: string): T {
  const found = document.getElementById(id);
  if (!found) throw new Error(`the page has no #${id}`);
  return found as unknown as T;
}

interface Attributes {
  class?: string;
  text?: string;
  [name: string]: string | undefined;
}

export function make<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: (Node | string)[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === undefined) continue;
    if (name === "text") element.textContent = value;
    else element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

/** Sets the text only if it differs, so that a screen reader is not told twice. */
export function setText(element: Element, text: string): void {
  if (element.textContent !== text) element.textContent = text;
}

/** A colour of the style sheet, which depends on light and dark. */
export function colour(name: string): string {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

/** Calls back when the page turns from light to dark, or back. */
export function onColours(changed: () => void): void {
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", changed);
}

export function calmMotion(): boolean {
  return matchMedia("(prefers-reduced-motion: reduce)").matches;
}

/** A function that runs the given one once before the next picture of the screen. */
export function beforePaint(work: () => void): () => void {
  let asked = false;
  return () => {
    if (asked) return;
    asked = true;
    requestAnimationFrame(() => {
      asked = false;
      work();
    });
  };
}

/** A function that runs the given one at once, but then not again for so long (ms). */
export function atMostEvery(pause: number, work: () => void): () => void {
  let isPausing = false;
  let asked = false;
  const run = () => {
    asked = isPausing;
    if (isPausing) return;
    isPausing = true;
    work();
    setTimeout(() => {
      isPausing = false;
      if (asked) run();
    }, pause);
  };
  return run;
}

/** Makes the canvas as sharp as the screen; its context then draws in CSS pixels. */
export function sharpContext(canvas: HTMLCanvasElement): CanvasRenderingContext2D {
  const scale = devicePixelRatio || 1;
  const width = Math.round(canvas.clientWidth * scale);
  const height = Math.round(canvas.clientHeight * scale);
  if (canvas.width !== width) canvas.width = width;
  if (canvas.height !== height) canvas.height = height;
  const context = canvas.getContext("2d")!;
  context.setTransform(scale, 0, 0, scale, 0, 0);
  return context;
}

// The curves that are chosen, one above the other, with the cursor across all of them.

import { visibleRange } from "./actions";
import type { Column } from "./api";
import { Curve } from "./curve";
import { beforePaint, byId, make, onColours, setText } from "./dom";
import { Lane } from "./lane";
import type { LaneOptions } from "./lane";
import type { Preview } from "./preview";
import type { Recording } from "./recording";
import { signalOf, usualChoice } from "./signals";
import type { Store } from "./store";
import type { Times } from "./times";

const hues = 6;

export class Curves {
  private readonly section = byId("curves");
  private readonly rows = byId("curve-rows");
  private readonly overlay = byId("curve-overlay");
  private readonly cursor = byId("curve-cursor");
  private readonly selection = byId("curve-selection");
  private readonly lane: Lane;
  private readonly redraw = beforePaint(() => this.draw());
  private readonly zoomAll = beforePaint(() => this.zoom());
  private names: readonly string[] = [];
  private curves = new Map<string, Curve>();
  private values = new Map<string, Column>();
  private width = 0;

  constructor(
    private readonly store: Store,
    private readonly preview: Preview,
    private readonly tell: (text: string) => void,
  ) {
    const options: LaneOptions = {
      drag: "select",
      wheel: "ctrl",
      hover: (position, x) => this.hover(position, x),
      selecting: (from, to) => this.showSelection(from, to),
    };
    this.lane = new Lane(store, this.overlay, options, () => this.resized());
    store.on(["times"], () => void this.load());
    store.on(["curves"], () => void this.arrange());
    store.on(["range"], this.zoomAll);
    store.on(["position", "range", "times"], () => this.moveCursor());
    store.on(["frame"], () => this.showValues());
    onColours(this.redraw);
  }

  /** The height changes with each curve; only another width draws them anew. */
  private resized(): void {
    if (this.lane.width === this.width) return;
    this.width = this.lane.width;
    this.redraw();
  }

  /** For another recording: the same curves if it has them, or the usual ones. */
  private async load(): Promise<void> {
    const { recording } = this.store;
    const { times, curves } = this.store.state;
    this.clear();
    if (!recording || !times || times.count === 0) return;
    const names = await this.readNames(recording);
    if (recording !== this.store.recording) return;
    this.names = names;
    this.section.hidden = names.length === 0;
    if (names.length === 0) return;
    const kept = curves.filter((name) => names.includes(name));
    this.store.set({ curves: kept.length ? kept : usualChoice(names) });
    this.listChoices();
    await this.arrange();
  }

  private async readNames(recording: Recording): Promise<string[]> {
    try {
      return await recording.columnNames();
    } catch (problem) {
      this.complain(problem as Error);
      return [];
    }
  }

  private complain(problem: Error): void {
    this.tell(`The curves cannot be shown: ${problem.message}`);
  }

  private clear(): void {
    for (const curve of this.curves.values()) curve.close();
    this.curves.clear();
    this.values.clear();
    this.section.hidden = true;
  }

  private listChoices(): void {
    const items = this.names.map((name) => {
      const { label, unit } = signalOf(name);
      const box = make("input", { type: "checkbox" });
      box.checked = this.store.state.curves.includes(name);
      box.addEventListener("change", () => this.choose(name, box.checked));
      const text = unit ? `${label}, ${unit}` : label;
      return make("li", {}, make("label", {}, box, ` ${text}`));
    });
    byId("curve-choices").replaceChildren(...items);
  }

  private choose(name: string, isChosen: boolean): void {
    const { curves } = this.store.state;
    const wanted = this.names.filter((one) => (one === name ? isChosen : curves.includes(one)));
    this.store.set({ curves: wanted });
  }

  /** Makes the rows that are missing, and removes those that are not chosen any more. */
  private async arrange(): Promise<void> {
    const { recording } = this.store;
    const chosen = this.store.state.curves.filter((name) => this.names.includes(name));
    setText(byId("curve-count"), `${chosen.length} of ${this.names.length}`);
    if (!recording?.times || !(await this.loadValues(chosen))) return;
    const stillChosen = this.store.state.curves;
    for (const [name, curve] of this.curves) {
      if (stillChosen.includes(name)) continue;
      curve.close();
      this.curves.delete(name);
    }
    for (const name of stillChosen) {
      if (!this.values.has(name) || this.curves.has(name)) continue;
      this.curves.set(name, new Curve(name, () => this.hide(name)));
    }
    this.rows.replaceChildren(...this.shown().map(([, curve]) => curve.element));
    this.redraw();
  }

  private async loadValues(names: readonly string[]): Promise<boolean> {
    const { recording } = this.store;
    const missing = names.filter((name) => !this.values.has(name));
    if (!recording) return false;
    if (missing.length === 0) return true;
    try {
      const columns = await recording.columnsOf(missing);
      if (recording !== this.store.recording) return false;
      missing.forEach((name, i) => this.values.set(name, columns[i]));
      return true;
    } catch (problem) {
      this.complain(problem as Error);
      return false;
    }
  }

  private hide(name: string): void {
    this.choose(name, false);
    this.listChoices();
    byId("curve-summary").focus();
  }

  private shown(): [string, Curve][] {
    return this.names.flatMap((name): [string, Curve][] => {
      const curve = this.curves.get(name);
      return curve ? [[name, curve]] : [];
    });
  }

  private draw(): void {
    const { times } = this.store.state;
    const shown = this.shown();
    this.overlay.hidden = shown.length === 0;
    if (!times || shown.length === 0) return;
    const style = getComputedStyle(this.rows);
    const fontSize = Math.round(parseFloat(style.fontSize));
    const gutter = this.overlay.offsetLeft - this.rows.offsetLeft;
    shown.forEach(([name, curve], i) => {
      const hue = this.names.indexOf(name) % hues;
      const hasTimeAxis = i === shown.length - 1;
      const layout = { gutter, fontSize, hasTimeAxis, hue };
      curve.draw(times, this.values.get(name) ?? [], visibleRange(this.store), layout);
    });
    this.moveCursor();
    this.showValues();
  }

  private zoom(): void {
    const range = visibleRange(this.store);
    for (const curve of this.curves.values()) curve.zoom(range);
  }

  private showValues(): void {
    for (const curve of this.curves.values()) curve.showValue(this.store.state.frame);
  }

  private moveCursor(): void {
    const x = this.lane.pixelOf(this.store.state.position);
    this.cursor.hidden = x < -1 || x > this.lane.width + 1;
    this.cursor.style.transform = `translateX(${x.toFixed(2)}px)`;
  }

  private showSelection(from: number | null, to: number): void {
    this.selection.hidden = from === null;
    if (from === null) return;
    this.selection.style.left = `${Math.min(from, to)}px`;
    this.selection.style.width = `${Math.abs(to - from)}px`;
  }

  private hover(position: number | null, x: number): void {
    const { recording } = this.store;
    const times: Times | null = this.store.state.times;
    if (position === null || !recording || !times) return this.preview.hide();
    const box = this.overlay.getBoundingClientRect();
    const at = { x: box.left + x, top: box.top };
    this.preview.show(recording, times, times.frameAt(position), at);
  }
}

// Pointer and wheel over a strip whose x axis is the visible range: timeline and curves.

import { seekTo, showAll, visibleRange, zoom } from "./actions";
import { fitted } from "./range";
import type { Store } from "./store";

/** Fewer pixels than this are a click, not a drag. */
const dragFrom = 4;
const zoomPerPixel = 1.0015;

export interface LaneOptions {
  /** What a drag does: it seeks along, or it selects a range to zoom to. */
  drag: "seek" | "select";
  /** Whether the wheel zooms, or only with Ctrl, so that it can scroll the page. */
  wheel: "zoom" | "ctrl";
  hover(position: number | null, x: number): void;
  /** The selected part in pixels; null when there is none any more. */
  selecting?(from: number | null, to: number): void;
}

type Drag = { kind: "seek" | "select" | "pan"; x: number; from: number; moved: boolean };

export class Lane {
  private drag: Drag | null = null;
  /** In pixels; kept, because asking the element while a recording plays lays out the page. */
  width = 1;

  constructor(
    private readonly store: Store,
    private readonly element: HTMLElement,
    private readonly options: LaneOptions,
    resized: () => void,
  ) {
    new ResizeObserver(() => {
      this.width = Math.max(1, element.clientWidth);
      resized();
    }).observe(element);
    element.addEventListener("pointerdown", (event) => this.down(event));
    element.addEventListener("pointermove", (event) => this.move(event));
    element.addEventListener("pointerup", (event) => this.up(event));
    element.addEventListener("pointercancel", () => this.end());
    element.addEventListener("pointerleave", () => options.hover(null, 0));
    element.addEventListener("dblclick", () => showAll(store));
    element.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
  }

  /** Pixels from the left edge of the lane. */
  pixelOf(position: number): number {
    const { from, to } = visibleRange(this.store);
    return ((position - from) / (to - from || 1)) * this.width;
  }

  positionOf(pixel: number): number {
    const { from, to } = visibleRange(this.store);
    return from + (Math.min(Math.max(0, pixel), this.width) / this.width) * (to - from);
  }

  private pixelAt(event: MouseEvent): number {
    return event.clientX - this.element.getBoundingClientRect().left;
  }

  private down(event: PointerEvent): void {
    if (event.button !== 0 || !this.store.state.times) return;
    const x = this.pixelAt(event);
    const kind = event.shiftKey ? "pan" : this.options.drag;
    this.drag = { kind, x, from: visibleRange(this.store).from, moved: false };
    this.element.setPointerCapture(event.pointerId);
    if (kind === "seek") seekTo(this.store, this.positionOf(x));
  }

  private move(event: PointerEvent): void {
    const x = this.pixelAt(event);
    const { drag } = this;
    // What the pointer is over is shown large then.
    const isSeeking = drag?.kind === "seek";
    this.options.hover(isSeeking ? null : this.positionOf(x), x);
    if (!drag) return;
    drag.moved ||= Math.abs(x - drag.x) >= dragFrom;
    if (drag.kind === "seek") seekTo(this.store, this.positionOf(x));
    else if (drag.kind === "pan") this.panTo(drag.from + this.seconds(drag.x - x));
    else if (drag.moved) this.options.selecting?.(drag.x, x);
  }

  private up(event: PointerEvent): void {
    const { drag } = this;
    if (drag?.kind === "select") {
      const x = this.pixelAt(event);
      if (drag.moved) this.showBetween(this.positionOf(drag.x), this.positionOf(x));
      else seekTo(this.store, this.positionOf(x));
    }
    this.end();
  }

  private end(): void {
    this.drag = null;
    this.options.selecting?.(null, 0);
  }

  private wheel(event: WheelEvent): void {
    const { times, range } = this.store.state;
    if (!times || (this.options.wheel === "ctrl" && !event.ctrlKey)) return;
    const pixels = event.deltaMode === 0 ? 1 : 40;
    if (Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
      if (!range) return;
      this.panTo(range.from + this.seconds(event.deltaX * pixels));
    } else {
      // There is nothing more to see of it: the page scrolls.
      if (event.deltaY > 0 && !range) return;
      const factor = zoomPerPixel ** (event.deltaY * pixels);
      zoom(this.store, factor, this.positionOf(this.pixelAt(event)));
    }
    event.preventDefault();
  }

  private seconds(pixels: number): number {
    const { from, to } = visibleRange(this.store);
    return (pixels / this.width) * (to - from);
  }

  private panTo(from: number): void {
    const { times, range } = this.store.state;
    if (!times || !range) return;
    this.store.set({ range: fitted({ from, to: from + range.to - range.from }, times.end) });
  }

  private showBetween(one: number, other: number): void {
    const { times } = this.store.state;
    if (!times) return;
    const range = { from: Math.min(one, other), to: Math.max(one, other) };
    this.store.set({ range: fitted(range, times.end) });
  }
}

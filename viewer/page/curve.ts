// One curve: its name, the value at the cursor, and its plot.

import Dygraph from "dygraphs/src/dygraph.js";
import axes from "dygraphs/src/plugins/axes.js";
import grid from "dygraphs/src/plugins/grid.js";
import type { Column } from "./api";
import { colour, make, setText } from "./dom";
import { tickDigits, tickStep } from "./range";
import type { Range } from "./range";
import { rowsOf, signalOf } from "./signals";
import type { Signal } from "./signals";
import { decimal, measured, sinceStart } from "./text";
import type { Times } from "./times";

// Its other plugins write styles into markup, which the content security policy forbids.
Dygraph.PLUGINS = [axes, grid];

export interface CurveLayout {
  /** Width of the labels left of the plot, in pixels. */
  gutter: number;
  fontSize: number;
  /** Whether the time axis is drawn below the plot. */
  hasTimeAxis: boolean;
  /** The number of the curve's colour. */
  hue: number;
}

export class Curve {
  readonly element: HTMLElement;
  readonly signal: Signal;
  private readonly value = make("span", { class: "value" });
  private readonly plot = make("div", { class: "plot", "aria-hidden": "true" });
  private graph: Dygraph | null = null;
  private values: Column = [];

  constructor(name: string, remove: () => void) {
    this.signal = signalOf(name);
    const { label, unit } = this.signal;
    const button = make("button", {
      class: "remove",
      type: "button",
      "aria-label": `Hide ${label}`,
      title: "Hide this curve",
      text: "×",
    });
    button.addEventListener("click", remove);
    this.value.setAttribute("aria-label", label);
    const title = make("span", { class: "name", title: name, text: label });
    const swatch = make("i", { class: "swatch" });
    const head = make("div", { class: "head" }, swatch, title, this.value, button);
    this.element = make("div", { class: "curve" }, head, this.plot);
    this.plot.title = unit ? `${label}, ${unit}` : label;
  }

  /** Draws all of it anew: for new values, sizes or colours. */
  draw(times: Times, values: Column, range: Range, layout: CurveLayout): void {
    this.values = values;
    this.graph?.destroy();
    this.element.style.setProperty("--hue", `var(--curve-${layout.hue})`);
    this.element.classList.toggle("last", layout.hasTimeAxis);
    this.graph = new Dygraph(this.plot, rowsOf(this.signal.name, times, values), {
      ...styleOf(layout),
      labels: ["time", this.signal.name],
      dateWindow: [range.from, range.to],
    });
  }

  zoom(range: Range): void {
    this.graph?.updateOptions({ dateWindow: [range.from, range.to] });
  }

  showValue(frame: number): void {
    const value = this.values[frame] ?? null;
    setText(this.value, value === null ? "no value" : withUnit(value, this.signal));
  }

  close(): void {
    this.graph?.destroy();
    this.graph = null;
    this.element.remove();
  }
}

function withUnit(value: number, { unit }: Signal): string {
  if (unit === "°") return `${measured(value)}°`;
  const text = unit ? `${measured(value)} ${unit}` : measured(value);
  return unit === "m/s" ? `${text} (${decimal(value * 3.6, 1)} km/h)` : text;
}

function styleOf(layout: CurveLayout): Record<string, unknown> {
  return {
    colors: [colour(`curve-${layout.hue}`)],
    strokeWidth: 1.5,
    pointSize: 2.5,
    gridLineColor: colour("line"),
    axisLineColor: colour("line"),
    axisLabelFontSize: layout.fontSize,
    axisTickSize: 0,
    rightGap: 0,
    yRangePad: 6,
    highlightCircleSize: 0,
    interactionModel: {},
    axes: {
      x: {
        drawAxis: layout.hasTimeAxis,
        ticker: timeTicks(layout.fontSize),
      },
      y: {
        axisLabelWidth: layout.gutter,
        pixelsPerLabel: layout.fontSize * 1.7,
        axisLabelFormatter: shortNumber,
      },
    },
  };
}

/** Ticks at round times, as the timeline has them. */
function timeTicks(fontSize: number) {
  return (from: number, to: number, pixels: number): { v: number; label: string }[] => {
    const step = tickStep(to - from, pixels / (fontSize * 8));
    const ticks = [];
    for (let i = Math.ceil(from / step); i * step <= to; ++i) {
      ticks.push({ v: i * step, label: sinceStart(i * step, tickDigits(step)) });
    }
    return ticks;
  };
}

/** For the narrow column of an axis. */
function shortNumber(value: number): string {
  const size = Math.abs(value);
  if (size >= 1e5 || (size > 0 && size < 1e-3)) return value.toExponential(1).replace("+", "");
  return String(Number(value.toPrecision(5)));
}

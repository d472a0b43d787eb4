// The timeline: time marks, filmstrip, gaps, findings, the marked scene, and the cursor.

import { visibleRange } from "./actions";
import type { Finding } from "./api";
import { atMostEvery, beforePaint, byId, colour, onColours, sharpContext } from "./dom";
import { drawCovering, Filmstrip } from "./filmstrip";
import { Lane } from "./lane";
import type { LaneOptions } from "./lane";
import { gapNote, Preview } from "./preview";
import { fitted, following, tickDigits, tickStep } from "./range";
import type { Store } from "./store";
import { sinceStart, utc } from "./text";
import type { Times } from "./times";

/** Shares of the height: time marks above, gaps and findings below, the filmstrip between them. */
const marksShare = 0.22;
const eventsShare = 0.16;
/** A screen reader is told of the frame only so often (ms). */
const speakEvery = 500;

export class Timeline {
  private readonly element = byId("timeline");
  private readonly canvas = byId<HTMLCanvasElement>("timeline-canvas");
  private readonly cursor = byId("timeline-cursor");
  private readonly overview = byId("overview");
  private readonly window = byId("overview-window");
  private readonly draw = beforePaint(() => this.paint());
  private readonly lane: Lane;
  private strip: Filmstrip | null = null;

  constructor(
    private readonly store: Store,
    private readonly preview: Preview,
  ) {
    const options: LaneOptions = {
      drag: "seek",
      wheel: "zoom",
      hover: (position, x) => this.hover(position, x),
    };
    this.lane = new Lane(store, this.element, options, () => this.resized());
    store.on(["recording"], () => this.newStrip());
    store.on(["times", "range", "from", "to", "findings"], this.draw);
    store.on(["position", "frame", "times"], () => this.follow());
    store.on(["position", "frame", "times", "range"], () => this.moveCursor());
    store.on(["frame", "times"], atMostEvery(speakEvery, () => this.speak()));
    onColours(this.draw);
    this.overview.addEventListener("pointerdown", (event) => this.grabOverview(event));
    this.overview.addEventListener("pointermove", (event) => this.dragOverview(event));
    this.newStrip();
  }

  private resized(): void {
    if (this.strip?.height !== this.pictureHeight()) this.newStrip();
    this.draw();
    this.moveCursor();
  }

  private newStrip(): void {
    this.strip?.close();
    this.strip = new Filmstrip(this.store.state.recording, this.pictureHeight(), this.draw);
    this.draw();
  }

  /** What to ask the server for, which gives 16 to 240 rows. */
  private pictureHeight(): number {
    const height = Math.round(this.stripHeight * Math.min(2, devicePixelRatio || 1));
    return Math.min(240, Math.max(16, height));
  }

  private get marksHeight(): number {
    return Math.round(this.element.clientHeight * marksShare);
  }

  private get eventsHeight(): number {
    return Math.round(this.element.clientHeight * eventsShare);
  }

  private get stripHeight(): number {
    return this.element.clientHeight - this.marksHeight - this.eventsHeight;
  }

  private paint(): void {
    const { times } = this.store.state;
    const context = sharpContext(this.canvas);
    context.clearRect(0, 0, this.lane.width, this.element.clientHeight);
    this.window.hidden = this.store.state.range === null;
    if (!times || times.count === 0) return;
    this.paintStrip(context, times);
    this.paintMarks(context);
    this.paintGaps(context, times);
    this.paintFindings(context, times);
    this.paintScene(context, times);
    this.placeWindow(times);
  }

  /** Slots of the strip begin at whole multiples of their length, so that a pan keeps them. */
  private paintStrip(context: CanvasRenderingContext2D, times: Times): void {
    const { strip, lane } = this;
    const [top, height] = [this.marksHeight, this.stripHeight];
    const shape = this.shape();
    const { from, to } = visibleRange(this.store);
    const wanted = ((height * shape) / lane.width) * (to - from);
    if (!(wanted > 0)) return;
    const slot = 2 ** Math.round(Math.log2(wanted));
    context.fillStyle = colour("strip");
    context.fillRect(0, top, lane.width, height);
    const frames: number[] = [];
    for (let i = Math.floor(from / slot); i * slot < Math.min(to, times.end); ++i) {
      const frame = times.frameAt(i * slot);
      frames.push(frame);
      const [x, end] = [lane.pixelOf(i * slot), lane.pixelOf(Math.min((i + 1) * slot, times.end))];
      const picture = strip?.get(frame);
      if (picture) drawCovering(context, picture, [x, top, Math.max(1, end - x - 1), height]);
    }
    strip?.want([...new Set(frames)]);
  }

  private shape(): number {
    const { info } = this.store.recording ?? {};
    const shape = (info?.width ?? 0) / (info?.height ?? 0);
    return shape > 0.2 && shape < 10 ? shape : 1.6;
  }

  private paintMarks(context: CanvasRenderingContext2D): void {
    const { lane } = this;
    const { from, to } = visibleRange(this.store);
    const fontSize = Math.round(this.marksHeight * 0.66);
    context.font = `${fontSize}px system-ui, sans-serif`;
    context.textBaseline = "middle";
    const step = tickStep(to - from, lane.width / (fontSize * 8));
    const digits = tickDigits(step);
    for (let i = Math.ceil(from / step); i * step <= to; ++i) {
      const x = Math.round(lane.pixelOf(i * step));
      context.fillStyle = colour("line");
      context.fillRect(x, 0, 1, this.marksHeight);
      context.fillStyle = colour("quiet");
      const text = sinceStart(i * step, digits);
      if (x + 4 + context.measureText(text).width < lane.width) {
        context.fillText(text, x + 4, this.marksHeight / 2);
      }
    }
  }

  private paintGaps(context: CanvasRenderingContext2D, times: Times): void {
    const { lane } = this;
    const top = this.marksHeight;
    const bottom = top + this.stripHeight;
    let last = -1;
    for (const { frame } of times.gaps) {
      const x = lane.pixelOf(times.seconds[frame - 1] + times.usual);
      const end = lane.pixelOf(times.seconds[frame]);
      if (end < 0 || x > lane.width || Math.floor(end) === last) continue;
      last = Math.floor(end);
      const left = Math.max(0, x);
      const width = Math.max(2, Math.min(end, lane.width) - left);
      context.fillStyle = colour("gap-area");
      if (end - x >= 2) context.fillRect(left, top, width, this.stripHeight);
      context.fillStyle = colour("gap");
      context.fillRect(left, bottom + 1, width, this.eventsHeight / 2 - 1);
    }
  }

  private paintFindings(context: CanvasRenderingContext2D, times: Times): void {
    const { lane } = this;
    const height = this.eventsHeight / 2;
    const top = this.marksHeight + this.stripHeight + height;
    for (const { frame, last_frame, severity } of this.store.state.findings) {
      if (frame === undefined || frame >= times.count) continue;
      const last = Math.min(last_frame ?? frame, times.count - 1);
      const x = lane.pixelOf(times.seconds[frame]);
      const end = lane.pixelOf(times.seconds[last] + times.usual);
      context.fillStyle = colour(severity);
      context.fillRect(x, top, Math.max(3, end - x), height);
    }
  }

  private paintScene(context: CanvasRenderingContext2D, times: Times): void {
    const { from, to } = this.store.state;
    const height = this.element.clientHeight;
    const begin = from === null ? null : this.lane.pixelOf(times.seconds[from] ?? times.end);
    const end = to === null ? null : this.lane.pixelOf(times.seconds[to] ?? times.end);
    if (begin !== null && end !== null) {
      context.fillStyle = colour("scene");
      context.fillRect(begin, this.marksHeight, end - begin, height - this.marksHeight);
    }
    context.fillStyle = colour("accent");
    if (begin !== null) paintBracket(context, begin, this.marksHeight, height, 1);
    if (end !== null) paintBracket(context, end, this.marksHeight, height, -1);
  }

  private moveCursor(): void {
    const { times, position } = this.store.state;
    const x = this.lane.pixelOf(position);
    this.cursor.hidden = !times || times.count === 0 || x < -1 || x > this.lane.width + 1;
    this.cursor.style.transform = `translateX(${x.toFixed(2)}px)`;
  }

  private follow(): void {
    const { times, range, position, playing, backwards } = this.store.state;
    if (!times || !range) return;
    const isBack = playing ? backwards : position < range.from;
    this.store.set({ range: following(range, position, isBack, times.end) });
  }

  /** The cursor as a screen reader tells it. */
  private speak(): void {
    const { times, frame } = this.store.state;
    if (!times) return;
    this.element.setAttribute("aria-valuemax", String(Math.max(0, times.count - 1)));
    this.element.setAttribute("aria-valuenow", String(frame));
    const text = times.count
      ? `frame ${frame}, ${sinceStart(times.seconds[frame])}, ${utc(times.captured[frame])}`
      : "no frames";
    this.element.setAttribute("aria-valuetext", text);
  }

  private hover(position: number | null, x: number): void {
    const { times } = this.store.state;
    const { recording } = this.store;
    if (position === null || !recording || !times || times.count === 0) return this.preview.hide();
    const frame = times.frameAt(position);
    const box = this.element.getBoundingClientRect();
    const at = { x: box.left + x, top: box.top };
    const notes = this.notes(times, frame, position);
    this.preview.show(recording, times, frame, at, notes, this.strip?.get(frame));
  }

  private notes(times: Times, frame: number, position: number): string[] {
    const isBehind = position > times.seconds[frame] + times.usual;
    const gap = times.gaps.find((one) => one.frame === (isBehind ? frame + 1 : frame));
    const isHere = ({ frame: first, last_frame }: Finding) =>
      first !== undefined && first <= frame && frame <= (last_frame ?? first);
    const findings = this.store.state.findings.filter(isHere);
    const notes = findings.slice(0, 3).map((finding) => `${finding.severity}: ${finding.text}`);
    return gap ? [gapNote(gap.seconds, isBehind), ...notes] : notes;
  }

  private placeWindow(times: Times): void {
    const { from, to } = visibleRange(this.store);
    this.window.style.left = `${(100 * from) / times.end}%`;
    this.window.style.width = `${(100 * (to - from)) / times.end}%`;
  }

  private grabOverview(event: PointerEvent): void {
    this.overview.setPointerCapture(event.pointerId);
    this.dragOverview(event);
  }

  private dragOverview(event: PointerEvent): void {
    const { times, range } = this.store.state;
    if (!times || !range || !(event.buttons & 1)) return;
    const box = this.overview.getBoundingClientRect();
    const width = range.to - range.from;
    const from = ((event.clientX - box.left) / box.width) * times.end - width / 2;
    this.store.set({ range: fitted({ from, to: from + width }, times.end) });
  }
}

function paintBracket(
  context: CanvasRenderingContext2D,
  x: number,
  top: number,
  bottom: number,
  inwards: 1 | -1,
): void {
  const left = (width: number) => (inwards === 1 ? x : x - width);
  context.fillRect(left(2), top, 2, bottom - top);
  context.fillRect(left(7), top, 7, 2);
  context.fillRect(left(7), bottom - 2, 7, 2);
}

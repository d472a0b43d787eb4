// One picture on the page: a canvas that shows a frame of one recording as soon as it is decoded.

import { make, setText } from "./dom";
import { Pictures } from "./pictures";

/** How pictures follow each other: 0 stands still, otherwise every so many frames, down if < 0. */
export type Stride = number;

/** What is loaded while a picture is looked at: for the arrow keys, and to begin to play. */
const nearby = [1, -1, 2, -2, 3, 4, 5, 6, 7, 8];

/** Only then (ms), so that the pictures of a drag do not wait for them. */
const restFrom = 80;

export class View {
  readonly element: HTMLElement;
  readonly caption = make("figcaption", { class: "caption" });
  readonly pictures: Pictures;
  /** When there is something to see. */
  readonly firstShown: Promise<void>;
  private tellShown = () => {};
  private readonly canvas = make("canvas", { width: "16", height: "10" });
  private readonly message = make("p", { class: "message", role: "status", hidden: "" });
  private due: number | null = null;
  private shown: number | null = null;
  private stride: Stride = 0;
  private isResting = false;
  private timer = 0;

  constructor(
    recording: number,
    /** How many frames the recording has; 0 while that is not known. */
    private readonly frames: () => number,
  ) {
    this.canvas.dataset.recording = String(recording);
    this.canvas.setAttribute("role", "img");
    this.element = make("figure", { class: "view" }, this.canvas, this.message, this.caption);
    this.pictures = new Pictures(recording, () => this.update());
    this.firstShown = new Promise((done) => (this.tellShown = done));
  }

  /** Keeps the place that the picture will probably need, until there is one. */
  expectShape(width: number, height: number): void {
    if (this.shown === null && width > 0 && height > 0) this.setShape(width, height);
  }

  /** The first picture is the one that all controls are for. */
  setFirst(isFirst: boolean): void {
    this.canvas.id = isFirst ? "picture" : `picture-${this.pictures.recording}`;
  }

  /** Shows the frame; null shows that there is none, for the reason given. */
  show(frame: number | null, stride: Stride, reason = ""): void {
    if (frame !== this.due) this.startResting();
    this.due = frame;
    this.stride = stride;
    if (frame === null) {
      this.blank(reason);
      return;
    }
    this.update();
  }

  close(): void {
    clearTimeout(this.timer);
    this.pictures.close();
    this.element.remove();
  }

  private startResting(): void {
    this.isResting = false;
    clearTimeout(this.timer);
    this.timer = window.setTimeout(() => {
      this.isResting = true;
      this.update();
    }, restFrom);
  }

  private update(): void {
    if (this.due === null) return;
    this.pictures.want(this.ahead(this.due));
    this.draw(this.due);
  }

  /** The frame that is due, then those that will probably be. */
  private ahead(frame: number): number[] {
    const { stride, pictures } = this;
    let steps: number[] = [];
    if (stride) steps = Array.from({ length: pictures.capacity - 3 }, (_, i) => (i + 1) * stride);
    else if (this.isResting && pictures.get(frame)) steps = nearby.slice(0, pictures.capacity - 2);
    const end = this.frames();
    const others = steps.map((step) => frame + step).filter((one) => one >= 0 && one < end);
    return [frame, ...others];
  }

  private draw(due: number): void {
    if (due === this.shown) return;
    const { bitmap, problem = "" } = this.pictures.get(due) ?? {};
    if (bitmap) this.paint(due, bitmap, problem);
    else if (problem) this.blank(problem, due);
    else this.drawNearer(due);
  }

  /** While the frame that is due is not there yet: one that is nearer to it than what is shown. */
  private drawNearer(due: number): void {
    const { shown, stride } = this;
    const isNearer = (frame: number) =>
      shown === null || Math.abs(frame - due) < Math.abs(shown - due);
    const isPast = (frame: number) => stride === 0 || (due - frame) * stride > 0;
    const found = this.pictures.nearest(due, (frame) => isNearer(frame) && isPast(frame));
    if (!found) return;
    this.paint(...found);
  }

  private paint(frame: number, bitmap: ImageBitmap, problem = ""): void {
    const { canvas } = this;
    if (canvas.width !== bitmap.width || canvas.height !== bitmap.height) {
      canvas.width = bitmap.width;
      canvas.height = bitmap.height;
      this.setShape(bitmap.width, bitmap.height);
    }
    const context = canvas.getContext("2d")!;
    if (problem) context.clearRect(0, 0, canvas.width, canvas.height);
    context.drawImage(bitmap, 0, 0);
    this.say(problem);
    this.nowShown(frame);
  }

  private setShape(width: number, height: number): void {
    this.element.style.setProperty("--shape", String(width / height));
  }

  private blank(text: string, frame: number | null = null): void {
    const { canvas } = this;
    canvas.getContext("2d")!.clearRect(0, 0, canvas.width, canvas.height);
    this.say(text);
    this.nowShown(frame);
  }

  private say(text: string): void {
    setText(this.message, text);
    this.message.hidden = text === "";
  }

  private nowShown(frame: number | null): void {
    this.shown = frame;
    if (frame === null) delete this.canvas.dataset.frame;
    else this.canvas.dataset.frame = String(frame);
    this.canvas.setAttribute("aria-label", frame === null ? "No picture" : `Frame ${frame}`);
    this.tellShown();
  }
}

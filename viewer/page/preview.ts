// What appears under the pointer: a small picture and the time of the frame there.

import { byId, setText } from "./dom";
import { drawCovering, smallPictures } from "./filmstrip";
import type { Recording } from "./recording";
import type { Times } from "./times";
import { howLong, sinceStart, utc } from "./text";

const height = 120;

export class Preview {
  private readonly element = byId("preview");
  private readonly canvas = byId<HTMLCanvasElement>("preview-picture");
  private readonly title = byId("preview-title");
  private readonly time = byId("preview-time");
  private readonly note = byId("preview-note");
  private recording: Recording | null = null;
  private frame: number | null = null;
  /** Recording and frame of the picture that is drawn. */
  private drawn = "";
  private busy = false;

  /** Shows the frame above this place of the window; the stand-in until its picture is there. */
  show(
    recording: Recording,
    times: Times,
    frame: number,
    at: { x: number; top: number },
    notes: readonly string[] = [],
    standIn: ImageBitmap | null = null,
  ): void {
    setText(this.title, `Frame ${frame}, ${sinceStart(times.seconds[frame])}`);
    setText(this.time, utc(times.captured[frame]));
    setText(this.note, notes.join("; "));
    this.element.hidden = false;
    this.place(at);
    if (frame === this.frame && recording === this.recording) return;
    this.frame = frame;
    this.recording = recording;
    if (standIn && this.drawn !== this.key) this.draw(standIn);
    void this.load();
  }

  hide(): void {
    this.element.hidden = true;
    this.frame = null;
  }

  private get key(): string {
    return `${this.recording?.number}/${this.frame}`;
  }

  private place({ x, top }: { x: number; top: number }): void {
    const { offsetWidth, offsetHeight } = this.element;
    const left = Math.min(Math.max(4, x - offsetWidth / 2), innerWidth - offsetWidth - 4);
    const above = Math.max(4, top - offsetHeight - 8);
    this.element.style.transform = `translate(${Math.round(left)}px, ${Math.round(above)}px)`;
  }

  private draw(picture: ImageBitmap): void {
    const { canvas } = this;
    canvas.height = height;
    canvas.width = Math.round((height * picture.width) / picture.height);
    drawCovering(canvas.getContext("2d")!, picture, [0, 0, canvas.width, canvas.height]);
  }

  /** One request at a time; the next one is for where the pointer is then. */
  private async load(): Promise<void> {
    const { frame, recording, key } = this;
    if (this.busy || frame === null || !recording || key === this.drawn) return;
    this.busy = true;
    const [picture] = await smallPictures(recording.number, [frame], height).catch(() => []);
    this.busy = false;
    if (picture) {
      this.draw(picture);
      picture.close();
      this.drawn = key;
    }
    if (this.key !== key) void this.load();
  }
}

/** In words, what is before or behind a frame. */
export function gapNote(seconds: number, isBehind: boolean): string {
  const where = isBehind ? "behind it" : "before it";
  if (seconds < 0) return `${where} the clock was set back by ${howLong(-seconds)}`;
  return `${where} nothing was captured for ${howLong(seconds)}`;
}

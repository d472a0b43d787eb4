// Small pictures for the timeline: many in one request, kept while they may be of use.

import { getBlob, smallPath } from "./api";

const mostInOneRequest = 100;
const mostKept = 800;
/** Waits (ms) so that a drag or a zoom asks once. */
const quietTime = 40;

export class Filmstrip {
  private readonly pictures = new Map<number, ImageBitmap | null>();
  private wanted: readonly number[] = [];
  private busy = false;
  private timer = 0;
  private closed = false;

  constructor(
    readonly recording: number,
    readonly height: number,
    private readonly arrived: () => void,
  ) {}

  get(frame: number): ImageBitmap | null {
    return this.pictures.get(frame) ?? null;
  }

  want(frames: readonly number[]): void {
    this.wanted = frames;
    clearTimeout(this.timer);
    this.timer = window.setTimeout(() => void this.load(), quietTime);
  }

  close(): void {
    this.closed = true;
    clearTimeout(this.timer);
    for (const picture of this.pictures.values()) picture?.close();
    this.pictures.clear();
  }

  private async load(): Promise<void> {
    const missing = this.wanted.filter((frame) => !this.pictures.has(frame));
    if (this.busy || this.closed || missing.length === 0) return;
    this.busy = true;
    const asked = missing.slice(0, mostInOneRequest);
    const pieces = await this.fetchPieces(asked);
    this.busy = false;
    if (this.closed) return pieces.forEach((piece) => piece?.close());
    asked.forEach((frame, i) => this.pictures.set(frame, pieces[i] ?? null));
    this.dropOldest();
    this.arrived();
    void this.load();
  }

  /** None if the server does not give them: a strip without pictures is no reason to complain. */
  private async fetchPieces(frames: readonly number[]): Promise<ImageBitmap[]> {
    try {
      return await smallPictures(this.recording, frames, this.height);
    } catch {
      return [];
    }
  }

  private dropOldest(): void {
    const wanted = new Set(this.wanted);
    for (const [frame, picture] of this.pictures) {
      if (this.pictures.size <= mostKept) return;
      if (wanted.has(frame)) continue;
      picture?.close();
      this.pictures.delete(frame);
    }
  }
}

/** One request, whose picture is cut into those of the frames. */
export async function smallPictures(
  recording: number,
  frames: readonly number[],
  height: number,
): Promise<ImageBitmap[]> {
  const all = await createImageBitmap(await getBlob(smallPath(recording, frames, height)));
  const width = Math.floor(all.width / frames.length);
  const cut = frames.map((_, i) => createImageBitmap(all, i * width, 0, width, all.height));
  const pieces = await Promise.all(cut);
  all.close();
  return pieces;
}

/** Fills the rectangle with the picture, whose edges are cut if the shapes differ. */
export function drawCovering(
  context: CanvasRenderingContext2D,
  picture: ImageBitmap,
  [x, y, width, height]: [number, number, number, number],
): void {
  const scale = Math.max(width / picture.width, height / picture.height);
  const [w, h] = [width / scale, height / scale];
  const left = (picture.width - w) / 2;
  const top = (picture.height - h) / 2;
  context.drawImage(picture, left, top, w, h, x, y, width, height);
}

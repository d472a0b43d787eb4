// Decoded pictures of a recording: loads those that are wanted, the most urgent first, and closes
// those that are not wanted any more.

import { getBlob, picturePath, Problem } from "./api";

export interface Picture {
  /** What there is to show of it. */
  bitmap?: ImageBitmap;
  /** Why that is nothing, or not all. */
  problem?: string;
}

/** Browsers open six connections to a server; the others are for events and small pictures. */
const connections = 3;
/** For decoded pictures, in bytes. */
const memory = 160e6;
const fewest = 6;
const most = 40;

export class Pictures {
  /** How many share memory and connections, itself included. */
  sharers = 1;
  private readonly entries = new Map<number, Picture>();
  private wanted: readonly number[] = [];
  private loading = 0;
  private closed = false;
  private room = fewest;

  constructor(
    readonly recording: number,
    private readonly arrived: () => void,
  ) {}

  /** How many pictures fit into the memory that is meant for them. */
  get capacity(): number {
    return this.room;
  }

  /** The picture, or why there is none; undefined while it is loading. */
  get(frame: number): Picture | undefined {
    const entry = this.entries.get(frame);
    return entry && isLoaded(entry) ? entry : undefined;
  }

  /** Of the frames that have arrived and fulfil the condition the one nearest to a frame. */
  nearest(to: number, allowed: (frame: number) => boolean): [number, ImageBitmap] | undefined {
    let found: [number, ImageBitmap] | undefined;
    for (const [frame, { bitmap }] of this.entries) {
      if (!bitmap || !allowed(frame)) continue;
      if (!found || Math.abs(frame - to) < Math.abs(found[0] - to)) found = [frame, bitmap];
    }
    return found;
  }

  /** Loads these frames, in this order; others may go. */
  want(frames: readonly number[]): void {
    this.wanted = frames;
    this.loadMore();
  }

  close(): void {
    this.closed = true;
    for (const entry of this.entries.values()) entry.bitmap?.close();
    this.entries.clear();
  }

  private loadMore(): void {
    const atOnce = Math.max(1, Math.floor(connections / this.sharers));
    for (const frame of this.wanted) {
      if (this.closed || this.loading >= atOnce) return;
      if (!this.entries.has(frame)) void this.load(frame);
    }
  }

  private async load(frame: number): Promise<void> {
    const entry: Picture = {};
    this.entries.set(frame, entry);
    ++this.loading;
    try {
      Object.assign(entry, await loaded(this.recording, frame));
    } catch (problem) {
      // A server that does not answer is asked again when somebody wants the picture again.
      if (problem instanceof Problem && problem.status === 0) return this.giveUp(frame);
      entry.problem = (problem as Error).message;
    }
    --this.loading;
    if (this.closed) return entry.bitmap?.close();
    if (entry.bitmap) this.room = roomFor(entry.bitmap, memory / this.sharers);
    this.dropUnwanted();
    this.arrived();
    this.loadMore();
  }

  private giveUp(frame: number): void {
    --this.loading;
    this.entries.delete(frame);
  }

  private dropUnwanted(): void {
    const wanted = new Set(this.wanted);
    for (const [frame, entry] of this.entries) {
      if (this.entries.size <= this.room) return;
      if (wanted.has(frame) || !isLoaded(entry)) continue;
      entry.bitmap?.close();
      this.entries.delete(frame);
    }
  }
}

function roomFor(bitmap: ImageBitmap, share: number): number {
  const fitting = Math.floor(share / (bitmap.width * bitmap.height * 4));
  return Math.min(most, Math.max(fewest, fitting));
}

function isLoaded({ bitmap, problem }: Picture): boolean {
  return bitmap !== undefined || problem !== undefined;
}

let firstWanted = true;

async function loaded(recording: number, frame: number): Promise<Picture> {
  const path = picturePath(recording, frame);
  const isPreloaded = firstWanted && recording === 0 && frame === 0;
  firstWanted = false;
  const bitmap = isPreloaded ? await preloaded(path) : null;
  if (bitmap) return { bitmap };
  const blob = await getBlob(path);
  try {
    return { bitmap: await createImageBitmap(blob) };
  } catch {
    return salvaged(blob, frame);
  }
}

/** What can be shown of a damaged picture. */
async function salvaged(blob: Blob, frame: number): Promise<Picture> {
  const image = new Image();
  const address = URL.createObjectURL(blob);
  try {
    await new Promise((resolve, reject) => {
      image.onload = resolve;
      image.onerror = reject;
      image.src = address;
    });
    const canvas = document.createElement("canvas");
    canvas.width = image.naturalWidth;
    canvas.height = image.naturalHeight;
    canvas.getContext("2d")!.drawImage(image, 0, 0);
    return { bitmap: await createImageBitmap(canvas), problem: `Frame ${frame} is damaged` };
  } catch {
    return { problem: `Frame ${frame} cannot be decoded` };
  } finally {
    URL.revokeObjectURL(address);
  }
}

/** The page preloads its first picture as an image, which fetch() would not find. */
async function preloaded(path: string): Promise<ImageBitmap | null> {
  const image = new Image();
  image.src = path;
  try {
    await image.decode();
    return await createImageBitmap(image);
  } catch {
    return null;
  }
}

// What buttons, keys, timeline, curves and map do.

import { zoomed } from "./range";
import type { Range } from "./range";
import type { Store } from "./store";

/** Sums of seconds miss a whole microsecond by less than this. */
const halfMicrosecond = 5e-7;

export const rates = [1 / 8, 1 / 4, 1 / 2, 1, 2, 4, 8];

function lastFrame(store: Store): number {
  return Math.max(0, (store.state.times?.count ?? store.recording?.frames ?? 1) - 1);
}

export function seek(store: Store, frame: number): void {
  const wanted = Number.isFinite(frame) ? Math.trunc(frame) : 0;
  const target = Math.min(Math.max(0, wanted), lastFrame(store));
  store.set({ frame: target, position: store.state.times?.seconds[target] ?? 0 });
}

/** The frame that is shown at a place of the axis. */
export function seekTo(store: Store, position: number): void {
  const times = store.state.times;
  if (times) seek(store, times.frameAt(position));
}

/** Stands still on the frame that is shown. */
export function pause(store: Store): void {
  if (!store.state.playing) return;
  store.set({ playing: false });
  seek(store, store.state.frame);
}

export function step(store: Store, frames: number): void {
  pause(store);
  seek(store, store.state.frame + frames);
}

/** So many seconds of the recording, but at least a frame. */
export function stepSeconds(store: Store, seconds: number): void {
  const { times, frame } = store.state;
  if (!times) return;
  pause(store);
  const target = times.frameAt((times.seconds[frame] ?? 0) + seconds + halfMicrosecond);
  seek(store, seconds > 0 ? Math.max(target, frame + 1) : Math.min(target, frame - 1));
}

export function seekFirst(store: Store): void {
  seek(store, 0);
}

export function seekLast(store: Store): void {
  seek(store, lastFrame(store));
}

export function togglePlaying(store: Store): void {
  const { playing, backwards, frame, times } = store.state;
  if (playing) return pause(store);
  if (!times || times.count < 2) return;
  if (!backwards && frame >= lastFrame(store)) seekFirst(store);
  if (backwards && frame === 0) seekLast(store);
  store.set({ playing: true });
}

export function toggleDirection(store: Store): void {
  store.set({ backwards: !store.state.backwards });
}

export function changeRate(store: Store, by: 1 | -1): void {
  const next = rates[rates.indexOf(store.state.rate) + by];
  if (next) store.set({ rate: next });
}

function hasFrames(store: Store): boolean {
  return (store.recording?.frames ?? 0) > 0;
}

/** The scene begins with the frame that is shown. */
export function markStart(store: Store): void {
  const { frame, to } = store.state;
  if (!hasFrames(store)) return;
  store.set({ from: frame, to: to !== null && to > frame ? to : null });
}

/** The scene ends with the frame that is shown, which belongs to it. */
export function markEnd(store: Store): void {
  const { frame, from } = store.state;
  if (!hasFrames(store)) return;
  store.set({ to: frame + 1, from: from !== null && from <= frame ? from : null });
}

export function clearMarks(store: Store): void {
  store.set({ from: null, to: null });
}

/** What timeline and curves show. */
export function visibleRange(store: Store): Range {
  return store.state.range ?? { from: 0, to: store.state.times?.end ?? 1 };
}

/** Larger or smaller around a place, or around the frame that is shown. */
export function zoom(store: Store, factor: number, around?: number): void {
  const { times, position } = store.state;
  if (!times) return;
  const range = visibleRange(store);
  const inside = position >= range.from && position <= range.to;
  const place = around ?? (inside ? position : (range.from + range.to) / 2);
  store.set({ range: zoomed(range, factor, place, times.end) });
}

export function showAll(store: Store): void {
  store.set({ range: null });
}

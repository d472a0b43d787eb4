// The state of the page, and who wants to hear of its changes.

import type { Finding } from "./api";
import type { Range } from "./range";
import type { Recording } from "./recording";
import type { Times } from "./times";

export interface State {
  /** The recordings, in the order of the server; empty until it has told them. */
  recordings: readonly Recording[];
  /** The number of the one that is shown. */
  recording: number;
  /** Its times; null until they are loaded. */
  times: Times | null;
  frame: number;
  /** Seconds on the axis of the times: that of the frame, or between it and the next in playing. */
  position: number;
  /** The marked scene: its first frame, and the one behind its last. */
  from: number | null;
  to: number | null;
  playing: boolean;
  rate: number;
  backwards: boolean;
  /** The part of the axis that timeline and curves show; null is all of it. */
  range: Range | null;
  /** The numbers of the recordings that are shown beside the first. */
  beside: readonly number[];
  /** The names of the chosen curves. */
  curves: readonly string[];
  findings: readonly Finding[];
}

export class Store {
  private current: State = {
    recordings: [],
    recording: 0,
    times: null,
    frame: 0,
    position: 0,
    from: null,
    to: null,
    playing: false,
    rate: 1,
    backwards: false,
    range: null,
    beside: [],
    curves: [],
    findings: [],
  };
  private listeners: { keys: readonly (keyof State)[]; changed: () => void }[] = [];

  get state(): Readonly<State> {
    return this.current;
  }

  /** The recording that is shown; undefined until the server has told it. */
  get recording(): Recording | undefined {
    return this.current.recordings[this.current.recording];
  }

  set(changes: Partial<State>): void {
    const before = this.current;
    const now = { ...before, ...changes };
    const changed = new Set(
      (Object.keys(changes) as (keyof State)[]).filter((key) => before[key] !== now[key]),
    );
    if (changed.size === 0) return;
    this.current = now;
    for (const listener of this.listeners) {
      if (listener.keys.some((key) => changed.has(key))) listener.changed();
    }
  }

  /** Calls back after a change of one of these. */
  on(keys: readonly (keyof State)[], changed: () => void): void {
    this.listeners.push({ keys, changed });
  }
}

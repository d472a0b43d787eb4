// Plays at the recorded times: each screen refresh shows the frame that is due by the clock.

import { pause, seek } from "./actions";
import type { Stage } from "./stage";
import type { Store } from "./store";
import { howLong } from "./text";
import type { Times } from "./times";

/** Without a screen refresh for so long (ms), the clock stood still: the page was hidden. */
const longestPause = 1000;
/** Longer (in seconds of waiting) than this nobody wants to look at a gap. */
const longestWait = 2;

export class Player {
  private request = 0;
  private last = 0;
  /** The clock, in seconds on the axis. */
  private clock = 0;
  /** What the store was told of it; a seek makes it another one. */
  private told = 0;

  constructor(
    private readonly store: Store,
    private readonly stage: Stage,
    private readonly tell: (text: string) => void,
  ) {
    store.on(["playing"], () => {
      if (store.state.playing) this.start();
    });
  }

  private start(): void {
    cancelAnimationFrame(this.request);
    this.last = performance.now();
    this.clock = this.told = this.store.state.position;
    this.request = requestAnimationFrame(this.tick);
  }

  private readonly tick = (now: number): void => {
    const { playing, times } = this.store.state;
    if (!playing) return;
    const passed = Math.max(0, now - this.last);
    this.last = Math.max(now, this.last);
    if (times && passed < longestPause) this.advance(times, passed / 1000);
    this.request = requestAnimationFrame(this.tick);
  };

  private advance(times: Times, passed: number): void {
    const { position, rate, backwards } = this.store.state;
    if (position !== this.told) this.clock = position;
    const next = this.clock + passed * rate * (backwards ? -1 : 1);
    const last = times.count - 1;
    if (backwards ? next <= 0 : next >= times.seconds[last]) {
      seek(this.store, backwards ? 0 : last);
      pause(this.store);
      return;
    }
    this.clock = this.beyondGap(times, next);
    this.show(this.onGrid(times.frameAt(this.clock)));
  }

  /** The page is busy enough with new frames; pictures beside this one have their own. */
  private show(frame: number): void {
    const { state } = this.store;
    if (frame === state.frame && state.beside.length === 0) return;
    this.told = this.clock;
    this.store.set({ frame, position: this.clock });
  }

  /** Of the frames that the stride shows the one that is due. */
  private onGrid(frame: number): number {
    const every = Math.abs(this.stage.stride()) || 1;
    return Math.floor(frame / every) * every;
  }

  /** The other end of the gap that this place is in, if it takes too long to wait for it. */
  private beyondGap(times: Times, position: number): number {
    const { rate, backwards, beside } = this.store.state;
    const frame = times.frameAt(position);
    const begin = times.seconds[frame] + times.usual;
    const end = times.seconds[frame + 1] ?? begin;
    if (beside.length || position <= begin || end - begin <= longestWait * rate) return position;
    this.tell(`A gap of ${howLong(end - begin)} was skipped`);
    return backwards ? begin : end;
  }
}

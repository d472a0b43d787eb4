// The capture times of a recording as an axis that only ascends. Recorded clocks do not: they are
// set, run backwards, or stand.

export interface Gap {
  /** The frame behind the gap. */
  frame: number;
  /** From the frame before it, as recorded; negative if the clock was set back. */
  seconds: number;
}

/** Less than this backwards is disorder, more a clock that was set. */
const setBack = 1;
/** No drive pauses so long; a longer step ahead is a clock that was set. */
const setAhead = 86400;
/** As `verify` has it: so many usual distances are a gap. */
const usualDistances = 3;
const frameTimeIfUnknown = 1 / 30;

export class Times {
  /** Of each frame: seconds since frame 0, never descending, without the jumps of a set clock. */
  readonly seconds: Float64Array;
  /** The usual distance of two frames, in seconds. */
  readonly usual: number;
  readonly gaps: readonly Gap[];
  /** Highest capture time so far since the clock was set, to find frames by time. */
  private readonly highest: Float64Array;
  /** The first frames after the clock was set, and frame 0. */
  private readonly starts: number[] = [];

  /** @param captured capture times in microseconds since 1970 */
  constructor(readonly captured: readonly number[]) {
    this.usual = usualStep(captured);
    this.seconds = new Float64Array(captured.length);
    this.highest = new Float64Array(captured.length);
    this.gaps = this.layOut();
  }

  get count(): number {
    return this.captured.length;
  }

  /** Where the last frame ends. */
  get end(): number {
    return this.count ? this.seconds[this.count - 1] + this.usual : 0;
  }

  private layOut(): Gap[] {
    const { captured, seconds, highest, starts, usual } = this;
    const gaps: Gap[] = [];
    let shift = 0;
    let ascended = 0;
    for (let i = 0; i < captured.length; ++i) {
      const step = i ? (captured[i] - captured[i - 1]) / 1e6 : 0;
      const wasSet = i > 0 && (step < -setBack || step > setAhead);
      if (wasSet) shift += usual - step;
      const isStart = wasSet || i === 0;
      if (isStart) starts.push(i);
      highest[i] = isStart ? captured[i] : Math.max(highest[i - 1], captured[i]);
      if (wasSet || step > usualDistances * usual) gaps.push({ frame: i, seconds: step });
      const place = (captured[i] - captured[0]) / 1e6 + shift;
      if (i === 0 || place <= seconds[ascended]) continue;
      this.spread(ascended, i, (place - seconds[ascended]) / (i - ascended));
      ascended = i;
    }
    this.spread(ascended, captured.length - 1, usual);
    return gaps;
  }

  /** Frames whose times do not ascend have a place each, too, or nobody could go to them. */
  private spread(from: number, to: number, step: number): void {
    for (let i = from + 1; i <= to; ++i) this.seconds[i] = this.seconds[from] + (i - from) * step;
  }

  /** The last frame at or before this place of the axis; 0 before the first. */
  frameAt(position: number): number {
    return Math.max(0, lastAtMost(this.seconds, position));
  }

  /** Capture time at a place of the axis. */
  capturedAt(position: number): number {
    const frame = this.frameAt(position);
    return this.captured[frame] + (position - this.seconds[frame]) * 1e6;
  }

  /** The frame that was the newest at this time; null in gaps and outside of the recording. */
  frameCaptured(us: number): number | null {
    let found: number | null = null;
    let least = usualDistances * this.usual * 1e6;
    this.starts.forEach((start, i) => {
      const own = this.highest.subarray(start, this.starts[i + 1] ?? this.count);
      const frame = start + lastAtMost(own, us);
      const age = us - this.highest[frame];
      if (frame < start || age > least) return;
      found = frame;
      least = age;
    });
    return found;
  }
}

function usualStep(captured: readonly number[]): number {
  const steps: number[] = [];
  for (let i = 1; i < captured.length; ++i) {
    const step = (captured[i] - captured[i - 1]) / 1e6;
    if (step > 0 && step <= setAhead) steps.push(step);
  }
  if (steps.length === 0) return frameTimeIfUnknown;
  return Float64Array.from(steps).sort()[Math.floor(steps.length / 2)];
}

/** The last index whose value is at most the limit, of values that ascend; -1 if none is. */
export function lastAtMost(values: ArrayLike<number>, limit: number): number {
  let low = 0;
  let high = values.length;
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (values[middle] <= limit) low = middle + 1;
    else high = middle;
  }
  return low - 1;
}

// The pictures: the recording that is shown, and those beside it at the same time.

import { byId, setText } from "./dom";
import type { Recording } from "./recording";
import type { Store } from "./store";
import { View } from "./view";
import type { Stride } from "./view";

/** Faster than recorded, more pictures a second than this are not worth their decoding. */
const picturesPerSecond = 40;

export class Stage {
  private views: View[] = [];
  private readonly element = byId("stage");

  constructor(
    private readonly store: Store,
    private readonly tell: (text: string) => void,
  ) {
    store.on(["recordings", "recording", "beside"], () => this.arrange());
    store.on(["frame", "position", "times"], () => this.show());
    store.on(["playing", "rate", "backwards"], () => this.show());
    this.arrange();
  }

  firstShown(): Promise<void> {
    return this.views[0].firstShown;
  }

  /** Every how many frames a picture is shown. */
  stride(): Stride {
    const { playing, rate, backwards, times } = this.store.state;
    if (!playing || !times) return 0;
    const skipping = rate > 1 ? Math.floor(rate / times.usual / picturesPerSecond) : 1;
    return Math.max(1, skipping) * (backwards ? -1 : 1);
  }

  private get numbers(): number[] {
    const { recording, beside } = this.store.state;
    return [recording, ...beside];
  }

  /** Makes the views anew that are not there yet; the others keep their pictures. */
  private arrange(): void {
    const numbers = this.numbers;
    for (const view of this.views) {
      if (!numbers.includes(view.pictures.recording)) view.close();
    }
    this.views = numbers.map((number) => {
      const view = this.views.find((old) => old.pictures.recording === number);
      return view ?? new View(number, () => this.framesOf(number));
    });
    for (const view of this.views) view.pictures.sharers = numbers.length;
    this.element.replaceChildren(...this.views.map((view) => view.element));
    this.element.classList.toggle("several", numbers.length > 1);
    for (const view of this.views) this.describe(view);
    this.loadTimes();
    this.show();
  }

  /** A picture beside the first has a place in time only with its own times. */
  private loadTimes(): void {
    const { beside, recordings } = this.store.state;
    for (const number of beside) {
      const recording = recordings[number];
      if (!recording || recording.times) continue;
      recording.loadTimes().then(
        () => this.show(),
        (problem: Error) => this.tell(`${recording.name}: ${problem.message}`),
      );
    }
  }

  private framesOf(number: number): number {
    return this.store.state.recordings[number]?.frames ?? 0;
  }

  private describe(view: View): void {
    const { recordings, recording: first } = this.store.state;
    const recording = recordings[view.pictures.recording];
    view.setFirst(view.pictures.recording === first);
    if (!recording) return;
    setText(view.caption, recording.name);
    view.expectShape(recording.info?.width ?? 0, recording.info?.height ?? 0);
  }

  private show(): void {
    const stride = this.stride();
    for (const view of this.views) {
      if (view.pictures.recording === this.store.state.recording) this.showFirst(view, stride);
      else this.showBeside(view, stride);
    }
  }

  private showFirst(view: View, stride: Stride): void {
    const { recording, state } = this.store;
    if (recording?.problem) view.show(null, 0, `${recording.name}: ${recording.problem}`);
    else if (recording?.frames === 0) view.show(null, 0, "This recording has no frames");
    else view.show(state.frame, stride);
  }

  private showBeside(view: View, stride: Stride): void {
    const { times, position, recordings } = this.store.state;
    const recording: Recording | undefined = recordings[view.pictures.recording];
    const others = recording?.times;
    if (!times || !others || times.count === 0) return;
    const frame = others.frameCaptured(times.capturedAt(position));
    view.show(frame, stride, "Nothing was captured at this time");
  }
}

// The buttons below the picture, and where in the recording it is.

import * as actions from "./actions";
import { byId, make, setText } from "./dom";
import type { Store } from "./store";
import { sinceStart, utc } from "./text";

export class Transport {
  private readonly play = byId<HTMLButtonElement>("play");
  private readonly backwards = byId<HTMLButtonElement>("backwards");
  private readonly rate = byId<HTMLSelectElement>("rate");
  private readonly frame = byId<HTMLInputElement>("frame");

  constructor(private readonly store: Store) {
    this.listRates();
    const click = (id: string, act: () => void) => byId(id).addEventListener("click", act);
    click("first", () => actions.seekFirst(store));
    click("second-back", () => actions.stepSeconds(store, -1));
    click("frame-back", () => actions.step(store, -1));
    click("play", () => actions.togglePlaying(store));
    click("frame-on", () => actions.step(store, 1));
    click("second-on", () => actions.stepSeconds(store, 1));
    click("last", () => actions.seekLast(store));
    click("backwards", () => actions.toggleDirection(store));
    this.rate.addEventListener("change", () => {
      store.set({ rate: Number(this.rate.value) });
      this.rate.blur();
    });
    this.frame.addEventListener("change", () => this.goTo());
    store.on(["playing", "rate", "backwards"], () => this.showPlaying());
    store.on(["frame", "times", "recordings", "recording"], () => this.showPlace());
    this.showPlaying();
  }

  private listRates(): void {
    const options = actions.rates.map((rate) => {
      const text = rate < 1 ? `1/${1 / rate}` : String(rate);
      return make("option", { value: String(rate), text: `${text} ×` });
    });
    this.rate.replaceChildren(...options);
  }

  private goTo(): void {
    const frame = this.frame.valueAsNumber;
    if (Number.isFinite(frame)) actions.seek(this.store, frame);
    this.frame.value = String(this.store.state.frame);
    this.frame.blur();  // the arrow keys are the picture's again
  }

  private showPlaying(): void {
    const { playing, rate, backwards } = this.store.state;
    this.play.setAttribute("aria-label", playing ? "Pause" : "Play");
    this.play.classList.toggle("playing", playing);
    this.rate.value = String(rate);
    this.backwards.setAttribute("aria-pressed", String(backwards));
  }

  private showPlace(): void {
    const { times, frame } = this.store.state;
    const count = this.store.recording?.frames ?? 0;
    if (document.activeElement !== this.frame) this.frame.value = String(frame);
    this.frame.max = String(Math.max(0, count - 1));
    setText(byId("frame-count"), count ? `of 0 to ${count - 1}` : "no frames");
    this.play.disabled = times === null || times.count < 2;
    const isKnown = times !== null && frame < times.count;
    setText(byId("offset"), isKnown ? sinceStart(times.seconds[frame]) : "");
    setText(byId("captured"), isKnown ? utc(times.captured[frame]) : "");
  }
}

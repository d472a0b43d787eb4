// Checks the recording with one click, and lists what is wrong with it.

import { pause, seek } from "./actions";
import type { Finding, Verified } from "./api";
import { byId, make, setText } from "./dom";
import type { Recording } from "./recording";
import type { Store } from "./store";
import { plural } from "./text";

const mostListed = 200;

export class Findings {
  private readonly button = byId<HTMLButtonElement>("verify");
  private readonly summary = byId("verify-summary");
  private readonly list = byId("findings");
  private readonly running = new Set<Recording>();

  constructor(private readonly store: Store) {
    this.button.addEventListener("click", () => void this.verify());
    store.on(["recordings", "recording"], () => this.show());
  }

  private async verify(): Promise<void> {
    const { recording } = this.store;
    if (!recording?.info || this.running.has(recording)) return;
    this.running.add(recording);
    this.show();
    const problem = await recording.verify().then(
      () => "",
      (error: Error) => `It could not be verified: ${error.message}`,
    );
    this.running.delete(recording);
    if (recording !== this.store.recording) return;
    this.show();
    if (problem) setText(this.summary, problem);
  }

  private show(): void {
    const { recording } = this.store;
    const isRunning = recording !== undefined && this.running.has(recording);
    const verified = recording?.verified ?? null;
    this.button.disabled = !recording?.info || isRunning;
    this.button.setAttribute("aria-busy", String(isRunning));
    setText(this.summary, isRunning ? "Verifying…" : verified ? summaryOf(verified) : "");
    const findings = verified?.findings ?? [];
    const items = findings.slice(0, mostListed).map((finding) => this.item(finding));
    const rest = findings.length - mostListed;
    if (rest > 0) items.push(make("li", { text: `and ${plural(rest, "more finding")}` }));
    this.list.replaceChildren(...items);
    this.store.set({ findings });
  }

  private item(finding: Finding): HTMLLIElement {
    const { severity, frame, text } = finding;
    const mark = make("strong", { class: severity, text: severity });
    if (frame === undefined) return make("li", {}, mark, ` ${text}`);
    const button = make("button", { type: "button", class: "link", text: framesOf(finding) });
    button.addEventListener("click", () => {
      pause(this.store);
      seek(this.store, frame);
    });
    return make("li", {}, mark, " ", button, ` ${text}`);
  }
}

function framesOf({ frame, last_frame }: Finding): string {
  return last_frame === undefined ? `frame ${frame}` : `frames ${frame} to ${last_frame}`;
}

function summaryOf({ frames, errors, warnings }: Verified): string {
  return `${plural(frames, "frame")}, ${plural(errors, "error")}, ${plural(warnings, "warning")}`;
}

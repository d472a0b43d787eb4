// The address bar: #r=0&f=123&a=100&b=200&with=1,2 leads to the same picture and scene.

import { seek } from "./actions";
import type { Recording } from "./recording";
import type { Store } from "./store";

export interface Address {
  recording: number;
  frame: number;
  from: number | null;
  to: number | null;
  beside: readonly number[];
}

function whole(text: string | null): number | null {
  return text !== null && /^\d{1,10}$/.test(text) ? Number(text) : null;
}

export function parseAddress(hash: string): Address {
  const fields = new URLSearchParams(hash.replace(/^#/, ""));
  const from = whole(fields.get("a"));
  const to = whole(fields.get("b"));
  const ordered = from === null || to === null || from < to;
  const beside = (fields.get("with") ?? "").split(",").map(whole);
  return {
    recording: whole(fields.get("r")) ?? 0,
    frame: whole(fields.get("f")) ?? 0,
    from: ordered ? from : null,
    to: ordered ? to : null,
    beside: [...new Set(beside)].filter((number): number is number => number !== null),
  };
}

export function formatAddress(address: Address): string {
  const { recording, frame, from, to, beside } = address;
  const marks = (from === null ? "" : `&a=${from}`) + (to === null ? "" : `&b=${to}`);
  return `#r=${recording}&f=${frame}${marks}${beside.length ? `&with=${beside.join(",")}` : ""}`;
}

/** The address within what the recordings have. */
export function bounded(address: Address, recordings: readonly Recording[]): Address {
  const isReadable = (number: number) => recordings[number]?.info !== undefined;
  const readable = Math.max(0, recordings.findIndex(({ number }) => isReadable(number)));
  const shown = isReadable(address.recording) ? address.recording : readable;
  const frames = recordings[shown]?.frames ?? 0;
  const within = (mark: number | null, first: number, last: number) =>
    mark !== null && mark >= first && mark <= last ? mark : null;
  return {
    recording: shown,
    frame: Math.max(0, Math.min(address.frame, frames - 1)),
    from: within(address.from, 0, frames - 1),
    to: within(address.to, 1, frames),
    beside: address.beside.filter((number) => number !== shown && isReadable(number)),
  };
}

/** Browsers refuse an address that changes too often. */
const quietTime = 250;

/** Keeps the address bar up to date, and follows it when somebody changes it. */
export function keepAddress(store: Store): void {
  let timer = 0;
  const write = () => {
    if (store.state.playing) return;
    const address = formatAddress(store.state);
    if (address !== location.hash) history.replaceState(null, "", address);
  };
  store.on(["recording", "frame", "from", "to", "beside", "playing"], () => {
    clearTimeout(timer);
    timer = window.setTimeout(write, quietTime);
  });
  addEventListener("hashchange", () => {
    const { recordings, recording, range } = store.state;
    const { frame, ...rest } = bounded(parseAddress(location.hash), recordings);
    const times = recordings[rest.recording]?.times ?? null;
    const isSame = rest.recording === recording;
    store.set({ ...rest, times, range: isSame ? range : null, playing: false });
    seek(store, frame);
  });
}

// Puts the page together, around the first picture.

import { address, notices, stage, store, tell } from "./first";
import { showAll, zoom } from "./actions";
import { bounded, keepAddress } from "./address";
import { getRecordings } from "./api";
import { Curves } from "./curves";
import { Details } from "./details";
import { byId, setText } from "./dom";
import { Findings } from "./findings";
import { listenToKeys } from "./keys";
import { List } from "./list";
import { TrackMap } from "./map";
import { keepAlive } from "./notices";
import { Player } from "./player";
import { Preview } from "./preview";
import { Recording } from "./recording";
import { Scene } from "./scene";
import { Timeline } from "./timeline";
import { Transport } from "./transport";

/** The times of the recording that is shown; all that goes by time waits for them. */
async function loadTimes(): Promise<void> {
  const { recording } = store;
  if (!recording?.info) return;
  try {
    const times = await recording.loadTimes();
    if (recording !== store.recording) return;
    const frame = Math.max(0, Math.min(store.state.frame, times.count - 1));
    store.set({ times, frame, position: times.seconds[frame] ?? 0 });
  } catch (problem) {
    notices.show(`${recording.name} cannot be shown: ${(problem as Error).message}`, true);
  }
}

/** The recording that was clicked last; its times may take a while. */
let selected = 0;

/** Shows another recording; at the same time, if it was recorded then. */
async function select(number: number): Promise<void> {
  selected = number;
  const { recordings, times, position, recording: before, beside } = store.state;
  const recording = recordings[number];
  if (number === before || !recording?.info) return;
  const us = times?.count ? times.capturedAt(position) : null;
  const wasBeside = beside.includes(number);
  const others = beside.map((one) => (one === number ? before : one));
  const own = await recording.loadTimes().catch(() => null);
  if (selected !== number) return;
  const frame = (us !== null && own?.frameCaptured(us)) || 0;
  store.set({
    recording: number,
    times: own,
    frame,
    position: own?.seconds[frame] ?? 0,
    from: null,
    to: null,
    range: null,
    playing: false,
    beside: wasBeside ? others : beside,
  });
}

function showTitle(): void {
  const name = store.recording?.name ?? "Recordings";
  setText(byId("title"), name);
  document.title = name;
}

export async function start(): Promise<void> {
  keepAlive(notices);
  const { tiles, recordings } = await getRecordings();
  new Player(store, stage, tell);
  const preview = new Preview();
  new Timeline(store, preview);
  new Transport(store);
  new Curves(store, preview, tell);
  new TrackMap(store, tiles);
  new Details(store);
  new Findings(store);
  new Scene(store, notices);
  new List(store, (number) => void select(number));
  listenToKeys(store);
  listenToZoomButtons();
  store.on(["recordings", "recording"], showTitle);
  store.on(["recordings", "recording"], () => void loadTimes());
  const all = recordings.map((listed, number) => new Recording(number, listed));
  store.set({ recordings: all, ...bounded(address, all) });
  keepAddress(store);
}

function listenToZoomButtons(): void {
  byId("zoom-in").addEventListener("click", () => zoom(store, 0.5));
  byId("zoom-out").addEventListener("click", () => zoom(store, 2));
  byId("zoom-all").addEventListener("click", () => showAll(store));
}

// What the recording says of itself, and of the frame that is shown.

import type { Column, Info } from "./api";
import { atMostEvery, byId, make, setText } from "./dom";
import type { Store } from "./store";
import { bytes, decimal, howLong, utc } from "./text";

/** While a recording plays, nobody reads texts that change more often (ms). */
const readable = 200;

type Row = [string, string];

export class Details {
  private arrived: Column = [];
  private sizes: Column = [];
  private readonly showFrame = atMostEvery(readable, () => fill("frame-facts", this.frameRows()));

  constructor(private readonly store: Store) {
    store.on(["recordings", "recording"], () => this.showRecording());
    store.on(["times"], () => void this.load());
    store.on(["frame", "times"], this.showFrame);
  }

  private async load(): Promise<void> {
    const { recording } = this.store;
    this.arrived = this.sizes = [];
    if (!recording || !this.store.state.times) return;
    const names = ["arrived_time_us", "size"];
    const columns = await recording.columnsOf(names).catch((): Column[] => [[], []]);
    if (recording !== this.store.recording) return;
    [this.arrived, this.sizes] = columns;
    this.showFrame();
  }

  private showRecording(): void {
    const info = this.store.recording?.info;
    fill("recording-facts", info ? recordingRows(info) : []);
  }

  private frameRows(): Row[] {
    const { times, frame } = this.store.state;
    if (!times || frame >= times.count) return [];
    const rows: Row[] = [["Captured", utc(times.captured[frame])]];
    const arrived = this.arrived[frame] ?? null;
    const size = this.sizes[frame] ?? null;
    if (arrived !== null) rows.push(["Arrived", utc(arrived)]);
    if (frame > 0) rows.push(["Frame before", frameBefore(times.captured, frame)]);
    if (size !== null) rows.push(["Size", bytes(size)]);
    return rows;
  }
}

function frameBefore(captured: readonly number[], frame: number): string {
  const seconds = (captured[frame] - captured[frame - 1]) / 1e6;
  if (seconds === 0) return "at the same time";
  const size = Math.abs(seconds);
  const text = size < 1 ? `${decimal(size * 1000, 3)} ms` : howLong(size);
  return seconds > 0 ? `${text} earlier` : `${text} later`;
}

function recordingRows(info: Info): Row[] {
  const rows: Row[] = [["File", info.file]];
  const add = (name: string, value: string | undefined) => value && rows.push([name, value]);
  add("Container", info.version ? `${info.container}, version ${info.version}` : info.container);
  add("Frames", framesText(info));
  if (info.width) {
    const facts = [`${info.width} × ${info.height}`, info.frame_codec, info.frame_format];
    add("Picture", facts.filter(Boolean).join(", "));
  }
  if (info.undistorted !== undefined) add("Undistorted", info.undistorted ? "yes" : "no");
  add("Device", info.device_id);
  if (info.start_time_us !== undefined) add("Start", utc(info.start_time_us));
  add("Duration", durationText(info));
  add("Size", bytes(info.file_bytes));
  if (info.start_position) {
    const { lng_deg, lat_deg, alt_m } = info.start_position;
    const place = `${lng_deg.toFixed(9)} E, ${lat_deg.toFixed(9)} N`;
    add("Start position", `${place}, ${alt_m.toFixed(2)} m`);
  }
  add("Camera params", jsonText(info.camera_params));
  add("Extended info", jsonText(info.extended_info));
  return rows;
}

function framesText({ frames_count, frames_max }: Info): string {
  const room = frames_max === undefined ? "" : ` (room for ${frames_max})`;
  return `${frames_count}${room}`;
}

function durationText({ duration_us, frames_count }: Info): string {
  const seconds = duration_us / 1e6;
  const rate = (frames_count - 1) / seconds;
  const text = `${seconds.toFixed(6)} s`;
  return Number.isFinite(rate) && rate > 0 ? `${text} (${rate.toFixed(2)} frames/s)` : text;
}

function jsonText(value: unknown): string | undefined {
  const text = JSON.stringify(value ?? {});
  return text === "{}" ? undefined : text;
}

/** Only the texts change while a recording plays. */
function fill(id: string, rows: readonly Row[]): void {
  const list = byId(id);
  const names = [...list.querySelectorAll("dt")].map((name) => name.textContent);
  const isSameShape = names.length === rows.length && rows.every(([name], i) => names[i] === name);
  if (isSameShape) {
    list.querySelectorAll("dd").forEach((value, i) => setText(value, rows[i][1]));
    return;
  }
  const items = rows.map(([name, text]) => [make("dt", { text: name }), make("dd", { text })]);
  list.replaceChildren(...items.flat());
}

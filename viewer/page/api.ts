// What the server gives, by paths relative to the page.

export interface Info {
  file: string;
  container: string;
  version?: string;
  frames_count: number;
  frames_max?: number;
  width?: number;
  height?: number;
  frame_format?: string;
  frame_codec?: string;
  undistorted?: boolean;
  device_id?: string;
  start_time_us?: number;
  duration_us: number;
  camera_params?: unknown;
  extended_info?: unknown;
  file_bytes: number;
  start_position?: { lng_deg: number; lat_deg: number; alt_m: number };
}

export interface Listed {
  name: string;
  revision?: string;
  info?: Info;
  problem?: string;
}

export interface Recordings {
  tiles: string | null;
  recordings: Listed[];
}

export interface Finding {
  severity: "error" | "warning";
  frame?: number;
  last_frame?: number;
  offset?: number;
  text: string;
}

export interface Verified {
  frames: number;
  errors: number;
  warnings: number;
  findings: Finding[];
}

export type Column = (number | null)[];

/** What the server said is wrong, or that it did not answer (status 0). */
export class Problem extends Error {
  constructor(
    readonly status: number,
    text: string,
  ) {
    super(text);
  }
}

type GoneListener = (text: string) => void;
let tellGone: GoneListener = () => undefined;

/** Calls back when a recording was replaced or cut short while it was shown. */
export function onGone(listener: GoneListener): void {
  tellGone = listener;
}

async function problemOf(response: Response): Promise<Problem> {
  const body: { problem?: unknown } = await response.json().catch(() => ({}));
  const text =
    typeof body.problem === "string" ? body.problem : `the server answered ${response.status}`;
  if (response.status === 410) tellGone(text);
  return new Problem(response.status, text);
}

async function get(path: string): Promise<Response> {
  const response = await fetch(path).catch(() => {
    throw new Problem(0, "the server does not answer");
  });
  if (!response.ok) throw await problemOf(response);
  return response;
}

async function getJson<T>(path: string): Promise<T> {
  return (await get(path)).json() as Promise<T>;
}

export async function getBlob(path: string): Promise<Blob> {
  return (await get(path)).blob();
}

/** Of the files that the list was about: the server is not to answer for later ones. */
let revisions: (string | undefined)[] = [];

function address(recording: number, what: string, ...parameters: string[]): string {
  const revision = revisions[recording];
  if (revision !== undefined) parameters.push(`revision=${revision}`);
  return `${recording}/${what}` + (parameters.length ? `?${parameters.join("&")}` : "");
}

export async function getRecordings(): Promise<Recordings> {
  const listed = await getJson<Recordings>("recordings");
  revisions = listed.recordings.map(({ revision }) => revision);
  return listed;
}

export async function getColumnNames(recording: number): Promise<string[]> {
  return (await getJson<{ names: string[] }>(address(recording, "columns"))).names;
}

export async function getColumns(
  recording: number,
  names: readonly string[],
): Promise<Record<string, Column>> {
  const list = names.map(encodeURIComponent).join(",");
  const answer = await getJson<{ columns: Record<string, Column> }>(
    address(recording, "columns", `names=${list}`),
  );
  return answer.columns;
}

export function getVerified(recording: number): Promise<Verified> {
  return getJson(address(recording, "verify"));
}

export const picturePath = (recording: number, frame: number) =>
  address(recording, `frames/${frame}.jpg`);

/** The same to be saved to a file. */
export const savedPath = (recording: number, frame: number, kind: "jpg" | "png") =>
  address(recording, `frames/${frame}.${kind}`, "save=1");

export const smallPath = (recording: number, frames: readonly number[], height: number) =>
  address(recording, "small", `frames=${frames.join(",")}`, `height=${height}`);

export const scenePath = (recording: number, from: number, to: number) =>
  address(recording, "scene", `range=${from}:${to}`);

export const tablePath = (recording: number, from: number, to: number) =>
  address(recording, "table", `range=${from}:${to}`);

// The marked scene: its commands to copy, and what can be downloaded.

import { clearMarks, markEnd, markStart } from "./actions";
import { savedPath, scenePath, tablePath } from "./api";
import { byId, setText } from "./dom";
import type { Notices } from "./notices";
import type { Store } from "./store";
import { howLong, plural, shellPath } from "./text";

export interface SceneCommands {
  cut: string;
  extract: string;
}

/** The commands that take frames from to to-1 out of the recording. */
export function sceneCommands(file: string, from: number, to: number): SceneCommands {
  const { stem, extension } = nameParts(file);
  const scene = `${stem}-${from}-${to}`;
  const input = shellPath(file);
  return {
    cut: `velmar-video cut ${input} ${shellPath(scene + extension)} --range ${from}:${to}`,
    extract: `velmar-video extract ${input} --output ${shellPath(scene)} --range ${from}:${to}`,
  };
}

/** Bytes that are no UTF-8 have been replaced. */
function isWritable(file: string): boolean {
  return !file.includes("\ufffd");
}

function nameParts(file: string): { stem: string; extension: string } {
  const name = file.slice(file.lastIndexOf("/") + 1);
  const dot = name.lastIndexOf(".");
  if (dot <= 0) return { stem: name, extension: "" };
  return { stem: name.slice(0, dot), extension: name.slice(dot) };
}

export class Scene {
  constructor(
    private readonly store: Store,
    notices: Notices,
  ) {
    byId("mark-start").addEventListener("click", () => markStart(store));
    byId("mark-end").addEventListener("click", () => markEnd(store));
    byId("clear-marks").addEventListener("click", () => clearMarks(store));
    for (const id of ["cut", "extract"]) {
      byId(`copy-${id}`).addEventListener("click", () => void this.copy(id));
    }
    byId("download").addEventListener("load", () => {
      const words = wordsOfDownload();
      if (words) notices.show(words);
    });
    store.on(["recordings", "recording", "from", "to", "times"], () => this.showScene());
    store.on(["recordings", "recording", "frame"], () => this.showFrame());
  }

  private showScene(): void {
    const { from, to, times } = this.store.state;
    const { recording } = this.store;
    const isWhole = from !== null && to !== null && recording?.info !== undefined;
    byId("clear-marks").hidden = from === null && to === null;
    byId("scene-commands").hidden = !isWhole;
    if (!isWhole) {
      const missing = from !== null ? "Mark its last frame, too." : "Mark its first frame, too.";
      const none = "No scene is marked. Mark its first and its last frame.";
      return setText(byId("scene-text"), from === null && to === null ? none : missing);
    }
    const length = times ? (times.seconds[to] ?? times.end) - times.seconds[from] : null;
    const frames = `Frames ${from} to ${to - 1}: ${plural(to - from, "frame")}`;
    setText(byId("scene-text"), length === null ? frames : `${frames}, ${howLong(length)}`);
    const file = recording.info!.file;
    byId("cut").hidden = byId("extract").hidden = !isWritable(file);
    const commands = sceneCommands(file, from, to);
    setText(byId("cut-command"), commands.cut);
    setText(byId("extract-command"), commands.extract);
    const { number } = recording;
    link("download-scene", scenePath(number, from, to));
    link("download-table", tablePath(number, from, to));
  }

  private showFrame(): void {
    const { recording } = this.store;
    const { frame } = this.store.state;
    const has = recording !== undefined && frame < recording.frames;
    byId("frame-panel").hidden = !has;
    if (!has) return;
    link("download-jpg", savedPath(recording.number, frame, "jpg"));
    link("download-png", savedPath(recording.number, frame, "png"));
  }

  private async copy(id: string): Promise<void> {
    const command = byId(`${id}-command`);
    const button = byId(`copy-${id}`);
    try {
      await navigator.clipboard.writeText(command.textContent ?? "");
      setText(button, "Copied");
    } catch {
      // Only secure addresses may write to the clipboard.
      getSelection()?.selectAllChildren(command);
      setText(button, "Press Ctrl+C");
    }
    setTimeout(() => setText(button, "Copy"), 2000);
  }
}

function link(id: string, href: string): void {
  byId<HTMLAnchorElement>(id).href = href;
}

/** The downloads go into a frame that nobody sees. What is saved never arrives there: only words do. */
function wordsOfDownload(): string {
  const text = byId<HTMLIFrameElement>("download").contentDocument?.body.textContent ?? "";
  if (text === "") return "";
  try {
    return `Not downloaded: ${(JSON.parse(text) as { problem: string }).problem}`;
  } catch {
    return "Not downloaded";
  }
}

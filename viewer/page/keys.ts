// The keyboard, and the help that lists its keys.

import * as actions from "./actions";
import { byId, make } from "./dom";
import type { Store } from "./store";

interface Key {
  /** As in KeyboardEvent.key, with "Shift+" where it matters. */
  keys: string[];
  /** As the help shows it. */
  shown: string;
  text: string;
  act(store: Store): void;
}

const keys: Key[] = [
  { keys: [" "], shown: "Space", text: "play, pause", act: actions.togglePlaying },
  {
    keys: ["ArrowLeft"],
    shown: "←",
    text: "a frame back",
    act: (store) => actions.step(store, -1),
  },
  {
    keys: ["ArrowRight"],
    shown: "→",
    text: "a frame on",
    act: (store) => actions.step(store, 1),
  },
  {
    keys: ["Shift+ArrowLeft"],
    shown: "Shift ←",
    text: "a second back",
    act: (store) => actions.stepSeconds(store, -1),
  },
  {
    keys: ["Shift+ArrowRight"],
    shown: "Shift →",
    text: "a second on",
    act: (store) => actions.stepSeconds(store, 1),
  },
  { keys: ["Home"], shown: "Home", text: "the first frame", act: actions.seekFirst },
  { keys: ["End"], shown: "End", text: "the last frame", act: actions.seekLast },
  { keys: ["["], shown: "[", text: "the scene begins here", act: actions.markStart },
  { keys: ["]"], shown: "]", text: "the scene ends with this frame", act: actions.markEnd },
  { keys: ["<"], shown: "<", text: "slower", act: (store) => actions.changeRate(store, -1) },
  { keys: [">"], shown: ">", text: "faster", act: (store) => actions.changeRate(store, 1) },
  { keys: ["r", "R"], shown: "R", text: "backwards, forwards", act: actions.toggleDirection },
  {
    keys: ["+", "="],
    shown: "+",
    text: "timeline and curves: closer",
    act: (store) => actions.zoom(store, 0.5),
  },
  {
    keys: ["-"],
    shown: "−",
    text: "timeline and curves: farther",
    act: (store) => actions.zoom(store, 2),
  },
  { keys: ["0"], shown: "0", text: "timeline and curves: all", act: actions.showAll },
  { keys: ["?"], shown: "?", text: "this help", act: () => showHelp() },
];

export function listenToKeys(store: Store): void {
  const table = byId("help-keys");
  const rows = keys.map(({ shown, text }) =>
    make("tr", {}, make("td", {}, make("kbd", { text: shown })), make("td", { text })),
  );
  table.replaceChildren(...rows);
  byId("help-button").addEventListener("click", showHelp);
  byId("help-close").addEventListener("click", () => byId<HTMLDialogElement>("help").close());
  addEventListener("keydown", (event) => {
    if (isShortcutOfOthers(event)) return;
    const key = keyOf(event);
    const found = keys.find((one) => one.keys.includes(key));
    if (!found || belongsToElement(event)) return;
    event.preventDefault();
    found.act(store);
  });
  addEventListener("click", giveBackKeys);
}

/** What was clicked by mouse does not keep the space bar; what was reached by keyboard does. */
function giveBackKeys({ target, detail }: MouseEvent): void {
  const isByKeyboard = detail === 0;
  if (isByKeyboard || !(target instanceof Element)) return;
  target.closest<HTMLElement>("button, summary, a, input[type=checkbox]")?.blur();
}

/** AltGr, which some layouts need for brackets, comes as Ctrl and Alt. */
function isShortcutOfOthers(event: KeyboardEvent): boolean {
  const hasModifier = event.ctrlKey || event.altKey || event.metaKey;
  return event.defaultPrevented || (hasModifier && !event.getModifierState("AltGraph"));
}

function keyOf({ key, shiftKey }: KeyboardEvent): string {
  return shiftKey && key.startsWith("Arrow") ? `Shift+${key}` : key;
}

/** Fields and an open dialog take all keys, buttons and the like the space bar. */
function belongsToElement({ target, key }: KeyboardEvent): boolean {
  if (!(target instanceof Element) || byId<HTMLDialogElement>("help").open) return true;
  if (target.matches("input:not([type=checkbox]), select")) return true;
  return key === " " && target.matches("input, button, summary, a");
}

function showHelp(): void {
  const help = byId<HTMLDialogElement>("help");
  if (!help.open) help.showModal();
}

// The list of several recordings: which one is shown, and which are shown beside it.

import { smallPath } from "./api";
import type { Info } from "./api";
import { byId, make } from "./dom";
import type { Recording } from "./recording";
import type { Store } from "./store";
import { howLong, utc } from "./text";

const pictureHeight = 72;
/** What is shown large goes first (ms). */
const picturesLater = 300;

export class List {
  private readonly element = byId("list");

  constructor(
    private readonly store: Store,
    private readonly select: (number: number) => void,
  ) {
    store.on(["recordings"], () => this.fill());
    store.on(["recording", "beside"], () => this.mark());
  }

  private fill(): void {
    const { recordings } = this.store.state;
    byId("list-section").hidden = recordings.length < 2;
    this.element.replaceChildren(...recordings.map((recording) => this.item(recording)));
    this.mark();
    setTimeout(() => this.loadPictures(), picturesLater);
  }

  private loadPictures(): void {
    for (const picture of this.element.querySelectorAll("img")) {
      if (picture.dataset.path) picture.src = picture.dataset.path;
    }
  }

  private item(recording: Recording): HTMLLIElement {
    const { number, info } = recording;
    const item = make("li", { "data-recording": String(number), class: info ? "" : "unreadable" });
    const button = make("button", { type: "button", class: "choose" }, ...contents(recording));
    button.addEventListener("click", () => this.select(number));
    button.disabled = !info;
    item.append(button);
    if (info) item.append(this.besideBox(number, recording.name));
    return item;
  }

  private besideBox(number: number, name: string): HTMLLabelElement {
    const box = make("input", { type: "checkbox", "aria-label": `Show ${name} beside` });
    box.addEventListener("change", () => {
      const others = this.store.state.beside.filter((one) => one !== number);
      this.store.set({ beside: box.checked ? [...others, number] : others });
    });
    return make("label", { class: "beside" }, box, " beside");
  }

  private mark(): void {
    const { recording, beside } = this.store.state;
    for (const item of this.element.querySelectorAll<HTMLElement>("li")) {
      const number = Number(item.dataset.recording);
      const isShown = number === recording;
      item.classList.toggle("shown", isShown);
      item.querySelector("button")?.setAttribute("aria-current", String(isShown));
      const box = item.querySelector("input");
      if (isShown) item.scrollIntoView({ block: "nearest", inline: "nearest" });
      if (!box) continue;
      box.checked = beside.includes(number);
      box.parentElement!.hidden = isShown;
    }
  }
}

function contents({ number, name, info, problem }: Recording): Node[] {
  const title = make("strong", { text: name });
  if (!info) {
    return [make("span", { class: "facts" }, title, make("span", { text: problem ?? "" }))];
  }
  const start = info.start_time_us === undefined ? "" : utc(info.start_time_us);
  const facts = make(
    "span",
    { class: "facts" },
    title,
    make("span", { text: start }),
    make("span", { text: howLong(info.duration_us / 1e6) }),
    make("span", { class: "device", text: info.device_id ?? "" }),
  );
  return [smallPicture(number, info), facts];
}

/** With its shape, so that the list keeps its place while pictures arrive. */
function smallPicture(number: number, info: Info): HTMLImageElement {
  const { frames_count, width = 16, height = 10 } = info;
  const picture = make("img", { alt: "", loading: "lazy", class: "small" });
  picture.width = width || 16;
  picture.height = height || 10;
  const middle = Math.floor(frames_count / 2);
  if (frames_count > 0) picture.dataset.path = smallPath(number, [middle], pictureHeight);
  return picture;
}

// What the page has to say: that a recording or the server is gone, and small news.

import { onGone } from "./api";
import { byId, setText } from "./dom";

const newsTime = 4000;

export class Notices {
  private readonly notice = byId("notice");
  private readonly text = byId("notice-text");
  private readonly reload = byId("reload");
  private readonly news = byId("news");
  private timer = 0;
  private isGone = false;

  constructor() {
    this.reload.addEventListener("click", () => location.reload());
    onGone((text) => {
      this.isGone = true;
      this.show(text, true);
    });
  }

  /** Something that stays until it is over. */
  show(text: string, canReload = false): void {
    setText(this.text, text);
    this.reload.hidden = !canReload;
    this.notice.hidden = false;
  }

  hide(): void {
    if (!this.isGone) this.notice.hidden = true;
  }

  /** Something that goes by. */
  tell(text: string): void {
    setText(this.news, text);
    clearTimeout(this.timer);
    this.timer = window.setTimeout(() => setText(this.news, ""), newsTime);
  }
}

/** Lets the server know that there is a page, and the page that there is a server. */
export function keepAlive(notices: Notices): void {
  const events = new EventSource("alive");
  let isLost = false;
  events.addEventListener("open", () => {
    if (isLost) notices.hide();
    isLost = false;
  });
  events.addEventListener("error", () => {
    isLost = true;
    notices.show("The server has ended. What is loaded stays; for more, start it again.");
  });
}

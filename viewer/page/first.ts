// What the first picture needs. The rest of the page takes longer to set up than the picture to
// come, so it begins when the picture is there.

import { parseAddress } from "./address";
import { Notices } from "./notices";
import { Stage } from "./stage";
import { Store } from "./store";

export const store = new Store();
export const notices = new Notices();
export const tell = (text: string) => notices.tell(text);
export const address = parseAddress(location.hash);
store.set({ recording: address.recording, frame: address.frame });
export const stage = new Stage(store, tell);

/** A picture that takes longer (ms) must not keep the rest back. */
const longestWait = 1000;

const waited = new Promise((done) => setTimeout(done, longestWait));
Promise.race([stage.firstShown(), waited])
  .then(() => import("./main"))
  .then((main) => main.start())
  .catch((problem: Error) => notices.show(`This cannot be shown: ${problem.message}`, true));

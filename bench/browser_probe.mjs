// Measures in headless Chromium, and prints seconds.
// Usage: browser_probe.mjs empty
//          from the start of Chromium to an empty page
//        browser_probe.mjs first-picture TOOL RECORDING
//          from the start of `view` and of Chromium to the first picture
//        browser_probe.mjs playing TOOL RECORDING SECONDS
//          how late a frame was at most, of a recording with 30 a second
import { spawn } from "node:child_process";
import { once } from "node:events";
import { chromium } from "playwright-core";

// What was shown, when. Chromium's protocol would tell later, when the page has nothing else to do.
const noteShown = () => {
  window.shown = [];
  const note = () => {
    const { frame } = document.querySelector("#picture")?.dataset ?? {};
    const time = (performance.timeOrigin + performance.now()) / 1000;
    if (frame !== undefined && Number(frame) !== window.shown.at(-1)?.frame) {
      window.shown.push({ frame: Number(frame), time });
    }
  };
  const what = { subtree: true, childList: true, attributeFilter: ["data-frame"] };
  new MutationObserver(note).observe(document, what);
};

const [task, tool, recording, duration] = process.argv.slice(2);

const startBrowser = () => chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox"] });

const startViewer = async () => {
  const viewer = spawn(tool, ["view", recording, "--no-browser"]);
  const [url] = await once(viewer.stdout, "data");
  return { viewer, url: String(url).trim() };
};

const empty = async () => {
  const began = performance.now();
  const browser = await startBrowser();
  await (await browser.newPage()).goto("about:blank");
  const seconds = (performance.now() - began) / 1000;
  await browser.close();
  return seconds;
};

const withPage = async (work) => {
  const began = Date.now() / 1000;
  const [{ viewer, url }, browser] = await Promise.all([startViewer(), startBrowser()]);
  const page = await browser.newPage({ viewport: { width: 1400, height: 1000 } });
  await page.addInitScript(noteShown);
  await page.goto(url, { waitUntil: "commit" });
  await page.waitForSelector("#play:enabled");
  const result = await work(page, began);
  await browser.close();
  viewer.kill();
  return result;
};

const firstPicture = async (page, began) => (await page.evaluate(() => window.shown[0].time)) - began;

const playing = async (page) => {
  await page.evaluate(() => (window.shown = []));
  await page.keyboard.press("Space");
  await page.waitForTimeout(Number(duration) * 1000);
  const shown = await page.evaluate(() => window.shown);
  // A frame that was left out is as late as the next one. The most punctual one tells what the
  // clock was.
  const delays = [];
  let next = shown[0].frame;
  for (const { frame, time } of shown) {
    for (; next <= frame; ++next) delays.push(time - next / 30);
  }
  if (delays.length < (Number(duration) - 1) * 30) throw new Error("It did not play");
  return delays.reduce((a, b) => Math.max(a, b)) - delays.reduce((a, b) => Math.min(a, b));
};

const tasks = {
  empty,
  "first-picture": () => withPage(firstPicture),
  playing: () => withPage(playing),
};
console.log(await tasks[task]());

// Drives the viewer's page in Chromium, as a user does.
// Usage: VELMAR_TOOL=PATH-OF-VELMAR-VIDEO node --test page_test.mjs; status 77 without Chromium.
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { existsSync, mkdtempSync, readFileSync, rmSync, truncateSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, beforeEach, test } from "node:test";
import { chromium } from "playwright-core";

const chromiumPath = "/usr/bin/chromium";
if (!existsSync(chromiumPath)) process.exit(77);

const tool = process.env.VELMAR_TOOL;
const folder = mkdtempSync(join(tmpdir(), "velmar-viewer-"));
const run = (...words) => execFileSync(tool, words, { cwd: folder, maxBuffer: 1 << 28 });
const sample = (name, ...words) => run("--quiet", "sample", name, "--size", "320x200", "--force", ...words);

let server, url, browser, page, faults;

before(async () => {
  sample("drive.rtv", "--rtv-version", "04", "--frames", "200");
  sample("camera 2.img", "--frames", "90");
  sample("damaged.img", "--frames", "9");
  sample("replaced.img", "--frames", "90");
  const [, size] = run("frames", "damaged.img", "--csv", "--columns", "index,size").toString().split("\n")[1].split(",");
  const bytes = readFileSync(join(folder, "damaged.img"));
  bytes.fill(0, bytes.length - 3 * size, bytes.length - size);
  writeFileSync(join(folder, "damaged.img"), bytes);
  const names = ["drive.rtv", "camera 2.img", "damaged.img", "replaced.img"];
  server = spawn(tool, ["view", ...names, "--no-browser"], { cwd: folder });
  url = await new Promise((done) => server.stdout.once("data", (data) => done(String(data).trim())));
  browser = await chromium.launch({ executablePath: chromiumPath, args: ["--no-sandbox"] });
});

after(async () => {
  await browser?.close();
  server?.kill();
  rmSync(folder, { recursive: true });
});

beforeEach(async () => {
  await page?.close();
  faults = [];
  page = await browser.newPage({ viewport: { width: 1400, height: 1000 }, acceptDownloads: true });
  page.on("pageerror", (fault) => faults.push(String(fault)));
});

const open = (hash = "") => page.goto("about:blank").then(() => page.goto(url + hash));
const shows = (frame) =>
  page.waitForFunction((n) => document.querySelector("#picture")?.dataset.frame === String(n), frame);
const shown = () => page.$eval("#picture", (canvas) => Number(canvas.dataset.frame));

// How many pixels of what is shown differ from the stored frame.
const difference = (recording, frame) => {
  const jpeg = run("cat", recording, "--range", `${frame}:${frame + 1}`).toString("base64");
  return page.evaluate(async (base64) => {
    const bytes = Uint8Array.from(atob(base64), (c) => c.charCodeAt(0));
    const bitmap = await createImageBitmap(new Blob([bytes], { type: "image/jpeg" }));
    const stored = new OffscreenCanvas(bitmap.width, bitmap.height).getContext("2d");
    stored.drawImage(bitmap, 0, 0);
    const canvas = document.querySelector("#picture");
    if (canvas.width !== bitmap.width || canvas.height !== bitmap.height) return -1;
    const a = stored.getImageData(0, 0, bitmap.width, bitmap.height).data;
    const b = canvas.getContext("2d").getImageData(0, 0, bitmap.width, bitmap.height).data;
    return a.reduce((count, value, i) => count + (value === b[i] ? 0 : 1), 0);
  }, jpeg);
};

test("the first picture and that of an address are the stored ones", async () => {
  await open();
  await shows(0);
  assert.equal(await difference("drive.rtv", 0), 0);
  await open("#r=1&f=77");
  await shows(77);
  assert.equal(await difference("camera 2.img", 77), 0);
  assert.deepEqual(faults, []);
});

test("keys seek", async () => {
  await open("#r=0&f=100");
  await shows(100);
  await page.waitForSelector("#play:enabled");
  for (const [key, frame] of [["ArrowRight", 101], ["ArrowLeft", 100], ["Shift+ArrowRight", 130], ["Home", 0], ["End", 199]]) {
    await page.keyboard.press(key);
    await shows(frame);
    assert.equal(await difference("drive.rtv", frame), 0, key);
  }
});

test("it plays at the recorded times and stops", async () => {
  await open();
  await shows(0);
  await page.waitForSelector("#play:enabled");
  await page.keyboard.press("Space");
  await page.waitForFunction(() => Number(document.querySelector("#picture").dataset.frame) > 40);
  await page.keyboard.press("Space");
  await page.waitForTimeout(200);
  const frame = await shown();
  await page.waitForTimeout(300);
  assert.equal(await shown(), frame);
});

test("timeline, curves and map seek", async () => {
  await open();
  await shows(0);
  for (const target of ["#timeline-canvas", "#curve-overlay"]) {
    await page.waitForSelector(target, { state: "visible" });
    await page.locator(target).scrollIntoViewIfNeeded();
    const { x, y, width, height } = await page.locator(target).boundingBox();
    const at = (share) => [x + width * share, y + height / 2];
    await page.mouse.move(...at(0.3));
    await page.mouse.down();
    if (target === "#timeline-canvas") await page.mouse.move(...at(0.5), { steps: 5 });
    await page.mouse.up();
    const expected = target === "#timeline-canvas" ? 100 : 60;
    await page.waitForFunction(
      (n) => Math.abs(Number(document.querySelector("#picture").dataset.frame) - n) < 12, expected);
    await page.keyboard.press("Home");
    await shows(0);
  }
  await page.locator("#map").scrollIntoViewIfNeeded();
  // The track goes through the middle of the map, with half of the frames on either side.
  const map = await page.locator("#map").boundingBox();
  await page.mouse.click(map.x + map.width / 2, map.y + map.height / 2);
  await page.waitForFunction(
    () => Math.abs(Number(document.querySelector("#picture").dataset.frame) - 100) < 30);
});

test("a scene is marked, cut and downloaded", async () => {
  await open("#r=1&f=10");
  await shows(10);
  await page.waitForSelector("#play:enabled");
  await page.keyboard.press("[");
  await page.keyboard.press("Shift+ArrowRight");
  await shows(40);
  await page.keyboard.press("]");
  const command = await page.textContent("#cut-command");
  assert.match(command, /^velmar-video cut 'camera 2\.img' .* --range 10:41$/);
  await page.waitForURL(/a=10&b=41/);
  const waiting = page.waitForEvent("download");
  await page.click("#download-scene");
  run("--quiet", "cut", "camera 2.img", "scene.img", "--range", "10:41");
  const made = readFileSync(await (await waiting).path());
  assert.ok(made.equals(readFileSync(join(folder, "scene.img"))));
});

test("several recordings are listed and shown beside each other", async () => {
  await open();
  await shows(0);
  assert.equal(await page.locator("#list li").count(), 4);
  await page.locator("#list li[data-recording='1'] input").check();
  await page.waitForSelector("#picture-1");
  await page.fill("#frame", "60");
  await page.keyboard.press("Enter");
  await shows(60);
  await page.waitForFunction(() => document.querySelector("#picture-1").dataset.frame === "60");
});

test("damage is told, and what is sound is shown", async () => {
  await open("#r=2&f=7");
  await page.waitForSelector("#play:enabled");
  await page.waitForFunction(() => document.querySelector(".message:not([hidden])")?.textContent);
  await page.keyboard.press("ArrowLeft");
  await shows(6);
  assert.equal(await difference("damaged.img", 6), 0);
  assert.ok(await page.locator(".message").isHidden());
  await page.click("#verify");
  await page.waitForFunction(() => document.querySelector("#findings").children.length > 0);
  const found = await page.textContent("#findings");
  await page.keyboard.press("[");
  await page.keyboard.press("End");
  await page.keyboard.press("]");
  await page.click("#download-scene");
  await page.waitForFunction(() => /frame 8/.test(document.querySelector("#notice-text").textContent));
  for (const frame of [0, 7, 8]) assert.match(found, new RegExp(`\\b${frame}\\b`));
  assert.deepEqual(faults, []);
});

test("a recording that is replaced while it is shown is told of", async () => {
  await open("#r=3&f=0");
  await shows(0);
  await page.waitForSelector("#play:enabled");
  truncateSync(join(folder, "replaced.img"), 5000);
  await page.keyboard.press("End");
  await page.waitForSelector("#reload", { state: "visible" });
  await page.waitForFunction(() => location.hash.includes("f=89"));
  sample("replaced.img", "--frames", "5");
  await Promise.all([page.waitForNavigation(), page.click("#reload")]);
  await page.waitForSelector("#play:enabled");
  await page.waitForSelector("#notice", { state: "hidden" });
  await shows(4); // of the address, which was beyond
  await page.keyboard.press("Home");
  await shows(0);
});

// The axis of a recording, whatever its clock did; and which frame was there at a time of another one.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";

const load = async (module) => {
  const folder = mkdtempSync(join(tmpdir(), "velmar-times-"));
  const source = new URL(`../../viewer/page/${module}.ts`, import.meta.url).pathname;
  const made = join(folder, `${module}.mjs`);
  execFileSync("esbuild", [source, "--bundle", "--format=esm", `--outfile=${made}`, "--log-level=error"]);
  const loaded = await import(made);
  rmSync(folder, { recursive: true });
  return loaded;
};
const { Times } = await load("times");
const { shellPath } = await load("text");

// Capture times in units of 100 ms, from a time of day.
const times = (...units) => new Times(units.map((unit) => 1.7e15 + unit * 1e5));
const count = (first, end) => Array.from({ length: end - first }, (_, i) => first + i);

test("each frame has its place on the axis", () => {
  for (const [name, units, places, gaps] of [
    ["even", count(0, 5), [0, 1, 2, 3, 4], []],
    ["a gap", [0, 1, 2, 7, 8], [0, 1, 2, 7, 8], [3]],
    ["set back", [50, 51, 52, 0, 1], [0, 1, 2, 3, 4], [3]],
    ["set a week ahead", [0, 1, 6048000, 6048001], [0, 1, 2, 3], [2]],
    ["equal at first", [0, 0, 0, 0, 1, 2], [0, 0.25, 0.5, 0.75, 1, 2], []],
    ["all equal", [0, 0, 0], [0, 1 / 3, 2 / 3], []],
    ["falling", [4, 3.5, 3, 2.5], [0, 1 / 3, 2 / 3, 1], []],
    ["one too late", [0, 1, 3, 2, 4, 5, 6], [0, 1, 3, 3.5, 4, 5, 6], []],
    ["one frame", [0], [0], []],
    ["none", [], [], []],
  ]) {
    const axis = times(...units);
    assert.deepEqual([...axis.seconds].map((second) => second.toFixed(6)), places.map((place) => (place / 10).toFixed(6)), name);
    assert.deepEqual(axis.gaps.map((gap) => gap.frame), gaps, name);
    axis.seconds.forEach((second, frame) => assert.equal(axis.frameAt(second), frame, name));
  }
});

test("the frame that was there at a time", () => {
  for (const [name, units, asked] of [
    ["between frames, before and behind", count(0, 5), [[2.5, 2], [-0.1, null], [4, 4], [7.5, null]]],
    ["in a gap", [0, 1, 2, 60, 61, 62], [[4, 2], [30, null], [60.5, 3]]],
    ["one frame far ahead", [0, 1, 600, 2, 3, 4], [[1, 1], [3.5, 4], [600, 2]]],
    ["the clock was set back", [100, 101, 102, 0, 1, 2], [[101.5, 1], [1.5, 4]]],
  ]) {
    const axis = times(...units);
    for (const [unit, frame] of asked) {
      assert.equal(axis.frameCaptured(1.7e15 + unit * 1e5), frame, `${name}: ${unit}`);
    }
  }
});

test("a path is one word of a shell, whatever is in it", () => {
  for (const path of ["a b.img", "it's.rtv", "-x.img", "a\u0003\u001b\\'.img", "n\u0085l.img", "k\u00e4se.img", "$(id).img"]) {
    const printed = execFileSync("bash", ["-c", `printf %s ${shellPath(path)}`], { env: { LC_ALL: "C.UTF-8" } });
    assert.equal(String(printed), path.startsWith("-") ? `./${path}` : path);
    assert.ok(!/[\x00-\x1f\x7f-\x9f]/.test(shellPath(path)));
  }
});

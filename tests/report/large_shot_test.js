// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { closeSync, openSync, statSync, unlinkSync, writeFileSync, writeSync } from "node:fs";
import { test } from "node:test";
import { goTo, isAt } from "./canvas.js";
import { numbers } from "./shots.js";
import { cornerpin, made, open, readJson, solvedPage, withBrowser } from "./support.js";

withBrowser();

const frameCount = 1000;
const across = 100; // tracks in each of as many rows

/**
 * Where a track is in a frame, under a camera that pans and zooms.
 * @param {number} column
 * @param {number} row
 * @param {number} frame
 * @returns {import("./support.js").Point}
 */
const seen = (column, row, frame) => [
  (column + 1) * 18 * (1 + frame / 10000) + frame / 20,
  (row + 1) * 9 * (1 + frame / 10000) + frame / 20,
];

/** @param {number} column @param {number} row */
const nameOf = (column, row) => `t${row * across + column}`;

/**
 * Tracks that are seen in every frame: all, some 240 MB, or those of each `step`th column and row.
 * @param {string} name of the file
 * @param {number} step
 * @returns {string} its path
 */
function writeShot(name, step) {
  const path = made(name);
  const file = openSync(path, "w");
  const random = numbers();
  const noisy = (/** @type {number} */ value) => (value + 0.3 * random()).toFixed(2);
  const frames = Array.from({ length: frameCount }, (_, frame) => frame);
  const indices = Array.from({ length: across / step }, (_, i) => i * step);
  const xs = indices.map((i) => frames.map((frame) => `,${frame},${noisy(seen(i, 0, frame)[0])},`));
  const ys = indices.map((i) => frames.map((frame) => `${noisy(seen(0, i, frame)[1])}\n`));
  writeSync(file, "track,frame,x,y\n");
  ys.forEach((lower, row) => {
    xs.forEach((upper, column) => {
      const track = nameOf(indices[column], indices[row]);
      writeSync(file, frames.map((frame) => track + upper[frame] + lower[frame]).join(""));
    });
  });
  closeSync(file);
  return path;
}

/**
 * A result with all tracks, made of that of a hundredth of them: to solve all takes much longer than
 * to make the page.
 * @returns {string} the path of a result without a digest of its input
 */
function writeLargeResult() {
  const { result } = solvedPage(writeShot("few.csv", 10), "few");
  const [few] = result.tracks;
  const indices = Array.from({ length: across }, (_, i) => i);
  result.input = null;
  result.tracks = indices.flatMap((row) =>
    indices.map((column) => ({
      ...few,
      name: nameOf(column, row),
      place: seen(column, row, result.reference_frame),
    })),
  );
  const path = made("large.json");
  writeFileSync(path, JSON.stringify(result));
  return path;
}

test("10,000 tracks in 1,000 frames open, reduced, and the page says so", async (context) => {
  const result = writeLargeResult();
  const tracks = writeShot("large.csv", 1);
  cornerpin("report", result, "--tracks", tracks);
  unlinkSync(tracks);
  const path = result.replace(/json$/, "html");
  assert.equal(readJson(result).tracks.length, across * across);
  const size = statSync(path).size;
  assert.ok(size < 2_000_000, `${size} bytes`);

  const start = performance.now();
  const { page, close } = await open(path);
  const opened = performance.now() - start;
  context.diagnostic(`page of ${size} bytes opened in ${opened.toFixed(0)} ms`);
  const note = await page.locator("#reduced-note").innerText();
  assert.match(note, /10,?000/);
  await goTo(page, 500);
  await page.locator("#heat-scroll").click({ position: { x: 1, y: 30 } });
  await isAt(page, 0);
  assert.match(await page.locator("#track-details .track-name").innerText(), /^t\d+$/);
  await close();
});

// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { closeSync, openSync, statSync, unlinkSync, writeSync } from "node:fs";
import { test } from "node:test";
import { goTo, isAt } from "./canvas.js";
import { numbers } from "./shots.js";
import { made, open, solvedPage, withBrowser } from "./support.js";

withBrowser();

const frameCount = 1000;
const across = 100; // tracks in each of as many rows

/**
 * One coordinate of tracks under a camera that pans and zooms, in each frame, as text.
 * @param {number} step from track to track
 * @param {() => number} random
 */
const paths = (step, random) =>
  Array.from({ length: across }, (_, i) =>
    Array.from({ length: frameCount }, (__, frame) =>
      ((i + 1) * step * (1 + frame / 10000) + frame / 20 + 0.3 * random()).toFixed(2),
    ),
  );

/** @returns {string} the path of a file of tracks, each seen in every frame, of about 260 MB */
function writeLargeShot() {
  const path = made("large.csv");
  const file = openSync(path, "w");
  const random = numbers();
  const columns = paths(18, random);
  const rows = paths(9, random);
  writeSync(file, "track,frame,x,y,weight\n");
  rows.forEach((ys, row) => {
    columns.forEach((xs, column) => {
      const name = `t${row * across + column}`;
      writeSync(file, xs.map((x, frame) => `${name},${frame},${x},${ys[frame]},1\n`).join(""));
    });
  });
  closeSync(file);
  return path;
}

test("10,000 tracks in 1,000 frames open, reduced, and the page says so", async (context) => {
  const tracks = writeLargeShot();
  const { path, result } = solvedPage(tracks, "large");
  unlinkSync(tracks);
  assert.equal(result.tracks.length, across * across);
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

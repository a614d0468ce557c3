// SPDX-License-Identifier: BSD-3-Clause
// What the page draws, read back from its canvases.
import assert from "node:assert/strict";
import { pixels } from "./support.js";

/** @typedef {import("./support.js").Page} Page */
/** @typedef {import("./support.js").Point} Point */
/** @typedef {ReturnType<typeof pixels>} Pixels */

/**
 * A canvas's own pixels.
 * @param {import("playwright-core").Locator} canvas
 */
export async function canvasPixels(canvas) {
  const url = await canvas.evaluate((element) =>
    /** @type {HTMLCanvasElement} */ (element).toDataURL("image/png"),
  );
  return pixels(Buffer.from(url.slice(url.indexOf(",") + 1), "base64"));
}

/**
 * How far the pixels of a colour lie from a side on average, along a stretch in its middle, and for
 * how much of the stretch there are such pixels. Pixel (0, 0) reaches from 0 to 1 both ways.
 * @param {Pixels} drawn
 * @param {number[]} colour
 * @param {Point} from
 * @param {Point} to
 */
function offsetFromSide({ at }, colour, from, to) {
  const length = Math.hypot(to[0] - from[0], to[1] - from[1]);
  const along = [(to[0] - from[0]) / length, (to[1] - from[1]) / length];
  const middle = [(from[0] + to[0]) / 2, (from[1] + to[1]) / 2];
  const reach = Math.ceil(0.2 * length + 6);
  let sum = 0;
  let count = 0;
  for (let y = Math.floor(middle[1]) - reach; y <= middle[1] + reach; ++y) {
    for (let x = Math.floor(middle[0]) - reach; x <= middle[0] + reach; ++x) {
      const d = [x + 0.5 - middle[0], y + 0.5 - middle[1]];
      const offset = d[1] * along[0] - d[0] * along[1];
      if (Math.abs(d[0] * along[0] + d[1] * along[1]) > 0.2 * length) continue;
      if (Math.abs(offset) > 5) continue;
      if (Math.max(...at(x, y).map((value, i) => Math.abs(value - colour[i]))) > 40) continue;
      sum += offset;
      ++count;
    }
  }
  return { offset: sum / count, share: count / (0.4 * length) };
}

/**
 * Fails where a quad's sides are drawn more than a pixel beside these corners of the canvas.
 * @param {Page} page
 * @param {(canvas: Pixels) => Point[]} cornersOn
 */
export async function assertQuadIsDrawnAt(page, cornersOn) {
  const canvas = page.locator("#player-canvas");
  const drawn = await canvasPixels(canvas);
  const name = await canvas.getAttribute("data-quad-colour");
  assert.match(name ?? "", /^#[0-9a-f]{6}$/);
  const colour = [1, 3, 5].map((i) => parseInt(/** @type {string} */ (name).slice(i, i + 2), 16));
  const corners = cornersOn(drawn);
  corners.forEach((corner, i) => {
    const { offset, share } = offsetFromSide(drawn, colour, corner, corners[(i + 1) % 4]);
    assert.ok(share > 0.7, `side ${i} is drawn for ${share} of its middle`);
    assert.ok(Math.abs(offset) < 1, `side ${i} is drawn ${offset} pixels beside its place`);
  });
}

/**
 * Goes to a frame by its number and waits until it is drawn.
 * @param {Page} page
 * @param {number} frame
 */
export async function goTo(page, frame) {
  const number = page.locator("#frame-number");
  await number.fill(String(frame));
  await number.press("Enter");
  await isAt(page, frame);
}

/**
 * @param {Page} page
 * @param {number} frame
 */
export async function isAt(page, frame) {
  await page.locator(`#player[data-frame="${frame}"]`).waitFor();
}

/**
 * Fails where the frame's drawing is not in the window as a whole.
 * @param {Page} page
 */
export async function assertPlayerIsSeen(page) {
  const box = await page.locator("#player-stage").boundingBox();
  const height = page.viewportSize()?.height ?? 0;
  assert.ok(box && box.y >= 0 && box.y + box.height <= height, `${JSON.stringify(box)}: ${height}`);
}

/** @param {Page} page */
export const frameOf = async (page) =>
  Number(await page.locator("#player").getAttribute("data-frame"));

// SPDX-License-Identifier: BSD-3-Clause
// The heat map's cells as pixels.

import { Part } from "./cells.js";
import { asPixel, heatColour, stripeColour } from "./heat_colours.js";
import { contextOf, fitToScreen } from "./elements.js";
import { isDark } from "./theme.js";

/** @typedef {import("./cells.js").Cells} Cells */

/**
 * Where the map has what, in CSS pixels: rows of `rowHeight` from `left` on, scrolled by `top`.
 * @typedef {{
 *   rows: number[], rowOf: number[], rowHeight: number, left: number, top: number,
 * }} HeatLayout `rows` has the track of each row, `rowOf` the row of each track
 */

export const shades = 64;
const markPeriod = 6; // from stripe to stripe and from dot to dot, in CSS pixels

/**
 * The pixels for each part and shade; of seen cells without a residual the last one.
 * @returns {{plain: Uint32Array, marked: Uint32Array, missing: number}}
 */
export function heatPalette() {
  const plain = new Uint32Array(shades + 1);
  const marked = new Uint32Array(shades + 1);
  for (let i = 0; i < shades; ++i) {
    const rgb = heatColour(i / (shades - 1), isDark());
    plain[i] = asPixel(rgb);
    marked[i] = asPixel(stripeColour(rgb));
  }
  plain[shades] = asPixel(isDark() ? [96, 104, 114] : [168, 176, 186]);
  marked[shades] = asPixel(isDark() ? [225, 225, 230] : [70, 70, 78]);
  return { plain, marked, missing: asPixel(isDark() ? [30, 34, 39] : [238, 240, 243]) };
}

/**
 * @param {Float32Array} residuals of all cells
 * @param {number} cap
 * @returns {Uint8Array} their shades
 */
export function shadesOf(residuals, cap) {
  return Uint8Array.from(residuals, (residual) =>
    Number.isNaN(residual) ? shades : Math.min(Math.floor((residual / cap) * shades), shades - 1),
  );
}

/**
 * Whether a mark over the colours takes the pixel: stripes where tracks are ignored, dots where
 * they are of no part.
 * @param {number} part
 * @param {number} x in device pixels, as y
 * @param {number} y
 */
export function isMarked(part, x, y) {
  if (part === Part.good) return false;
  const period = Math.round(markPeriod * window.devicePixelRatio);
  const wide = Math.max(period / 4, 1);
  if (part === Part.ignored) return (x + y) % period < wide;
  return x % period < wide && y % period < wide;
}

/**
 * @param {HTMLCanvasElement} canvas
 * @param {(x: number, y: number, width: number) => number} pixelAt
 */
export function fillPixels(canvas, pixelAt) {
  if (!fitToScreen(canvas)) return;
  const { width, height } = canvas;
  const context = contextOf(canvas);
  const image = context.createImageData(width, height);
  const pixels = new Uint32Array(image.data.buffer);
  for (let y = 0; y < height; ++y) {
    for (let x = 0; x < width; ++x) pixels[y * width + x] = pixelAt(x, y, width);
  }
  context.putImageData(image, 0, 0);
}

/**
 * @param {HTMLCanvasElement} canvas
 * @param {Cells} cells
 * @param {Uint8Array} shadeOf each cell
 * @param {HeatLayout} layout
 */
export function paintCells(canvas, cells, shadeOf, { rows, rowHeight, left, top }) {
  const density = window.devicePixelRatio;
  const start = Math.round(left * density);
  const above = Math.round(top * density);
  const palette = heatPalette();
  fillPixels(canvas, (x, y, width) => {
    const row = Math.floor((y + above) / density / rowHeight);
    if (x < start || row >= rows.length) return 0;
    const frame = Math.floor(((x - start) / (width - start)) * cells.frameCount);
    const cell = rows[row] * cells.frameCount + frame;
    const part = cells.part[cell];
    if (part === Part.unseen) return palette.missing;
    return (isMarked(part, x, y + above) ? palette.marked : palette.plain)[shadeOf[cell]];
  });
}

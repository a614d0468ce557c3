// SPDX-License-Identifier: BSD-3-Clause
// Lines, marks and words that are seen on any ground: on pictures over a wider dark line.

import { Part } from "./cells.js";
import { colour } from "./theme.js";

/** @typedef {import("./page_data.js").Point} Point */

/** @typedef {[number, number, number, number]} Box left, top, right and bottom */

/**
 * `line` is the width of a thin line in the canvas's pixels, `markSize` the radius of a mark in
 * thin lines; `written` is where texts are.
 * @typedef {{
 *   context: CanvasRenderingContext2D, isOnPicture: boolean, line: number, markSize: number,
 *   written: Box[],
 * }} Brush
 */

const usualMark = 3;
const edgeGap = 6;

/**
 * @param {CanvasRenderingContext2D} context
 * @param {boolean} isOnPicture
 * @returns {Brush} with marks that are smaller where the canvas is
 */
export function createBrush(context, isOnPicture) {
  const line = window.devicePixelRatio;
  const share = context.canvas.width / line / 560;
  const markSize = usualMark * Math.min(Math.max(share, 0.65), 1);
  return { context, isOnPicture, line, markSize, written: [] };
}

/**
 * Strokes the path.
 * @param {Brush} brush
 * @param {string} stroke
 * @param {number} width in thin lines
 */
export function strokeCased({ context, isOnPicture, line }, stroke, width) {
  if (isOnPicture) {
    context.strokeStyle = colour("casing");
    context.lineWidth = (width + 1.5) * line;
    context.stroke();
  }
  context.strokeStyle = stroke;
  context.lineWidth = width * line;
  context.stroke();
}

/**
 * @param {Box} a
 * @param {Box} b
 */
const areApart = (a, b) => a[2] <= b[0] || b[2] <= a[0] || a[3] <= b[1] || b[3] <= a[1];

/**
 * Writes a text inside the canvas, whatever the place.
 * @param {Brush} brush
 * @param {string} text
 * @param {...Point} places for the text's middle: the first at which no other text is in the way
 */
export function write({ context, line, isOnPicture, written }, text, ...places) {
  context.font = `600 ${12 * line}px system-ui, sans-serif`;
  context.textAlign = "center";
  context.textBaseline = "middle";
  context.setLineDash([]);
  const half = context.measureText(text).width / 2 + edgeGap * line;
  const high = 8 * line;
  const { width, height } = context.canvas;
  const boxes = places.map(([x, y]) => {
    const inX = Math.min(Math.max(x, half), width - half);
    const inY = Math.min(Math.max(y, 12 * line), height - 12 * line);
    return /** @type {Box} */ ([inX - half, inY - high, inX + half, inY + high]);
  });
  const box = boxes.find((each) => written.every((other) => areApart(each, other))) ?? boxes[0];
  written.push(box);
  const inX = box[0] + half;
  const inY = box[1] + high;
  context.lineJoin = "round";
  context.lineWidth = 4 * line;
  context.strokeStyle = isOnPicture ? colour("casing") : colour("panel");
  context.strokeText(text, inX, inY);
  context.fillStyle = isOnPicture ? "#ffffff" : colour("ink");
  context.fillText(text, inX, inY);
}

/** @param {Brush} brush */
export function quadColour({ isOnPicture }) {
  return isOnPicture ? "#f0e442" : colour("quad");
}

/**
 * @param {Brush} brush
 * @param {number} part
 * @returns {string}
 */
export function partColour({ isOnPicture }, part) {
  if (part === Part.good) return isOnPicture ? "#56b4e9" : colour("good");
  if (part === Part.ignored) return isOnPicture ? "#ff9e4a" : colour("ignored");
  return isOnPicture ? "#ffffff" : colour("none");
}

/**
 * A mark whose shape says what part the track has.
 * @param {CanvasRenderingContext2D} context
 * @param {number} part
 * @param {Point} middle
 * @param {number} radius
 */
function traceMark(context, part, [x, y], radius) {
  context.beginPath();
  if (part === Part.good) {
    context.arc(x, y, radius, 0, 2 * Math.PI);
  } else if (part === Part.ignored) {
    context.moveTo(x - radius, y - radius);
    context.lineTo(x + radius, y + radius);
    context.moveTo(x + radius, y - radius);
    context.lineTo(x - radius, y + radius);
  } else {
    context.rect(x - radius, y - radius, 2 * radius, 2 * radius);
  }
}

/**
 * @param {Brush} brush
 * @param {number} part
 * @param {Point} middle
 */
export function drawMark(brush, part, middle) {
  const { context, line, markSize } = brush;
  context.setLineDash([]);
  traceMark(context, part, middle, (part === Part.good ? 1 : 1.15) * markSize * line);
  if (part !== Part.good) {
    strokeCased(brush, partColour(brush, part), 1.5);
    return;
  }
  if (brush.isOnPicture) strokeCased(brush, colour("casing"), 1);
  context.fillStyle = partColour(brush, part);
  context.fill();
}

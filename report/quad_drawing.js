// SPDX-License-Identifier: BSD-3-Clause
// The quads in a frame, with their corners' names and expected errors.

import { cornerNames } from "./wording.js";
import { inView } from "./page_data.js";
import { quadColour, strokeCased, write } from "./brush.js";

/** @typedef {import("./page_data.js").Covariance} Covariance */
/** @typedef {import("./page_data.js").Point} Point */
/** @typedef {import("./frame_drawing.js").Drawing} Drawing */

const ellipseDeviations = 2;
const labelGap = 9; // from a corner to its name, in thin lines

/**
 * @param {Point[]} points
 * @returns {Point}
 */
function middleOf(points) {
  const sum = points.reduce(([x, y], point) => [x + point[0], y + point[1]], [0, 0]);
  return [sum[0] / points.length, sum[1] / points.length];
}

/**
 * The outline; where corners are behind the horizon, the sides between those that are not.
 * @param {Drawing} drawing
 * @param {(Point | null)[]} corners on the canvas
 */
function traceQuad({ context }, corners) {
  context.beginPath();
  corners.forEach((corner, i) => {
    const next = corners[(i + 1) % corners.length];
    if (corner === null || next === null) return;
    context.moveTo(...corner);
    context.lineTo(...next);
  });
}

/**
 * @param {Drawing} drawing
 * @param {Point} middle on the canvas
 * @param {NonNullable<Covariance>} covariance in the units of the tracks
 */
function drawEllipse(drawing, middle, covariance) {
  const { context, line, looking, scale } = drawing;
  const xx = covariance[0][0] * scale[0] * scale[0];
  const xy = covariance[0][1] * scale[0] * scale[1];
  const yy = covariance[1][1] * scale[1] * scale[1];
  const mean = (xx + yy) / 2;
  const spread = Math.hypot((xx - yy) / 2, xy);
  const factor = ellipseDeviations * looking.ellipseFactor;
  const long = factor * Math.sqrt(mean + spread);
  const short = factor * Math.sqrt(Math.max(mean - spread, 0));
  if (long < line / 2) return;
  context.beginPath();
  context.setLineDash([]);
  context.ellipse(...middle, long, short, Math.atan2(2 * xy, xx - yy) / 2, 0, 2 * Math.PI);
  strokeCased(drawing, quadColour(drawing), 1.25);
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {Point} point
 * @returns {string} an arrow to a point beyond the canvas
 */
function arrowTo({ canvas }, [x, y]) {
  if (x > canvas.width) return " →";
  if (x < 0) return " ←";
  return y < 0 ? " ↑" : y > canvas.height ? " ↓" : "";
}

/**
 * @param {Drawing} drawing
 * @param {(Point | null)[]} corners on the canvas
 * @param {Point} middle
 * @param {string[]} names
 */
function nameCorners(drawing, corners, middle, names) {
  corners.forEach((corner, i) => {
    if (corner === null) return;
    const [x, y] = corner;
    const away = Math.hypot(x - middle[0], y - middle[1]) || 1;
    const gap = (labelGap * drawing.line) / away;
    const down = Math.sign(y - middle[1]) * labelGap * drawing.line;
    const name = names[i] + arrowTo(drawing.context, corner);
    const beside = x + (x - middle[0]) * gap;
    write(drawing, name, [beside, y + down], [beside, y + 3 * down]);
  });
}

/**
 * The quads where the frame has them: dashed where the frame is doubtful.
 * @param {Drawing} drawing
 */
export function drawQuads(drawing) {
  const { context, data, looking, line, place } = drawing;
  const { quads, frames } = data.result;
  const frame = frames[looking.frame];
  for (const { name, corners: onSurface } of quads) {
    const quad = frame.quads[name];
    if (quad === undefined) continue;
    const corners = quad.corners.map(([x, y]) => (x === null || y === null ? null : place([x, y])));
    traceQuad(drawing, corners);
    context.setLineDash(frame.verdict === "doubtful" ? [8 * line, 5 * line] : []);
    strokeCased(drawing, quadColour(drawing), 2);
    context.setLineDash([]);
    corners.forEach((corner, i) => {
      const covariance = quad.covariance[i];
      if (corner !== null && covariance !== null) drawEllipse(drawing, corner, covariance);
    });
    const seen = corners.filter((corner) => corner !== null);
    if (seen.length === 0) continue;
    const names = cornerNames(onSurface.map((corner) => inView(data.view, corner)));
    if (quads.length <= 2) nameCorners(drawing, corners, middleOf(seen), names);
    if (quads.length > 1) write(drawing, name, middleOf(seen));
  }
}

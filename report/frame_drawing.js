// SPDX-License-Identifier: BSD-3-Clause
// Draws one frame: quads with their corners' expected errors, and tracks with their residuals.

import { Part } from "./cells.js";
import { colour } from "./theme.js";
import { cornerNames } from "./wording.js";
import { inView } from "./page_data.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Covariance} Covariance */
/** @typedef {import("./page_data.js").Point} Point */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./state.js").Looking} Looking */

/**
 * What is drawn with: a canvas that shows the view, or more around it where it is zoomed out.
 * @typedef {{
 *   context: CanvasRenderingContext2D, data: PageData, cells: Cells, looking: Looking,
 *   isOnPicture: boolean, place: (point: Point) => Point, scale: Point, line: number,
 *   markSize: number, box: [number, number, number, number],
 * }} Drawing `place` leads from the tracks' units to the canvas's pixels, `scale` is its linear
 * part, `line` is the width of a thin line in these pixels, `markSize`
 * the radius of a mark in these, `box` is where the view is: left, top, width
 * and height
 */

/**
 * What of it lines and marks need.
 * @typedef {Pick<Drawing, "context" | "isOnPicture" | "line"> & { markSize?: number }} Brush
 */

const ellipseDeviations = 2;
const usualMark = 3; // a mark's radius, in thin lines
const labelGap = 9; // from a corner to its name, in thin lines
const edgeGap = 6;
const longestResidual = 0.08; // of the canvas's diagonal

/**
 * @param {CanvasRenderingContext2D} context
 * @param {{data: PageData, cells: Cells}} shot
 * @param {Looking} looking
 * @param {boolean} isOnPicture
 * @returns {Drawing}
 */
export function createDrawing(context, { data, cells }, looking, isOnPicture) {
  const { view } = data;
  const { width, height } = context.canvas;
  const { zoom } = looking;
  const across = (zoom * width) / view.width;
  const down = (zoom * height) / view.height;
  const left = ((1 - zoom) * width) / 2;
  const top = ((1 - zoom) * height) / 2;
  /** @param {Point} point @returns {Point} */
  const place = (point) => {
    const [x, y] = inView(view, point);
    return [left + (x - view.x) * across, top + (y - view.y) * down];
  };
  const [ax, , ay] = view.from_tracks;
  return {
    context,
    data,
    cells,
    looking,
    isOnPicture,
    place,
    scale: [ax * across, ay * down],
    line: window.devicePixelRatio,
    markSize: markSizeOn(context.canvas),
    box: [left, top, zoom * width, zoom * height],
  };
}

/**
 * The picture, or the edges of where it would be.
 * @param {Drawing} drawing
 * @param {HTMLImageElement | null} image
 */
export function drawGround({ context, looking, box, line }, image) {
  if (image !== null) context.drawImage(image, ...box);
  if (looking.zoom === 1) return;
  context.setLineDash([]);
  context.lineWidth = line;
  context.strokeStyle = colour("edge");
  context.strokeRect(...box);
}

/**
 * Marks are smaller where the canvas is, so that they hide no more of the picture.
 * @param {HTMLCanvasElement} canvas
 */
export function markSizeOn({ width }) {
  const share = width / window.devicePixelRatio / 560;
  return usualMark * Math.min(Math.max(share, 0.65), 1);
}

/**
 * Strokes the path; on a picture over a wider dark line, so that it is seen on any ground.
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
 * Writes so that the text is read on any ground, and inside the canvas whatever the place.
 * @param {Drawing} drawing
 * @param {string} text
 * @param {Point} point the text's middle
 */
function write({ context, line, isOnPicture }, text, [x, y]) {
  context.font = `600 ${12 * line}px system-ui, sans-serif`;
  context.textAlign = "center";
  context.textBaseline = "middle";
  context.setLineDash([]);
  const half = context.measureText(text).width / 2 + edgeGap * line;
  const { width, height } = context.canvas;
  const inX = Math.min(Math.max(x, half), width - half);
  const inY = Math.min(Math.max(y, 12 * line), height - 12 * line);
  context.lineJoin = "round";
  context.lineWidth = 4 * line;
  context.strokeStyle = isOnPicture ? colour("casing") : colour("panel");
  context.strokeText(text, inX, inY);
  context.fillStyle = isOnPicture ? "#ffffff" : colour("ink");
  context.fillText(text, inX, inY);
}

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

/** @param {Brush} brush */
export function quadColour({ isOnPicture }) {
  return isOnPicture ? "#f0e442" : colour("quad");
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
    write(drawing, name, [x + (x - middle[0]) * gap, y + down]);
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

/**
 * A mark whose shape says what part the track has.
 * @param {CanvasRenderingContext2D} context
 * @param {number} part
 * @param {Point} middle
 * @param {number} radius
 */
export function traceMark(context, part, [x, y], radius) {
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
 * @returns {string}
 */
function partColour({ isOnPicture }, part) {
  if (part === Part.good) return isOnPicture ? "#56b4e9" : colour("good");
  if (part === Part.ignored) return isOnPicture ? "#ff9e4a" : colour("ignored");
  return isOnPicture ? "#ffffff" : colour("none");
}

/**
 * @param {Brush} brush
 * @param {number} part
 * @param {Point} middle
 */
export function drawMark(brush, part, middle) {
  const { context, line } = brush;
  const size = brush.markSize ?? usualMark;
  context.setLineDash([]);
  traceMark(context, part, middle, (part === Part.good ? 1 : 1.15) * size * line);
  if (part !== Part.good) {
    strokeCased(brush, partColour(brush, part), 1.5);
    return;
  }
  if (brush.isOnPicture) strokeCased(brush, colour("casing"), 1);
  context.fillStyle = partColour(brush, part);
  context.fill();
}

/**
 * A line that leads away from where the transform puts the track, `residualFactor` times as long
 * as the track is off. Where that would be longer than is of use it is cut off, with a bar.
 * @param {Drawing} drawing
 * @param {number} cell
 * @param {Point} seen on the canvas
 */
function drawResidual(drawing, cell, [x, y]) {
  const { context, cells, looking, scale, line } = drawing;
  const across = cells.dx[cell] * scale[0] * looking.residualFactor;
  const down = cells.dy[cell] * scale[1] * looking.residualFactor;
  const length = Math.hypot(across, down);
  if (!(length > 0)) return;
  const longest = longestResidual * Math.hypot(context.canvas.width, context.canvas.height);
  const share = Math.min(longest / length, 1);
  const end = [x + across * share, y + down * share];
  context.beginPath();
  context.setLineDash([]);
  context.moveTo(x, y);
  context.lineTo(end[0], end[1]);
  if (share < 1) {
    const aside = [(4 * line * down) / length, (-4 * line * across) / length];
    context.moveTo(end[0] - aside[0], end[1] - aside[1]);
    context.lineTo(end[0] + aside[0], end[1] + aside[1]);
  }
  strokeCased(drawing, partColour(drawing, cells.part[cell]), 1.25);
}

/**
 * The tracks that are seen in the frame, with their residuals.
 * @param {Drawing} drawing
 */
export function drawTracks(drawing) {
  const { cells, data, looking, place, line, context } = drawing;
  for (let track = 0; track < cells.trackCount; ++track) {
    const cell = track * cells.frameCount + looking.frame;
    if (Number.isNaN(cells.x[cell])) continue;
    const [x, y] = place([cells.x[cell], cells.y[cell]]);
    drawResidual(drawing, cell, [x, y]);
    drawMark(drawing, cells.part[cell], [x, y]);
    if (track !== looking.track) continue;
    traceMark(context, Part.good, [x, y], 8 * line);
    strokeCased(drawing, drawing.isOnPicture ? "#ffffff" : colour("ink"), 2);
    write(drawing, data.result.tracks[track].name, [x, y - 18 * line]);
  }
}

/**
 * The track drawn nearest to the place on the canvas, within reach of a finger; -1 without one.
 * @param {Drawing} drawing
 * @param {Point} point
 */
export function trackNear({ cells, looking, place, line }, [x, y]) {
  let nearest = -1;
  let least = 14 * line;
  for (let track = 0; track < cells.trackCount; ++track) {
    const cell = track * cells.frameCount + looking.frame;
    if (Number.isNaN(cells.x[cell])) continue;
    const [trackX, trackY] = place([cells.x[cell], cells.y[cell]]);
    const distance = Math.hypot(trackX - x, trackY - y);
    if (distance >= least) continue;
    least = distance;
    nearest = track;
  }
  return nearest;
}

const factors = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000];

/** @returns {number[]} how many times as long residuals and ellipses can be drawn */
export function drawingFactors() {
  return factors;
}

/**
 * The largest factor that draws a length no longer than a share of the view's diagonal.
 * @param {number} length in the units of the tracks
 * @param {number} share
 * @param {PageData["view"]} view
 */
export function fittingFactor(length, share, view) {
  const longest = share * Math.hypot(view.width, view.height);
  const fitting = factors.filter(
    (factor) => factor * length * Math.abs(view.from_tracks[0]) <= longest,
  );
  return length > 0 ? (fitting.at(-1) ?? 1) : 1;
}

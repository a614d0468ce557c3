// SPDX-License-Identifier: BSD-3-Clause
// The tracks in a frame, with their residuals.

import { colour } from "./theme.js";
import { drawMark, partColour, strokeCased, write } from "./brush.js";
import { shownName } from "./wording.js";

/** @typedef {import("./page_data.js").Point} Point */
/** @typedef {import("./frame_drawing.js").Drawing} Drawing */

const longestResidual = 0.08; // of the canvas's diagonal

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
  const { cells, looking, place } = drawing;
  for (let track = 0; track < cells.trackCount; ++track) {
    const cell = track * cells.frameCount + looking.frame;
    if (Number.isNaN(cells.x[cell])) continue;
    const [x, y] = place([cells.x[cell], cells.y[cell]]);
    drawResidual(drawing, cell, [x, y]);
    drawMark(drawing, cells.part[cell], [x, y]);
  }
}

/**
 * A ring around the track that is looked at, where the frame has it, with its name.
 * @param {Drawing} drawing
 */
export function drawSelectedTrack(drawing) {
  const { cells, data, looking, place, line, context } = drawing;
  const cell = looking.track * cells.frameCount + looking.frame;
  if (looking.track < 0 || Number.isNaN(cells.x[cell])) return;
  const [x, y] = place([cells.x[cell], cells.y[cell]]);
  context.beginPath();
  context.setLineDash([]);
  context.arc(x, y, 8 * line, 0, 2 * Math.PI);
  strokeCased(drawing, drawing.isOnPicture ? "#ffffff" : colour("ink"), 2);
  const away = 18 * line;
  write(drawing, shownName(data.result.tracks[looking.track].name), [x, y - away], [x, y + away]);
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

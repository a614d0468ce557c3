// SPDX-License-Identifier: BSD-3-Clause
// What the plots show besides lines.

import { colour } from "./theme.js";
import { modelOf } from "./page_data.js";
import { pixelText } from "./wording.js";

/** @typedef {import("./page_data.js").Frame} Frame */
/** @typedef {import("./theme.js").ColourName} ColourName */
/** @typedef {{ values: (number | null)[], ink: ColourName, dash?: number[] }} PlotLine */

/**
 * Doubtful frames in a wash, behind everything else.
 * @param {UPlot} plot
 * @param {Frame[]} frames
 */
export function drawDoubts(plot, frames) {
  const { ctx, bbox } = plot;
  ctx.fillStyle = colour("wash");
  for (let i = 0; i < frames.length; ++i) {
    if (frames[i].verdict === "good") continue;
    const start = i;
    while (i + 1 < frames.length && frames[i + 1].verdict === "doubtful") ++i;
    const left = Math.max(plot.valToPos(frames[start].frame - 0.5, "x", true), bbox.left);
    const right = Math.min(plot.valToPos(frames[i].frame + 0.5, "x", true), bbox.left + bbox.width);
    ctx.fillRect(left, bbox.top, right - left, bbox.height);
  }
}

/**
 * @param {UPlot} plot
 * @param {number} limit
 */
export function drawLimit(plot, limit) {
  const { ctx, bbox } = plot;
  const y = plot.valToPos(limit, "y", true);
  if (y < bbox.top) return;
  const line = window.devicePixelRatio;
  ctx.save();
  ctx.strokeStyle = colour("doubt");
  ctx.fillStyle = colour("doubt");
  ctx.lineWidth = 1.5 * line;
  ctx.setLineDash([6 * line, 4 * line]);
  ctx.beginPath();
  ctx.moveTo(bbox.left, y);
  ctx.lineTo(bbox.left + bbox.width, y);
  ctx.stroke();
  ctx.font = `${12 * line}px system-ui, sans-serif`;
  ctx.textAlign = "right";
  ctx.textBaseline = "bottom";
  ctx.fillText(`limit ${pixelText(limit)}`, bbox.left + bbox.width - 4 * line, y - 3 * line);
  ctx.restore();
}

/**
 * A cross at the top for each frame whose error nothing tells.
 * @param {UPlot} plot
 * @param {Frame[]} frames
 */
export function drawUnknown(plot, frames) {
  const { ctx, bbox } = plot;
  const line = window.devicePixelRatio;
  const half = 2.5 * line;
  const y = bbox.top + 5 * line;
  ctx.save();
  ctx.strokeStyle = colour("doubt");
  ctx.lineWidth = line;
  ctx.beginPath();
  for (const { frame, expected_error: error } of frames) {
    if (error !== null) continue;
    const x = plot.valToPos(frame, "x", true);
    ctx.moveTo(x - half, y - half);
    ctx.lineTo(x + half, y + half);
    ctx.moveTo(x + half, y - half);
    ctx.lineTo(x - half, y + half);
  }
  ctx.stroke();
  ctx.restore();
}

/**
 * Dots for values between frames that have none: no line leads to them.
 * @param {UPlot} plot
 * @param {Frame[]} frames
 * @param {PlotLine} line
 */
export function drawLoneValues(plot, frames, { values, ink }) {
  const { ctx } = plot;
  ctx.fillStyle = colour(ink);
  values.forEach((value, i) => {
    const isLone = (values[i - 1] ?? null) === null && (values[i + 1] ?? null) === null;
    if (value === null || !isLone) return;
    const x = plot.valToPos(frames[i].frame, "x", true);
    ctx.beginPath();
    ctx.arc(x, plot.valToPos(value, "y", true), 2 * window.devicePixelRatio, 0, 2 * Math.PI);
    ctx.fill();
  });
}

/**
 * Squares for the frames' models, and a triangle for each doubtful frame.
 * @param {UPlot} plot
 * @param {Frame[]} frames
 * @param {string[]} rows
 */
export function drawModels(plot, frames, rows) {
  const { ctx, bbox } = plot;
  const line = window.devicePixelRatio;
  const step = bbox.width / Math.max(frames.length, 1);
  const half = Math.min(Math.max(step * 0.4, 0.5 * line), 3.5 * line);
  ctx.save();
  for (const frame of frames) {
    const x = plot.valToPos(frame.frame, "x", true);
    const y = plot.valToPos(rows.indexOf(modelOf(frame)), "y", true);
    ctx.fillStyle = colour("good");
    ctx.fillRect(x - half, y - 3 * line, 2 * half, 6 * line);
    if (frame.verdict === "good") continue;
    const top = plot.valToPos(rows.indexOf("doubtful"), "y", true);
    ctx.fillStyle = colour("doubt");
    ctx.beginPath();
    ctx.moveTo(x, top - 4 * line);
    ctx.lineTo(x + Math.max(half, line), top + 3 * line);
    ctx.lineTo(x - Math.max(half, line), top + 3 * line);
    ctx.fill();
  }
  ctx.restore();
}

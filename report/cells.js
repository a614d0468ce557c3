// SPDX-License-Identifier: BSD-3-Clause
// One cell for each track in each frame: where it was seen, how far off the fit it is, and what
// part it has in the fit.

import { firstIndexFrom } from "./page_data.js";
import { denominator, mapped } from "./homography.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Frame} Frame */

/** What part a track has in a frame. */
export const Part = Object.freeze({ unseen: 0, good: 1, ignored: 2, none: 3 });

/** For people, by `Part`. */
export const partWords = ["not seen", "good", "ignored", "of no part"];

/**
 * Cell `track * frameCount + frame` of each list. Places are in the units of the tracks, and NaN
 * where the track was not seen or that is not known. (dx, dy) leads from where the transform puts
 * the track to where it was seen; `residual` is its length.
 * @typedef {{
 *   frameCount: number, trackCount: number, part: Uint8Array,
 *   x: Float64Array, y: Float64Array,
 *   dx: Float32Array, dy: Float32Array, residual: Float32Array,
 * }} Cells
 */

/**
 * @param {Cells} cells
 * @param {NonNullable<PageData["observations"]>} observations
 */
function takePlaces(cells, { unit, tracks }) {
  tracks.forEach((stretches, track) => {
    for (const { first, x, y } of stretches) {
      const start = track * cells.frameCount + first;
      let sumX = 0;
      let sumY = 0;
      for (let i = 0; i < x.length; ++i) {
        sumX += x[i];
        sumY += y[i];
        cells.x[start + i] = sumX * unit;
        cells.y[start + i] = sumY * unit;
      }
    }
  });
}

/**
 * @param {Cells} cells
 * @param {Frame[]} frames
 * @param {number} track
 * @param {[number, number][]} runs of frame numbers
 * @param {number} part
 */
function markRuns(cells, frames, track, runs, part) {
  for (const [first, last] of runs) {
    const start = track * cells.frameCount;
    cells.part.fill(
      part,
      start + firstIndexFrom(frames, first),
      start + firstIndexFrom(frames, last + 1),
    );
  }
}

/**
 * @param {Cells} cells
 * @param {PageData["result"]} result
 */
function takeParts(cells, { frames, tracks, left_out_tracks }) {
  const leftOut = new Set((left_out_tracks ?? []).map((track) => track.name));
  tracks.forEach((track, t) => {
    const takesPart = !leftOut.has(track.name);
    markRuns(cells, frames, t, track.good, takesPart ? Part.good : Part.none);
    markRuns(cells, frames, t, track.ignored, takesPart ? Part.ignored : Part.none);
  });
  // What is seen without weight is in no run.
  for (let cell = 0; cell < cells.part.length; ++cell) {
    const isSeen = !Number.isNaN(cells.x[cell]);
    if (isSeen && cells.part[cell] === Part.unseen) cells.part[cell] = Part.none;
  }
}

/**
 * @param {Cells} cells
 * @param {PageData["result"]} result
 */
function takeResiduals(cells, { frames, tracks, front }) {
  const sides = frames.map((frame) => Math.sign(denominator(frame.h, front)));
  tracks.forEach(({ place }, track) => {
    if (place === null) return;
    for (let f = 0; f < frames.length; ++f) {
      const cell = track * cells.frameCount + f;
      const isInFront = denominator(frames[f].h, place) * sides[f] > 0;
      if (Number.isNaN(cells.x[cell]) || !isInFront) continue;
      const [x, y] = mapped(frames[f].h, place);
      cells.dx[cell] = cells.x[cell] - x;
      cells.dy[cell] = cells.y[cell] - y;
      cells.residual[cell] = Math.hypot(cells.dx[cell], cells.dy[cell]);
    }
  });
}

/**
 * @param {PageData} data
 * @returns {Cells}
 */
export function cellsOf({ result, observations }) {
  const frameCount = result.frames.length;
  const trackCount = result.tracks.length;
  const count = frameCount * trackCount;
  const cells = {
    frameCount,
    trackCount,
    part: new Uint8Array(count),
    x: new Float64Array(count).fill(NaN),
    y: new Float64Array(count).fill(NaN),
    dx: new Float32Array(count).fill(NaN),
    dy: new Float32Array(count).fill(NaN),
    residual: new Float32Array(count).fill(NaN),
  };
  if (observations !== null) takePlaces(cells, observations);
  takeParts(cells, result);
  if (observations !== null) takeResiduals(cells, result);
  return cells;
}

/**
 * @param {Cells} cells
 * @param {number} part
 * @returns {Float32Array} the residuals of all cells of the part that have one, in rising order
 */
export function sortedResiduals(cells, part) {
  return cells.residual
    .filter((residual, cell) => cells.part[cell] === part && !Number.isNaN(residual))
    .sort();
}

/**
 * What a track comes to over all frames that are shown.
 * @typedef {{
 *   track: number, good: number, ignored: number, none: number,
 *   largest: number, largestAt: number, rms: number,
 * }} TrackFigures `largest` and `rms` are NaN without residuals; `rms` is of the good frames
 */

/**
 * @param {Cells} cells
 * @param {number} track
 * @returns {TrackFigures}
 */
export function trackFigures(cells, track) {
  const counts = [0, 0, 0, 0];
  let largest = NaN;
  let largestAt = -1;
  let squares = 0;
  let squareCount = 0;
  for (let f = 0; f < cells.frameCount; ++f) {
    const cell = track * cells.frameCount + f;
    const residual = cells.residual[cell];
    counts[cells.part[cell]] += 1;
    if (Number.isNaN(residual)) continue;
    if (!(residual <= largest)) {
      largest = residual;
      largestAt = f;
    }
    if (cells.part[cell] !== Part.good) continue;
    squares += residual * residual;
    squareCount += 1;
  }
  return {
    track,
    good: counts[Part.good],
    ignored: counts[Part.ignored],
    none: counts[Part.none],
    largest,
    largestAt,
    rms: Math.sqrt(squares / squareCount),
  };
}

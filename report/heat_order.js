// SPDX-License-Identifier: BSD-3-Clause
// In which order the heat map and the table of tracks have the tracks.

import { trackFigures } from "./cells.js";

/** @typedef {import("./page_data.js").Result} Result */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./cells.js").TrackFigures} TrackFigures */
/** @typedef {"worst" | "fit" | "moves" | "name"} HeatOrder */

/** @type {[HeatOrder, string][]} */
export const heatOrders = [
  ["worst", "largest residual first"],
  ["fit", "largest RMS where good first"],
  ["moves", "moves the corners most first"],
  ["name", "by name"],
];

/**
 * @param {number} a
 * @param {number} b
 * @returns {number} for sorting the larger first, NaN last
 */
function largerFirst(a, b) {
  return (Number.isNaN(b) ? -1 : b) - (Number.isNaN(a) ? -1 : a);
}

/**
 * @param {Result} result
 * @param {Cells} cells
 * @returns {(order: HeatOrder) => TrackFigures[]}
 */
export function createHeatOrder({ tracks, worst_tracks }, cells) {
  const figures = tracks.map((_, track) => trackFigures(cells, track));
  /** @type {Map<string, number>} */
  const moves = new Map();
  for (const { track, moves: move } of worst_tracks) {
    moves.set(track, Math.max(move, moves.get(track) ?? 0));
  }
  const movesOf = tracks.map(({ name }) => moves.get(name) ?? NaN);

  /** @type {{ [order in HeatOrder]: (a: TrackFigures, b: TrackFigures) => number }} */
  const compare = {
    worst: (a, b) => largerFirst(a.largest, b.largest) || a.track - b.track,
    fit: (a, b) => largerFirst(a.rms, b.rms) || compare.worst(a, b),
    moves: (a, b) => largerFirst(movesOf[a.track], movesOf[b.track]) || compare.worst(a, b),
    name: (a, b) => a.track - b.track,
  };
  return (order) => figures.slice().sort(compare[order]);
}

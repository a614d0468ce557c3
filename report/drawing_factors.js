// SPDX-License-Identifier: BSD-3-Clause
// How many times as long as they are residuals and expected errors are drawn.

/** @typedef {import("./page_data.js").View} View */

const factors = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000];

/** @returns {number[]} how many times as long residuals and ellipses can be drawn */
export function drawingFactors() {
  return factors;
}

/**
 * The largest factor that draws a length no longer than a share of the view's diagonal.
 * @param {number} length in the units of the tracks
 * @param {number} share
 * @param {View} view
 */
export function fittingFactor(length, share, view) {
  const longest = share * Math.hypot(view.width, view.height);
  const fitting = factors.filter(
    (factor) => factor * length * Math.abs(view.from_tracks[0]) <= longest,
  );
  return length > 0 ? (fitting.at(-1) ?? 1) : 1;
}

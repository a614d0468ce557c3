// SPDX-License-Identifier: BSD-3-Clause
// Colours for residuals: of evenly rising lightness, so that their order is seen without colour
// vision too. Larger residuals stand out more against the page, light or dark.

/** @typedef {[number, number, number]} Rgb */

/** @type {Rgb[]} from dark to light */
const heatStops = [
  [38, 14, 84],
  [79, 18, 123],
  [129, 37, 129],
  [181, 54, 122],
  [229, 80, 100],
  [251, 135, 97],
  [254, 194, 135],
  [252, 238, 185],
];

/**
 * @param {number} share from 0 to 1
 * @param {boolean} onDark
 * @returns {Rgb}
 */
export function heatColour(share, onDark) {
  const at = (onDark ? share : 1 - share) * (heatStops.length - 1);
  const below = Math.min(Math.floor(at), heatStops.length - 2);
  const [a, b] = [heatStops[below], heatStops[below + 1]];
  const mix = at - below;
  return [a[0] + (b[0] - a[0]) * mix, a[1] + (b[1] - a[1]) * mix, a[2] + (b[2] - a[2]) * mix];
}

/**
 * The stripes over ignored cells: dark on light colours, light on dark ones.
 * @param {Rgb} colour
 * @returns {Rgb}
 */
export function stripeColour([r, g, b]) {
  const isLight = 0.3 * r + 0.59 * g + 0.11 * b > 128;
  return isLight ? [70, 70, 78] : [225, 225, 230];
}

/**
 * As the four bytes of a pixel.
 * @param {Rgb} colour
 */
export function asPixel([r, g, b]) {
  return (255 << 24) | (Math.round(b) << 16) | (Math.round(g) << 8) | Math.round(r);
}

/**
 * The residual from which on all have the last colour: a round number that nearly all residuals of
 * good tracks stay below.
 * @param {Float32Array} sortedGood
 * @param {number} least
 */
export function heatCap(sortedGood, least) {
  if (sortedGood.length === 0) return 1;
  const high = Math.max(sortedGood[Math.floor(0.99 * (sortedGood.length - 1))], least);
  const power = 10 ** Math.floor(Math.log10(high));
  const step = [1, 2, 3, 4, 5, 6, 8, 10].find((factor) => factor * power >= high) ?? 10;
  return step * power;
}

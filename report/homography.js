// SPDX-License-Identifier: BSD-3-Clause
// Transforms of the plane: three rows of three that carry (x, y, 1).

/** @typedef {import("./page_data.js").Point} Point */
/** @typedef {import("./page_data.js").View} View */
/** @typedef {number[][]} Homography */

/**
 * @param {Homography} h
 * @param {Point} point
 * @returns {number} the third coordinate; its sign tells the sides of the horizon apart
 */
export function denominator(h, [x, y]) {
  return h[2][0] * x + h[2][1] * y + h[2][2];
}

/**
 * @param {Homography} h
 * @param {Point} point
 * @returns {Point}
 */
export function mapped(h, point) {
  const [x, y] = point;
  const w = denominator(h, point);
  return [(h[0][0] * x + h[0][1] * y + h[0][2]) / w, (h[1][0] * x + h[1][1] * y + h[1][2]) / w];
}

/**
 * @param {Homography} a
 * @param {Homography} b
 * @returns {Homography} b first, then a
 */
export function product(a, b) {
  return a.map((row) =>
    [0, 1, 2].map((column) => row.reduce((sum, value, k) => sum + value * b[k][column], 0)),
  );
}

/**
 * The adjugate: the inverse but for a factor, which carries points to the same places.
 * @param {Homography} h
 * @returns {Homography}
 */
export function inverse([[a, b, c], [d, e, f], [g, h, i]]) {
  return [
    [e * i - f * h, c * h - b * i, b * f - c * e],
    [f * g - d * i, a * i - c * g, c * d - a * f],
    [d * h - e * g, b * g - a * h, a * e - b * d],
  ];
}

/**
 * From the tracks' places to the view's, scaled about the view's corner.
 * @param {View} view
 * @param {number} scale
 * @returns {Homography}
 */
function toScaledView(view, scale) {
  const [ax, bx, ay, by] = view.from_tracks;
  return [
    [scale * ax, 0, scale * (bx - view.x)],
    [0, scale * ay, scale * (by - view.y)],
    [0, 0, 1],
  ];
}

/**
 * What carries the picture of a frame to where the surface stands in the reference frame, both
 * drawn with their top left corner at (0, 0) and `scale` times as large as the view.
 *
 * A transform and its negative carry points to the same places, but a browser shows only what has
 * a positive third coordinate. So the sign is taken that shows the surface at `front`.
 *
 * @param {Homography} h the frame's transform
 * @param {Point} front
 * @param {View} view
 * @param {number} scale
 * @returns {Homography}
 */
export function steadying(h, front, view, scale) {
  const drawn = toScaledView(view, scale);
  const back = product(product(drawn, inverse(h)), inverse(drawn));
  const sign = Math.sign(denominator(back, mapped(drawn, mapped(h, front)))) || 1;
  const largest = Math.max(...back.flat().map(Math.abs));
  return back.map((row) => row.map((value) => (value * sign) / largest));
}

/**
 * @param {Homography} h
 * @returns {string} for the CSS property `transform`
 */
export function asMatrix3d([[a, b, c], [d, e, f], [g, h, i]]) {
  return `matrix3d(${[a, d, 0, g, b, e, 0, h, 0, 0, 1, 0, c, f, 0, i].join(", ")})`;
}

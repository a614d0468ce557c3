// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import {
  asMatrix3d,
  denominator,
  inverse,
  mapped,
  product,
  steadying,
} from "../../report/homography.js";

/** @typedef {[number, number]} Point */

/** @param {Point} actual @param {Point} expected */
function near(actual, expected) {
  const far = Math.hypot(actual[0] - expected[0], actual[1] - expected[1]);
  assert.ok(far < 1e-12 * (1 + Math.hypot(...expected)), `${actual} instead of ${expected}`);
}

const tilted = [
  [1, 0, 5],
  [0, 2, -1],
  [0.01, 0, 1],
];
/** @type {any} */
const view = { x: 0, y: 0, width: 100, height: 50, is_picture: true, from_tracks: [1, 0, 1, 0] };

test("a point is divided by its third coordinate", () => {
  assert.equal(denominator(tilted, [100, 3]), 2);
  near(mapped(tilted, [100, 3]), [52.5, 2.5]);
});

test("the inverse leads back", () => {
  for (const point of /** @type {Point[]} */ ([
    [0, 0],
    [100, 3],
    [-20, 7.5],
  ])) {
    near(mapped(inverse(tilted), mapped(tilted, point)), point);
  }
});

test("a product does its second factor first", () => {
  const double = [
    [2, 0, 0],
    [0, 2, 0],
    [0, 0, 1],
  ];
  const shift = [
    [1, 0, 3],
    [0, 1, 4],
    [0, 0, 1],
  ];
  assert.deepEqual(product(double, shift), [
    [2, 0, 6],
    [0, 2, 8],
    [0, 0, 1],
  ]);
});

test("steadied, a shifted picture goes back by as much as it is scaled", () => {
  const shifted = [
    [1, 0, 10],
    [0, 1, -4],
    [0, 0, 1],
  ];
  const back = steadying(shifted, [50, 25], view, 2);
  near(mapped(back, [2 * (30 + 10), 2 * (20 - 4)]), [60, 40]);
});

test("steadied, what is drawn with y down goes back though the tracks have y up", () => {
  const shifted = [
    [1, 0, 10],
    [0, 1, -4],
    [0, 0, 1],
  ];
  const up = { ...view, from_tracks: [1, 0, -1, 50] };
  // The track at (30, 20) is drawn at (30, 30), in the shifted frame at (40, 34).
  near(mapped(steadying(shifted, [50, 25], up, 1), [40, 34]), [30, 30]);
});

test("steadied, the surface has a positive third coordinate on either side of the horizon", () => {
  const steep = [
    [1, 0, 0],
    [0, 1, 0],
    [-0.01, 0, 1],
  ];
  for (const front of /** @type {Point[]} */ ([
    [20, 10],
    [200, 10],
  ])) {
    const back = steadying(steep, front, view, 1);
    assert.ok(denominator(back, mapped(steep, front)) > 0, String(front));
  }
});

test("CSS takes a transform column by column, with a row and a column for depth", () => {
  assert.equal(
    asMatrix3d([
      [1, 2, 3],
      [4, 5, 6],
      [7, 8, 9],
    ]),
    "matrix3d(1, 4, 0, 7, 2, 5, 0, 8, 0, 0, 1, 0, 3, 6, 0, 9)",
  );
});

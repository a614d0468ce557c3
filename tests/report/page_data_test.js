// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import {
  comparableError,
  firstIndexFrom,
  inView,
  modelOf,
  nearestIndex,
  tracksInUse,
  worstIndexWithin,
} from "../../report/page_data.js";

/** @type {any[]} */
const frames = [
  { frame: -2, expected_error: 1 },
  { frame: 0, expected_error: 7 },
  { frame: 5, expected_error: 3 },
  { frame: 6, expected_error: 9 },
];

test("the first frame from a number on is found, or there is none", () => {
  assert.deepEqual(
    [-9, -2, -1, 5, 6, 7].map((number) => firstIndexFrom(frames, number)),
    [0, 0, 1, 2, 3, 4],
  );
});

test("a frame that is not shown has a nearest one", () => {
  assert.deepEqual(
    [-9, 0, 1, 4, 99].map((number) => nearestIndex(frames, number)),
    [0, 1, 1, 2, 3],
  );
});

test("the worst frame of a stretch lies within it", () => {
  assert.equal(worstIndexWithin(frames, -2, 5), 1);
  assert.equal(worstIndexWithin(frames, 3, 5), 2);
});

test("a frame whose error is not known counts as worse than any", () => {
  assert.equal(comparableError(/** @type {any} */ ({ expected_error: null })), Infinity);
});

test("tracks in use are good or ignored, in held frames all are ignored", () => {
  /** @param {object} frame */
  const use = (frame) => tracksInUse(/** @type {any} */ (frame));
  assert.deepEqual(use({ status: "solved", tracks: 10, good: 7 }), { good: 7, ignored: 3 });
  assert.deepEqual(use({ status: "reduced", tracks: 3 }), { good: 3, ignored: 0 });
  assert.deepEqual(use({ status: "held", tracks: 2 }), { good: 0, ignored: 2 });
});

test("the base frame has no model but is one", () => {
  assert.equal(modelOf(/** @type {any} */ ({ status: "base" })), "base");
  assert.equal(modelOf(/** @type {any} */ ({ status: "reduced", model: "affine" })), "affine");
});

test("a place is drawn where from_tracks has it", () => {
  const view = /** @type {any} */ ({ from_tracks: [1, 0.5, -1, 99.5] });
  assert.deepEqual(inView(view, [10, 20]), [10.5, 79.5]);
});

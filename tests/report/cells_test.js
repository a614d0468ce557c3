// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import { Part, cellsOf, sortedResiduals, trackFigures } from "../../report/cells.js";

const still = [
  [1, 0, 0],
  [0, 1, 0],
  [0, 0, 1],
];
const shifted = [
  [1, 0, 3],
  [0, 1, 0],
  [0, 0, 1],
];

/** @param {string} name @param {object} runs */
const track = (name, runs) => ({ name, place: [1, 2], good: [], ignored: [], absent: [], ...runs });

// Frames 10 and 12: the page does not show 11.
/** @type {any} */
const data = {
  result: {
    frames: [
      { frame: 10, h: still },
      { frame: 12, h: shifted },
    ],
    tracks: [
      track("good", { good: [[10, 12]] }),
      track("late", { ignored: [[11, 12]], absent: [[10, 10]] }),
      track("left out", { good: [[10, 12]] }),
      track("without weight", { absent: [[10, 12]] }),
      { ...track("without place", { ignored: [[10, 12]] }), place: null },
    ],
    left_out_tracks: [{ name: "left out", why: "not-needed" }],
    front: [0, 0],
  },
  observations: {
    unit: 0.5,
    tracks: [
      [{ first: 0, x: [2, 7], y: [4, 0] }],
      [{ first: 1, x: [14], y: [12] }],
      [{ first: 0, x: [2, 6], y: [4, 0] }],
      [{ first: 1, x: [8], y: [4] }],
      [{ first: 0, x: [2, 6], y: [4, 0] }],
    ],
  },
};

test("places are sums of steps, in units", () => {
  const { x, y } = cellsOf(data);
  assert.deepEqual([...x.slice(0, 4)], [1, 4.5, NaN, 7]);
  assert.deepEqual([...y.slice(0, 4)], [2, 2, NaN, 6]);
});

test("a residual leads from where the transform puts the track to where it was seen", () => {
  const { dx, dy, residual } = cellsOf(data);
  // The place (1, 2) is at (4, 2) in the second frame.
  assert.deepEqual([...dx.slice(0, 4)], [0, 0.5, NaN, 3]);
  assert.deepEqual([...dy.slice(0, 4)], [0, 0, NaN, 4]);
  assert.deepEqual([...residual.slice(0, 4)], [0, 0.5, NaN, 5]);
});

test("a track without a place has no residual", () => {
  assert.deepEqual([...cellsOf(data).residual.slice(8)], [NaN, NaN]);
});

test("behind the horizon there is no residual", () => {
  const behind = structuredClone(data);
  behind.result.frames[1].h = [
    [1, 0, 0],
    [0, 1, 0],
    [-2, 0, 1],
  ];
  const { residual } = cellsOf(behind);
  assert.deepEqual([...residual.slice(0, 2)], [0, NaN]);
});

test("parts come from the runs, but tracks that are left out or without weight have none", () => {
  const { good, ignored, none, unseen } = Part;
  assert.deepEqual(
    [...cellsOf(data).part],
    [good, good, unseen, ignored, none, none, unseen, none, ignored, ignored],
  );
});

test("without the tracks, parts are known and places are not", () => {
  const cells = cellsOf({ ...data, observations: null });
  assert.deepEqual([...cells.part.slice(0, 4)], [Part.good, Part.good, Part.unseen, Part.ignored]);
  assert.ok(cells.x.every(Number.isNaN));
  assert.ok(cells.residual.every(Number.isNaN));
});

test("residuals of a part are in rising order, as numbers", () => {
  const wide = structuredClone(data);
  wide.observations.tracks[0] = [{ first: 0, x: [22, -14], y: [4, 0] }];
  // (11, 2) is 10 off (1, 2), and (4, 2) is where the second frame has it.
  assert.deepEqual([...sortedResiduals(cellsOf(wide), Part.good)], [0, 10]);
});

test("a track's figures count its frames and find its largest residual", () => {
  const figures = trackFigures(cellsOf(data), 0);
  assert.equal(figures.good, 2);
  assert.equal(figures.largest, 0.5);
  assert.equal(figures.largestAt, 1);
  assert.equal(figures.rms, Math.sqrt(0.125));
});

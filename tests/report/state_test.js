// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import { createState } from "../../report/state.js";

const looking = {
  frame: 2,
  track: -1,
  isPlaying: false,
  framesPerSecond: 12,
  residualFactor: 1,
  ellipseFactor: 1,
  zoom: 1,
};

test("listeners hear what changed, and only that", () => {
  const state = createState(5, looking);
  /** @type {string[][]} */
  const heard = [];
  state.subscribe((changed) => heard.push([...changed]));
  state.change({ frame: 3, track: -1, isPlaying: true });
  assert.deepEqual(heard, [["frame", "isPlaying"]]);
  assert.equal(state.frame, 3);
});

test("nothing is heard when nothing changes", () => {
  const state = createState(5, looking);
  state.subscribe(() => assert.fail("heard"));
  state.change({ frame: 2 });
});

test("frames stay within the shot", () => {
  const state = createState(5, looking);
  state.change({ frame: 12 });
  assert.equal(state.frame, 4);
  state.change({ frame: -3 });
  assert.equal(state.frame, 0);
});

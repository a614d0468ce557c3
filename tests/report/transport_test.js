// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import { nextDoubtful } from "../../report/transport.js";

/** @param {string} letters d for a doubtful frame */
const framesOf = (letters) =>
  /** @type {any[]} */ (
    [...letters].map((letter) => ({ verdict: letter === "d" ? "doubtful" : "good" }))
  );

test("the next doubtful frame is found both ways, round the ends", () => {
  const frames = framesOf("gdgdg");
  assert.deepEqual(
    [0, 1, 3, 4].map((from) => nextDoubtful(frames, from, 1)),
    [1, 3, 1, 1],
  );
  assert.deepEqual(
    [0, 1, 3, 4].map((from) => nextDoubtful(frames, from, -1)),
    [3, 3, 1, 3],
  );
});

test("without another doubtful frame it stays", () => {
  assert.equal(nextDoubtful(framesOf("ggg"), 1, 1), 1);
  assert.equal(nextDoubtful(framesOf("gdg"), 1, -1), 1);
});

// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import { write } from "../../report/brush.js";

/** A brush for a canvas of 400 x 300 on which each letter is 10 wide, and what it writes where. */
function noted() {
  /** @type {{ text: string, x: number, y: number }[]} */
  const texts = [];
  const context = {
    canvas: { width: 400, height: 300 },
    setLineDash: () => {},
    measureText: (/** @type {string} */ text) => ({ width: 10 * text.length }),
    strokeText: () => {},
    fillText: (/** @type {string} */ text, /** @type {number} */ x, /** @type {number} */ y) =>
      texts.push({ text, x, y }),
  };
  const brush = /** @type {any} */ ({ context, line: 1, isOnPicture: true, written: [] });
  return { brush, texts };
}

// What the style sheet would say.
Object.assign(globalThis, {
  document: { documentElement: null },
  getComputedStyle: () => ({ getPropertyValue: () => "#000000" }),
});

test("a text stays on the canvas", () => {
  const { brush, texts } = noted();
  write(brush, "four", [-50, 150]);
  write(brush, "four", [200, 900]);
  assert.deepEqual(texts, [
    { text: "four", x: 26, y: 150 },
    { text: "four", x: 200, y: 288 },
  ]);
});

test("a text takes the first place that no other is in", () => {
  const { brush, texts } = noted();
  write(brush, "top right", [200, 100], [200, 200]);
  write(brush, "t1", [230, 110], [230, 140]);
  write(brush, "t2", [230, 70], [230, 140]);
  assert.deepEqual(
    texts.map(({ x, y }) => [x, y]),
    [
      [200, 100],
      [230, 140],
      [230, 70],
    ],
  );
});

test("a text is written even where all its places are taken", () => {
  const { brush, texts } = noted();
  write(brush, "one", [200, 100]);
  write(brush, "two", [200, 105], [205, 95]);
  assert.deepEqual(texts[1], { text: "two", x: 200, y: 105 });
});

// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import { asPixel, heatCap, heatColour } from "../../report/heat_colours.js";

/** Relative luminance of sRGB. @param {number[]} rgb */
function luminance(rgb) {
  const [r, g, b] = rgb.map((value) =>
    value <= 10.31475 ? value / 255 / 12.92 : ((value / 255 + 0.055) / 1.055) ** 2.4,
  );
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

test("larger residuals are darker on light and lighter on dark, all the way", () => {
  const shares = Array.from({ length: 33 }, (_, i) => i / 32);
  for (const onDark of [false, true]) {
    const lights = shares.map((share) => luminance(heatColour(share, onDark)));
    const steps = lights.slice(1).map((light, i) => (onDark ? 1 : -1) * (light - lights[i]));
    assert.ok(Math.min(...steps) > 0, String(steps));
  }
});

test("a pixel has red first in memory and is opaque", () => {
  const bytes = new Uint8Array(new Uint32Array([asPixel([1, 2, 3])]).buffer);
  assert.deepEqual([...bytes], [1, 2, 3, 255]);
});

test("the last colour begins at a round number above nearly all residuals", () => {
  const sorted = Float32Array.from({ length: 1000 }, (_, i) => i * 0.0023);
  assert.equal(heatCap(sorted, 0), 3); // 99 of 100 are below 2.28
});

test("residuals of rounding do not get all colours", () => {
  assert.ok(Math.abs(heatCap(Float32Array.from([0, 0.001, 0.002]), 0.02) - 0.02) < 1e-12);
});

test("without residuals there is a scale all the same", () => {
  assert.equal(heatCap(new Float32Array(0), 0.02), 1);
});

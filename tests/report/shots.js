// SPDX-License-Identifier: BSD-3-Clause
// Shots made up for the tests: a flat surface under a camera that drifts.
import { mapped, writeTracks } from "./support.js";

/** @typedef {import("./support.js").Point} Point */

/** The same numbers in every run, even over -1 to 1. */
export function numbers(seed = 1) {
  let state = seed >>> 0;
  return () => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return state / 2 ** 31 - 1;
  };
}

/**
 * Where frame 0's places are in a frame.
 * @param {number} frame
 */
export const drift = (frame) => [
  [1 + 0.004 * frame, -0.006 * frame, 5 * frame],
  [0.006 * frame, 1 + 0.002 * frame, -2 * frame],
  [0.00001 * frame, 0.00001 * frame, 1],
];

/**
 * Rows of a file of tracks: places in a picture of 640 x 360, each off by up to `noise`.
 * @param {{ frames?: number, noise?: number, names: string[] }} shot
 */
export function driftingRows({ frames = 12, noise = 0.2, names }) {
  const random = numbers();
  const columns = Math.ceil(Math.sqrt(names.length));
  const rows = Math.ceil(names.length / columns);
  return names.flatMap((track, i) => {
    /** @type {Point} */
    const place = [
      80 + (400 * ((i % columns) + 0.5)) / columns + 9 * random(),
      90 + (230 * (Math.floor(i / columns) + 0.5)) / rows + 9 * random(),
    ];
    return Array.from({ length: frames }, (_, frame) => {
      const [x, y] = mapped(drift(frame), place);
      return { track, frame, x: x + noise * random(), y: y + noise * random() };
    });
  });
}

/** @param {number} count */
export const plainNames = (count) => Array.from({ length: count }, (_, i) => `t${i}`);

/**
 * @param {string} name of the file
 * @param {Partial<Parameters<typeof driftingRows>[0]>} [shot]
 */
export const driftingShot = (name, shot) =>
  writeTracks(name, driftingRows({ names: plainNames(25), ...shot }));

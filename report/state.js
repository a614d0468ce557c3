// SPDX-License-Identifier: BSD-3-Clause
// What the page is looking at. Views subscribe and draw themselves anew when it changes.

/**
 * @typedef {{
 *   frame: number, track: number, isPlaying: boolean, framesPerSecond: number,
 *   residualFactor: number, ellipseFactor: number, zoom: number,
 * }} Looking `frame` and `track` are indices; `track` is -1 where none is selected
 */

/** @typedef {keyof Looking} LookingAt */
/** @typedef {(changed: Set<LookingAt>) => void} Listener */

/** @typedef {Looking & { change: (changes: Partial<Looking>) => void,
 *   subscribe: (listener: Listener) => void, frameCount: number }} State */

/**
 * @param {number} frameCount
 * @param {Looking} looking what the page looks at first
 * @returns {State}
 */
export function createState(frameCount, looking) {
  /** @type {Listener[]} */
  const listeners = [];

  /** @type {State} */
  const state = {
    ...looking,
    frameCount,
    subscribe: (listener) => listeners.push(listener),
    change(changes) {
      const wanted = { ...changes };
      if (wanted.frame !== undefined) {
        wanted.frame = Math.min(Math.max(Math.round(wanted.frame), 0), frameCount - 1);
      }
      const keys = /** @type {LookingAt[]} */ (Object.keys(wanted));
      const changed = new Set(keys.filter((key) => wanted[key] !== state[key]));
      if (changed.size === 0) return;
      Object.assign(state, wanted);
      for (const listener of listeners) listener(changed);
    },
  };
  return state;
}

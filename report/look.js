// SPDX-License-Identifier: BSD-3-Clause
// What a click on a frame or a track anywhere on the page comes to.

import { found } from "./elements.js";

/** @typedef {import("./state.js").State} State */

/**
 * Looks at it, and scrolls to where it is drawn, if that is not in the window already.
 * @param {State} state
 * @param {Partial<State>} changes
 */
export function look(state, changes) {
  state.change({ ...changes, isPlaying: false });
  found("player-stage", HTMLElement).scrollIntoView({ block: "nearest" });
}

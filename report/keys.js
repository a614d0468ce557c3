// SPDX-License-Identifier: BSD-3-Clause
// What keys do, wherever they do not mean something else already.

import { found, made } from "./elements.js";
import { nextDoubtful } from "./transport.js";

/** @typedef {import("./page_data.js").Frame} Frame */
/** @typedef {import("./state.js").State} State */

const keyWords = [
  ["←, →", "step a frame; with Shift ten"],
  ["Home, End", "first and last frame"],
  ["Space", "play and pause"],
  ["n, p", "next and previous doubtful frame"],
  ["↑, ↓", "select a track, in the heat map"],
  ["?", "this list"],
  ["Esc", "close it"],
];

/**
 * Whether the element that the key goes to does something with it by itself.
 * @param {KeyboardEvent} event
 */
function isTaken({ target, key }) {
  if (!(target instanceof Element)) return false;
  if (target.closest("input, select, textarea, [contenteditable]")) return true;
  return key === " " && target.closest("button, summary, a") !== null;
}

/**
 * @param {Frame[]} frames
 * @param {State} state
 */
export function createKeys(frames, state) {
  const dialog = found("keys", HTMLDialogElement);
  for (const [keys, text] of keyWords) {
    const names = keys.split(", ").map((key) => made("kbd", {}, key));
    found("keys-list", HTMLElement).append(
      made("div", {}, made("dt", {}, ...names), made("dd", {}, text)),
    );
  }
  found("keys-button", HTMLButtonElement).addEventListener("click", () => dialog.showModal());
  found("keys-close", HTMLButtonElement).addEventListener("click", () => dialog.close());

  /** @param {number} frame */
  const goTo = (frame) => state.change({ frame, isPlaying: false });

  /** @type {{ [key: string]: ((event: KeyboardEvent) => void) | undefined }} */
  const acts = {
    ArrowLeft: (event) => goTo(state.frame - (event.shiftKey ? 10 : 1)),
    ArrowRight: (event) => goTo(state.frame + (event.shiftKey ? 10 : 1)),
    Home: () => goTo(0),
    End: () => goTo(frames.length - 1),
    " ": () => frames.length > 1 && state.change({ isPlaying: !state.isPlaying }),
    n: () => goTo(nextDoubtful(frames, state.frame, 1)),
    p: () => goTo(nextDoubtful(frames, state.frame, -1)),
    "?": () => dialog.showModal(),
  };
  document.addEventListener("keydown", (event) => {
    const act = acts[event.key];
    if (act === undefined || event.ctrlKey || event.altKey || event.metaKey) return;
    if (dialog.open || isTaken(event)) return;
    event.preventDefault();
    act(event);
  });
}

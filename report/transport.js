// SPDX-License-Identifier: BSD-3-Clause
// Playing, stepping and going to frames.

import { found, made } from "./elements.js";
import { nearestIndex } from "./page_data.js";

/** @typedef {import("./page_data.js").Frame} Frame */
/** @typedef {import("./state.js").State} State */

const speeds = [2, 6, 12, 24, 48]; // frames a second

/**
 * The next doubtful frame, going round at the ends; the same frame where no other is doubtful.
 * @param {Frame[]} frames
 * @param {number} from
 * @param {1 | -1} step
 */
export function nextDoubtful(frames, from, step) {
  for (let i = 1; i <= frames.length; ++i) {
    const index = (from + step * i + frames.length * i) % frames.length;
    if (frames[index].verdict === "doubtful") return index;
  }
  return from;
}

/**
 * Steps while the page plays, but never past a frame that is not drawn yet.
 * @param {State} state
 * @param {() => boolean} isDrawn
 */
function keepPlaying(state, isDrawn) {
  let last = 0;
  /** @param {number} now in milliseconds */
  function tick(now) {
    if (!state.isPlaying) return;
    const pause = 1000 / state.framesPerSecond;
    if (now - last >= pause && isDrawn()) {
      // What is left over is kept, so that the speed holds on average; but not after a long wait.
      last = now - last < 2 * pause ? last + pause : now;
      state.change({ frame: (state.frame + 1) % state.frameCount });
    }
    requestAnimationFrame(tick);
  }
  state.subscribe((changed) => {
    if (!changed.has("isPlaying") || !state.isPlaying) return;
    last = performance.now();
    requestAnimationFrame(tick);
  });
}

/**
 * @param {Frame[]} frames
 * @param {State} state
 * @param {() => boolean} isDrawn
 */
export function createTransport(frames, state, isDrawn) {
  const play = found("play", HTMLButtonElement);
  const scrubber = found("scrubber", HTMLInputElement);
  const number = found("frame-number", HTMLInputElement);
  const speed = found("speed", HTMLSelectElement);

  function show() {
    const frame = frames[state.frame];
    play.textContent = state.isPlaying ? "Pause" : "Play";
    scrubber.value = String(state.frame);
    scrubber.setAttribute("aria-valuetext", `frame ${frame.frame}, ${frame.verdict}`);
    if (document.activeElement !== number) number.value = String(frame.frame);
  }

  /**
   * @param {string} id
   * @param {() => void} act
   */
  const onClick = (id, act) => found(id, HTMLButtonElement).addEventListener("click", act);

  onClick("play", () => state.change({ isPlaying: !state.isPlaying }));
  onClick("step-back", () => state.change({ frame: state.frame - 1, isPlaying: false }));
  onClick("step-on", () => state.change({ frame: state.frame + 1, isPlaying: false }));
  onClick("previous-doubtful", () =>
    state.change({ frame: nextDoubtful(frames, state.frame, -1) }),
  );
  onClick("next-doubtful", () => state.change({ frame: nextDoubtful(frames, state.frame, 1) }));
  scrubber.addEventListener("input", () => state.change({ frame: Number(scrubber.value) }));
  number.addEventListener("change", () => {
    if (number.value !== "") state.change({ frame: nearestIndex(frames, Number(number.value)) });
    number.value = String(frames[state.frame].frame);
  });
  speed.addEventListener("change", () => state.change({ framesPerSecond: Number(speed.value) }));

  for (const each of speeds) speed.append(made("option", { value: `${each}` }, `${each} a second`));
  speed.value = String(state.framesPerSecond);
  scrubber.max = String(frames.length - 1);
  number.min = String(frames[0].frame);
  number.max = String(frames[frames.length - 1].frame);
  const hasDoubts = frames.some((frame) => frame.verdict === "doubtful");
  for (const id of ["previous-doubtful", "next-doubtful"]) {
    found(id, HTMLButtonElement).disabled = !hasDoubts;
  }
  play.disabled = frames.length === 1;
  state.subscribe(show);
  keepPlaying(state, isDrawn);
  show();
}

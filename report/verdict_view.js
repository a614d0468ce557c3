// SPDX-License-Identifier: BSD-3-Clause
// What the solve comes to, in the command's words.

import { counted, framesText, shareText } from "./wording.js";
import { found, made, madeButton } from "./elements.js";
import { look } from "./look.js";
import { worstIndexWithin } from "./page_data.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./state.js").State} State */

/**
 * @param {PageData} data
 * @param {State} state
 */
export function createVerdictView({ title, verdict, result, reduced }, state) {
  const { frames } = result;
  found("title", HTMLElement).textContent = title;
  found("shot-line", HTMLElement).textContent = [
    `${counted(reduced.frames.of, "frame")}, ${framesText(frames[0].frame, frames[frames.length - 1].frame)}`,
    counted(reduced.tracks.of, "track"),
    `base frame ${result.base_frame}`,
  ].join(" · ");

  const hasDoubts = frames.some((frame) => frame.verdict === "doubtful");
  const sentence = found("verdict-sentence", HTMLElement);
  sentence.textContent = verdict.sentence;
  sentence.classList.add(hasDoubts ? "doubtful" : "good");
  found("verdict-lines", HTMLElement).append(
    ...verdict.lines.map(({ first, last, text }) => {
      const go = () => look(state, { frame: worstIndexWithin(frames, first, last) });
      const span = framesText(first, last);
      const label = `Go to the worst of frames ${span}`;
      const button = madeButton(span, go, { class: "link", "aria-label": label });
      return made("li", {}, button, made("span", {}, text));
    }),
  );

  const shown = [
    reduced.frames.how && shareText(reduced.frames, "frame"),
    reduced.tracks.how && shareText(reduced.tracks, "track"),
    reduced.between.how && shareText(reduced.between, "transform between frames"),
  ].filter(Boolean);
  const note = found("reduced-note", HTMLElement);
  note.hidden = shown.length === 0;
  note.textContent = `Shown here are ${shown.join("; and ")}.`;
}

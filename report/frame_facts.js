// SPDX-License-Identifier: BSD-3-Clause
// What is known of the frame that the page looks at.

import { cornerNames, pixelText, rounded } from "./wording.js";
import { found, made } from "./elements.js";
import { inView, modelOf, tracksInUse } from "./page_data.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Frame} Frame */
/** @typedef {import("./state.js").State} State */

/** @param {Frame} frame */
function figuresOf(frame) {
  const { good, ignored } = tracksInUse(frame);
  const figures = [
    ["Expected corner error", pixelText(frame.expected_error)],
    ["RMS", pixelText(frame.good_rms ?? frame.rms)],
    ["Good tracks", String(good)],
    ["Ignored tracks", String(ignored)],
    ["Model", modelOf(frame)],
  ];
  if (frame.smoothed > 0) figures.push(["Smoothed by", pixelText(frame.smoothed)]);
  if (frame.filled) figures.push(["Filled in", "between good frames"]);
  return figures.map(([name, text]) => made("div", {}, made("dt", {}, name), made("dd", {}, text)));
}

/** @param {Frame} frame */
function verdictOf(frame) {
  if (frame.verdict === "good") {
    return [made("p", { class: "good" }, `Frame ${frame.frame} is good.`)];
  }
  return [
    made("p", { class: "doubtful" }, `Frame ${frame.frame} is doubtful:`),
    made("ul", {}, ...frame.doubts.map((doubt) => made("li", {}, doubt.text))),
  ];
}

/**
 * @param {PageData} data
 * @param {Frame} frame
 */
function cornerRows({ result, view }, frame) {
  return result.quads.flatMap(({ name, corners }) => {
    const quad = frame.quads[name];
    const names = cornerNames(corners.map((corner) => inView(view, corner)));
    return names.map((cornerName, i) => {
      const [x, y] = quad?.corners[i] ?? [null, null];
      const label = result.quads.length > 1 ? `${name}, ${cornerName}` : cornerName;
      const places =
        x === null || y === null
          ? [made("td", { colspan: "2" }, "behind the horizon")]
          : [x, y].map((value) => made("td", { class: "number" }, value.toFixed(2)));
      const error = quad?.deviation[i] ?? null;
      const errorText = error === null ? "not known" : rounded(error);
      return made(
        "tr",
        {},
        made("th", { scope: "row" }, label),
        ...places,
        made("td", { class: "number" }, errorText),
      );
    });
  });
}

/** @param {string[]} names */
function headRow(names) {
  const cells = names.map((name, i) =>
    made("th", { scope: "col", ...(i > 0 && { class: "number" }) }, name),
  );
  return made("thead", {}, made("tr", {}, ...cells));
}

/**
 * @param {PageData} data
 * @param {State} state
 */
export function createFrameFacts(data, state) {
  const verdict = found("frame-verdict", HTMLElement);
  const figures = found("frame-figures", HTMLElement);
  const table = found("frame-corners", HTMLTableElement);
  const body = made("tbody", {});
  const caption = made("caption", { class: "unseen" }, "The corners in this frame, in pixels");
  table.append(caption, headRow(["Corner", "x", "y", "may be off"]), body);

  function show() {
    const frame = data.result.frames[state.frame];
    verdict.setAttribute("aria-live", state.isPlaying ? "off" : "polite");
    verdict.replaceChildren(...verdictOf(frame));
    figures.replaceChildren(...figuresOf(frame));
    body.replaceChildren(...cornerRows(data, frame));
  }
  state.subscribe((changed) => (changed.has("frame") || changed.has("isPlaying")) && show());
  show();
}

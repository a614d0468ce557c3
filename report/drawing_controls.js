// SPDX-License-Identifier: BSD-3-Clause
// What the marks of a drawn frame mean, and how many times as long lengths are drawn.

import { Part, partWords } from "./cells.js";
import { colour, onThemeChange } from "./theme.js";
import { contextOf, fitToScreen, found, made } from "./elements.js";
import { drawingFactors, traceMark } from "./frame_drawing.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./state.js").State} State */

/**
 * @param {HTMLCanvasElement} canvas
 * @param {number} part
 */
function drawSwatch(canvas, part) {
  if (!fitToScreen(canvas)) return;
  const context = contextOf(canvas);
  const line = window.devicePixelRatio;
  context.clearRect(0, 0, canvas.width, canvas.height);
  const ink = colour(part === Part.good ? "good" : part === Part.ignored ? "ignored" : "none");
  context.strokeStyle = ink;
  context.fillStyle = ink;
  context.lineWidth = 1.5 * line;
  traceMark(context, part, [canvas.width / 2, canvas.height / 2], 4 * line);
  if (part === Part.good) context.fill();
  else context.stroke();
}

/** @param {boolean} knowsTracks */
function createLegend(knowsTracks) {
  const legend = found("legend", HTMLElement);
  const parts = knowsTracks ? [Part.good, Part.ignored, Part.none] : [];
  const swatches = parts.map((part) => {
    const canvas = made("canvas", { class: "swatch", "aria-hidden": "true" });
    legend.append(
      made("li", {}, canvas, part === Part.none ? "track of no part" : `${partWords[part]} track`),
    );
    return { canvas, part };
  });
  for (const [kind, text] of [
    ["solid", "quad in a good frame"],
    ["dashed", "quad in a doubtful frame"],
    ["ellipse", "expected error of a corner"],
  ]) {
    legend.append(
      made("li", {}, made("span", { class: `swatch ${kind}`, "aria-hidden": "true" }), text),
    );
  }
  const draw = () => swatches.forEach(({ canvas, part }) => drawSwatch(canvas, part));
  draw();
  onThemeChange(draw);
}

/**
 * @param {string} id
 * @param {State} state
 * @param {"residualFactor" | "ellipseFactor"} key
 * @param {number[]} factors
 */
function createFactor(id, state, key, factors) {
  const select = found(id, HTMLSelectElement);
  for (const factor of factors) {
    const label = factor === 0 ? "hidden" : `× ${factor}`;
    select.append(made("option", { value: String(factor) }, label));
  }
  select.value = String(state[key]);
  select.addEventListener("change", () => state.change({ [key]: Number(select.value) }));
}

/** @param {State} state */
function createZoom(state) {
  const select = found("zoom", HTMLSelectElement);
  for (const [zoom, label] of [
    ["1", "the picture"],
    ["0.5", "twice as much"],
    ["0.25", "four times as much"],
  ]) {
    select.append(made("option", { value: zoom }, label));
  }
  select.addEventListener("change", () => state.change({ zoom: Number(select.value) }));
}

/** @param {number} factor */
function timesAsLong(factor) {
  return factor === 1 ? "as long as they are" : `${factor} times as long`;
}

/**
 * @param {PageData} data
 * @param {State} state
 */
export function createDrawingControls(data, state) {
  const note = found("drawing-note", HTMLElement);
  const knowsTracks = data.observations !== null;

  function show() {
    const residuals = knowsTracks && state.residualFactor > 0;
    const parts = residuals
      ? [
          `Residuals are drawn ${timesAsLong(state.residualFactor)}; a bar ends those that are cut short.`,
        ]
      : [];
    const large = state.ellipseFactor === 1 ? "" : `, drawn ${state.ellipseFactor} times as large`;
    parts.push(`Ellipses reach to two deviations of a corner's place${large}.`);
    note.textContent = parts.join(" ");
  }

  createLegend(knowsTracks);
  createFactor("residual-factor", state, "residualFactor", [0, ...drawingFactors()]);
  createFactor("ellipse-factor", state, "ellipseFactor", drawingFactors());
  found("residual-factor", HTMLSelectElement).disabled = !knowsTracks;
  createZoom(state);
  state.subscribe(show);
  show();
}

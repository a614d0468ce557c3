// SPDX-License-Identifier: BSD-3-Clause
// What the marks of a drawn frame mean, and how many times as long lengths are drawn.

import { Part, partWords } from "./cells.js";
import { onThemeChange } from "./theme.js";
import { contextOf, fitToScreen, found, made } from "./elements.js";
import { createBrush, drawMark, quadColour, strokeCased } from "./brush.js";
import { drawingFactors } from "./drawing_factors.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./state.js").State} State */

/** @typedef {import("./brush.js").Brush} Brush */
/** @typedef {(brush: Brush, canvas: HTMLCanvasElement) => void} Swatch */

/**
 * @param {Brush} brush
 * @param {HTMLCanvasElement} canvas
 * @param {number[]} dash in thin lines
 */
function drawLine(brush, { width, height }, dash) {
  const { context, line } = brush;
  context.setLineDash(dash.map((length) => length * line));
  context.beginPath();
  context.moveTo(2 * line, height / 2);
  context.lineTo(width - 2 * line, height / 2);
  strokeCased(brush, quadColour(brush), 2);
}

/** @type {Swatch} */
function drawSmallEllipse(brush, { width, height }) {
  brush.context.beginPath();
  brush.context.ellipse(width / 2, height / 2, width * 0.4, height * 0.3, 0, 0, 2 * Math.PI);
  strokeCased(brush, quadColour(brush), 1.25);
}

/**
 * @param {boolean} knowsTracks
 * @param {boolean} isOnPicture
 */
function createLegend(knowsTracks, isOnPicture) {
  const legend = found("legend", HTMLElement);
  /** @param {number} part @returns {[string, Swatch]} */
  const trackItem = (part) => [
    part === Part.none ? "track of no part" : `${partWords[part]} track`,
    (brush, { width, height }) => drawMark(brush, part, [width / 2, height / 2]),
  ];
  /** @type {[string, Swatch][]} */
  const items = [
    ...(knowsTracks ? [Part.good, Part.ignored, Part.none].map(trackItem) : []),
    ["quad in a good frame", (brush, canvas) => drawLine(brush, canvas, [])],
    ["quad in a doubtful frame", (brush, canvas) => drawLine(brush, canvas, [4, 3])],
    ["expected error of a corner", drawSmallEllipse],
  ];
  const swatches = items.map(([text, draw]) => {
    const canvas = made("canvas", { class: "swatch", "aria-hidden": "true" });
    legend.append(made("li", {}, canvas, text));
    return { canvas, draw };
  });
  function drawSwatches() {
    for (const { canvas, draw } of swatches) {
      if (!fitToScreen(canvas)) continue;
      draw({ ...createBrush(contextOf(canvas), isOnPicture), markSize: 3 }, canvas);
    }
  }
  drawSwatches();
  onThemeChange(drawSwatches);
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

/**
 * @param {State} state
 * @param {boolean} isPicture
 */
function createZoom(state, isPicture) {
  const select = found("zoom", HTMLSelectElement);
  for (const [zoom, label] of [
    ["1", isPicture ? "the picture" : "the tracks"],
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
 * @param {boolean} hasPictures
 */
export function createDrawingControls(data, state, hasPictures) {
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

  createLegend(knowsTracks, hasPictures);
  createFactor("residual-factor", state, "residualFactor", [0, ...drawingFactors()]);
  createFactor("ellipse-factor", state, "ellipseFactor", drawingFactors());
  found("residual-factor", HTMLSelectElement).disabled = !knowsTracks;
  createZoom(state, data.view.is_picture);
  state.subscribe(show);
  show();
}

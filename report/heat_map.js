// SPDX-License-Identifier: BSD-3-Clause
// The residuals of all tracks in all frames. Only the rows that are scrolled to are painted, on paper
// as many as a sheet has room for.

import { Part, partWords, sortedResiduals } from "./cells.js";
import { colour, isOnPaper, onThemeChange } from "./theme.js";
import { contextOf, fitToScreen, found, made, onResize } from "./elements.js";
import { createHeatLegend } from "./heat_legend.js";
import { heatCap } from "./heat_colours.js";
import { heatOrders } from "./heat_order.js";
import { look } from "./look.js";
import { paintCells, shadesOf } from "./heat_pixels.js";
import { counted, pixelText, shownName } from "./wording.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Track} Track */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./cells.js").TrackFigures} TrackFigures */
/** @typedef {import("./heat_order.js").HeatOrder} HeatOrder */
/** @typedef {import("./heat_pixels.js").HeatLayout} HeatLayout */
/** @typedef {import("./state.js").State} State */

const heatHeight = 440; // that the rows share, in CSS pixels, as far as they can
const paperHeight = 800; // of the map on paper, where nothing scrolls
const lowestRow = 3;
const highestRow = 16;
const namedRow = 12; // rows as high as this have their names beside them
const nameWidth = 96;
const roundingsShown = 5; // below so many, residuals are those of rounding

/**
 * @param {number} trackCount
 * @returns {HeatLayout}
 */
function createLayout(trackCount) {
  const fair = Math.floor(heatHeight / Math.max(trackCount, 1));
  const rowHeight = Math.min(Math.max(fair, lowestRow), highestRow);
  return { rows: [], rowOf: [], rowHeight, left: rowHeight >= namedRow ? nameWidth : 0, top: 0 };
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {HeatLayout} layout
 * @param {Track[]} tracks
 */
function writeNames(context, { rows, rowHeight, top }, tracks) {
  const density = window.devicePixelRatio;
  context.font = `${11 * density}px system-ui, sans-serif`;
  context.textBaseline = "middle";
  context.fillStyle = colour("quiet");
  context.beginPath();
  context.rect(0, 0, (nameWidth - 8) * density, context.canvas.height);
  context.save();
  context.clip();
  rows.forEach((track, row) => {
    const y = ((row + 0.5) * rowHeight - top) * density;
    if (y > 0 && y < context.canvas.height) {
      context.fillText(shownName(tracks[track].name), 0, y);
    }
  });
  context.restore();
}

/**
 * A box that is seen on any colour.
 * @param {CanvasRenderingContext2D} context
 * @param {[number, number, number, number]} box left, top, width and height in CSS pixels
 */
function drawBox(context, box) {
  context.strokeStyle = colour("panel");
  context.lineWidth = 3.5;
  context.strokeRect(...box);
  context.strokeStyle = colour("ink");
  context.lineWidth = 1.5;
  context.strokeRect(...box);
}

/**
 * Boxes around the column of the frame and the row of the track that are looked at.
 * @param {HTMLCanvasElement} canvas
 * @param {HeatLayout} layout
 * @param {State} state
 */
function drawSelection(canvas, { rowOf, rowHeight, left, top }, state) {
  if (!fitToScreen(canvas)) return;
  const context = contextOf(canvas);
  const density = window.devicePixelRatio;
  context.scale(density, density);
  const width = canvas.width / density - left;
  const column = width / state.frameCount;
  const height = canvas.height / density;
  drawBox(context, [left + state.frame * column, -2, column, height + 4]);
  if (state.track < 0) return;
  drawBox(context, [left, rowOf[state.track] * rowHeight - top, width, rowHeight]);
}

/**
 * @param {HTMLElement} scroll
 * @param {HeatLayout} layout
 * @param {number} frameCount
 * @param {MouseEvent} event
 * @returns {{track: number, frame: number} | null}
 */
function cellAt(scroll, { rows, rowHeight, left }, frameCount, event) {
  const box = scroll.getBoundingClientRect();
  const row = Math.floor((event.clientY - box.top + scroll.scrollTop) / rowHeight);
  const share = (event.clientX - box.left - left) / (scroll.clientWidth - left);
  if (row < 0 || row >= rows.length) return null;
  const frame = Math.min(Math.max(Math.floor(share * frameCount), 0), frameCount - 1);
  return { track: rows[row], frame };
}

/**
 * Scrolls to the row, if it is not in sight.
 * @param {HTMLElement} scroll
 * @param {number} row
 * @param {number} rowHeight
 */
function scrollToRow(scroll, row, rowHeight) {
  const y = row * rowHeight;
  scroll.scrollTop = Math.min(Math.max(scroll.scrollTop, y + rowHeight - scroll.clientHeight), y);
}

/**
 * What the map says in words: the cell that is pointed at, or else selected.
 * @param {{data: PageData, cells: Cells}} shot
 * @param {HTMLElement} scroll
 * @param {State} state
 */
function createHeatReadout({ data, cells }, scroll, state) {
  const { frames, tracks } = data.result;
  const readout = found("heat-readout", HTMLElement);

  /** @param {{track: number, frame: number}} cell */
  function describe({ track, frame }) {
    const cell = track * cells.frameCount + frame;
    const residual = cells.residual[cell];
    const off = Number.isNaN(residual) ? "" : `, ${pixelText(residual)} off`;
    const name = shownName(tracks[track].name);
    const part = partWords[cells.part[cell]];
    readout.textContent = `${name} in frame ${frames[frame].frame}: ${part}${off}`;
  }

  function describeSelected() {
    const isHeard = document.activeElement === scroll && !state.isPlaying;
    readout.setAttribute("aria-live", isHeard ? "polite" : "off");
    if (state.track >= 0) return describe(state);
    readout.textContent = "Point at a cell to read it; click it to select its track and frame.";
  }

  /** @param {{track: number, frame: number}} cell */
  function describePointed(cell) {
    readout.setAttribute("aria-live", "off");
    describe(cell);
  }

  return { describeSelected, describePointed };
}

/**
 * Selects by clicks and keys, and describes what is pointed at.
 * @param {{data: PageData, cells: Cells}} shot
 * @param {HTMLElement} scroll
 * @param {HeatLayout} layout
 * @param {State} state
 */
function listenToHeat(shot, scroll, layout, state) {
  const { describeSelected, describePointed } = createHeatReadout(shot, scroll, state);
  scroll.addEventListener("click", (event) => {
    const cell = cellAt(scroll, layout, state.frameCount, event);
    if (cell !== null) look(state, cell);
  });
  scroll.addEventListener("pointermove", (event) => {
    const cell = cellAt(scroll, layout, state.frameCount, event);
    if (cell !== null && event.pointerType !== "touch") describePointed(cell);
  });
  scroll.addEventListener("pointerleave", describeSelected);
  scroll.addEventListener("keydown", (event) => {
    if (event.key !== "ArrowUp" && event.key !== "ArrowDown") return;
    event.preventDefault();
    const step = event.key === "ArrowUp" ? -1 : 1;
    const row = state.track < 0 ? 0 : layout.rowOf[state.track] + step;
    if (row < 0 || row >= layout.rows.length) return;
    state.change({ track: layout.rows[row], isPlaying: false });
    scrollToRow(scroll, row, layout.rowHeight);
  });
  state.subscribe(describeSelected);
  describeSelected();
}

/**
 * @param {{data: PageData, cells: Cells}} shot
 * @param {(order: HeatOrder) => TrackFigures[]} inOrder
 * @param {State} state
 */
export function createHeatMap(shot, inOrder, state) {
  const { data, cells } = shot;
  const { tracks } = data.result;
  const scroll = found("heat-scroll", HTMLElement);
  const canvas = found("heat-canvas", HTMLCanvasElement);
  const marks = found("heat-marks", HTMLCanvasElement);
  const order = found("heat-order", HTMLSelectElement);
  const rounding = data.observations?.unit ?? 0;
  const cap = heatCap(sortedResiduals(cells, Part.good), roundingsShown * rounding);
  const shadeOf = shadesOf(cells.residual, cap);
  const layout = createLayout(tracks.length);
  const height = tracks.length * layout.rowHeight;
  const paperRows = Math.floor(paperHeight / layout.rowHeight);

  /** What of the map is seen at once. */
  function fit() {
    const most = isOnPaper() ? paperRows * layout.rowHeight : 1.2 * heatHeight;
    scroll.style.setProperty("--seen", `${Math.min(height, most)}px`);
    layout.top = isOnPaper() ? 0 : scroll.scrollTop;
  }

  function paint() {
    fit();
    paintCells(canvas, cells, shadeOf, layout);
    if (layout.left > 0) writeNames(contextOf(canvas), layout, tracks);
    drawSelection(marks, layout, state);
  }

  function sort() {
    layout.rows = inOrder(/** @type {HeatOrder} */ (order.value)).map(({ track }) => track);
    layout.rows.forEach((track, row) => (layout.rowOf[track] = row));
    scroll.scrollTop = 0;
    if (tracks.length > paperRows) {
      const [, how] = heatOrders.find(([value]) => value === order.value) ?? [];
      const all = counted(tracks.length, "track");
      found("heat-part", HTMLElement).textContent = `The first ${paperRows} of ${all}: ${how}.`;
    }
    paint();
  }

  found("heat-space", HTMLElement).style.height = `${height}px`;
  for (const [value, text] of heatOrders) order.append(made("option", { value }, text));
  const parts = [Part.ignored, Part.none, Part.unseen].filter((part) => cells.part.includes(part));
  createHeatLegend(cap, data.observations !== null, parts);
  order.addEventListener("change", sort);
  scroll.addEventListener("scroll", paint);
  listenToHeat(shot, scroll, layout, state);
  state.subscribe(() => drawSelection(marks, layout, state));
  onThemeChange(paint);
  onResize(scroll, paint);
  sort();
}

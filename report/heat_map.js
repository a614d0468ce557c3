// SPDX-License-Identifier: BSD-3-Clause
// The residuals of all tracks in all frames. Only the rows that are scrolled to are painted.

import { Part, partWords, sortedResiduals } from "./cells.js";
import { asPixel, heatCap, heatColour, stripeColour } from "./heat_colours.js";
import { colour, isDark, onThemeChange } from "./theme.js";
import { contextOf, fitToScreen, found, made, onResize } from "./elements.js";
import { pixelText, rounded, shownName } from "./wording.js";
import { heatOrders } from "./heat_order.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./cells.js").TrackFigures} TrackFigures */
/** @typedef {import("./heat_order.js").HeatOrder} HeatOrder */
/** @typedef {import("./state.js").State} State */

const heatHeight = 440; // that the rows share, in CSS pixels, as far as they can
const lowestRow = 3;
const highestRow = 16;
const namedRow = 12; // rows as high as this have their names beside them
const nameWidth = 96;
const shades = 64;
const roundingsShown = 5; // below so many, residuals are those of rounding
const markPeriod = 6; // from stripe to stripe and from dot to dot, in CSS pixels

/**
 * The pixels for each part and shade; of seen cells without a residual the last one.
 * @returns {{plain: Uint32Array, marked: Uint32Array, missing: number}}
 */
function heatPalette() {
  const plain = new Uint32Array(shades + 1);
  const marked = new Uint32Array(shades + 1);
  for (let i = 0; i < shades; ++i) {
    const rgb = heatColour(i / (shades - 1), isDark());
    plain[i] = asPixel(rgb);
    marked[i] = asPixel(stripeColour(rgb));
  }
  plain[shades] = asPixel(isDark() ? [96, 104, 114] : [168, 176, 186]);
  marked[shades] = asPixel(isDark() ? [225, 225, 230] : [70, 70, 78]);
  return { plain, marked, missing: asPixel(isDark() ? [30, 34, 39] : [238, 240, 243]) };
}

/**
 * @param {Float32Array} residuals of all cells
 * @param {number} cap
 * @returns {Uint8Array} their shades
 */
function shadesOf(residuals, cap) {
  return Uint8Array.from(residuals, (residual) =>
    Number.isNaN(residual) ? shades : Math.min(Math.floor((residual / cap) * shades), shades - 1),
  );
}

/**
 * @param {number} cap
 * @param {boolean} knowsResiduals
 * @param {number[]} parts what else there is
 */
function createHeatLegend(cap, knowsResiduals, parts) {
  const legend = found("heat-legend", HTMLElement);
  const scale = made("canvas", { class: "heat-scale", "aria-hidden": "true" });
  if (knowsResiduals) {
    legend.append(made("span", { class: "heat-item" }, "0", scale, `${rounded(cap)} px and more`));
  }
  const swatches = parts.map((part) => {
    const canvas = made("canvas", { class: "heat-swatch", "aria-hidden": "true" });
    legend.append(made("span", { class: "heat-item" }, canvas, partWords[part]));
    return { canvas, part };
  });
  const draw = () => {
    const palette = heatPalette();
    if (knowsResiduals)
      fillPixels(scale, (x, _y, width) => palette.plain[Math.floor((x / width) * shades)]);
    for (const { canvas, part } of swatches) {
      fillPixels(canvas, (x, y) => {
        if (part === Part.unseen) return palette.missing;
        return (isMarked(part, x, y) ? palette.marked : palette.plain)[shades - 1];
      });
    }
  };
  draw();
  onThemeChange(draw);
  onResize(legend, draw);
}

/**
 * Whether a mark over the colours takes the pixel: stripes where tracks are ignored, dots where
 * they are of no part.
 * @param {number} part
 * @param {number} x in device pixels, as y
 * @param {number} y
 */
function isMarked(part, x, y) {
  if (part === Part.good) return false;
  const period = Math.round(markPeriod * window.devicePixelRatio);
  const wide = Math.max(period / 4, 1);
  if (part === Part.ignored) return (x + y) % period < wide;
  return x % period < wide && y % period < wide;
}

/**
 * @param {HTMLCanvasElement} canvas
 * @param {(x: number, y: number, width: number) => number} pixelAt
 */
function fillPixels(canvas, pixelAt) {
  if (!fitToScreen(canvas)) return;
  const { width, height } = canvas;
  const context = contextOf(canvas);
  const image = context.createImageData(width, height);
  const pixels = new Uint32Array(image.data.buffer);
  for (let y = 0; y < height; ++y) {
    for (let x = 0; x < width; ++x) pixels[y * width + x] = pixelAt(x, y, width);
  }
  context.putImageData(image, 0, 0);
}

/**
 * @param {{data: PageData, cells: Cells}} shot
 * @param {(order: HeatOrder) => TrackFigures[]} inOrder
 * @param {State} state
 */
export function createHeatMap({ data, cells }, inOrder, state) {
  const { frames, tracks } = data.result;
  const scroll = found("heat-scroll", HTMLElement);
  const space = found("heat-space", HTMLElement);
  const canvas = found("heat-canvas", HTMLCanvasElement);
  const marks = found("heat-marks", HTMLCanvasElement);
  const readout = found("heat-readout", HTMLElement);
  const order = found("heat-order", HTMLSelectElement);
  const context = contextOf(canvas);
  const marksContext = contextOf(marks);
  const cap = heatCap(
    sortedResiduals(cells, Part.good),
    roundingsShown * (data.observations?.unit ?? 0),
  );
  const shadeOf = shadesOf(cells.residual, cap);
  const rowHeight = Math.min(
    Math.max(Math.floor(heatHeight / Math.max(tracks.length, 1)), lowestRow),
    highestRow,
  );
  const left = rowHeight >= namedRow ? nameWidth : 0;
  /** @type {number[]} the track of each row, and the row of each track */
  let rows = [];
  /** @type {number[]} */
  let rowOf = [];

  /** @param {number} row */
  const yOf = (row) => row * rowHeight - scroll.scrollTop;

  function paint() {
    if (!fitToScreen(canvas)) return;
    const { width, height } = canvas;
    const density = window.devicePixelRatio;
    const start = Math.round(left * density);
    const columns = width - start;
    const palette = heatPalette();
    const frameAt = Uint32Array.from({ length: Math.max(columns, 0) }, (_, x) =>
      Math.min(Math.floor((x / columns) * frames.length), frames.length - 1),
    );
    const image = context.createImageData(width, height);
    const pixels = new Uint32Array(image.data.buffer);
    const top = Math.round(scroll.scrollTop * density);
    for (let y = 0; y < height; ++y) {
      const row = Math.floor((y + top) / density / rowHeight);
      if (row >= rows.length) break;
      const firstCell = rows[row] * cells.frameCount;
      for (let x = 0; x < columns; ++x) {
        const cell = firstCell + frameAt[x];
        const part = cells.part[cell];
        pixels[y * width + start + x] =
          part === Part.unseen
            ? palette.missing
            : (isMarked(part, x, y + top) ? palette.marked : palette.plain)[shadeOf[cell]];
      }
    }
    context.putImageData(image, 0, 0);
    if (left > 0) writeNames();
    mark();
  }

  function writeNames() {
    const density = window.devicePixelRatio;
    context.font = `${11 * density}px system-ui, sans-serif`;
    context.textBaseline = "middle";
    context.fillStyle = colour("quiet");
    rows.forEach((track, row) => {
      const y = (yOf(row) + rowHeight / 2) * density;
      if (y < 0 || y > canvas.height) return;
      context.save();
      context.beginPath();
      context.rect(0, y - rowHeight * density, (nameWidth - 8) * density, 2 * rowHeight * density);
      context.clip();
      context.fillText(shownName(tracks[track].name), 0, y);
      context.restore();
    });
  }

  function mark() {
    if (!fitToScreen(marks)) return;
    const density = window.devicePixelRatio;
    const columns = marks.width - left * density;
    const columnWidth = columns / frames.length;
    const x = left * density + state.frame * columnWidth;
    outline(x, -density * 2, columnWidth, marks.height + density * 4);
    if (state.track < 0) return;
    outline(left * density, yOf(rowOf[state.track]) * density, columns, rowHeight * density);
  }

  /**
   * A box that is seen on any colour.
   * @param {number} x
   * @param {number} y
   * @param {number} width
   * @param {number} height
   */
  function outline(x, y, width, height) {
    const density = window.devicePixelRatio;
    marksContext.strokeStyle = colour("panel");
    marksContext.lineWidth = 3.5 * density;
    marksContext.strokeRect(x, y, width, height);
    marksContext.strokeStyle = colour("ink");
    marksContext.lineWidth = 1.5 * density;
    marksContext.strokeRect(x, y, width, height);
  }

  /**
   * @param {number} track
   * @param {number} frame
   */
  function describe(track, frame) {
    const cell = track * cells.frameCount + frame;
    const residual = cells.residual[cell];
    const off = Number.isNaN(residual) ? "" : `, ${pixelText(residual)} off`;
    const name = shownName(tracks[track].name);
    readout.textContent = `${name} in frame ${frames[frame].frame}: ${partWords[cells.part[cell]]}${off}`;
  }

  /** @param {MouseEvent} event */
  function cellAt(event) {
    const box = canvas.getBoundingClientRect();
    const row = Math.floor((event.clientY - box.top + scroll.scrollTop) / rowHeight);
    const share = (event.clientX - box.left - left) / (box.width - left);
    if (row < 0 || row >= rows.length) return null;
    const frame = Math.min(Math.max(Math.floor(share * frames.length), 0), frames.length - 1);
    return { track: rows[row], frame };
  }

  function describeSelected() {
    const isHeard = document.activeElement === scroll && !state.isPlaying;
    readout.setAttribute("aria-live", isHeard ? "polite" : "off");
    if (state.track >= 0) describe(state.track, state.frame);
    else
      readout.textContent = "Point at a cell to read it; click it to select its track and frame.";
  }

  function sort() {
    rows = inOrder(/** @type {HeatOrder} */ (order.value)).map(({ track }) => track);
    rowOf = [];
    rows.forEach((track, row) => (rowOf[track] = row));
    paint();
  }

  function scrollToSelected() {
    const y = yOf(rowOf[state.track]);
    if (y < 0) scroll.scrollTop += y;
    const below = y + rowHeight - scroll.clientHeight;
    if (below > 0) scroll.scrollTop += below;
  }

  /** @param {1 | -1} step */
  function selectBeside(step) {
    const row = state.track < 0 ? 0 : rowOf[state.track] + step;
    if (row < 0 || row >= rows.length) return;
    state.change({ track: rows[row] });
    scrollToSelected();
  }

  space.style.height = `${tracks.length * rowHeight}px`;
  scroll.style.height = `${Math.min(tracks.length * rowHeight, 1.2 * heatHeight)}px`;
  for (const [value, text] of heatOrders) order.append(made("option", { value }, text));
  const parts = [Part.ignored, Part.none, Part.unseen].filter((part) => cells.part.includes(part));
  createHeatLegend(cap, data.observations !== null, parts);

  order.addEventListener("change", () => {
    scroll.scrollTop = 0;
    sort();
  });
  scroll.addEventListener("scroll", paint);
  scroll.addEventListener("click", (event) => {
    const cell = cellAt(event);
    if (cell !== null) state.change({ ...cell, isPlaying: false });
  });
  scroll.addEventListener("pointermove", (event) => {
    const cell = cellAt(event);
    if (cell === null || event.pointerType === "touch") return;
    readout.setAttribute("aria-live", "off");
    describe(cell.track, cell.frame);
  });
  scroll.addEventListener("pointerleave", describeSelected);
  scroll.addEventListener("keydown", (event) => {
    if (event.key !== "ArrowUp" && event.key !== "ArrowDown") return;
    event.preventDefault();
    selectBeside(event.key === "ArrowUp" ? -1 : 1);
  });
  state.subscribe(() => {
    mark();
    describeSelected();
  });
  onThemeChange(paint);
  onResize(scroll, paint);
  sort();
  describeSelected();
}

// SPDX-License-Identifier: BSD-3-Clause
// A canvas that shows a frame: the view, or more around it where it is zoomed out.

import { colour } from "./theme.js";
import { createBrush } from "./brush.js";
import { inView } from "./page_data.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Point} Point */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./state.js").Looking} Looking */
/** @typedef {import("./brush.js").Brush} Brush */

/**
 * What a frame is drawn with. `place` leads from the tracks' units to the canvas's pixels, `scale`
 * is its linear part; `box` is where the view is: left, top, width and height.
 * @typedef {Brush & {
 *   data: PageData, cells: Cells, looking: Looking,
 *   place: (point: Point) => Point, scale: Point, box: [number, number, number, number],
 * }} Drawing
 */

/**
 * @param {CanvasRenderingContext2D} context
 * @param {{data: PageData, cells: Cells}} shot
 * @param {Looking} looking
 * @param {boolean} isOnPicture
 * @returns {Drawing}
 */
export function createDrawing(context, { data, cells }, looking, isOnPicture) {
  const { view } = data;
  const { width, height } = context.canvas;
  const { zoom } = looking;
  const across = (zoom * width) / view.width;
  const down = (zoom * height) / view.height;
  const left = ((1 - zoom) * width) / 2;
  const top = ((1 - zoom) * height) / 2;
  /** @param {Point} point @returns {Point} */
  const place = (point) => {
    const [x, y] = inView(view, point);
    return [left + (x - view.x) * across, top + (y - view.y) * down];
  };
  const [ax, , ay] = view.from_tracks;
  return {
    ...createBrush(context, isOnPicture),
    data,
    cells,
    looking,
    place,
    scale: [ax * across, ay * down],
    box: [left, top, zoom * width, zoom * height],
  };
}

/**
 * The picture, or the edges of where it would be.
 * @param {Drawing} drawing
 * @param {HTMLImageElement | null} image
 */
export function drawGround({ context, looking, box, line }, image) {
  if (image !== null) context.drawImage(image, ...box);
  if (looking.zoom === 1) return;
  context.setLineDash([]);
  context.lineWidth = line;
  context.strokeStyle = colour("edge");
  context.strokeRect(...box);
}

// SPDX-License-Identifier: BSD-3-Clause
// The frame carried back to where the surface stands in the reference frame. With a good solve the
// surface stands still here, and whatever is not on it moves.

import { asMatrix3d, denominator, inverse, mapped, steadying } from "./homography.js";
import { contextOf, fitToScreen, found, onResize } from "./elements.js";
import { onThemeChange } from "./theme.js";
import { inView } from "./page_data.js";
import { createBrush, drawMark, quadColour, strokeCased } from "./brush.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Point} Point */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./pictures.js").Pictures} Pictures */
/** @typedef {import("./state.js").State} State */

/**
 * @param {{data: PageData, cells: Cells}} shot
 * @param {Pictures} pictures
 * @param {State} state
 */
export function createSteadiedView({ data, cells }, pictures, state) {
  const { result, view } = data;
  const stage = found("steadied-stage", HTMLElement);
  const holder = found("steadied-picture", HTMLElement);
  const canvas = found("steadied-canvas", HTMLCanvasElement);
  const context = contextOf(canvas);
  const caption = found("steadied-caption", HTMLElement);

  const brush = () => createBrush(context, pictures.any);

  /**
   * @param {Point} point on the surface
   * @returns {Point} on the canvas
   */
  function place(point) {
    const [x, y] = inView(view, point);
    const scale = canvas.width / view.width;
    return [(x - view.x) * scale, (y - view.y) * scale];
  }

  /** @param {HTMLImageElement | null} image */
  function showPicture(image) {
    holder.replaceChildren();
    if (image === null) return;
    const { h } = result.frames[state.frame];
    const scale = stage.clientWidth / view.width;
    image.style.width = `${view.width * scale}px`;
    image.style.height = `${view.height * scale}px`;
    image.style.transform = asMatrix3d(steadying(h, result.front, view, scale));
    holder.append(image);
  }

  function drawOutlines() {
    for (const { corners } of result.quads) {
      context.beginPath();
      corners.forEach((corner) => context.lineTo(...place(corner)));
      context.closePath();
      strokeCased(brush(), quadColour(brush()), 2);
    }
  }

  function drawTracksStanding() {
    const back = inverse(result.frames[state.frame].h);
    const side = Math.sign(denominator(back, mapped(result.frames[state.frame].h, result.front)));
    for (let track = 0; track < cells.trackCount; ++track) {
      const cell = track * cells.frameCount + state.frame;
      const seen = /** @type {Point} */ ([cells.x[cell], cells.y[cell]]);
      if (!(denominator(back, seen) * side > 0)) continue;
      drawMark(brush(), cells.part[cell], place(mapped(back, seen)));
    }
  }

  async function show() {
    const { frame } = state;
    const image = pictures.ready(frame) ?? (await pictures.get(frame));
    if (frame !== state.frame || !fitToScreen(canvas)) return;
    showPicture(image);
    if (image === null) drawTracksStanding();
    drawOutlines();
    stage.dataset.frame = String(result.frames[frame].frame);
  }

  const isEmpty = !pictures.any && data.observations === null;
  caption.textContent = isEmpty
    ? "Steadied: nothing to hold still without pictures or tracks"
    : `Steadied: as seen from frame ${result.reference_frame}. A good solve stands still.`;
  state.subscribe((changed) => changed.has("frame") && show());
  onThemeChange(show);
  onResize(stage, show);
}

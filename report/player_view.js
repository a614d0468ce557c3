// SPDX-License-Identifier: BSD-3-Clause
// The frame that the page looks at: its picture, its quads and its tracks.

import { contextOf, fitToScreen, found, made, onResize } from "./elements.js";
import { createDrawing, drawGround } from "./frame_drawing.js";
import { drawQuads } from "./quad_drawing.js";
import { drawSelectedTrack, drawTracks, trackNear } from "./track_drawing.js";
import { onThemeChange } from "./theme.js";
import { quadColour } from "./brush.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./pictures.js").Pictures} Pictures */
/** @typedef {import("./state.js").State} State */
/** @typedef {import("./frame_drawing.js").Drawing} Drawing */

/**
 * @param {{data: PageData, cells: Cells}} shot
 * @param {Pictures} pictures
 * @param {State} state
 * @returns {{isDrawn: () => boolean}} whether the frame that is looked at is on the screen
 */
export function createPlayerView(shot, pictures, state) {
  const { frames } = shot.data.result;
  const section = found("player", HTMLElement);
  const canvas = found("player-canvas", HTMLCanvasElement);
  const context = contextOf(canvas);
  const caption = found("player-caption", HTMLElement);
  let drawnFrame = -1;
  /** @type {Drawing | null} */
  let drawing = null;

  /** @param {HTMLImageElement | null} image */
  function draw(image) {
    if (!fitToScreen(canvas)) return;
    const frame = frames[state.frame];
    drawing = createDrawing(context, shot, state, pictures.any);
    drawGround(drawing, image);
    drawTracks(drawing);
    drawQuads(drawing);
    drawSelectedTrack(drawing);
    canvas.dataset.quadColour = quadColour(drawing);
    caption.replaceChildren(made("strong", {}, `Frame ${frame.frame}`), pictureWords(image));
    if (frame.verdict === "doubtful") {
      caption.append(" ", made("span", { class: "badge" }, "▲ doubtful"));
    }
    section.dataset.frame = String(frame.frame);
    drawnFrame = state.frame;
  }

  /** @param {HTMLImageElement | null} image */
  function pictureWords(image) {
    if (image !== null || !pictures.any) return "";
    return pictures.has(state.frame) ? ": its picture cannot be read" : ": it has no picture";
  }

  async function show() {
    const { frame } = state;
    const image = pictures.ready(frame) ?? (await pictures.get(frame));
    if (frame === state.frame) draw(image);
    pictures.get(frame + 1); // decoded by the time that it is stepped to
  }

  /** @param {MouseEvent} event */
  function selectTrack(event) {
    if (drawing === null) return;
    const box = canvas.getBoundingClientRect();
    const track = trackNear(drawing, [
      ((event.clientX - box.left) / box.width) * canvas.width,
      ((event.clientY - box.top) / box.height) * canvas.height,
    ]);
    state.change({ track });
  }

  const { width, height } = shot.data.view;
  found("stages", HTMLElement).style.setProperty("--shape", String(width / height));
  canvas.addEventListener("click", selectTrack);
  state.subscribe(show);
  onThemeChange(show);
  onResize(canvas, show);
  return { isDrawn: () => drawnFrame === state.frame };
}

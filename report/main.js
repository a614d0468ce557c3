// SPDX-License-Identifier: BSD-3-Clause
// Reads what the page is made from and sets its views up.

import { Part, cellsOf, sortedResiduals } from "./cells.js";
import { readPageData, readPictureList } from "./page_data.js";
import { createDrawingControls } from "./drawing_controls.js";
import { createFacts } from "./facts.js";
import { createFrameFacts } from "./frame_facts.js";
import { createHeatMap } from "./heat_map.js";
import { createHeatOrder } from "./heat_order.js";
import { createKeys } from "./keys.js";
import { createPictures } from "./pictures.js";
import { createPlayerView } from "./player_view.js";
import { createPlots } from "./plots.js";
import { createState } from "./state.js";
import { createSteadiedView } from "./steadied_view.js";
import { createTables } from "./tables.js";
import { createTrackDetails } from "./track_details.js";
import { createTransport } from "./transport.js";
import { createVerdictView } from "./verdict_view.js";
import { fittingFactor } from "./drawing_factors.js";
import { found } from "./elements.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./pictures.js").Pictures} Pictures */

/**
 * The frame that is worst, so that the page opens where a look is due: of the doubtful ones with a
 * figure, else of those with a picture, else of all.
 * @param {PageData} data
 * @param {Pictures} pictures
 */
function firstFrame({ result: { frames } }, pictures) {
  const indices = frames.map((_, index) => index);
  const known = indices.filter((index) => frames[index].expected_error !== null);
  const doubtful = known.filter((index) => frames[index].verdict === "doubtful");
  const pictured = indices.filter(pictures.has);
  const choice = [doubtful, pictured, indices].find((each) => each.length > 0) ?? [0];
  /** @param {number} index */
  const errorOf = (index) => frames[index].expected_error ?? 0;
  return choice.reduce((most, index) => (errorOf(index) > errorOf(most) ? index : most));
}

/**
 * @param {PageData} data
 * @param {Cells} cells
 */
function firstFactors({ result, view, observations }, cells) {
  const residuals = sortedResiduals(cells, Part.good);
  const rounding = observations?.unit ?? 0;
  const high = Math.max(residuals[Math.floor(0.9 * residuals.length)] ?? 0, 4 * rounding);
  const errors = result.frames.map((frame) => frame.expected_error ?? 0).sort((a, b) => a - b);
  const usual = 2 * errors[Math.floor(0.5 * errors.length)];
  const worst = 2 * errors[errors.length - 1];
  return {
    residualFactor: fittingFactor(high, 0.04, view),
    ellipseFactor: Math.min(fittingFactor(usual, 0.04, view), fittingFactor(worst, 0.12, view)),
  };
}

/** @param {PageData} data */
function saysWhatIsMissing({ observations, pictures }) {
  const lines = [];
  if (observations === null) {
    lines.push("The tracks are not in this page: make it with --tracks FILE to see them.");
  }
  if (pictures === null) {
    lines.push("Pictures are not in this page: make it with --pictures to see the tracks on them.");
  } else if (pictures.missing !== null) {
    lines.push(pictures.missing);
  }
  const note = found("player-note", HTMLElement);
  note.hidden = lines.length === 0;
  note.textContent = lines.join(" ");
  const heatNote = found("heat-note", HTMLElement);
  heatNote.hidden = observations !== null;
  heatNote.textContent =
    "Residuals need the places of the tracks: make the page with --tracks FILE. " +
    "What is known without them is when each track is good or ignored.";
}

async function startPage() {
  const data = await readPageData();
  const { frames } = data.result;
  const cells = cellsOf(data);
  const shot = { data, cells };
  const pictures = createPictures(readPictureList());
  const state = createState(frames.length, {
    frame: firstFrame(data, pictures),
    track: -1,
    isPlaying: false,
    framesPerSecond: 12,
    zoom: 1,
    ...firstFactors(data, cells),
  });
  const inOrder = createHeatOrder(data.result, cells);

  saysWhatIsMissing(data);
  createVerdictView(data, state);
  const player = createPlayerView(shot, pictures, state);
  createSteadiedView(shot, pictures, state);
  createTransport(frames, state, player.isDrawn);
  createFrameFacts(data, state);
  createDrawingControls(data, state, pictures.any);
  createPlots(data, state);
  createHeatMap(shot, inOrder, state);
  createTrackDetails(shot, state);
  createTables(data, inOrder("worst"), state);
  createFacts(data);
  createKeys(frames, state);
  document.documentElement.dataset.ready = "true";
}

startPage().catch((error) => {
  const sentence = found("verdict-sentence", HTMLElement);
  sentence.textContent = `This browser cannot show the page: ${error.message}`;
  throw error;
});

// SPDX-License-Identifier: BSD-3-Clause
// The selected track, and the options that would leave it out.

import { Part, partWords, trackFigures } from "./cells.js";
import { counted, dropOption, framesText, pixelText, shownName } from "./wording.js";
import { found, made, madeButton } from "./elements.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./state.js").State} State */

/**
 * The frames around the one looked at that a `--drop` should be about: those in which the track
 * matters most, or else those in which it has the same part.
 * @param {PageData} data
 * @param {Cells} cells
 * @param {State} state
 * @returns {[number, number] | null} frame numbers; null where the track is not seen
 */
function stretchAround({ result }, cells, { track, frame }) {
  const { frames, tracks, worst_tracks: worst } = result;
  const number = frames[frame].frame;
  const listed = worst.find(
    (item) => item.track === tracks[track].name && item.first <= number && number <= item.last,
  );
  if (listed !== undefined) return [listed.first, listed.last];
  const start = track * cells.frameCount;
  const part = cells.part[start + frame];
  if (part === Part.unseen) return null;
  let first = frame;
  let last = frame;
  while (first > 0 && cells.part[start + first - 1] === part) --first;
  while (last + 1 < frames.length && cells.part[start + last + 1] === part) ++last;
  return [frames[first].frame, frames[last].frame];
}

/**
 * @param {string} purpose
 * @param {string} option
 */
function optionFor(purpose, option) {
  const code = made("code", {}, option);
  const copy = madeButton("Copy", async () => {
    try {
      await navigator.clipboard.writeText(option);
      copy.textContent = "Copied";
    } catch {
      getSelection()?.selectAllChildren(code);
      copy.textContent = "Selected";
    }
  });
  copy.className = "small on-screen";
  copy.setAttribute("aria-label", `Copy ${option}`);
  return made(
    "div",
    {},
    made("p", { class: "label" }, purpose),
    made("p", { class: "option" }, code, copy),
  );
}

/**
 * @param {{data: PageData, cells: Cells}} shot
 * @param {State} state
 */
export function createTrackDetails({ data, cells }, state) {
  const { frames, tracks, left_out_tracks: leftOut } = data.result;
  const holder = found("track-details", HTMLElement);
  const names = new Set(tracks.map(({ name }) => name));

  function figureLines() {
    const { good, ignored, none, largest, largestAt, rms } = trackFigures(cells, state.track);
    const lines = [`Good in ${counted(good, "frame")}, ignored in ${counted(ignored, "frame")}.`];
    if (none > 0) lines.push(`Seen in ${counted(none, "frame")} without a part in the fit.`);
    if (!Number.isNaN(rms)) lines.push(`RMS ${pixelText(rms)} where good.`);
    if (largestAt >= 0) {
      lines.push(`At most ${pixelText(largest)} off, in frame ${frames[largestAt].frame}.`);
    }
    const reason = leftOut?.find(({ name }) => name === tracks[state.track].name)?.why;
    if (reason !== undefined) lines.push(`Takes part nowhere: ${reason}.`);
    return lines.join(" ");
  }

  /** @returns {Node[]} */
  function selected() {
    const { name } = tracks[state.track];
    const stretch = stretchAround(data, cells, state);
    const part = partWords[cells.part[state.track * cells.frameCount + state.frame]];
    const content = [
      made("h3", {}, "Track ", made("span", { class: "track-name" }, shownName(name))),
      made("p", {}, `In frame ${frames[state.frame].frame}: ${part}.`),
      made("p", { class: "quiet" }, figureLines()),
    ];
    const isWhole = stretch?.[0] === frames[0].frame && stretch[1] === frames.at(-1)?.frame;
    if (stretch !== null && !isWhole) {
      const where = `${stretch[0] === stretch[1] ? "frame" : "frames"} ${framesText(...stretch)}`;
      content.push(optionFor(`To leave it out in ${where}`, dropOption(name, stretch, names)));
    }
    content.push(optionFor("To leave it out everywhere", dropOption(name, null, names)));
    return content;
  }

  function show() {
    if (state.track >= 0) holder.replaceChildren(...selected());
    else {
      const words =
        "Select a track, in the frame or in the heat map, for the option that would leave it out.";
      holder.replaceChildren(made("p", { class: "quiet on-screen" }, words));
    }
  }
  state.subscribe((changed) => {
    if (changed.has("track") || (changed.has("frame") && state.track >= 0)) show();
  });
  show();
}

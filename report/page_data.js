// SPDX-License-Identifier: BSD-3-Clause
// What the page is made from, as it stands in the page.

/** @typedef {import("../build/report/page").Page} PageData */
/** @typedef {import("../build/report/page").Result} Result */
/** @typedef {import("../build/report/page").Frame} Frame */
/** @typedef {import("../build/report/page").Track} Track */
/** @typedef {import("../build/report/page").WorstTrack} WorstTrack */
/** @typedef {import("../build/report/page").Quad} Quad */
/** @typedef {import("../build/report/page").Covariance} Covariance */
/** @typedef {PageData["view"]} View */
/** @typedef {[number, number]} Point */
/** @typedef {(string | null)[]} PictureList */

/**
 * @param {string} base64
 * @returns {Promise<any>} the JSON value that was compressed by gzip
 */
async function unpacked(base64) {
  const bytes = Uint8Array.from(atob(base64.trim()), (letter) => letter.charCodeAt(0));
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
  return new Response(stream).json();
}

/** @returns {Promise<PageData>} */
export async function readPageData() {
  return unpacked(document.getElementById("page-data")?.textContent ?? "");
}

/** @returns {PictureList} one item for each frame; empty without pictures */
export function readPictureList() {
  return JSON.parse(document.getElementById("page-pictures")?.textContent || "[]") ?? [];
}

/**
 * The index of the first frame that is not before the number; the frames are in rising order.
 * @param {Frame[]} frames
 * @param {number} number
 */
export function firstIndexFrom(frames, number) {
  let low = 0;
  let high = frames.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (frames[middle].frame < number) low = middle + 1;
    else high = middle;
  }
  return low;
}

/**
 * The index of the frame with the number, or of the nearest where that is not shown.
 * @param {Frame[]} frames
 * @param {number} number
 */
export function nearestIndex(frames, number) {
  const next = Math.min(firstIndexFrom(frames, number), frames.length - 1);
  const before = Math.max(next - 1, 0);
  const isNearer = number - frames[before].frame < frames[next].frame - number;
  return isNearer ? before : next;
}

/**
 * How bad a frame is, for putting frames in order: its expected error, and more than any where
 * that is not known.
 * @param {Frame} frame
 */
export function comparableError(frame) {
  return frame.expected_error ?? Infinity;
}

/**
 * The index of the frame of the stretch that is expected to be off most.
 * @param {Frame[]} frames
 * @param {number} first
 * @param {number} last
 */
export function worstIndexWithin(frames, first, last) {
  let worst = nearestIndex(frames, first);
  for (let i = firstIndexFrom(frames, first); i < frames.length && frames[i].frame <= last; ++i) {
    if (comparableError(frames[i]) > comparableError(frames[worst])) worst = i;
  }
  return worst;
}

/**
 * How many tracks the fit of the frame goes by, and how many it has but gives up.
 * @param {Frame} frame
 * @returns {{good: number, ignored: number}}
 */
export function tracksInUse(frame) {
  if (frame.status === "held") return { good: 0, ignored: frame.tracks };
  const good = frame.good ?? frame.tracks;
  return { good, ignored: frame.tracks - good };
}

/**
 * @param {Frame} frame
 * @returns {string} what was fitted to the frame
 */
export function modelOf(frame) {
  return frame.status === "base" ? "base" : (frame.model ?? frame.status);
}

/**
 * @param {View} view
 * @param {Point} place in the units of the tracks
 * @returns {Point} in the view
 */
export function inView(view, [x, y]) {
  const [ax, bx, ay, by] = view.from_tracks;
  return [ax * x + bx, ay * y + by];
}

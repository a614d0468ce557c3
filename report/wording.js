// SPDX-License-Identifier: BSD-3-Clause
// Numbers, frames and names as text.

/** @typedef {import("./page_data.js").Point} Point */

/**
 * With three digits, as the command prints lengths.
 * @param {number} value
 */
export function rounded(value) {
  const isLarge = Math.abs(value) >= 999.5 && Math.abs(value) < 1e6;
  return isLarge ? value.toFixed(0) : String(Number(value.toPrecision(3)));
}

/**
 * @param {number | null | undefined} length
 * @returns {string}
 */
export function pixelText(length) {
  const isKnown = length !== null && length !== undefined && Number.isFinite(length);
  return isKnown ? `${rounded(length)} px` : "not known";
}

/**
 * @param {number} count
 * @param {string} noun
 */
export function counted(count, noun) {
  return `${count.toLocaleString("en")} ${noun}${count === 1 ? "" : "s"}`;
}

/**
 * @param {number} first
 * @param {number} last
 */
export function framesText(first, last) {
  return first === last ? `${first}` : `${first}-${last}`;
}

/**
 * Which of many are shown.
 * @param {{shown: number, of: number, how: string | null}} share
 * @param {string} noun
 */
export function shareText({ shown, of, how }, noun) {
  if (how === null) return of === 1 ? `the only ${noun}` : `all ${counted(of, noun)}`;
  return `${shown.toLocaleString("en")} of ${counted(of, noun)}: ${how}`;
}

/**
 * What a track is called on the page: a name without letters would be nothing to look at.
 * @param {string} name
 */
export function shownName(name) {
  return name.trim() === "" ? `"${name}"` : name;
}

/**
 * The names of a quad's corners: by their sides of the middle, or by their numbers where two would
 * be called the same.
 * @param {Point[]} corners in a view, y down
 * @returns {string[]}
 */
export function cornerNames(corners) {
  const middleX = corners.reduce((sum, [x]) => sum + x / 4, 0);
  const middleY = corners.reduce((sum, [, y]) => sum + y / 4, 0);
  const names = corners.map(
    ([x, y]) => `${y < middleY ? "top" : "bottom"} ${x < middleX ? "left" : "right"}`,
  );
  const areApart = new Set(names).size === names.length;
  return areApart ? names : corners.map((_, index) => `corner ${index}`);
}

/** @param {string} word */
function shellWord(word) {
  const isPlain = /^[A-Za-z0-9_./,:=+@%-]+$/.test(word);
  return isPlain ? word : `'${word.replaceAll("'", "'\\''")}'`;
}

/**
 * The option that leaves a track out. In lists of tracks commas, stars and the like have a meaning,
 * which double quotes take away; the shell would take those, so that single ones go around them.
 * @param {string} name
 * @param {[number, number] | null} frames null for all
 * @param {Set<string>} allNames of the shot's tracks
 */
export function dropOption(name, frames, allNames) {
  const suffix = frames === null ? "" : `:${framesText(...frames)}`;
  const isPlain = !/[,"*?[]/.test(name) && name !== "" && !/^[ \t]|[ \t]$/.test(name);
  const meansAnother = suffix !== "" && allNames.has(name + suffix);
  const item = isPlain && !meansAnother ? name : `"${name.replaceAll('"', '""')}"`;
  return `--drop ${shellWord(item + suffix)}`;
}

// SPDX-License-Identifier: BSD-3-Clause
// The style sheet's colours, for what is drawn on canvases.

/** @typedef {"ink" | "quiet" | "line" | "edge" | "panel" | "good" | "ignored" | "none" | "quad" | "doubt" |
 *   "wash" | "casing"} ColourName */

/** @type {Map<ColourName, string>} */
const knownColours = new Map();

/**
 * @param {ColourName} name
 * @returns {string} for CSS
 */
export function colour(name) {
  let known = knownColours.get(name);
  if (known === undefined) {
    known = getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
    knownColours.set(name, known);
  }
  return known;
}

/** @returns {boolean} whether the page is made ready for paper */
export function isOnPaper() {
  return window.matchMedia("print").matches;
}

/** @returns {boolean} whether light is drawn on dark */
export function isDark() {
  return window.matchMedia("(prefers-color-scheme: dark)").matches && !isOnPaper();
}

/**
 * Calls back when colours change: with the system's scheme, and for printing.
 * @param {() => void} act
 */
export function onThemeChange(act) {
  for (const query of ["(prefers-color-scheme: dark)", "print"]) {
    window.matchMedia(query).addEventListener("change", () => {
      knownColours.clear();
      act();
    });
  }
}

// SPDX-License-Identifier: BSD-3-Clause
// What the result was made from and how, so that the page documents the solve.

import { counted, framesText, pixelText, rounded, shareText } from "./wording.js";
import { found, made } from "./elements.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Result} Result */
/** @typedef {[string, string]} Fact */

/** @param {unknown} value */
function optionText(value) {
  if (value === null) return "not noted";
  if (value === true) return "yes";
  if (value === false) return "no";
  if (Array.isArray(value)) return value.length === 0 ? "none" : value.join(", ");
  return String(value);
}

/**
 * @param {Result["options"]} options
 * @returns {Fact[]}
 */
function optionFacts(options) {
  return Object.entries(options).map(([name, value]) => {
    const option = name === "quads" ? "quad" : name.replaceAll("_", "-");
    if (name === "quads" && Array.isArray(value)) {
      return [`--${option}`, optionText(options.quads?.map((quad) => quad.name))];
    }
    if (Array.isArray(options.frames) && name === "frames") {
      const [first, last] = options.frames;
      return ["--frames", last === null ? `${first}-` : framesText(first, last)];
    }
    return [`--${option}`, optionText(value)];
  });
}

/**
 * @param {Result} result
 * @returns {Fact[]}
 */
function madeBy({ program, rebased }) {
  const text = program === null ? "not noted" : `${program.name} ${program.version}`;
  return [
    ["Program", text],
    ["Commit", program?.commit ?? "not noted"],
    ...rebased.map(
      ({ from, to, program: by }) =>
        /** @type {Fact} */ ([
          "Rebased",
          `from frame ${from} to ${to} by ${by.name} ${by.version}`,
        ]),
    ),
  ];
}

/**
 * @param {Result} result
 * @returns {Fact[]}
 */
function inputFacts({ input }) {
  if (input === null) return [["File", "not noted"]];
  return [
    ["File", input.name ?? "from a pipe"],
    ["SHA-256", input.sha256 ?? "not noted"],
    ["Format", input.format ?? "not noted"],
    ["Positions", input.rows.toLocaleString("en")],
  ];
}

/**
 * @param {Result} result
 * @returns {Fact[]}
 */
function solveFacts(result) {
  const leftOut = counted(result.left_out, "track");
  return [
    ["Base frame", result.base_why ?? `${result.base_frame}, which was given`],
    ["Reference frame", `${result.reference_frame}; all transforms start from it`],
    ["Tracks in the base frame", String(result.base_tracks)],
    ["Handed over", `${counted(result.handed_over, "track")} that the base frame lacks`],
    ["Left out", `${leftOut} that ${result.left_out === 1 ? "takes" : "take"} part nowhere`],
    ["Limit of the expected error", pixelText(result.max_error)],
    ["Quads", result.quads.map(({ name }) => name).join(", ")],
  ];
}

/**
 * @param {Result} result
 * @returns {Fact[]}
 */
function conventions({ units, picture }) {
  const { width, height, y, pixel_centre: centre, first_frame: first } = picture;
  return [
    ["Units", units],
    ["Picture", width === null || height === null ? "size not noted" : `${width} × ${height}`],
    ["y grows", y ?? "not noted: taken to be down"],
    ["Centre of the first pixel", centre === null ? "not noted" : `(${centre}, ${centre})`],
    ["First frame of the clip", first === null ? "not noted" : String(first)],
    ["Corners", "in order around, counted from 0"],
    ["Expected error", "root mean square of a corner's distance from its true place"],
  ];
}

/**
 * @param {PageData} data
 * @returns {Fact[]}
 */
function shownFacts({ reduced, pictures, observations }) {
  /** @type {Fact[]} */
  const between =
    reduced.between.of > 0 ? [["Between frames", shareText(reduced.between, "transform")]] : [];
  return [
    ["Frames", shareText(reduced.frames, "frame")],
    ["Tracks", shareText(reduced.tracks, "track")],
    ...between,
    [
      "Places of the tracks",
      observations === null
        ? "none: --tracks FILE brings them"
        : `rounded to ${rounded(observations.unit)} px`,
    ],
    [
      "Pictures",
      pictures === null
        ? "none: --pictures brings them"
        : `of ${counted(pictures.frames, "frame")}`,
    ],
  ];
}

/**
 * @param {string} title
 * @param {Fact[]} facts
 */
function factList(title, facts) {
  const items = facts.map(([name, text]) =>
    made("div", {}, made("dt", {}, name), made("dd", {}, text)),
  );
  return made("div", {}, made("h3", {}, title), made("dl", {}, ...items));
}

/** @param {PageData} data */
export function createFacts(data) {
  const { result } = data;
  found("fact-lists", HTMLElement).append(
    factList("Made by", madeBy(result)),
    factList("Tracks read", inputFacts(result)),
    factList("Solve", solveFacts(result)),
    factList("Conventions", conventions(result)),
    factList("Options", optionFacts(result.options)),
    factList("On this page", shownFacts(data)),
  );
}

// SPDX-License-Identifier: BSD-3-Clause
// The figures as tables. Long ones are made when they are opened.

import { comparableError, modelOf, nearestIndex, tracksInUse } from "./page_data.js";
import { found, made, madeButton } from "./elements.js";
import { look } from "./look.js";
import { dropOption, framesText, pixelText, shownName } from "./wording.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Frame} Frame */
/** @typedef {import("./cells.js").Cells} Cells */
/** @typedef {import("./cells.js").TrackFigures} TrackFigures */
/** @typedef {import("./state.js").State} State */

/** @typedef {{ title: string, isNumber?: boolean }} Column */

const rowsAtFirst = 100;

/**
 * @param {HTMLTableElement} table
 * @param {string} caption
 * @param {Column[]} columns
 * @param {(Node | string)[][]} rows the first cell of each is its heading
 * @param {(row: HTMLTableRowElement, index: number) => void} [finish] called with each row
 */
function fillTable(table, caption, columns, rows, finish) {
  const classes = columns.map(({ isNumber }) => ({ class: isNumber ? "number" : "words" }));
  const head = columns.map(({ title }, i) => made("th", { scope: "col", ...classes[i] }, title));
  const body = made("tbody", {});
  /**
   * @param {number} from
   * @param {number} to
   */
  function append(from, to) {
    rows.slice(from, to).forEach((cells, i) => {
      const row = made("tr", {});
      cells.forEach((content, column) => {
        const attributes = { ...classes[column], ...(column === 0 && { scope: "row" }) };
        row.append(made(column === 0 ? "th" : "td", attributes, content));
      });
      finish?.(row, from + i);
      body.append(row);
    });
  }
  append(0, rowsAtFirst);
  table.replaceChildren(
    made("caption", { class: "unseen" }, caption),
    made("thead", {}, made("tr", {}, ...head)),
    body,
  );
  if (rows.length <= rowsAtFirst) return;
  const more = madeButton(
    `Show all ${rows.length} rows`,
    () => {
      append(rowsAtFirst, rows.length);
      foot.remove();
    },
    { class: "on-screen" },
  );
  const note = made("span", { class: "on-paper" }, `The first ${rowsAtFirst} of ${rows.length}`);
  const foot = made(
    "tfoot",
    {},
    made("tr", {}, made("td", { colspan: `${columns.length}` }, more, note)),
  );
  table.append(foot);
}

/**
 * @param {number} number of a frame
 * @param {() => void} act
 */
function frameButton(number, act) {
  return madeButton(`${number}`, act, { class: "link", "aria-label": `Go to frame ${number}` });
}

/** @param {Frame} frame */
function doubtList(frame) {
  if (frame.doubts.length === 1) return frame.doubts[0].text;
  return made("ul", {}, ...frame.doubts.map(({ text }) => made("li", {}, text)));
}

/**
 * The doubtful frames, the worst first, those without a figure behind them.
 * @param {PageData} data
 * @param {State} state
 */
function createDoubtfulTable({ result }, state) {
  const indices = result.frames
    .map((_, index) => index)
    .filter((index) => result.frames[index].verdict === "doubtful");
  /** @param {number} index */
  const known = (index) => {
    const error = comparableError(result.frames[index]);
    return error === Infinity ? -1 : error;
  };
  indices.sort((a, b) => known(b) - known(a) || a - b);
  found("doubtful-none", HTMLElement).hidden = indices.length > 0;
  const table = found("doubtful-table", HTMLTableElement);
  if (indices.length === 0) {
    table.parentElement?.remove();
    return;
  }
  const rows = indices.map((index) => {
    const frame = result.frames[index];
    const go = () => look(state, { frame: index });
    return [frameButton(frame.frame, go), pixelText(frame.expected_error), doubtList(frame)];
  });
  fillTable(
    table,
    "Doubtful frames, the worst first",
    [{ title: "Frame" }, { title: "Expected error", isNumber: true }, { title: "Why" }],
    rows,
    (row, i) => (row.dataset.frame = String(result.frames[indices[i]].frame)),
  );
}

/**
 * @param {PageData} data
 * @param {State} state
 */
function createWorstTable({ result }, state) {
  const { frames, tracks, worst_tracks: worst } = result;
  const table = found("worst-table", HTMLTableElement);
  found("worst-none", HTMLElement).hidden = worst.length > 0;
  if (worst.length === 0) {
    table.parentElement?.remove();
    return;
  }
  const names = new Set(tracks.map(({ name }) => name));
  const rows = worst.map(({ track, first, last, peak, moves, off, stands_out: standsOut }) => {
    const index = tracks.findIndex(({ name }) => name === track);
    const go = () => look(state, { track: index, frame: nearestIndex(frames, peak) });
    const label = `${shownName(track)}: select it in frame ${peak}`;
    return [
      madeButton(shownName(track), go, { class: "link track-name", "aria-label": label }),
      framesText(first, last),
      String(peak),
      pixelText(moves),
      off === null ? "not known" : `${off.toFixed(1)} σ`,
      standsOut ? "▲ yes" : "no",
      made("code", {}, dropOption(track, [first, last], names)),
    ];
  });
  fillTable(
    table,
    "Tracks that move the corners most",
    [
      { title: "Track" },
      { title: "Frames" },
      { title: "Most in frame", isNumber: true },
      { title: "Moves a corner by", isNumber: true },
      { title: "Off by", isNumber: true },
      { title: "Stands out" },
      { title: "To leave it out there" },
    ],
    rows,
  );
}

/**
 * @param {PageData} data
 * @param {State} state
 */
function fillFrameTable({ result }, state) {
  const rows = result.frames.map((frame, index) => {
    const { good, ignored } = tracksInUse(frame);
    const go = () => look(state, { frame: index });
    return [
      frameButton(frame.frame, go),
      frame.verdict,
      pixelText(frame.expected_error),
      pixelText(frame.good_rms ?? frame.rms),
      String(good),
      String(ignored),
      modelOf(frame),
    ];
  });
  fillTable(
    found("frame-table", HTMLTableElement),
    "All frames",
    [
      { title: "Frame" },
      { title: "Verdict" },
      { title: "Expected error", isNumber: true },
      { title: "RMS", isNumber: true },
      { title: "Good", isNumber: true },
      { title: "Ignored", isNumber: true },
      { title: "Model" },
    ],
    rows,
  );
}

/**
 * @param {PageData} data
 * @param {TrackFigures[]} figures
 * @param {State} state
 */
function fillTrackTable({ result }, figures, state) {
  const { frames, tracks } = result;
  const rows = figures.map(({ track, good, ignored, largest, largestAt, rms }) => [
    madeButton(shownName(tracks[track].name), () => look(state, { track }), {
      class: "link track-name",
    }),
    String(good),
    String(ignored),
    pixelText(rms),
    pixelText(largest),
    largestAt < 0
      ? ""
      : frameButton(frames[largestAt].frame, () => look(state, { track, frame: largestAt })),
  ]);
  fillTable(
    found("track-table", HTMLTableElement),
    "All tracks, those with the largest residual first",
    [
      { title: "Track" },
      { title: "Good frames", isNumber: true },
      { title: "Ignored frames", isNumber: true },
      { title: "RMS where good", isNumber: true },
      { title: "Largest residual", isNumber: true },
      { title: "In frame", isNumber: true },
    ],
    rows,
  );
}

/** @param {PageData} data */
function createBetweenTable({ result }) {
  if (result.between.length === 0) return;
  found("between", HTMLElement).hidden = false;
  const rows = result.between.flatMap(({ frame, quads }) =>
    Object.entries(quads).map(([name, { corners }]) => [
      String(frame),
      name,
      ...corners.map(([x, y]) =>
        x === null || y === null ? "behind the horizon" : `${x.toFixed(2)}, ${y.toFixed(2)}`,
      ),
    ]),
  );
  const corners = [0, 1, 2, 3].map((i) => ({ title: `Corner ${i}`, isNumber: true }));
  fillTable(
    found("between-table", HTMLTableElement),
    "Where the corners are between the frames",
    [{ title: "Frame" }, { title: "Quad" }, ...corners],
    rows,
  );
}

/**
 * @param {HTMLTableElement} table
 * @param {() => void} fill
 */
function fillWhenOpened(table, fill) {
  const details = table.closest("details");
  details?.addEventListener("toggle", fill, { once: true });
}

/**
 * @param {PageData} data
 * @param {TrackFigures[]} figures the tracks with the largest residual first
 * @param {State} state
 */
export function createTables(data, figures, state) {
  createDoubtfulTable(data, state);
  createWorstTable(data, state);
  createBetweenTable(data);
  fillWhenOpened(found("frame-table", HTMLTableElement), () => fillFrameTable(data, state));
  fillWhenOpened(found("track-table", HTMLTableElement), () =>
    fillTrackTable(data, figures, state),
  );
}

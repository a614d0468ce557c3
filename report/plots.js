// SPDX-License-Identifier: BSD-3-Clause
/* global uPlot */
// Figures over the frames, one plot below the other with the same frames.

import { colour, onThemeChange } from "./theme.js";
import { drawDoubts, drawLimit, drawLoneValues, drawModels, drawUnknown } from "./plot_drawing.js";
import { found, made, onResize } from "./elements.js";
import { look } from "./look.js";
import { modelOf, tracksInUse } from "./page_data.js";
import { pixelText, rounded } from "./wording.js";

/** @typedef {import("./page_data.js").PageData} PageData */
/** @typedef {import("./page_data.js").Frame} Frame */
/** @typedef {import("./state.js").State} State */
/** @typedef {import("./plot_drawing.js").PlotLine} PlotLine */

/**
 * @typedef {{
 *   id: string, title: string, height: number, lines: PlotLine[], limit?: number | null,
 *   rows?: string[], isLast?: boolean, textAt: (frame: Frame) => string,
 *   draw?: (plot: UPlot) => void,
 * }} PlotKind `rows` names the places of what is no number; `textAt` is said of a frame
 */

const plotFont = "12px system-ui, sans-serif";
const axisWidth = 84;
const leastHeight = 0.001; // what is smaller is not worth a look
const models = ["base", "projective", "affine", "similarity", "translation", "held"];

/**
 * @param {PageData["result"]} result
 * @returns {PlotKind[]}
 */
function plotKinds({ frames, max_error: limit }) {
  const largest = Math.max(...frames.map((frame) => frame.expected_error ?? 0));
  const showsLimit = limit !== null && largest > 0.4 * limit;
  const used = frames.map(tracksInUse);
  const shown = models.filter((model) => frames.some((frame) => modelOf(frame) === model));
  const rows = [...shown, "doubtful"].reverse();
  const limitWords =
    limit === null || showsLimit ? "" : `, far below the limit of ${pixelText(limit)}`;
  return [
    {
      id: "plot-error",
      title: `Expected corner error, px${limitWords}`,
      height: 150,
      lines: [{ values: frames.map((frame) => frame.expected_error), ink: "quad" }],
      limit: showsLimit ? limit : null,
      textAt: (frame) => pixelText(frame.expected_error),
      draw: (plot) => drawUnknown(plot, frames),
    },
    {
      id: "plot-rms",
      title: "RMS of the good tracks, px",
      height: 110,
      lines: [{ values: frames.map((frame) => frame.good_rms ?? frame.rms), ink: "good" }],
      textAt: (frame) => pixelText(frame.good_rms ?? frame.rms),
    },
    {
      id: "plot-tracks",
      title: "Tracks in use: good, and ignored (dashed)",
      height: 110,
      lines: [
        { values: used.map(({ good }) => good), ink: "good" },
        { values: used.map(({ ignored }) => ignored), ink: "ignored", dash: [5, 3] },
      ],
      textAt: (frame) => `${tracksInUse(frame).good} good, ${tracksInUse(frame).ignored} ignored`,
    },
    {
      id: "plot-model",
      title: "Model and verdict",
      height: 34 + 20 * rows.length + 24,
      lines: [{ values: frames.map(() => null), ink: "good" }],
      rows,
      isLast: true,
      textAt: (frame) => `${modelOf(frame)}, ${frame.verdict}`,
      draw: (plot) => drawModels(plot, frames, rows),
    },
  ];
}

/**
 * @param {PlotKind} kind
 * @returns {UPlotAxis[]}
 */
function axesOf({ rows, isLast }) {
  const shared = { font: plotFont, stroke: () => colour("quiet") };
  const grid = { stroke: () => colour("line"), width: 1 };
  return [
    {
      ...shared,
      grid: { ...grid, show: false },
      ticks: { ...grid, show: isLast, size: 4 },
      size: isLast ? 28 : 6,
      gap: 4,
      incrs: [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 100000, 1000000],
      values: (_plot, splits) => splits.map((split) => (isLast ? String(split) : "")),
    },
    {
      ...shared,
      grid,
      ticks: { show: false },
      size: axisWidth,
      gap: 8,
      space: 28,
      ...(rows && { splits: () => rows.map((_, i) => i) }),
      values: (_plot, splits) => splits.map((split) => (rows ? rows[split] : rounded(split))),
    },
  ];
}

/**
 * @param {Frame[]} frames
 * @param {PlotKind} kind
 * @returns {UPlotOptions["scales"]}
 */
function scalesOf(frames, { rows, limit }) {
  const first = frames[0].frame;
  const last = frames[frames.length - 1].frame;
  return {
    x: { time: false, range: () => [first - 0.5, last + 0.5] },
    y: {
      range: (_plot, _low, high) =>
        rows ? [-0.6, rows.length - 0.4] : [0, Math.max(high ?? 0, limit ?? 0, leastHeight) * 1.12],
    },
  };
}

/**
 * @param {PlotKind} kind
 * @param {Frame[]} frames
 * @param {HTMLElement} target
 * @param {(index: number | null) => void} point called with the frame that is pointed at
 * @returns {UPlot}
 */
function createPlot(kind, frames, target, point) {
  /** @type {UPlotSeries[]} */
  const series = kind.lines.map(({ ink, dash }) => ({
    stroke: () => colour(ink),
    width: 1.75,
    spanGaps: false,
    ...(dash && { dash }),
    points: {
      show: frames.length <= 2,
      size: 7,
      stroke: () => colour(ink),
      fill: () => colour(ink),
    },
  }));
  return new uPlot(
    {
      width: target.clientWidth,
      height: kind.height,
      padding: [8, 12, 0, 0],
      legend: { show: false },
      scales: scalesOf(frames, kind),
      cursor: {
        sync: { key: "frames", setSeries: false },
        drag: { x: false, y: false },
        points: { show: !kind.rows, size: 7 },
        y: false,
      },
      series: [{}, ...series],
      axes: axesOf(kind),
      hooks: {
        setCursor: [(plot) => point(plot.cursor.idx ?? null)],
        drawClear: [(plot) => drawDoubts(plot, frames)],
        draw: [
          (plot) => kind.limit && drawLimit(plot, kind.limit),
          (plot) => kind.lines.forEach((line) => drawLoneValues(plot, frames, line)),
          (plot) => kind.draw?.(plot),
        ],
      },
    },
    [frames.map((frame) => frame.frame), ...kind.lines.map((line) => line.values)],
    target,
  );
}

/**
 * @param {PageData} data
 * @param {State} state
 */
export function createPlots({ result }, state) {
  const { frames } = result;
  const list = found("plot-list", HTMLElement);
  const plots = plotKinds(result).map((kind) => {
    const readout = made("span", { class: "readout" });
    const heading = made("h3", {}, kind.title);
    const holder = made("div", {
      id: kind.id,
      class: "plot",
      role: "img",
      "aria-label": kind.title,
    });
    const now = made("div", { class: "now", "aria-hidden": "true" });
    list.append(made("div", { class: "plot-heading" }, heading, readout), holder);
    /** @param {number | null} pointedAt a frame's index */
    function read(pointedAt) {
      const frame = frames[pointedAt ?? state.frame];
      readout.textContent = `${kind.textAt(frame)} in frame ${frame.frame}`;
    }
    const plot = createPlot(kind, frames, holder, read);
    plot.over.append(now);
    plot.over.addEventListener("click", () => {
      const index = plot.cursor.idx;
      if (typeof index === "number") look(state, { frame: index });
    });
    return { kind, plot, now, read };
  });

  function showFrame() {
    for (const { plot, now, read } of plots) {
      const x = plot.valToPos(frames[state.frame].frame, "x");
      now.style.transform = `translateX(${x}px)`;
      read(null);
    }
  }

  function fit() {
    const width = list.clientWidth;
    if (width === 0) return;
    for (const { kind, plot } of plots) {
      if (plot.width === width) plot.redraw(false, true);
      else plot.setSize({ width, height: kind.height });
    }
    showFrame();
  }

  onResize(list, fit);
  onThemeChange(fit);
  state.subscribe((changed) => changed.has("frame") && showFrame());
  showFrame();
}

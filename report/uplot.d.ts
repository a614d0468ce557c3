// SPDX-License-Identifier: BSD-3-Clause
// The part of the vendored uPlot that the page uses.

interface UPlot {
  readonly root: HTMLElement;
  readonly width: number;
  readonly over: HTMLElement;
  readonly ctx: CanvasRenderingContext2D;
  readonly bbox: { left: number; top: number; width: number; height: number };
  readonly cursor: { idx?: number | null };
  setSize(size: { width: number; height: number }): void;
  valToPos(value: number, scale: string, canvasPixels?: boolean): number;
  redraw(rebuildPaths?: boolean, recalcAxes?: boolean): void;
}

interface UPlotSeries {
  stroke?: () => string;
  fill?: () => string;
  width?: number;
  dash?: number[];
  spanGaps?: boolean;
  points?: {
    show: boolean;
    size?: number;
    width?: number;
    fill?: () => string;
    stroke?: () => string;
  };
  paths?: () => null;
}

interface UPlotAxis {
  show?: boolean;
  size?: number;
  gap?: number;
  font?: string;
  stroke?: () => string;
  grid?: { show?: boolean; stroke?: () => string; width?: number };
  ticks?: { show?: boolean; stroke?: () => string; width?: number; size?: number };
  border?: { show?: boolean };
  incrs?: number[];
  space?: number;
  splits?: () => number[];
  values?: (plot: UPlot, splits: number[]) => string[];
}

interface UPlotOptions {
  width: number;
  height: number;
  padding?: (number | null)[];
  legend?: { show: boolean };
  scales: {
    [name: string]: {
      time?: boolean;
      range?: (plot: UPlot, low: number, high: number) => [number, number];
    };
  };
  cursor?: object;
  series: UPlotSeries[];
  axes: UPlotAxis[];
  hooks: { [name: string]: ((plot: UPlot) => void)[] };
}

declare const uPlot: {
  new (options: UPlotOptions, data: (number | null)[][], target: HTMLElement): UPlot;
};

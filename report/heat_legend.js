// SPDX-License-Identifier: BSD-3-Clause
// What the heat map's colours and marks mean.

import { Part, partWords } from "./cells.js";
import { fillPixels, heatPalette, isMarked, shades } from "./heat_pixels.js";
import { found, made, onResize } from "./elements.js";
import { onThemeChange } from "./theme.js";
import { rounded } from "./wording.js";

/**
 * @param {number} cap
 * @param {boolean} knowsResiduals
 * @param {number[]} parts what else there is
 */
export function createHeatLegend(cap, knowsResiduals, parts) {
  const legend = found("heat-legend", HTMLElement);
  const scale = made("canvas", { class: "heat-scale", "aria-hidden": "true" });
  if (knowsResiduals) {
    legend.append(made("span", { class: "heat-item" }, "0", scale, `${rounded(cap)} px and more`));
  }
  const swatches = parts.map((part) => {
    const canvas = made("canvas", { class: "heat-swatch", "aria-hidden": "true" });
    legend.append(made("span", { class: "heat-item" }, canvas, partWords[part]));
    return { canvas, part };
  });
  const draw = () => {
    const palette = heatPalette();
    if (knowsResiduals)
      fillPixels(scale, (x, _y, width) => palette.plain[Math.floor((x / width) * shades)]);
    for (const { canvas, part } of swatches) {
      fillPixels(canvas, (x, y) => {
        if (part === Part.unseen) return palette.missing;
        return (isMarked(part, x, y) ? palette.marked : palette.plain)[shades - 1];
      });
    }
  };
  draw();
  onThemeChange(draw);
  onResize(legend, draw);
}

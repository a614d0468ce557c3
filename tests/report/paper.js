// SPDX-License-Identifier: BSD-3-Clause
// The page on paper, as the browser prints it.
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { made, pixels } from "./support.js";

/** @typedef {import("./support.js").Page} Page */

/**
 * A sheet: its words with their boxes, and its pixels, which are points as well.
 * @typedef {{
 *   words: { text: string, left: number, top: number, right: number, bottom: number }[],
 *   drawn: ReturnType<typeof pixels>,
 * }} Sheet
 */

/** @param {string} text */
const plain = (text) =>
  text
    .replaceAll("&lt;", "<")
    .replaceAll("&gt;", ">")
    .replaceAll("&quot;", '"')
    .replaceAll("&amp;", "&");

/**
 * Prints the page to a PDF file of A4 sheets.
 * @param {Page} page
 * @param {string} name of the file, without ending
 * @returns {Promise<Sheet[]>}
 */
export async function printed(page, name) {
  const pdf = made(`${name}.pdf`);
  await page.pdf({ path: pdf, format: "A4", margin: { top: 40, bottom: 40, left: 40, right: 40 } });
  const boxes = execFileSync("pdftotext", ["-bbox", pdf, "-"], { encoding: "utf8" });
  const word =
    /<word xMin="([\d.-]+)" yMin="([\d.-]+)" xMax="([\d.-]+)" yMax="([\d.-]+)">(.*)<\/word>/g;
  const sheets = boxes
    .split("<page ")
    .slice(1)
    .map((sheet) =>
      [...sheet.matchAll(word)].map(([, left, top, right, bottom, text]) => ({
        text: plain(text),
        left: Number(left),
        top: Number(top),
        right: Number(right),
        bottom: Number(bottom),
      })),
    );
  const digits = String(sheets.length).length;
  execFileSync("pdftoppm", ["-r", "72", "-png", pdf, made(name)]);
  return sheets.map((words, i) => {
    const png = made(`${name}-${String(i + 1).padStart(digits, "0")}.png`);
    return { words, drawn: pixels(readFileSync(png)) };
  });
}

/**
 * Where words stand next to each other for the first time.
 * @param {Sheet[]} sheets
 * @param {string} phrase
 * @returns {{ sheet: Sheet, left: number, top: number, bottom: number } | null}
 */
export function placeOf(sheets, phrase) {
  const wanted = phrase.split(" ");
  for (const sheet of sheets) {
    const at = sheet.words.findIndex((_, i) =>
      wanted.every((text, j) => sheet.words[i + j]?.text === text),
    );
    if (at < 0) continue;
    const { left, top, bottom } = sheet.words[at];
    return { sheet, left, top, bottom };
  }
  return null;
}

/**
 * How many pixels of a stripe across the sheet are like the colour.
 * @param {Sheet} sheet
 * @param {number} top
 * @param {number} bottom
 * @param {(colour: [number, number, number]) => boolean} isLike
 */
export function countPixels({ drawn }, top, bottom, isLike) {
  let count = 0;
  for (let y = Math.ceil(top); y < Math.min(bottom, drawn.height); ++y) {
    for (let x = 0; x < drawn.width; ++x) count += isLike(drawn.at(x, y)) ? 1 : 0;
  }
  return count;
}

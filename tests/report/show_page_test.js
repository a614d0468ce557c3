// SPDX-License-Identifier: BSD-3-Clause
// The page of a whole batch.
import assert from "node:assert/strict";
import { mkdirSync, readFileSync, readdirSync, rmSync, writeFileSync } from "node:fs";
import { test } from "node:test";
import { cornerpin, made, open, withBrowser } from "./support.js";

withBrowser();

/** @typedef {import("playwright-core").Page} Page */

const SHOTS = 2000;

/**
 * Solves small shots, the first without noise, each with more than the one before.
 * @param {string} name of the folder
 * @param {number} count
 */
function batch(name, count) {
  const [tracks, results] = [made(`${name} tracks`), made(name)];
  rmSync(tracks, { recursive: true, force: true });
  rmSync(results, { recursive: true, force: true });
  mkdirSync(tracks, { recursive: true });
  for (let i = 0; i < count; ++i) {
    const rows = ["track,frame,x,y"];
    for (let t = 0; t < 6; ++t) {
      for (let frame = 0; frame < 4; ++frame) {
        const noise = ((t * 7 + frame * 3 + i) % 5) * 0.1 * i;
        rows.push(`t${t},${frame},${((t * 37) % 100) + frame + noise},${(t * t * 13) % 70}`);
      }
    }
    writeFileSync(`${tracks}/sh${i}.csv`, rows.join("\n"));
  }
  cornerpin("batch", tracks, "-o", results, "--report", "--quiet");
  return results;
}

/** @param {Page} page */
const names = (page) => page.locator("tbody tr:not([hidden]) th").allTextContents();

/**
 * @param {Page} page
 * @param {number} column
 */
async function numbers(page, column) {
  const cells = await page.locator(`tbody td:nth-child(${column + 1})`).allTextContents();
  return cells.map(Number);
}

/**
 * @param {number[]} values
 * @param {number} sign
 */
const areSorted = (values, sign) =>
  values.every((v, i) => i === 0 || sign * (v - values[i - 1]) >= 0);

test("has the worst shot first and sorts by every column", async () => {
  const folder = batch("small", 12);
  const pages = readdirSync(folder).filter((file) => /^sh.*html$/.test(file));
  assert.equal(pages.length, 12);
  const { page, close } = await open(`${folder}/batch.html`);
  assert.equal((await names(page)).length, 12);
  const worst = await numbers(page, 2);
  assert.ok(areSorted(worst, -1), `${worst}`);
  assert.ok(worst[0] > worst[11]);
  const heads = page.locator("thead th:has(button)");
  assert.equal(await heads.count(), 6);
  await page.getByRole("button", { name: "Corners off by" }).click();
  assert.ok(areSorted(await numbers(page, 2), 1));
  assert.equal(await heads.nth(2).getAttribute("aria-sort"), "ascending");
  await page.getByRole("button", { name: "Residual" }).click();
  assert.ok(areSorted(await numbers(page, 5), -1));
  assert.equal(await heads.nth(2).getAttribute("aria-sort"), null);
  await page.getByRole("button", { name: "Shot" }).click();
  assert.deepEqual(
    await names(page),
    Array.from({ length: 12 }, (_, i) => `sh${i}`),
  );
  await page.getByRole("button", { name: "Shot" }).click();
  assert.equal((await names(page))[0], "sh11");
  await close();
});

test("picks shots by name and leads to their pages", async () => {
  const folder = batch("picked", 12);
  const { page, close } = await open(`${folder}/batch.html`, {}, [`${folder}/sh11.html`]);
  await page.getByRole("searchbox").fill("SH1");
  assert.deepEqual((await names(page)).sort(), ["sh1", "sh10", "sh11"]);
  assert.equal(await page.locator("output").textContent(), "3 shown");
  await page.getByRole("link", { name: "sh11" }).click();
  await page.locator("html[data-ready]").waitFor();
  assert.match(page.url(), /sh11\.html$/);
  await close();
});

test("opens a show of 2,000 shots within seconds", async (context) => {
  const folder = batch("large", 1);
  const page = readFileSync(`${folder}/batch.html`, "utf8");
  // The row of a shot that is solved stands for all, with a line as long as lines are.
  const row = /<tbody>\n([^]*?)<\/tbody>/.exec(page)?.[1] ?? "";
  const line = `M0.5 16.0h0${Array.from({ length: 59 }, (_, i) => `L${i}.5 ${i % 16}.5`).join("")}`;
  const full = row.replace(/<path d="[^"]*"/, `<path d="${line}"`);
  const rows = Array.from({ length: SHOTS }, (_, i) => full.replaceAll("sh0", `s${i}`));
  const path = made("large.html");
  writeFileSync(
    path,
    page.replace(row, () => rows.join("")),
  );
  const began = performance.now();
  const opened = await open(path);
  await opened.page.locator("tbody tr").last().scrollIntoViewIfNeeded();
  const seconds = (performance.now() - began) / 1000;
  context.diagnostic(`opened in ${seconds.toFixed(2)} s`);
  assert.equal(await opened.page.locator("tbody tr").count(), SHOTS);
  assert.ok(seconds < 20, `${seconds} s`);
  const sorting = await opened.page.evaluate(() => {
    const start = performance.now();
    /** @type {HTMLElement} */ (document.querySelector("thead button")).click();
    document.body.getBoundingClientRect();
    return performance.now() - start;
  });
  context.diagnostic(`sorted in ${sorting.toFixed(0)} ms`);
  assert.ok(sorting < 10000, `${sorting} ms`);
  await opened.close();
});

// SPDX-License-Identifier: BSD-3-Clause
// CORNERPIN_PAGES=folder tests/report/run_test ../docs/site: the site that script/docs has made, from
// disk and offline, in a browser.
import assert from "node:assert/strict";
import { readdirSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { fileURLToPath } from "node:url";
import { openAny, withBrowser } from "../report/support.js";

withBrowser();

const site = fileURLToPath(new URL("../../build/docs/html/", import.meta.url));
const files = readdirSync(site, { recursive: true, encoding: "utf8" }).map((name) =>
  join(site, name),
);
const pages = files.filter((file) => file.endsWith(".html"));
const phone = { viewport: { width: 400, height: 800 }, isMobile: true, hasTouch: true };

test("no page is wider than a phone", async () => {
  assert.ok(pages.length >= 20);
  const { page, close } = await openAny(join(site, "index.html"), phone, files);
  const wide = [];
  for (const path of pages) {
    await page.goto(`file://${path}`);
    const width = await page.evaluate(() => document.documentElement.scrollWidth);
    if (width > 400) wide.push(`${path}: ${width}`);
  }
  assert.deepEqual(wide, []);
  await close();
});

test("what is too wide for a phone scrolls by itself", async () => {
  const { page, close } = await openAny(join(site, "formats.html"), phone, files);
  const table = page.locator("table").first();
  const [inner, outer] = await table.evaluate((each) => [each.scrollWidth, each.clientWidth]);
  assert.ok(inner > outer + 100 && outer <= 400, `${inner} in ${outer}`);
  await table.evaluate((each) => (each.scrollLeft = 100));
  assert.equal(await table.evaluate((each) => each.scrollLeft), 100);
  await close();
});

test("a phone's menu leads from page to page", async () => {
  const { page, close } = await openAny(join(site, "index.html"), phone, files);
  const link = page.locator(".sidebar-tree").getByText("Architecture", { exact: true });
  assert.equal(await inView(), false);
  await page.locator(".mobile-header label[for=__navigation]").tap();
  await page.waitForFunction(() => {
    const menu = document.querySelector(".sidebar-drawer");
    return menu !== null && menu.getBoundingClientRect().left >= 0;
  });
  await link.tap();
  await page.waitForURL("**/architecture.html");
  assert.match(await page.locator("h1").innerText(), /a track becomes a transform/);
  await close();

  async function inView() {
    const box = await link.boundingBox();
    return box !== null && box.x >= 0;
  }
});

test("a search finds pages and the names of functions", async () => {
  const { page, close } = await openAny(join(site, "index.html"), {}, files);
  assert.ok((await found("quad")).some((title) => title.includes("pins of other programs")));
  assert.ok((await found("tracksFromArrays")).some((title) => /tracksFromArrays/.test(title)));
  assert.ok((await found("read_result")).some((title) => /read_result/.test(title)));
  assert.deepEqual(await found("xyzzy"), []);

  await found("homography");
  await page.locator("#search-results li a").first().click();
  await page.waitForURL((url) => !url.pathname.endsWith("search.html"));
  assert.match(await page.locator("main, article").first().innerText(), /homography/i);
  await close();

  /**
   * The titles of what is found.
   * @param {string} word
   */
  async function found(word) {
    await page.locator("input[name=q]").first().fill(word);
    await page.locator("input[name=q]").first().press("Enter");
    await page.waitForURL(`**/search.html?q=${word}*`);
    await page.locator("#search-results .search-summary").filter({ hasText: /\S/ }).waitFor();
    await page.waitForFunction(() => {
      const told = document.querySelector("#search-results .search-summary")?.textContent ?? "";
      return /found|match/.test(told);
    });
    return page.locator("#search-results li a").allInnerTexts();
  }
});

// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { test } from "node:test";
import { isAt } from "./canvas.js";
import { data, inPage, open, pixels, solvedPage, withBrowser } from "./support.js";

/** @typedef {import("./support.js").Page} Page */

withBrowser();

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const board = solvedPage(`${data}board.csv`, "looks").path;

/**
 * Fails with the rules that the page breaks as it is now, and where.
 * @param {Page} page
 */
async function assertAccessible(page) {
  await page.evaluate(axe);
  const violations = await page.evaluate(async () => {
    const found = await /** @type {any} */ (window).axe.run();
    return found.violations.map((/** @type {any} */ { id, nodes }) => ({
      id,
      nodes: nodes.map((/** @type {any} */ { html, failureSummary }) => html + failureSummary),
    }));
  });
  assert.deepEqual(violations, []);
}

/** @param {Page} page */
const openDetails = (page) =>
  page.evaluate(() => document.querySelectorAll("details").forEach((each) => (each.open = true)));

/**
 * The middle brightness of the window's pixels, 0 to 255.
 * @param {Page} page
 */
async function brightness(page) {
  const { width, height, at } = pixels(await page.screenshot({ caret: "initial" }));
  const values = [];
  for (let y = 0; y < height; y += 3) {
    for (let x = 0; x < width; x += 3) values.push(at(x, y).reduce((sum, one) => sum + one, 0) / 3);
  }
  return values.sort((a, b) => a - b)[values.length >> 1];
}

for (const colorScheme of /** @type {const} */ (["light", "dark"])) {
  test(`axe finds nothing, ${colorScheme}`, async () => {
    const { page, close } = await open(board, { colorScheme });
    await assertAccessible(page);
    await openDetails(page);
    await page.locator("#heat-scroll").click({ position: { x: 300, y: 30 } });
    await assertAccessible(page);
    await page.locator("h1").click();
    await page.keyboard.press("?");
    await page.getByRole("dialog").waitFor();
    await assertAccessible(page);
    await close();
  });
}

test("light and dark are what the system asks for", async () => {
  await inPage(board, async (page) => assert.ok((await brightness(page)) > 200), {
    colorScheme: "light",
  });
  await inPage(board, async (page) => assert.ok((await brightness(page)) < 60), {
    colorScheme: "dark",
  });
});

test("print is dark on light and without controls, whatever the screen", async () => {
  await inPage(
    board,
    async (page) => {
      assert.ok(await page.locator("#play").isVisible());
      await page.emulateMedia({ media: "print" });
      assert.ok((await brightness(page)) > 200);
      for (const control of await page.locator("button.primary, select, input").all()) {
        assert.equal(await control.isVisible(), false, (await control.getAttribute("id")) ?? "");
      }
      assert.ok(await page.locator("#verdict-sentence").isVisible());
      assert.ok(await page.locator("#player-canvas").isVisible());
      assert.ok((await page.pdf({ format: "A4" })).length > 10000);
    },
    { colorScheme: "dark" },
  );
});

test("a window of 400 pixels needs no scrolling sideways", async () => {
  const viewport = { width: 400, height: 800 };
  await inPage(
    board,
    async (page) => {
      await openDetails(page);
      await page.locator("#heat-scroll").click({ position: { x: 200, y: 30 } });
      const { content, window: shown } = await page.evaluate(() => ({
        content: document.documentElement.scrollWidth,
        window: document.documentElement.clientWidth,
      }));
      assert.equal(shown, 400);
      assert.ok(content <= 400, `${content} pixels wide`);
      await page.locator("#step-on").tap();
      await isAt(page, Number(await page.locator("#frame-number").inputValue()));
    },
    { viewport, hasTouch: true, isMobile: true, deviceScaleFactor: 2 },
  );
});

test("nothing moves by itself, and nothing at all where less motion is asked for", async () => {
  await inPage(
    board,
    async (page) => {
      const before = await page.locator("#player").getAttribute("data-frame");
      const moving = await page.evaluate(() =>
        [...document.querySelectorAll("*")]
          .filter((element) => {
            const { transitionDuration, animationDuration } = getComputedStyle(element);
            return [transitionDuration, animationDuration].some((text) =>
              text.split(",").some((duration) => parseFloat(duration) > 0.001),
            );
          })
          .map((element) => element.outerHTML.slice(0, 80)),
      );
      assert.deepEqual(moving, []);
      assert.notEqual(
        await page.evaluate(() => getComputedStyle(document.documentElement).scrollBehavior),
        "smooth",
      );
      await page.waitForTimeout(500);
      assert.equal(await page.locator("#player").getAttribute("data-frame"), before);
    },
    { reducedMotion: "reduce" },
  );
});

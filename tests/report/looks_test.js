// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { test } from "node:test";
import { assertPlayerIsSeen, isAt } from "./canvas.js";
import { countPixels, placeOf, printed } from "./paper.js";
import { driftingShot, plainNames } from "./shots.js";
import { data, inPage, made, openAny, pixels, sharedPage, solvedPage } from "./support.js";
import { filledTable, withBrowser } from "./support.js";

/** @typedef {import("./support.js").Page} Page */

withBrowser();

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const plot = made("looks.svg");
const board = solvedPage(`${data}board.csv`, "looks", "--plot", plot);

const inLight = sharedPage(board.path, { colorScheme: "light" });
const inDark = sharedPage(board.path, { colorScheme: "dark" });

/**
 * Fails with the rules that a part of the page breaks as it is now, and where.
 * @param {Page} page
 * @param {string} part
 */
async function assertAccessible(page, part) {
  await page.evaluate(axe);
  const violations = await page.evaluate(async (selector) => {
    const found = await /** @type {any} */ (window).axe.run(selector);
    return found.violations.map((/** @type {any} */ { id, nodes }) => ({
      id,
      nodes: nodes.map((/** @type {any} */ { html, failureSummary }) => html + failureSummary),
    }));
  }, part);
  assert.deepEqual(violations, []);
}

/** @param {Page} page */
async function openDetails(page) {
  await page.evaluate(() =>
    document.querySelectorAll("details").forEach((each) => (each.open = true)),
  );
  await filledTable(page, "frame");
  await filledTable(page, "track");
}

/**
 * The rows of pixels that the heat map has on paper.
 * @param {import("./paper.js").Sheet[]} sheets
 */
function mapRows(sheets) {
  const legend = placeOf(sheets, "and more");
  const behind = placeOf(sheets, "Doubtful frames");
  assert.ok(legend && behind);
  const { sheet, bottom } = legend;
  const end = sheet === behind.sheet ? behind.top : sheet.drawn.height;
  const rows = [];
  for (let y = Math.ceil(bottom); y < end; ++y) {
    const blank = countPixels(sheet, y, y + 1, (colour) => Math.min(...colour) > 250);
    if (blank < 0.2 * sheet.drawn.width) rows.push({ sheet, y });
  }
  return rows;
}

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

test("light and dark are what the system asks for", async () => {
  await inLight(async (page) => assert.ok((await brightness(page)) > 200));
  await inDark(async (page) => assert.ok((await brightness(page)) < 60));
});

test("print is dark on light and without controls, whatever the screen", async () => {
  await inDark(async (page) => {
    assert.ok(await page.locator("#play").isVisible());
    await page.emulateMedia({ media: "print" });
    assert.ok((await brightness(page)) > 200);
    for (const control of await page.locator("button.primary, select, input").all()) {
      assert.equal(await control.isVisible(), false, (await control.getAttribute("id")) ?? "");
    }
    assert.ok(await page.locator("#verdict-sentence").isVisible());
    assert.ok(await page.locator("#player-canvas").isVisible());
    await page.emulateMedia({ media: null });
  });
});

test("a printed page has its words, its tables, its plots and the whole heat map", async () => {
  await inDark(async (page) => {
    const sentence = await page.locator("#verdict-sentence").innerText();
    const [worst] = board.result.worst_tracks;
    assert.ok(worst);
    const sheets = await printed(page, "board");
    for (const phrase of [
      sentence,
      `Frame ${worst.peak}`,
      "top left",
      "Tracks that move the corners most",
      `--drop ${worst.track}:${worst.first}-${worst.last}`,
      "How it was made",
      `cornerpin ${board.result.program?.version}`,
    ]) {
      assert.ok(placeOf(sheets, phrase), `${phrase} on paper`);
    }
    const doubtful = board.result.frames.filter((frame) => frame.verdict === "doubtful");
    for (const { doubts } of doubtful) assert.ok(placeOf(sheets, doubts[0].text), doubts[0].text);
    for (const { words, drawn } of sheets) {
      for (const { text, left, right } of words) {
        assert.ok(left >= 29 && right <= drawn.width - 29, `${text} is cut off`);
      }
      assert.deepEqual(drawn.at(2, 2), [255, 255, 255]);
    }

    /** @type {[string, string, [number, number, number]][]} each with the ink of its line */
    const plots = [
      ["Expected corner error,", "RMS of the", [0, 122, 90]],
      ["RMS of the", "Tracks in use:", [0, 114, 178]],
      ["Tracks in use:", "Model and verdict", [0, 114, 178]],
      ["Model and verdict", "Residuals of every", [0, 114, 178]],
    ];
    for (const [heading, next, ink] of plots) {
      const at = placeOf(sheets, heading);
      const behind = placeOf(sheets, next);
      assert.ok(at && behind);
      const end = at.sheet === behind.sheet ? behind.top : Infinity;
      const count = countPixels(at.sheet, at.bottom, end, (colour) =>
        colour.every((value, i) => Math.abs(value - ink[i]) < 60),
      );
      assert.ok(count > 100, `${heading}: ${count} pixels of its line`);
    }

    const rows = mapRows(sheets);
    assert.equal(rows[0].sheet, placeOf(sheets, "Residuals of every")?.sheet, "a heading alone");
    const wanted = board.result.tracks.length * 4 * 0.75; // a point is 4/3 of the page's pixels
    assert.ok(Math.abs(rows.length - wanted) <= 2, `${rows.length} rows, not ${wanted}`);
  });
});

/** Of more tracks than the heat map shows at once, on the screen or on paper: rows 3 pixels high. */
const many = solvedPage(
  driftingShot("many.csv", { names: plainNames(400), frames: 6 }),
  "many",
).path;
const inMany = sharedPage(many);

test("a heat map that is scrolled shows, and takes clicks for, the rows that it is scrolled to", async () => {
  await inMany(async (page) => {
    const heat = page.locator("#heat-scroll");
    const name = page.locator("#track-details .track-name");
    await heat.scrollIntoViewIfNeeded();
    await heat.click({ position: { x: 10, y: 391 } });
    const atTop = await name.innerText();
    const [top, scrolled] = [pixels(await heat.screenshot()), await scrolledTo(300)];
    for (let y = 0; y < top.height - 300; y += 7) {
      for (let x = 5; x < top.width - 20; x += 50) {
        assert.deepEqual(scrolled.at(x, y), top.at(x, y + 300), `at ${x}, ${y}`);
      }
    }
    await heat.click({ position: { x: 10, y: 4 } });
    assert.notEqual(await name.innerText(), atTop);
    await heat.click({ position: { x: 10, y: 91 } });
    assert.equal(await name.innerText(), atTop);
    await heat.evaluate((element) => (element.scrollTop = 0));

    /** @param {number} y */
    async function scrolledTo(y) {
      await heat.evaluate(async (element, to) => {
        const painted = new Promise((told) => element.addEventListener("scroll", told));
        element.scrollTop = to;
        await painted;
      }, y);
      return pixels(await heat.screenshot());
    }
  });
});

test("what is too long for paper is printed in part, which it says", async () => {
  await inMany(async (page) => {
    assert.equal(await page.locator("#heat-part").isVisible(), false);
    await openDetails(page);
    const sheets = await printed(page, "many");
    const cut = sheets.filter((sheet) => placeOf([sheet], "The first 100 of 400"));
    assert.equal(cut.length, 1, "a table's end is told once");
    assert.ok(placeOf(sheets, "The first 266 of 400 tracks: largest residual first."));
    const rows = mapRows(sheets);
    const wanted = 266 * 3 * 0.75;
    assert.ok(Math.abs(rows.length - wanted) <= 2, `${rows.length} rows, not ${wanted}`);

    // They are the first ones, to wherever the map was scrolled.
    await page.locator("#heat-scroll").evaluate((heat) => (heat.scrollTop = 300));
    const scrolled = mapRows(await printed(page, "many_scrolled"));
    assert.equal(scrolled.length, rows.length);
    for (let i = 0; i < rows.length; i += 10) {
      for (let x = 60; x < 500; x += 20) {
        const colours = [rows[i], scrolled[i]].map(({ sheet, y }) => sheet.drawn.at(x, y));
        assert.deepEqual(colours[0], colours[1], `row ${i} of pixels`);
      }
    }
  });
});

test("the plot is light or dark, as the system asks for", async () => {
  for (const [colorScheme, least, most] of /** @type {const} */ ([
    ["light", 250, 255],
    ["dark", 0, 40],
  ])) {
    const { page, close } = await openAny(plot, {
      colorScheme,
      viewport: { width: 960, height: 612 },
    });
    const middle = await brightness(page);
    assert.ok(least <= middle && middle <= most, `${colorScheme}: ${middle}`);
    await close();
  }
});

test("a window of 400 pixels needs no scrolling sideways", async () => {
  const viewport = { width: 400, height: 800 };
  await inPage(
    board.path,
    async (page) => {
      await openDetails(page);
      for (const clicked of ["#heat-scroll", "#plot-rms .u-over"]) {
        await page.locator(clicked).click({ position: { x: 200, y: 30 } });
        await assertPlayerIsSeen(page);
      }
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
  await inLight(async (page) => {
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
  });
});

// Last of all: they open what is closed.
for (const colorScheme of /** @type {const} */ (["light", "dark"])) {
  test(`axe finds nothing, ${colorScheme}`, async () => {
    await (colorScheme === "light" ? inLight : inDark)(async (page) => {
      await openDetails(page);
      await page.locator("#heat-scroll").click({ position: { x: 300, y: 30 } });
      await assertAccessible(page, "html");
      await page.locator("h1").click();
      await page.keyboard.press("?");
      await page.getByRole("dialog").waitFor();
      await assertAccessible(page, "#keys");
    });
  });
}

// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { assertPlayerIsSeen, canvasPixels, isAt } from "./canvas.js";
import { cornerpin, data, made, mapped, openTable, readJson, solvedPage } from "./support.js";
import { sharedPage, withBrowser } from "./support.js";

/** @typedef {import("./support.js").Page} Page */

withBrowser();

const tracks = `${data}board.csv`;
const { path, result } = solvedPage(tracks, "figures");
const inBoard = sharedPage(path);
const worst = result.frames.reduce((most, frame) =>
  (frame.expected_error ?? 0) > (most.expected_error ?? 0) ? frame : most,
);
const base = result.frames.find(({ frame }) => frame === result.base_frame);

/**
 * A row of a table: the texts of its cells by those of the head.
 * @param {import("playwright-core").Locator} table
 * @param {string} first the text of its first cell
 * @returns {Promise<{ [column: string]: string }>}
 */
async function rowOf(table, first) {
  const names = await table.locator("thead th").allInnerTexts();
  const row = table
    .locator("tbody tr")
    .filter({ has: table.page().locator("th", { hasText: new RegExp(`^${first}$`) }) });
  const texts = await row.locator("> *").allInnerTexts();
  assert.equal(texts.length, names.length);
  return Object.fromEntries(names.map((name, i) => [name, texts[i]]));
}

/**
 * Fails where a text is not a length to three digits.
 * @param {string} text
 * @param {number | null | undefined} length
 */
function assertLength(text, length) {
  assert.ok(typeof length === "number");
  assert.match(text, /^[0-9.]+ px$/);
  const digits = Math.max(0, 2 - Math.floor(Math.log10(length)));
  assert.ok(Math.abs(parseFloat(text) - length) <= 0.501 * 10 ** -digits, `${text}: ${length}`);
}

test("the page opens with the verdict and at the worst frame", async () => {
  const said = cornerpin("solve", tracks, "-o", made("verdict.json"));
  await inBoard(async (page) => {
    await isAt(page, worst.frame);
    const sentence = await page.locator("#verdict-sentence").innerText();
    assert.ok(sentence.length > 20 && flat(said).includes(flat(sentence)), sentence);
    for (const line of await page.locator("#verdict-lines li > span").allInnerTexts()) {
      assert.ok(flat(said).includes(flat(line)), line);
    }
    const corners = await page.locator("#frame-corners tbody td").allInnerTexts();
    const expected = worst.quads.tracks.corners;
    expected.forEach(([x, y], i) => {
      assert.ok(Math.abs(Number(corners[3 * i]) - Number(x)) <= 0.00501);
      assert.ok(Math.abs(Number(corners[3 * i + 1]) - Number(y)) <= 0.00501);
    });
  });
});

test("the worst frame's rows say what the result says", async () => {
  assert.equal(worst.verdict, "doubtful");
  await inBoard(async (page) => {
    const row = await rowOf(await openTable(page, "frame"), String(worst.frame));
    assert.equal(row.Verdict, "doubtful");
    assertLength(row["Expected error"], worst.expected_error);
    assertLength(row.RMS, worst.good_rms);
    assert.equal(row.Good, String(worst.good));
    assert.equal(row.Ignored, String(worst.tracks - Number(worst.good)));
    assert.equal(row.Model, worst.model);

    const doubt = await rowOf(page.locator("#doubtful-table"), String(worst.frame));
    assertLength(doubt["Expected error"], worst.expected_error);
    for (const { text } of worst.doubts) assert.ok(doubt.Why.includes(text), doubt.Why);
    const first = page.locator("#doubtful-table tbody th").first();
    assert.equal(await first.innerText(), String(worst.frame));
  });
});

/**
 * Without line breaks and other blanks.
 * @param {string} text
 */
const flat = (text) => text.replace(/\s+/g, "");

test("each plot is drawn, and the worst frame's error is above the base frame's", async () => {
  assert.ok(base);
  await inBoard(async (page) => {
    const canvases = page.locator("#plots canvas");
    assert.equal(await canvases.count(), 4);
    for (let i = 0; i < 4; ++i) {
      const { width, height, at } = await canvasPixels(canvases.nth(i));
      const colours = new Set();
      for (let y = 0; y < height; ++y)
        for (let x = 0; x < width; ++x) colours.add(String(at(x, y)));
      assert.ok(colours.size > 20, `plot ${i} has ${colours.size} colours`);
    }
    const ink = await page.evaluate(() => {
      const context = document.createElement("canvas").getContext("2d");
      if (!context) throw new Error("no canvas");
      context.fillStyle = getComputedStyle(document.documentElement).getPropertyValue("--quad");
      context.fillRect(0, 0, 1, 1);
      return [...context.getImageData(0, 0, 1, 1).data].slice(0, 3);
    });
    const plot = page.locator("#plot-error");
    const box = await plot.boundingBox();
    const area = await plot.locator(".u-over").boundingBox();
    assert.ok(box && area);
    const { at, height } = await canvasPixels(plot.locator("canvas"));
    /** @param {number} frame */
    const topOf = (frame) => {
      const first = result.frames[0].frame;
      const share = (frame - first + 0.5) / result.frames.length;
      const middle = Math.round(area.x - box.x + share * area.width);
      for (let y = 12; y < height; ++y) {
        for (let x = middle - 1; x <= middle + 1; ++x) {
          if (at(x, y).every((value, i) => Math.abs(value - ink[i]) < 60)) return y;
        }
      }
      return NaN;
    };
    const [high, low] = [topOf(worst.frame), topOf(base.frame)];
    assert.ok(low - high > 0.6 * area.height, `drawn at ${high} and ${low} of ${area.height}`);
  });
});

test("a click in a plot goes to its frame, and scrolls to it", async () => {
  await inBoard(async (page) => {
    for (const index of [3, 70, 140]) {
      for (const id of ["plot-error", "plot-model"]) {
        await page.keyboard.press("Home");
        const area = page.locator(`#${id} .u-over`);
        await area.scrollIntoViewIfNeeded();
        const box = await area.boundingBox();
        assert.ok(box);
        const x = ((index + 0.5) / result.frames.length) * box.width;
        await area.click({ position: { x, y: box.height / 2 } });
        await isAt(page, result.frames[index].frame);
        await assertPlayerIsSeen(page);
      }
    }
  });
});

/** The tracks' places, by name and frame. */
function observations() {
  /** @type {Map<string, Map<number, [number, number]>>} */
  const places = new Map();
  for (const line of readFileSync(tracks, "utf8").trim().split(/\r?\n/).slice(1)) {
    const [name, frame, x, y] = line.split(",");
    const track = places.get(name) ?? new Map();
    places.set(name, track.set(Number(frame), [Number(x), Number(y)]));
  }
  return places;
}

test("a click in the heat map shows the track in the player, as far off as it is", async () => {
  const places = observations();
  await inBoard(async (page) => {
    const heat = page.locator("#heat-scroll");
    await heat.scrollIntoViewIfNeeded();
    const box = await heat.boundingBox();
    assert.ok(box);
    let largest = Infinity;
    for (const index of [90, 20, 131]) {
      // Without names beside the rows the columns share the whole width.
      const x = ((index + 0.5) / result.frames.length) * box.width;
      await heat.click({ position: { x, y: 2 } });
      const { frame, h } = result.frames[index];
      await isAt(page, frame);
      await assertPlayerIsSeen(page);
      const option = page.locator("#track-details .option").last();
      const { y: top = Infinity } = (await option.boundingBox()) ?? {};
      assert.ok(top < 900, `the option that leaves the track out is at ${top}`);
      const name = await page.locator("#track-details .track-name").innerText();
      const track = result.tracks.find((each) => each.name === name);
      const readout = await page.locator("#heat-readout").innerText();
      assert.ok(track && readout.startsWith(`${name} in frame ${frame}: `), readout);
      const seen = places.get(name)?.get(frame);
      if (seen && track.place) {
        const [u, v] = mapped(h, track.place);
        const off = / ([0-9.]+ px) off$/.exec(readout);
        assert.ok(off, readout);
        assertLength(off[1], Math.hypot(seen[0] - u, seen[1] - v));
      } else {
        assert.doesNotMatch(readout, / off$/);
      }
      largest = Math.min(largest, largestResidual(name, places));
    }
    // The first row is that of the largest residual of all.
    const all = result.tracks.map(({ name }) => largestResidual(name, places));
    assert.ok(largest >= 0.999 * Math.max(...all), `${largest}: ${Math.max(...all)}`);
  });
});

/**
 * @param {string} name
 * @param {ReturnType<typeof observations>} places
 */
function largestResidual(name, places) {
  const place = result.tracks.find((track) => track.name === name)?.place;
  if (!place) return 0;
  const residuals = result.frames.map(({ frame, h }) => {
    const seen = places.get(name)?.get(frame);
    if (!seen) return 0;
    const [u, v] = mapped(h, place);
    return Math.hypot(seen[0] - u, seen[1] - v);
  });
  return Math.max(...residuals);
}

test("the --drop of a selected track leaves it out", async () => {
  await inBoard(async (page) => {
    const heat = page.locator("#heat-scroll");
    await heat.click({ position: { x: 300, y: 30 } });
    const name = await page.locator("#track-details .track-name").innerText();
    const options = await page.locator("#track-details code").allInnerTexts();
    const everywhere = options.at(-1) ?? "";
    assert.equal(everywhere, `--drop ${name}`);
    cornerpin("solve", tracks, "-o", made("dropped.json"), ...everywhere.split(" "));
    const without = /** @type {import("./support.js").Result} */ (readJson(made("dropped.json")));
    assert.deepEqual(
      without.left_out_tracks?.filter(({ why }) => why === "dropped"),
      [{ name, why: "dropped" }],
    );
  });
});

test("the tracks that move the corners most are those of the result", async () => {
  const [most] = result.worst_tracks;
  assert.ok(most);
  await inBoard(async (page) => {
    const names = await page.locator("#worst-table tbody th").allInnerTexts();
    assert.deepEqual(
      names,
      result.worst_tracks.map(({ track }) => track),
    );
    await page.locator("#worst-table tbody th button").first().click();
    await isAt(page, most.peak);
    assert.equal(await page.locator("#track-details .track-name").innerText(), most.track);
  });
});

test("the page says what it was made from", async () => {
  await inBoard(async (page) => {
    const facts = await page.locator("#facts").innerText();
    const { program, input, base_frame: from } = result;
    assert.ok(program && input && input.sha256 && input.name);
    for (const text of [program.version, input.sha256, input.name, `frame ${from}`]) {
      assert.ok(facts.includes(text), `${text} in ${facts}`);
    }
  });
});

// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import { data, inPage, mapped, pixels, solvedPage, withBrowser } from "./support.js";

/** @typedef {import("./support.js").Page} Page */
/** @typedef {import("./support.js").Point} Point */
/** @typedef {(x: number, y: number) => [number, number, number]} At */

withBrowser();

const sheet = "sheet=181.5,223.5,463.5,211.5,441.5,467.5,114.5,469.5";
const picture = ["--size", "1024x576", "--y-down", "--pixel-center", "0.5"];
const quadOfPlanks = [...picture, "--reference", "50", "--quad", sheet];
const plain = solvedPage(`${data}planks.csv`, "player_plain", ...quadOfPlanks);

/**
 * @param {Page} page
 * @param {number} frame
 */
async function goTo(page, frame) {
  const number = page.locator("#frame-number");
  await number.fill(String(frame));
  await number.press("Enter");
  await page.locator(`#player[data-frame="${frame}"]`).waitFor();
}

/** @param {Page} page */
const frameOf = async (page) => Number(await page.locator("#player").getAttribute("data-frame"));

/**
 * A canvas's own pixels, row by row, four numbers each.
 * @param {Page} page
 * @param {string} id
 */
async function canvasPixels(page, id) {
  const { width, height, base64 } = await page.evaluate((name) => {
    const canvas = /** @type {HTMLCanvasElement} */ (document.getElementById(name));
    return {
      width: canvas.width,
      height: canvas.height,
      base64: canvas.toDataURL("image/png").split(",")[1],
    };
  }, id);
  return { width, height, at: pixels(Buffer.from(base64, "base64")).at };
}

/**
 * How far the pixels of a colour lie from a line through two points on average, along a stretch in
 * its middle. Pixel (0, 0) is from 0 to 1 both ways.
 * @param {At} at
 * @param {number[]} colour
 * @param {Point} from
 * @param {Point} to
 */
function offsetFromSide(at, colour, from, to) {
  const length = Math.hypot(to[0] - from[0], to[1] - from[1]);
  const along = [(to[0] - from[0]) / length, (to[1] - from[1]) / length];
  let sum = 0;
  let count = 0;
  const low = [0, 1].map((i) => Math.floor(Math.min(from[i], to[i]) - 6));
  const high = [0, 1].map((i) => Math.ceil(Math.max(from[i], to[i]) + 6));
  for (let y = low[1]; y <= high[1]; ++y) {
    for (let x = low[0]; x <= high[0]; ++x) {
      const d = [x + 0.5 - from[0], y + 0.5 - from[1]];
      const share = (d[0] * along[0] + d[1] * along[1]) / length;
      const offset = d[1] * along[0] - d[0] * along[1];
      if (share < 0.3 || share > 0.7 || Math.abs(offset) > 5) continue;
      if (Math.max(...at(x, y).map((value, i) => Math.abs(value - colour[i]))) > 40) continue;
      sum += offset;
      ++count;
    }
  }
  return { offset: sum / count, count, length };
}

test("the player draws the quad where the result puts it, to within a pixel", async () => {
  await inPage(plain.path, async (page) => {
    for (const number of [0, 50, 91, 150, 191]) {
      await goTo(page, number);
      const { width, height, at } = await canvasPixels(page, "player-canvas");
      const name = await page.locator("#player-canvas").getAttribute("data-quad-colour");
      assert.ok(name);
      const colour = [1, 3, 5].map((i) => parseInt(name.slice(i, i + 2), 16));
      const frame = plain.result.frames.find((each) => each.frame === number);
      assert.ok(frame && frame.verdict === "good"); // dashed where it is doubtful
      const corners = plain.result.quads[0].corners.map((corner) => {
        const [x, y] = mapped(frame.h, corner);
        return /** @type {Point} */ ([(x * width) / 1024, (y * height) / 576]);
      });
      corners.forEach((corner, i) => {
        const side = offsetFromSide(at, colour, corner, corners[(i + 1) % 4]);
        assert.ok(
          side.count > 0.3 * side.length,
          `frame ${number} side ${i}: ${side.count} pixels`,
        );
        assert.ok(Math.abs(side.offset) < 1, `frame ${number} side ${i}: off by ${side.offset}`);
      });
    }
  });
});

test("arrow keys step, Home and End go to the ends", async () => {
  await inPage(plain.path, async (page) => {
    await goTo(page, 20);
    await page.locator("h1").click();
    await page.keyboard.press("ArrowRight");
    await page.locator('#player[data-frame="21"]').waitFor();
    await page.keyboard.press("ArrowLeft");
    await page.keyboard.press("ArrowLeft");
    await page.locator('#player[data-frame="19"]').waitFor();
    await page.keyboard.press("End");
    await page.locator('#player[data-frame="191"]').waitFor();
    await page.keyboard.press("Home");
    await page.locator('#player[data-frame="0"]').waitFor();
  });
});

test("space plays and stops", async () => {
  await inPage(plain.path, async (page) => {
    await page.locator("h1").click();
    await goTo(page, 0);
    await page.locator("h1").click();
    await page.keyboard.press("Space");
    await page.waitForFunction(
      () => Number(document.getElementById("player")?.dataset.frame) >= 3,
      null,
      { timeout: 20000 },
    );
    await page.keyboard.press("Space");
    const stopped = await frameOf(page);
    await page.waitForTimeout(500);
    assert.equal(await frameOf(page), stopped);
  });
});

test("a question mark opens the list of keys, Escape closes it", async () => {
  await inPage(plain.path, async (page) => {
    await page.keyboard.press("?");
    const keys = page.getByRole("dialog", { name: "Keys" });
    await keys.waitFor();
    assert.match((await keys.textContent()) ?? "", /Space/i);
    await page.keyboard.press("Escape");
    await keys.waitFor({ state: "hidden" });
  });
});

test("steadied, the surface stands still on the pictures", async () => {
  const pictures = [
    "--pictures",
    `${data}planks_pictures/frame_%04d.jpg`,
    "--picture-scale",
    "0.5",
  ];
  const { path, result } = solvedPage(
    `${data}planks.csv`,
    "player_pictures",
    ...quadOfPlanks,
    ...pictures,
  );
  await inPage(path, async (page) => {
    /** @type {ReturnType<typeof pixels>[]} */
    const moving = [];
    /** @type {typeof moving} */
    const steadied = [];
    const stage = page.locator("#steadied-stage");
    for (const frame of [24, 42, 48, 60, 78]) {
      await goTo(page, frame);
      await page.locator(`#steadied-stage[data-frame="${frame}"] img`).waitFor();
      steadied.push(pixels(await stage.screenshot()));
      // The same picture in the same place, as the camera took it.
      const steady = await page.locator("#steadied-stage img").evaluate((image) => {
        const { transform } = image.style;
        image.style.transform = "none";
        return transform;
      });
      assert.match(steady, /^matrix3d\(/);
      moving.push(pixels(await stage.screenshot()));
    }
    const inside = insideOf(result.quads[0].corners, steadied[0].width);
    const before = differences(moving, inside);
    const after = differences(steadied, inside);
    console.log("differences between frames, moving:", before, "steadied:", after);
    assert.ok(spread(steadied[0], inside) > 15, "there is a picture to see");
    before.forEach((value, i) => assert.ok(after[i] < value / 2, `${value} falls to ${after[i]}`));
  });
});

/**
 * The pixels inside a quad, a little away from its outline, of a stage so many pixels wide.
 * @param {Point[]} corners
 * @param {number} width
 */
function insideOf(corners, width) {
  const scale = width / 1024;
  const quad = corners.map(([x, y]) => [x * scale, y * scale]);
  /** @type {Point[]} */
  const inside = [];
  for (let y = 0; y < 576 * scale; ++y) {
    for (let x = 0; x < width; ++x) {
      const isIn = quad.every(([ax, ay], i) => {
        const [bx, by] = quad[(i + 1) % 4];
        const turned = (bx - ax) * (y - ay) - (by - ay) * (x - ax);
        return turned / Math.hypot(bx - ax, by - ay) > 8;
      });
      if (isIn) inside.push([x, y]);
    }
  }
  return inside;
}

/** @param {[number, number, number]} colour */
const grey = ([red, green, blue]) => (red + green + blue) / 3;

/**
 * The mean absolute difference of each picture from the one before.
 * @param {{ at: At }[]} shown
 * @param {Point[]} inside
 */
function differences(shown, inside) {
  return shown.slice(1).map(({ at }, i) => {
    const sum = inside.reduce(
      (total, [x, y]) => total + Math.abs(grey(at(x, y)) - grey(shown[i].at(x, y))),
      0,
    );
    return sum / inside.length;
  });
}

/**
 * The standard deviation of a picture's pixels.
 * @param {{ at: At }} picture
 * @param {Point[]} inside
 */
function spread({ at }, inside) {
  const values = inside.map(([x, y]) => grey(at(x, y)));
  const mean = values.reduce((sum, value) => sum + value, 0) / values.length;
  return Math.sqrt(values.reduce((sum, value) => sum + (value - mean) ** 2, 0) / values.length);
}

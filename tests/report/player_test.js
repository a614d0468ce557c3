// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { assertQuadIsDrawnAt, canvasPixels, frameOf, goTo, isAt } from "./canvas.js";
import { driftingShot } from "./shots.js";
import { data, inPage, mapped, pixels, sharedPage, solvedPage, withBrowser } from "./support.js";

/** @typedef {import("./support.js").Point} Point */
/** @typedef {import("./canvas.js").Pixels} Pixels */

withBrowser();

const sheet = "sheet=181.5,223.5,463.5,211.5,441.5,467.5,114.5,469.5";
const picture = ["--size", "1024x576", "--y-down", "--pixel-center", "0.5"];
const quadOfPlanks = [...picture, "--reference", "50", "--quad", sheet];
const plain = solvedPage(`${data}planks.csv`, "player_plain", ...quadOfPlanks);
const onPictures = solvedPage(
  `${data}planks.csv`,
  "player_pictures",
  ...quadOfPlanks,
  ...["--pictures", `${data}planks_pictures/frame_%04d.jpg`, "--picture-scale", "0.5"],
);

const inPlain = sharedPage(plain.path);
const inPictures = sharedPage(onPictures.path);

/**
 * The frame, of those with these numbers, whose corners may be off most.
 * @param {import("./support.js").Result} result
 * @param {(number: number) => boolean} isOne
 */
const worstOf = ({ frames }, isOne) =>
  frames
    .filter(({ frame }) => isOne(frame))
    .reduce((a, b) => ((b.expected_error ?? 0) > (a.expected_error ?? 0) ? b : a)).frame;

test("a page of good frames opens at the worst of them, or of those with a picture", async () => {
  assert.ok(plain.result.frames.every(({ verdict }) => verdict === "good"));
  const worst = worstOf(plain.result, () => true);
  const pictured = worstOf(plain.result, (number) => number % 6 === 0);
  assert.notEqual(worst, pictured);
  await inPlain((page) => isAt(page, worst));
  await inPictures((page) => isAt(page, pictured));
});

test("the player draws the quad where the result puts it, to within a pixel", async () => {
  await inPlain(async (page) => {
    for (const number of [0, 50, 91, 150, 191]) {
      await goTo(page, number);
      const frame = plain.result.frames.find((each) => each.frame === number);
      assert.ok(frame && frame.verdict === "good"); // dashed where it is doubtful
      await assertQuadIsDrawnAt(page, ({ width, height }) =>
        plain.result.quads[0].corners.map((corner) => {
          const [x, y] = mapped(frame.h, corner);
          return [(x * width) / 1024, (y * height) / 576];
        }),
      );
    }
  });
});

// A side of the quad leads through the track, whose ring has a radius of 8 pixels.
test("the ring of a selected track is above the quad's outline", async () => {
  const tracks = driftingShot("ring.csv");
  const [t12] = readFileSync(tracks, "utf8")
    .split("\n")
    .filter((row) => row.startsWith('"t12",0,'));
  const [x, y] = t12.split(",").slice(2, 4).map(Number);
  const quad = `${x - 100},${y},${x + 100},${y},${x + 100},${y + 90},${x - 100},${y + 90}`;
  const { path } = solvedPage(
    tracks,
    "ring",
    ...["--size", "640x360", "--y-down", "--pixel-center", "0.5"],
    ...["--reference", "0", "--quad", `wall=${quad}`],
  );
  await inPage(path, async (page) => {
    await goTo(page, 0);
    const canvas = page.locator("#player-canvas");
    const box = await canvas.boundingBox();
    assert.ok(box);
    const scale = box.width / 640;
    const aside = [Math.round(x * scale - 8), Math.round(y * scale)];
    const isDark = async () => {
      const { at } = await canvasPixels(canvas);
      const near = [-1, 0].map((left) => Math.max(...at(aside[0] + left, aside[1])));
      return Math.min(...near) < 60;
    };
    assert.equal(await isDark(), false);
    await canvas.click({ position: { x: x * scale, y: y * scale } });
    assert.equal(await page.locator("#track-details .track-name").innerText(), "t12");
    assert.equal(await isDark(), true);
  });
});

test("a click on a track in the player names it", async () => {
  const rows = readFileSync(`${data}planks.csv`, "utf8").split(/\r?\n/);
  const seen = rows.map((row) => row.split(",")).filter(([, frame]) => frame === "150");
  await inPlain(async (page) => {
    await goTo(page, 150);
    const canvas = page.locator("#player-canvas");
    const box = await canvas.boundingBox();
    assert.ok(box);
    for (const [name, , x, y] of [seen[0], seen[60], seen[120]]) {
      const position = { x: (Number(x) * box.width) / 1024, y: (Number(y) * box.height) / 576 };
      await canvas.click({ position });
      assert.equal(await page.locator("#track-details .track-name").innerText(), name);
    }
  });
});

test("arrow keys step, Home and End go to the ends", async () => {
  await inPlain(async (page) => {
    await goTo(page, 20);
    await page.locator("h1").click();
    await page.keyboard.press("ArrowRight");
    await isAt(page, 21);
    await page.keyboard.press("ArrowLeft");
    await page.keyboard.press("ArrowLeft");
    await isAt(page, 19);
    await page.keyboard.press("End");
    await isAt(page, 191);
    await page.keyboard.press("Home");
    await isAt(page, 0);
  });
});

test("space plays and stops", async () => {
  const play = async (/** @type {import("./support.js").Page} */ page) => {
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
  };
  await inPlain(play);
  await inPage(plain.path, play, { reducedMotion: "no-preference" });
});

test("a question mark opens the list of keys, Escape closes it", async () => {
  await inPlain(async (page) => {
    await page.keyboard.press("?");
    const keys = page.getByRole("dialog", { name: "Keys" });
    await keys.waitFor();
    assert.match((await keys.textContent()) ?? "", /Space/i);
    await page.keyboard.press("Escape");
    await keys.waitFor({ state: "hidden" });
  });
});

test("steadied, the surface stands still on the pictures", async (context) => {
  const { result } = onPictures;
  await inPictures(async (page) => {
    /** @type {Pixels[]} */
    const moving = [];
    /** @type {Pixels[]} */
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
    context.diagnostic(`differences between frames: ${before}; steadied: ${after}`);
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
 * @param {Pixels[]} shown
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
 * @param {Pixels} picture
 * @param {Point[]} inside
 */
function spread({ at }, inside) {
  const values = inside.map(([x, y]) => grey(at(x, y)));
  const mean = values.reduce((sum, value) => sum + value, 0) / values.length;
  return Math.sqrt(values.reduce((sum, value) => sum + (value - mean) ** 2, 0) / values.length);
}

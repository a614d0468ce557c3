// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { copyFileSync, existsSync, mkdirSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { assertQuadIsDrawnAt, goTo, isAt } from "./canvas.js";
import { drift, driftingRows, driftingShot, plainNames } from "./shots.js";
import { data, inPage, made, mapped, open, openTable, pageOf, readJson } from "./support.js";
import { solvedPage, withBrowser, writeTracks } from "./support.js";

/** @typedef {import("./support.js").Page} Page */
/** @typedef {import("./support.js").Result} Result */

withBrowser();

const hostileNames = [
  "</script><script>window.hacked=1</script>",
  "<img src=x onerror=window.hacked=1>",
  "<!--<script>",
  "</style><svg onload=window.hacked=1>",
  "]]>&lt;b&gt;&quot;{{script}}",
  `"double" and 'single'`,
  "line\u2028separator\u2029here",
  "\u202eright to left\u202c \u200f",
  "$(touch hacked) `touch hacked`; touch hacked",
  "a,b",
  "t*?[x]",
  "-o",
  "name:3-5",
  "back\\slash",
  "__proto__",
  "constructor",
  "😀 ü ß \u0301",
  "x".repeat(1000),
  "",
];

/** @param {Page} page */
const isHacked = (page) => page.evaluate(() => "hacked" in window);

test("track names are text, whatever is in them", async () => {
  const names = [...hostileNames.filter((name) => name !== ""), ...plainNames(10)];
  const tracks = writeTracks("hostile.csv", driftingRows({ names }));
  const { path } = solvedPage(tracks, "hostile");
  const { page, close } = await open(path, { viewport: { width: 400, height: 800 } });
  const table = await openTable(page, "track");
  const shown = await table.locator("tbody th").allTextContents();
  assert.deepEqual(shown.sort(), names.slice().sort());
  assert.equal(await isHacked(page), false);
  assert.equal(
    await page
      .locator("main script, main style, main svg:not(.icon), main [onload], main [onerror]")
      .count(),
    0,
  );
  assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= 400);
  await close();
});

test("the --drop of a hostile name leaves that track out in a shell", async () => {
  const names = [...hostileNames.filter((name) => name !== ""), ...plainNames(10)];
  const tracks = writeTracks("hostile_drop.csv", driftingRows({ names }));
  const { path } = solvedPage(tracks, "hostile_drop");
  const folder = made("shell");
  mkdirSync(folder, { recursive: true });
  await inPage(path, async (page) => {
    const buttons = (await openTable(page, "track")).locator("tbody th button");
    for (let i = 0; i < names.length; ++i) {
      const name = await buttons.nth(i).textContent();
      await buttons.nth(i).click();
      const option = (await page.locator("#track-details code").allTextContents()).at(-1);
      const command = `"$CORNERPIN" solve "$1" -q -o dropped.json ${option} || [ $? = 4 ]`;
      execFileSync("sh", ["-c", command, "sh", tracks], { cwd: folder, stdio: "pipe" });
      const { left_out_tracks: leftOut } = /** @type {Result} */ (
        readJson(made("shell/dropped.json"))
      );
      assert.deepEqual(leftOut, [{ name, why: "dropped" }], option);
    }
  });
  assert.equal(existsSync(made("shell/hacked")), false);
});

test("names of files and quads are text, too", async () => {
  const name = "<img src=x onerror=window.hacked=1>&lt;'";
  const tracks = driftingShot(`${name}.csv`);
  const quad = "</script><b>\u202e=100,80,400,90,380,270,90,260";
  const { path, result } = solvedPage(tracks, name, "--reference", "0", "--quad", quad);
  await inPage(path, async (page) => {
    assert.equal(await page.locator("h1").textContent(), `${name}.csv`);
    const facts = (await page.locator("#facts").textContent()) ?? "";
    assert.ok(facts.includes(result.quads[0].name), facts);
    assert.equal(await page.locator("main img, main b").count(), 0);
    assert.equal(await isHacked(page), false);
  });
});

test("a script that gets into the page does not run", async () => {
  const { path } = solvedPage(driftingShot("policy.csv"), "policy");
  const opened = await open(path);
  const { page, problems, requests } = opened;
  const before = requests.length;
  await page.evaluate(() => {
    const script = document.createElement("script");
    script.textContent = "window.hacked = 1";
    document.body.append(script);
    const button = document.createElement("div");
    button.setAttribute("onclick", "window.hacked = 1");
    document.body.append(button);
    button.click();
    const image = new Image();
    image.src = "beside.png";
    document.body.append(image);
  });
  await page.waitForTimeout(300);
  assert.equal(await isHacked(page), false);
  assert.equal(problems.filter((text) => /Content Security Policy/.test(text)).length, 3);
  assert.deepEqual(
    requests.slice(before).filter((url) => !url.endsWith("beside.png")),
    [],
  );
  problems.length = 0;
  requests.length = before;
  await opened.close();
});

test("four tracks have a page", async () => {
  const { path, result } = solvedPage(`${data}screen4.csv`, "four");
  assert.equal(result.tracks.length, 4);
  await inPage(path, async (page) => {
    await goTo(page, 40);
    assert.match((await page.locator("#frame-verdict").textContent()) ?? "", /doubtful/);
    await page.locator("#heat-scroll").click({ position: { x: 300, y: 8 } });
    assert.match(await page.locator("#track-details .track-name").innerText(), /^track_\d$/);
  });
});

test("a single frame has a page", async () => {
  const rows = driftingRows({ names: plainNames(12) }).filter(({ frame }) => frame === 7);
  const { path, result } = solvedPage(writeTracks("single.csv", rows), "single");
  assert.equal(result.frames.length, 1);
  await inPage(path, async (page) => {
    await isAt(page, 7);
    for (const key of ["ArrowRight", "ArrowLeft", "End", "Space", "n"])
      await page.keyboard.press(key);
    await isAt(page, 7);
    assert.equal(await (await openTable(page, "frame")).locator("tbody tr").count(), 1);
  });
});

test("transforms between frames have a table", async () => {
  const tracks = driftingShot("between.csv");
  const { path, result } = solvedPage(tracks, "between", "--at", "3.5,7.25");
  await inPage(path, async (page) => {
    const rows = await page.locator("#between-table tbody tr").allInnerTexts();
    assert.equal(rows.length, 2);
    result.between.forEach(({ frame, quads }, i) => {
      const places = quads.tracks.corners.map(([x, y]) => `${x?.toFixed(2)}, ${y?.toFixed(2)}`);
      assert.deepEqual(rows[i].split("\t"), [String(frame), "tracks", ...places]);
    });
  });
});

test("a shot whose frames are all doubtful has a page", async () => {
  const { result } = solvedPage(driftingShot("doubtful.csv"), "doubtful");
  for (const frame of result.frames) {
    frame.verdict = "doubtful";
    frame.doubts = [{ code: "expected-error", text: `frame ${frame.frame} may be anywhere` }];
  }
  writeFileSync(made("doubtful.json"), JSON.stringify(result));
  const path = pageOf(made("doubtful.json"));
  await inPage(path, async (page) => {
    assert.equal(await page.locator("#doubtful-table tbody tr").count(), result.frames.length);
    for (const { frame } of result.frames) {
      await goTo(page, frame);
      const words = (await page.locator("#frame-verdict").textContent()) ?? "";
      assert.ok(words.includes(`frame ${frame} may be anywhere`), words);
    }
  });
});

test("y up and pixels counted at their centres are drawn where they belong", async () => {
  const rows = driftingRows({ names: plainNames(25) });
  const turned = rows.map((row) => ({ ...row, x: row.x - 0.5, y: 360 - row.y - 0.5 }));
  const picture = ["--size", "640x360", "--y-up", "--pixel-center", "0"];
  const quad = ["--reference", "0", "--quad", "wall=100,80,400,90,380,270,90,260"];
  const { path, result } = solvedPage(writeTracks("up.csv", turned), "up", ...picture, ...quad);
  await inPage(path, async (page) => {
    for (const number of [0, 6, 11]) {
      await goTo(page, number);
      const frame = result.frames[number];
      assert.equal(frame.verdict, "good");
      await assertQuadIsDrawnAt(page, ({ width, height }) =>
        result.quads[0].corners.map((corner) => {
          const [x, y] = mapped(frame.h, corner);
          return [((x + 0.5) * width) / 640, ((360 - (y + 0.5)) * height) / 360];
        }),
      );
      // And that is where the surface is: up to the tracks' noise, the drift of its points.
      const [x, y] = mapped(drift(number), [100.5, 360 - 80.5]);
      const [u, v] = mapped(frame.h, [100, 80]);
      assert.ok(Math.hypot(u + 0.5 - x, 360 - (v + 0.5) - y) < 0.5);
    }
  });
});

test("linked pictures are the only files that a page asks for", async () => {
  const folder = `${data}planks_pictures/`;
  const { path } = solvedPage(
    `${data}planks.csv`,
    "linked",
    ...["--size", "1024x576", "--y-down", "--pixel-center", "0.5"],
    ...["--pictures", `${folder}frame_%04d.jpg`, "--picture-scale", "0.5", "--link"],
  );
  const numbers = Array.from({ length: 32 }, (_, i) => String(6 * i).padStart(4, "0"));
  const pictures = numbers.map((number) => `${folder}frame_${number}.jpg`);
  const { page, requests, close } = await open(path, {}, pictures);
  await goTo(page, 96);
  assert.ok(requests.some((url) => url.endsWith("/frame_0096.jpg")));
  await goTo(page, 97);
  assert.match(await page.locator("#player-caption").innerText(), /no picture/);
  await close();
});

test("linked pictures are found whatever their names are", async () => {
  const folder = made("odd % names");
  mkdirSync(folder, { recursive: true });
  const picture = join(folder, `a b#%41&amp;"'?<s>_0003.jpg`);
  copyFileSync(`${data}planks_pictures/frame_0000.jpg`, picture);
  const { path } = solvedPage(
    driftingShot("linked_names.csv"),
    "linked_names",
    ...["--size", "512x288", "--y-down", "--pixel-center", "0.5"],
    ...["--pictures", folder, "--link"],
  );
  const { page, requests, close } = await open(path, {}, [picture]);
  await goTo(page, 3);
  await page.locator('#steadied-stage[data-frame="3"] img').waitFor();
  assert.equal(requests.length, 2);
  await close();
});

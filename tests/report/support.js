// SPDX-License-Identifier: BSD-3-Clause
// Pages made by the built command, and a browser that opens them and notes all that it should not do.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before } from "node:test";
import { fileURLToPath, pathToFileURL } from "node:url";
import { chromium } from "playwright-core";
import { PNG } from "pngjs";

/** @typedef {import("../../build/report/page").Page} PageData */
/** @typedef {import("../../build/report/page").Result} Result */
/** @typedef {import("playwright-core").Page} Page */
/** @typedef {[number, number]} Point */
/** @typedef {{ page: Page, requests: string[], problems: string[], close: () => Promise<void> }} Opened */

/** The folder of the shots. */
export const data = fileURLToPath(new URL("../../data/", import.meta.url));

/** @param {string} name of a variable that tests/report/run_test or its caller sets */
function variable(name) {
  const value = process.env[name];
  if (!value) throw new Error(`${name} is not set: run ctest, or see tests/report/run_test`);
  return value;
}

const folder = variable("CORNERPIN_PAGES");
mkdirSync(folder, { recursive: true });

/** @param {string} name of a file that the tests write */
export const made = (name) => join(folder, name);

/**
 * Runs the command. 4 is how it ends where frames are doubtful.
 * @param {string[]} words
 * @returns {string} what it prints
 */
export function cornerpin(...words) {
  try {
    return execFileSync(variable("CORNERPIN"), words, {
      encoding: "utf8",
      stdio: "pipe",
      maxBuffer: 1e9,
    });
  } catch (error) {
    const { status, stdout, stderr } = /** @type {any} */ (error);
    if (status === 4) return stdout;
    throw new Error(`cornerpin ${words.join(" ")} ended in ${status}: ${stderr}`);
  }
}

/**
 * Solves a file of tracks and writes the page about it.
 * @param {string} tracks
 * @param {string} name of the result and the page, without ending
 * @param {...string} words further ones for `cornerpin solve`
 * @returns {{ path: string, result: Result }}
 */
export function solvedPage(tracks, name, ...words) {
  const [result, path] = [made(`${name}.json`), made(`${name}.html`)];
  cornerpin("solve", tracks, "-o", result, "--report", path, ...words);
  return { path, result: readJson(result) };
}

/**
 * Writes the page about a result beside it.
 * @param {string} result
 */
export function pageOf(result) {
  cornerpin("report", result);
  return result.replace(/json$/, "html");
}

/** @param {string} path */
export const readJson = (path) => JSON.parse(readFileSync(path, "utf8"));

/**
 * @param {string} name
 * @param {{ track: string, frame: number, x: number, y: number }[]} rows
 * @returns {string} the path of a file of tracks
 */
export function writeTracks(name, rows) {
  const path = made(name);
  const quoted = (/** @type {string} */ text) => `"${text.replaceAll('"', '""')}"`;
  const lines = rows.map(({ track, frame, x, y }) => `${quoted(track)},${frame},${x},${y},1`);
  writeFileSync(path, ["track,frame,x,y,weight", ...lines, ""].join("\n"));
  return path;
}

/** @type {import("playwright-core").Browser} */
let browser;

/** @type {Opened[]} the pages that tests share */
const shared = [];

/** Starts the browser before a file's tests and ends it after them. */
export function withBrowser() {
  before(async () => {
    browser = await chromium.launch({
      executablePath: variable("CORNERPIN_BROWSER"),
      chromiumSandbox: process.getuid?.() !== 0,
    });
  });
  after(async () => {
    for (const { close } of shared) await close();
    await browser.close();
  });
}

/**
 * Opens a file from disk, offline. `close` fails if the page asked for anything but itself, data in
 * itself and the files of `allowed`, or put anything on the console.
 * @param {string} path
 * @param {import("playwright-core").BrowserContextOptions} [options]
 * @param {string[]} [allowed] paths
 * @returns {Promise<Opened>}
 */
export async function openAny(path, options = {}, allowed = []) {
  const context = await browser.newContext({
    offline: true,
    reducedMotion: "reduce",
    viewport: { width: 1280, height: 900 },
    ...options,
  });
  const page = await context.newPage();
  page.setDefaultTimeout(15000);
  /** @type {string[]} */
  const requests = [];
  /** @type {string[]} */
  const problems = [];
  page.on("request", (request) => {
    if (!/^(data|blob):/.test(request.url())) requests.push(request.url());
  });
  page.on("console", (message) => problems.push(`${message.type()}: ${message.text()}`));
  page.on("pageerror", (error) => problems.push(`thrown: ${error.message}`));
  page.on("dialog", (dialog) => {
    problems.push(`dialog: ${dialog.message()}`);
    dialog.dismiss();
  });
  await page.goto(pathToFileURL(path).href);
  const close = async () => {
    await context.close();
    assert.deepEqual(problems, []);
    const expected = [path, ...allowed];
    const isExpected = (/** @type {string} */ url) =>
      url.startsWith("file:") && expected.includes(fileURLToPath(url));
    assert.deepEqual(
      requests.filter((url) => !isExpected(url)),
      [],
    );
  };
  return { page, requests, problems, close };
}

/**
 * Opens a page about a solve, as `openAny` does, and waits until it is ready.
 * @param {string} path
 * @param {import("playwright-core").BrowserContextOptions} [options]
 * @param {string[]} [allowed] paths
 */
export async function open(path, options, allowed) {
  const opened = await openAny(path, options, allowed);
  await opened.page.locator("html[data-ready]").waitFor();
  return opened;
}

/**
 * Opens a page, does something with it, and closes it as `open` says.
 * @param {string} path
 * @param {(page: Page, opened: Opened) => Promise<void>} body
 * @param {import("playwright-core").BrowserContextOptions} [options]
 */
export async function inPage(path, body, options) {
  const opened = await open(path, options);
  await body(opened.page, opened);
  await opened.close();
}

/**
 * A page that several tests of a file share, one after the other: each finds it as the one before
 * has left it. It is opened by the first one, and closed after all, as `open` says.
 * @param {string} path
 * @param {import("playwright-core").BrowserContextOptions} [options]
 * @returns {(body: (page: Page) => Promise<void>) => Promise<void>}
 */
export function sharedPage(path, options) {
  /** @type {Opened | null} */
  let opened = null;
  return async (body) => {
    if (opened === null) {
      opened = await open(path, options);
      shared.push(opened);
    }
    await body(opened.page);
  };
}

/**
 * The table of all frames or all tracks, once it has rows: they are made when the browser tells
 * that the table was opened, some time after it is.
 * @param {Page} page
 * @param {"frame" | "track"} kind of its rows
 */
export async function filledTable(page, kind) {
  const table = page.locator(`#${kind}-table`);
  await table.locator("tbody tr").first().waitFor();
  return table;
}

/**
 * Opens the table of all frames or all tracks.
 * @param {Page} page
 * @param {"frame" | "track"} kind of its rows
 */
export async function openTable(page, kind) {
  await page.getByText(`All ${kind}s as a table`).click();
  return filledTable(page, kind);
}

/**
 * The pixels of a screenshot.
 * @param {Buffer} png
 */
export function pixels(png) {
  const { width, height, data: bytes } = PNG.sync.read(png);
  /** @type {(x: number, y: number) => [number, number, number]} */
  const at = (x, y) => {
    const i = 4 * (y * width + x);
    return [bytes[i], bytes[i + 1], bytes[i + 2]];
  };
  return { width, height, at };
}

/**
 * Where a transform puts a point.
 * @param {number[][]} h
 * @param {Point} point
 * @returns {Point}
 */
export function mapped(h, [x, y]) {
  const [u, v, w] = h.map(([a, b, c]) => a * x + b * y + c);
  return [u / w, v / w];
}

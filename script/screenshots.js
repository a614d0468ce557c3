// SPDX-License-Identifier: BSD-3-Clause
// CORNERPIN_BROWSER=program node script/screenshots.js PAGE FOLDER: pictures of a page about a solve,
// on a light and a dark screen and on a phone.
import { join, resolve } from "node:path";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

const [path, folder] = process.argv.slice(2);
const frame = 60; // has a picture
const phone = { width: 390, height: 844 };
const screen = { width: 1180, height: 1000 };

/** @type {[string, import("playwright-core").BrowserContextOptions][]} */
const pictures = [
  ["report-light.png", { colorScheme: "light", viewport: screen }],
  ["report-dark.png", { colorScheme: "dark", viewport: screen }],
  ["report-phone.png", { colorScheme: "light", viewport: phone, isMobile: true, hasTouch: true }],
];

const browser = await chromium.launch({
  executablePath: process.env.CORNERPIN_BROWSER,
  chromiumSandbox: process.getuid?.() !== 0,
});
for (const [name, options] of pictures) {
  const page = await browser.newPage({ ...options, offline: true });
  await page.goto(pathToFileURL(resolve(path)).href);
  await page.locator("html[data-ready]").waitFor();
  await page.locator("#frame-number").fill(String(frame));
  await page.locator("#frame-number").press("Enter");
  await page.locator(`#steadied-stage[data-frame="${frame}"] img`).waitFor();
  await page.locator("h1").click();
  await page.screenshot({ path: join(folder, name), caret: "initial" });
  await page.close();
}
await browser.close();

// SPDX-License-Identifier: BSD-3-Clause
// CORNERPIN_BROWSER=program node script/screenshots.js PAGE FOLDER: pictures of a page about a solve,
// on a light and a dark screen and on a phone.
import { join, resolve } from "node:path";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

const [path, folder] = process.argv.slice(2);
const frame = 60; // has a picture
const phone = { width: 390, height: 844 };

/** @type {[string, string, import("playwright-core").BrowserContextOptions][]} what is at the top */
const pictures = [
  ["report-light.png", "body", { colorScheme: "light", viewport: { width: 1180, height: 835 } }],
  ["report-dark.png", "#plots", { colorScheme: "dark", viewport: { width: 1180, height: 1330 } }],
  ["report-phone.png", "body", { viewport: phone, isMobile: true, hasTouch: true }],
];

const browser = await chromium.launch({
  executablePath: process.env.CORNERPIN_BROWSER,
  chromiumSandbox: process.getuid?.() !== 0,
});
for (const [name, top, options] of pictures) {
  const page = await browser.newPage({ ...options, offline: true, reducedMotion: "reduce" });
  await page.goto(pathToFileURL(resolve(path)).href);
  await page.locator("html[data-ready]").waitFor();
  await page.locator("#heat-scroll").click({ position: { x: 100, y: 2 } });
  await page.locator("#frame-number").fill(String(frame));
  await page.locator("#frame-number").press("Enter");
  await page.locator("#frame-number").blur();
  await page.locator(`#steadied-stage[data-frame="${frame}"] img`).waitFor();
  await page.locator(top).evaluate((element) => element.scrollIntoView());
  await page.screenshot({ path: join(folder, name), caret: "initial" });
  await page.close();
}
await browser.close();

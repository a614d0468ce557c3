// SPDX-License-Identifier: BSD-3-Clause
import { readPageData } from "./data.js";

const data = await readPageData();
const page = document.getElementById("page");
for (const [element, text] of [
  ["h1", data.title],
  ["p", data.verdict.sentence],
  ...data.verdict.lines.map((line) => ["p", `${line.first}-${line.last}: ${line.text}`]),
]) {
  const made = document.createElement(element);
  made.textContent = text;
  page.append(made);
}

// SPDX-License-Identifier: BSD-3-Clause
// What the page is made from (page.schema.json), out of its elements.

/** @param {string} id */
function textOf(id) {
  return document.getElementById(id)?.textContent ?? "";
}

/** The element `page-data`: base64 of gzip of JSON. */
export async function readPageData() {
  const packed = Uint8Array.from(atob(textOf("page-data")), (c) => c.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("gzip"));
  return JSON.parse(await new Response(stream).text());
}

/** The element `page-pictures`: a URL or null for each frame; null without pictures. */
export function readPictures() {
  return JSON.parse(textOf("page-pictures"));
}

// SPDX-License-Identifier: BSD-3-Clause
// The frames' pictures, decoded when they are needed and kept for a while.

/** @typedef {import("./page_data.js").PictureList} PictureList */

/**
 * @typedef {{
 *   any: boolean,
 *   has: (frame: number) => boolean,
 *   get: (frame: number) => Promise<HTMLImageElement | null>,
 *   ready: (frame: number) => HTMLImageElement | null,
 * }} Pictures `get` gives null where the frame has no picture that can be read; `ready` is what
 * has been decoded already
 */

const mostKeptPictures = 60;

/**
 * @param {string} url
 * @returns {Promise<HTMLImageElement | null>}
 */
async function decoded(url) {
  const image = new Image();
  image.alt = "";
  image.src = url;
  try {
    await image.decode();
  } catch {
    return null;
  }
  return image;
}

/**
 * @param {PictureList} urls
 * @returns {Pictures}
 */
export function createPictures(urls) {
  /** @type {Map<number, {image: HTMLImageElement | null, done: Promise<HTMLImageElement | null>}>} */
  const kept = new Map();

  /** @param {number} frame */
  function fetched(frame) {
    const url = urls[frame];
    if (!url) return null;
    let item = kept.get(frame);
    if (item === undefined) {
      const made = { image: /** @type {HTMLImageElement | null} */ (null), done: decoded(url) };
      made.done.then((image) => (made.image = image));
      item = made;
    }
    kept.delete(frame);
    kept.set(frame, item); // the last in the map is the one used last
    const oldest = kept.keys().next();
    if (kept.size > mostKeptPictures && !oldest.done) kept.delete(oldest.value);
    return item;
  }

  return {
    any: urls.some((url) => Boolean(url)),
    has: (frame) => Boolean(urls[frame]),
    get: async (frame) => fetched(frame)?.done ?? null,
    ready: (frame) => fetched(frame)?.image ?? null,
  };
}

// SPDX-License-Identifier: BSD-3-Clause
// Elements of the page. Text goes in as text, never as markup.

/**
 * The element with the id, which the template has.
 * @template {HTMLElement} T
 * @param {string} id
 * @param {new () => T} kind
 * @returns {T}
 */
export function found(id, kind) {
  const element = document.getElementById(id);
  if (!(element instanceof kind)) throw new Error(`the page has no ${kind.name} called ${id}`);
  return element;
}

/**
 * @template {keyof HTMLElementTagNameMap} K
 * @param {K} kind
 * @param {{ [attribute: string]: string }} attributes
 * @param {...(Node | string)} children
 * @returns {HTMLElementTagNameMap[K]}
 */
export function made(kind, attributes, ...children) {
  const element = document.createElement(kind);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  element.append(...children);
  return element;
}

/**
 * @param {string} label
 * @param {() => void} act
 * @param {{ [attribute: string]: string }} attributes
 */
export function madeButton(label, act, attributes = {}) {
  const button = made("button", { type: "button", ...attributes }, label);
  button.addEventListener("click", act);
  return button;
}

/**
 * @param {HTMLCanvasElement} canvas
 * @returns {CanvasRenderingContext2D}
 */
export function contextOf(canvas) {
  const context = canvas.getContext("2d");
  if (context === null) throw new Error("the browser draws no canvas");
  return context;
}

/**
 * Gives the canvas as many pixels as the screen has where it stands, all of them empty. (What
 * `clearRect` empties comes out white in print.)
 * @param {HTMLCanvasElement} canvas
 * @returns {boolean} false where it is not shown
 */
export function fitToScreen(canvas) {
  const { width, height } = canvas.getBoundingClientRect();
  const columns = Math.round(width * window.devicePixelRatio);
  const rows = Math.round(height * window.devicePixelRatio);
  if (columns === 0 || rows === 0) return false;
  canvas.width = columns;
  canvas.height = rows;
  return true;
}

/**
 * Calls back when the element gets another size, or the screen another density.
 * @param {Element} element
 * @param {() => void} act
 */
export function onResize(element, act) {
  new ResizeObserver(act).observe(element);
  window.addEventListener("resize", act);
}

// SPDX-License-Identifier: BSD-3-Clause
// The page of a whole batch: its table is there already; this sorts it and picks rows.

/** @typedef {HTMLTableRowElement} Row */

/**
 * What a row is sorted by in a column: a number or a text; null where nothing is known.
 * @param {Row} row
 * @param {number} column
 */
function valueIn(row, column) {
  const cell = row.cells[column];
  const value = cell.dataset.value;
  if (value === undefined) return cell.textContent ?? "";
  return value === "" ? null : Number(value);
}

/**
 * What is not known counts as larger than everything.
 * @param {string | number | null} a
 * @param {string | number | null} b
 */
function compare(a, b) {
  if (a === null || b === null) return Number(a === null) - Number(b === null);
  if (typeof a === "number" && typeof b === "number") return a - b;
  return String(a).localeCompare(String(b), "en", { numeric: true });
}

/**
 * @param {HTMLTableElement} table
 * @param {number} column
 * @param {boolean} falling
 */
function sortBy(table, column, falling) {
  const body = table.tBodies[0];
  const rows = Array.from(body.rows, (row) => ({ row, value: valueIn(row, column) }));
  rows.sort((a, b) => (falling ? compare(b.value, a.value) : compare(a.value, b.value)));
  body.append(...rows.map(({ row }) => row));
  const heads = table.tHead?.rows[0].cells ?? [];
  Array.from(heads).forEach((head, i) => {
    if (i === column) head.setAttribute("aria-sort", falling ? "descending" : "ascending");
    else head.removeAttribute("aria-sort");
  });
}

/**
 * Shows the rows whose shot's name or state holds the text.
 * @param {HTMLTableElement} table
 * @param {string} text
 */
function pick(table, text) {
  const wanted = text.toLowerCase();
  let count = 0;
  for (const row of table.tBodies[0].rows) {
    const told = `${row.cells[0].textContent} ${row.cells[1].textContent}`.toLowerCase();
    row.hidden = !told.includes(wanted);
    if (!row.hidden) ++count;
  }
  const shown = document.querySelector("output");
  if (shown) shown.textContent = `${count} shown`;
}

/** @param {HTMLTableElement} table */
function start(table) {
  const buttons = table.querySelectorAll("thead button");
  buttons.forEach((button) => {
    const head = /** @type {HTMLTableCellElement} */ (button.parentElement);
    button.addEventListener("click", () => {
      const sorted = head.getAttribute("aria-sort");
      const first = head.dataset.first ?? "ascending";
      sortBy(table, head.cellIndex, sorted ? sorted === "ascending" : first === "descending");
    });
  });
  const field = /** @type {HTMLInputElement | null} */ (document.querySelector("input"));
  field?.addEventListener("input", () => pick(table, field.value));
  document.documentElement.dataset.ready = "";
}

const shots = document.querySelector("table");
if (shots) start(shots);

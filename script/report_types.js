// SPDX-License-Identifier: BSD-3-Clause
// node script/report_types.js: TypeScript types of what a page is made from, from its schema and
// the result's, to build/report/page.d.ts. `tsc` checks report/ and tests/report against them.
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { fileURLToPath } from "node:url";
import { compile } from "json-schema-to-typescript";

/** @typedef {{ [key: string]: any }} Schema */

const root = fileURLToPath(new URL("..", import.meta.url));

/**
 * @param {string} path
 * @returns {Schema}
 */
const read = (path) => JSON.parse(readFileSync(root + path, "utf8"));

/**
 * The tuples of draft 2020-12 as json-schema-to-typescript knows them, those of draft 7.
 * @param {any} schema
 * @returns {any}
 */
function withOldTuples(schema) {
  if (Array.isArray(schema)) return schema.map(withOldTuples);
  if (schema === null || typeof schema !== "object") return schema;
  const { prefixItems, items, ...rest } = schema;
  const tuple = prefixItems
    ? { items: prefixItems, additionalItems: items, maxItems: prefixItems.length }
    : items === undefined
      ? {}
      : { items };
  return Object.fromEntries(
    Object.entries({ ...rest, ...tuple }).map(([key, value]) => [key, withOldTuples(value)]),
  );
}

const page = read("report/page.schema.json");
const { title: _, ...result } = read("docs/result.schema.json");
for (const name of Object.keys(page.$defs)) {
  if (name in result.$defs) throw new Error(`both schemas define ${name}`);
}
page.title = "Page";
page.properties.result = { $ref: "#/$defs/result" };
page.$defs = { ...page.$defs, ...result.$defs, result };
delete result.$defs;

const types = await compile(withOldTuples(page), "Page", {
  additionalProperties: false,
  bannerComment: "// Made by script/report_types.js from the schemas.",
  format: false,
  unreachableDefinitions: true,
});
mkdirSync(root + "build/report", { recursive: true });
writeFileSync(root + "build/report/page.d.ts", types);

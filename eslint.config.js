// SPDX-License-Identifier: BSD-3-Clause
import js from "@eslint/js";
import globals from "globals";

export default [
  { ignores: ["build/", "demo/", "report/vendor/"] },
  js.configs.recommended,
  {
    linterOptions: { reportUnusedDisableDirectives: "error" },
    rules: {
      "default-case-last": "error",
      eqeqeq: "error",
      "no-eval": "error",
      "no-implicit-globals": "error",
      "no-shadow": "error",
      "no-unused-vars": ["error", { argsIgnorePattern: "^_", varsIgnorePattern: "^_" }],
      "no-var": "error",
      "object-shorthand": "error",
      "prefer-const": "error",
    },
  },
  { files: ["report/**/*.js"], languageOptions: { globals: globals.browser } },
  // Functions given to page.evaluate run in the browser.
  {
    files: ["tests/report/**/*.js", "tests/docs/**/*.js"],
    languageOptions: { globals: { ...globals.browser, ...globals.node } },
  },
  { files: ["script/**/*.js"], languageOptions: { globals: globals.node } },
];

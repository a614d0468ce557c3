// SPDX-License-Identifier: BSD-3-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import {
  cornerNames,
  counted,
  dropOption,
  framesText,
  pixelText,
  rounded,
  shareText,
} from "../../report/wording.js";

test("lengths have three digits, whole pixels from a thousand on", () => {
  const expected = {
    0: "0",
    17.8901: "17.9",
    0.00012345: "0.000123",
    999.4: "999",
    1234.4: "1234",
  };
  for (const [value, text] of Object.entries(expected)) assert.equal(rounded(Number(value)), text);
});

test("a length that is not known is said to be", () => {
  assert.equal(pixelText(2.5), "2.5 px");
  for (const value of [null, undefined, NaN]) assert.equal(pixelText(value), "not known");
});

test("one is counted without an s, thousands have commas", () => {
  assert.equal(counted(1, "frame"), "1 frame");
  assert.equal(counted(10000, "track"), "10,000 tracks");
});

test("frames are a range, or one", () => {
  assert.equal(framesText(3, 3), "3");
  assert.equal(framesText(-5, 8), "-5-8");
});

test("what is shown is all, or some and which", () => {
  assert.equal(shareText({ shown: 5, of: 5, how: null }, "frame"), "all 5 frames");
  assert.equal(shareText({ shown: 1, of: 1, how: null }, "frame"), "the only frame");
  const some = { shown: 250, of: 2000, how: "the worst" };
  assert.equal(shareText(some, "track"), "250 of 2,000 tracks: the worst");
});

test("corners are called by their sides, whichever is first", () => {
  /** @type {[number, number][]} */
  const square = [
    [9, 9],
    [0, 9],
    [0, 0],
    [9, 0],
  ];
  assert.deepEqual(cornerNames(square), ["bottom right", "bottom left", "top left", "top right"]);
});

test("corners on the same side of the middle are called by their numbers", () => {
  /** @type {[number, number][]} */
  const diamond = [
    [5, 0],
    [10, 5],
    [5, 11],
    [0, 5],
  ];
  assert.deepEqual(cornerNames(diamond), ["corner 0", "corner 1", "corner 2", "corner 3"]);
});

const noOthers = new Set([""]);

test("--drop takes a plain name as it is", () => {
  assert.equal(dropOption("t114", null, noOthers), "--drop t114");
  assert.equal(dropOption("t114", [0, 8], noOthers), "--drop t114:0-8");
  assert.equal(dropOption("t114", [4, 4], noOthers), "--drop t114:4");
});

test("--drop keeps from the shell what it would take", () => {
  assert.equal(dropOption("a b", null, noOthers), "--drop 'a b'");
  assert.equal(dropOption("$HOME", [1, 2], noOthers), "--drop '$HOME:1-2'");
  assert.equal(dropOption("it's", null, noOthers), "--drop 'it'\\''s'");
});

test("--drop quotes names with signs that mean something in lists", () => {
  assert.equal(dropOption("a,b", [1, 2], noOthers), "--drop '\"a,b\":1-2'");
  assert.equal(dropOption("t*", null, noOthers), "--drop '\"t*\"'");
  assert.equal(dropOption('say "hi"', null, noOthers), '--drop \'"say ""hi"""\'');
  assert.equal(dropOption(" x", null, noOthers), "--drop '\" x\"'");
  assert.equal(dropOption("", null, noOthers), "--drop '\"\"'");
});

test("--drop quotes a name that would be another track's with its frames", () => {
  assert.equal(dropOption("t", [1, 2], new Set(["t", "t:1-2"])), "--drop '\"t\":1-2'");
});

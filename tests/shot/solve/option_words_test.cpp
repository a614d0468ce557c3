// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/option_words.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

ShotResult plainResult() {
  ShotResult result;
  result.loss = Loss::Tukey;
  result.provenance.options.emplace();
  return result;
}

}  // namespace

TEST(OptionWords, AreNoneWhereNothingIsGiven) {
  EXPECT_TRUE(optionWords(plainResult()).empty());
  EXPECT_EQ(textOf(optionWords(plainResult())), "");
}

TEST(OptionWords, AreThoseThatAreTyped) {
  ShotResult result = plainResult();
  GivenOptions& given = *result.provenance.options;
  given.base = -3;
  given.reference = 5;
  given.quads = {{"my sign", {{{0, 0.5}, {1, 0}, {1, 1}, {0, 1}}}}};
  given.frames = {2, 60};
  given.drop = {"a", "n*:3-"};
  given.keep = {"b"};
  given.maxError = 0.25;
  given.at = {1.5, 2};
  given.baseOnly = given.hold = true;
  result.smooth = 0.5;
  result.fill = true;
  result.loss = Loss::None;
  result.units = Units::Raw;
  result.seed = 7;
  EXPECT_EQ(textOf(optionWords(result)),
            "--base -3 --reference 5 --quad 'my sign=0,0.5,1,0,1,1,0,1' --frames 2-60 --drop a "
            "--drop 'n*:3-' --keep b --max-error 0.25 --at 1.5,2 --base-only --hold --smooth 0.5 "
            "--fill --loss none --units raw --seed 7");
}

TEST(OptionWords, OfOlderResultsAreThoseThatAreKnown) {
  ShotResult result;
  result.loss = Loss::Huber;
  EXPECT_EQ(textOf(optionWords(result)), "--loss huber");
}

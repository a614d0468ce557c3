// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/as_typed.h"

#include <gtest/gtest.h>

using cornerpin::asTyped;
using cornerpin::textAsTyped;

TEST(TextAsTyped, NamesOptionsOfTheHostLayerAsTheyAreTyped) {
  EXPECT_EQ(textAsTyped("at: 300 is late"), "--at: 300 is late");
  EXPECT_EQ(textAsTyped("frames: \"5-1\" runs backwards"), "--frames: \"5-1\" runs backwards");
  EXPECT_EQ(textAsTyped("fps: they need it"), "they need it: add --fps");
  EXPECT_EQ(textAsTyped("pictures: none"), "--pictures: none");
  EXPECT_EQ(textAsTyped("quads: the quad \"a\" is given twice"), "the quad \"a\" is given twice");
}

TEST(TextAsTyped, LeavesOtherTextsAsTheyAre) {
  for (const char* text : {"", "at", "at 300", "that: a", "--at: 300", "\"at: \" is no name"}) {
    EXPECT_EQ(textAsTyped(text), text);
  }
}

TEST(AsTyped, GivesBackWhatIsMadeAndLetsOtherErrorsThrough) {
  EXPECT_EQ(asTyped([] { return 7; }), 7);
  EXPECT_THROW(asTyped([] { throw std::runtime_error("at: a"); }), std::runtime_error);
  try {
    asTyped([] { throw std::invalid_argument("at: a"); });
    FAIL() << "nothing thrown";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "--at: a");
  }
}

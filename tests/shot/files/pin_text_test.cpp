// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/pin_text.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/shot/files/made_pin.h"

using namespace cornerpin;

namespace {

constexpr Quad kUnit = {{{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}};

Pin stillPin(std::size_t frames) {
  return made::pinOf(kUnit, std::vector<Homography>(frames, kIdentity));
}

}  // namespace

TEST(KeyedFrames, AreThoseWithFourCorners) {
  Pin pin = stillPin(6);
  pin.frames[1].to[0].x = made::kNan;
  pin.frames[2].to[3].y = made::kNan;
  pin.frames[4].to[1] = {made::kNan, made::kNan};
  WriteNotes notes;
  const std::vector<const PinFrame*> frames = keyedFrames(pin, notes);
  ASSERT_EQ(frames.size(), 3u);
  EXPECT_EQ(frames[0]->frame, 1);
  EXPECT_EQ(frames[1]->frame, 4);
  EXPECT_EQ(frames[2]->frame, 6);
  EXPECT_EQ(notes, WriteNotes{"no key in 2-3, 5: there a corner is on or behind the horizon"});
}

TEST(KeyedFrames, AreTheOthersThanThoseWithUnknownCorners) {
  Pin pin = stillPin(3);
  pin.frames[0].to[0].x = made::kNan;
  pin.frames[2].to[1].x = made::kNan;
  pin.frames[2].h[0][0] = made::kNan;
  WriteNotes notes;
  EXPECT_EQ(keyedFrames(pin, notes).size(), 1u);
  EXPECT_EQ(notes, (WriteNotes{"no key in 1: there a corner is on or behind the horizon",
                               "no key in 3: there a corner is not known"}));
}

TEST(TransformedFrames, AreThoseWithATransform) {
  Pin pin = stillPin(3);
  pin.frames[0].to[0].x = made::kNan;
  pin.frames[1].h[2][1] = made::kNan;
  WriteNotes notes;
  const std::vector<const PinFrame*> frames = transformedFrames(pin, notes);
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[0]->frame, 1);
  EXPECT_EQ(frames[1]->frame, 3);
  EXPECT_EQ(notes, WriteNotes{"no key in 2: there is no transform"});
  pin.frames.erase(pin.frames.begin());
  pin.frames.pop_back();
  EXPECT_THROW(transformedFrames(pin, notes), std::invalid_argument);
}

TEST(KeyedFrames, AreSaidNothingOfWhereAllAreThere) {
  WriteNotes notes;
  EXPECT_EQ(keyedFrames(stillPin(3), notes).size(), 3u);
  EXPECT_TRUE(notes.empty());
}

TEST(KeyedFrames, MustBeThere) {
  Pin pin = stillPin(1);
  pin.frames[0].to[2].x = made::kNan;
  WriteNotes notes;
  EXPECT_THROW(keyedFrames(pin, notes), std::invalid_argument);
  EXPECT_THROW(keyedFrames(stillPin(0), notes), std::invalid_argument);
}

TEST(NoteRectangle, SpeaksOfOneThatIsNotThePicture) {
  WriteNotes notes;
  noteRectangle(stillPin(1), kUnit, notes);
  EXPECT_TRUE(notes.empty());
  Pin pin = stillPin(1);
  pin.from[2].y = 0.5;
  noteRectangle(pin, kUnit, notes);
  EXPECT_EQ(notes.size(), 1u);
}

TEST(Decimal, IsPlainAndExact) {
  EXPECT_EQ(decimal(1920.0), "1920");
  EXPECT_EQ(decimal(-0.1), "-0.1");
  EXPECT_EQ(decimal(2.5e-7), "0.00000025");
  EXPECT_EQ(decimal(-1e17), "-100000000000000000");
  EXPECT_EQ(std::stod(decimal(1.0 / 3.0)), 1.0 / 3.0);
  EXPECT_EQ(pairText({0.5, 1080.0}), "(0.5, 1080)");
}

TEST(QuotedName, IsOneLineOfUtf8) {
  EXPECT_EQ(quotedName("a \"b\"\n\\"), R"("a \"b\"\n\\")");
  EXPECT_EQ(quotedName("\xC3\xA4"), "\"\xC3\xA4\"");
  EXPECT_EQ(quotedName("a\xFF"), "\"a\xEF\xBF\xBD\"");
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/wording.h"

#include <gtest/gtest.h>

#include <optional>

using namespace cornerpin;

namespace {

const Quad kSquare = {{{10, 20}, {110, 20}, {110, 120}, {10, 120}}};

}  // namespace

TEST(Wording, GivesLengthsThreeDigitsOrAllInFrontOfThePoint) {
  EXPECT_EQ(pixels(0.0918273), "0.0918 px");
  EXPECT_EQ(pixels(17.9), "17.9 px");
  EXPECT_EQ(pixels(999.4), "999 px");
  EXPECT_EQ(pixels(999.5), "1000 px");
  EXPECT_EQ(pixels(12345.6), "12346 px");
  EXPECT_EQ(pixels(1e6), "1e+06 px");
  EXPECT_EQ(pixels(0.0), "0 px");
}

TEST(Wording, CountsOneOfAThingInTheSingular) {
  EXPECT_EQ(counted(0, "frame"), "0 frames");
  EXPECT_EQ(counted(1, "frame"), "1 frame");
  EXPECT_EQ(counted(2, "frame"), "2 frames");
}

TEST(Wording, KeepsControlCharactersFromTerminals) {
  EXPECT_EQ(printable("\x1b[31ma\nb\x7f"), "?[31ma?b?");
  EXPECT_EQ(printable("a\xC2\x9b 2J"), "a? 2J");  // U+009B
  EXPECT_EQ(printable("\xC3\xA4 \xC2\xA0\xE2\x82\xAC \xE4\xC2"),
            "\xC3\xA4 \xC2\xA0\xE2\x82\xAC \xE4\xC2");
  EXPECT_EQ(shellWord("a\x1b'\\b"), "$'a\\x1b\\'\\\\b'");
}

// Whichever way the corners go around, and where they begin.
TEST(Wording, NamesCornersByWhereTheyLie) {
  EXPECT_EQ(cornerName(kSquare, std::nullopt, 0), "the top left corner");
  EXPECT_EQ(cornerName(kSquare, std::nullopt, 1), "the top right corner");
  EXPECT_EQ(cornerName(kSquare, std::nullopt, 2), "the bottom right corner");
  EXPECT_EQ(cornerName(kSquare, std::nullopt, 3), "the bottom left corner");
  const Quad other = {{kSquare[2], kSquare[1], kSquare[0], kSquare[3]}};
  EXPECT_EQ(cornerName(other, std::nullopt, 0), "the bottom right corner");
  EXPECT_EQ(cornerName(other, std::nullopt, 1), "the top right corner");
}

TEST(Wording, NamesCornersAsThePictureShowsThemWhereYGoesUp) {
  EXPECT_EQ(cornerName(kSquare, YAxis::Down, 0), "the top left corner");
  EXPECT_EQ(cornerName(kSquare, YAxis::Up, 0), "the bottom left corner");
  EXPECT_EQ(cornerName(kSquare, YAxis::Up, 2), "the top right corner");
}

TEST(Wording, NumbersTheCornersOfAQuadOnItsTip) {
  const Quad tip = {{{50, 0}, {100, 50}, {50, 100}, {0, 50}}};
  EXPECT_EQ(cornerName(tip, std::nullopt, 0), "corner 0");
  EXPECT_EQ(cornerName(tip, std::nullopt, 3), "corner 3");
}

TEST(Wording, NamesTheQuadWhereThereAreSeveral) {
  std::vector<NamedQuad> quads = {{"door", kSquare}};
  EXPECT_EQ(cornerName(quads, std::nullopt, 0, 0), "the top left corner");
  quads.push_back({"sign", kSquare});
  EXPECT_EQ(cornerName(quads, std::nullopt, 1, 2), "the bottom right corner of \"sign\"");
}

TEST(Wording, PutsNeighboursTogether) {
  EXPECT_EQ(textOf(stretchesOf({0, 1, 2, 5, 7, 8}), 5), "0-2, 5, 7-8");
  EXPECT_EQ(textOf(stretchesOf({-3, -2, 0}), 5), "-3--2, 0");
  EXPECT_EQ(textOf(stretchesOf({}), 5), "");
}

TEST(Wording, CountsTheFramesOfStretchesBeyondTheMost) {
  EXPECT_EQ(textOf(stretchesOf({0, 2, 4, 5, 8}), 2), "0, 2 and 3 more frames");
  EXPECT_EQ(textOf(stretchesOf({0, 2, 4}), 2), "0, 2 and 1 more frame");
  EXPECT_EQ(textOf(stretchesOf({0, 2}), 2), "0, 2");
}

TEST(ShellWord, IsInQuotesWhereAShellNeedsThem) {
  EXPECT_EQ(shellWord("t042:60-81"), "t042:60-81");
  EXPECT_EQ(shellWord("n*"), "'n*'");
  EXPECT_EQ(shellWord(""), "''");
  EXPECT_EQ(shellWord("it's"), "'it'\\''s'");
}

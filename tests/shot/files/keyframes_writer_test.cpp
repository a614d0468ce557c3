// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "shot/files/track_writers.h"
#include "tests/shot/files/keyframes_sections.h"
#include "tests/shot/files/made_pin.h"

using namespace cornerpin;
using made::placed;
using made::Rows;
using made::sectionsIn;

namespace {

// The whole picture, y down.
constexpr Quad kPicture = {{{0.0, 1080.0}, {1920.0, 1080.0}, {1920.0, 0.0}, {0.0, 0.0}}};

std::string textOf(const Pin& pin, PinStyle::Keyframes variant, WriteNotes* notes = nullptr) {
  PinStyle style;
  style.keyframes = variant;
  return made::textOf([&](OutputFile& out) { return writeKeyframesPin(pin, style, out); }, notes);
}
std::string pinText(const Pin& pin, WriteNotes* notes = nullptr) {
  return textOf(pin, PinStyle::Keyframes::Pin, notes);
}
std::string transformText(const Pin& pin, WriteNotes* notes = nullptr) {
  return textOf(pin, PinStyle::Keyframes::Transform, notes);
}

}  // namespace

TEST(KeyframesWriter, WritesACornerPinByItsMatchNames) {
  Pin pin = made::pinOf(kPicture, {kIdentity, kIdentity}, 0);
  pin.frames[0].to = {{{430.0, 884.0}, {1500.0, 870.25}, {1488.0, 210.0}, {430.0, 196.0}}};
  pin.frames[1].to = {{{0.1, -884.0}, {1501.0, 1e-7}, {1489.0, 211.0}, {430.8, 196.9}}};
  PinStyle style;
  style.framesPerSecond = 23.976;
  style.pixelAspect = 2.0;
  WriteNotes notes;
  const std::string text =
      made::textOf([&](OutputFile& out) { return writeKeyframesPin(pin, style, out); }, &notes);
  EXPECT_TRUE(notes.empty());
  EXPECT_EQ(text,
            "Adobe After Effects 6.0 Keyframe Data\n\n"
            "\tUnits Per Second\t23.976\n"
            "\tSource Width\t1920\n"
            "\tSource Height\t1080\n"
            "\tSource Pixel Aspect Ratio\t2\n"
            "\tComp Pixel Aspect Ratio\t2\n\n"
            "Effects\tADBE Corner Pin #1\tADBE Corner Pin-0001\n"
            "\tFrame\tX pixels\tY pixels\n"
            "\t0\t430\t196\n"
            "\t1\t430.8\t196.9\n\n"
            "Effects\tADBE Corner Pin #1\tADBE Corner Pin-0002\n"
            "\tFrame\tX pixels\tY pixels\n"
            "\t0\t1488\t210\n"
            "\t1\t1489\t211\n\n"
            "Effects\tADBE Corner Pin #1\tADBE Corner Pin-0003\n"
            "\tFrame\tX pixels\tY pixels\n"
            "\t0\t430\t884\n"
            "\t1\t0.1\t-884\n\n"
            "Effects\tADBE Corner Pin #1\tADBE Corner Pin-0004\n"
            "\tFrame\tX pixels\tY pixels\n"
            "\t0\t1500\t870.25\n"
            "\t1\t1501\t0.0000001\n\n"
            "End of Keyframe Data\n");
}

TEST(KeyframesWriter, CarriesEveryCornerToTheLastDigit) {
  Pin pin = made::pinOf(kPicture, made::someTransforms(), -1);
  const auto sections = sectionsIn(pinText(pin));
  ASSERT_EQ(sections.size(), 4u);
  const std::map<std::string, std::size_t> corners = {{"1", 3}, {"2", 2}, {"3", 0}, {"4", 1}};
  for (const auto& [number, corner] : corners) {
    const Rows& rows = sections.at("Effects\tADBE Corner Pin #1\tADBE Corner Pin-000" + number);
    ASSERT_EQ(rows.size(), 3u);
    for (const PinFrame& frame : pin.frames) {
      EXPECT_EQ(rows.at(frame.frame),
                (std::vector<double>{frame.to[corner].x, frame.to[corner].y}));
    }
  }
}

TEST(KeyframesWriter, LeavesOutFramesWithoutACornerAndSaysWhatItCannotCarry) {
  Pin pin = made::pinOf(kPicture, made::someTransforms());
  pin.from[kTopRight].y = 3.0;
  pin.frames[2].to[kBottomLeft] = {made::kNan, made::kNan};
  for (const auto variant : {PinStyle::Keyframes::Pin, PinStyle::Keyframes::Transform}) {
    WriteNotes notes;
    for (const auto& section : sectionsIn(textOf(pin, variant, &notes))) {
      EXPECT_EQ(section.second.size(), 2u);
      EXPECT_EQ(section.second.count(3), 0u);
    }
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_EQ(notes[0], "no key in 3: there a corner is on or behind the horizon");
  }
}

TEST(KeyframesWriter, NeedsTheSize) {
  Pin pin = made::pinOf(kPicture, {kIdentity});
  pin.picture.height = std::nullopt;
  try {
    pinText(pin);
    FAIL();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "keyframe text needs the picture's size: give it with --size WxH");
  }
}

// Moved by (30, -20), doubled and turned a quarter clockwise: y is down. The rectangle's middle is
// (960, 540), and goes to (30 - 2 * 540, -20 + 2 * 960).
TEST(KeyframesWriter, WritesPositionScaleRotationAndAnchor) {
  const Homography turned = {{{0.0, -2.0, 30.0}, {2.0, 0.0, -20.0}, {0.0, 0.0, 1.0}}};
  WriteNotes notes;
  const std::string text = transformText(made::pinOf(kPicture, {kIdentity, turned}, 0), &notes);
  EXPECT_TRUE(notes.empty());
  EXPECT_EQ(text,
            "Adobe After Effects 6.0 Keyframe Data\n\n"
            "\tUnits Per Second\t24\n"
            "\tSource Width\t1920\n"
            "\tSource Height\t1080\n"
            "\tSource Pixel Aspect Ratio\t1\n"
            "\tComp Pixel Aspect Ratio\t1\n\n"
            "Anchor Point\n"
            "\tFrame\tX pixels\tY pixels\tZ pixels\n"
            "\t0\t960\t540\t0\n"
            "\t1\t960\t540\t0\n\n"
            "Position\n"
            "\tFrame\tX pixels\tY pixels\tZ pixels\n"
            "\t0\t960\t540\t0\n"
            "\t1\t-1050\t1900\t0\n\n"
            "Scale\n"
            "\tFrame\tX percent\tY percent\tZ percent\n"
            "\t0\t100\t100\t100\n"
            "\t1\t200\t200\t100\n\n"
            "Rotation\n"
            "\tFrame\tDegrees\n"
            "\t0\t0\n"
            "\t1\t90\n\n"
            "End of Keyframe Data\n");
}

// Whole turns add up, so that no frame turns back between two keys.
TEST(KeyframesWriter, TurnsOnThroughWholeTurns) {
  std::vector<Homography> turns;
  for (int i = 0; i < 20; ++i) {
    const double angle = i * std::acos(-1.0) / 4.0;
    turns.push_back({{{std::cos(angle), -std::sin(angle), 0.0},
                      {std::sin(angle), std::cos(angle), 0.0},
                      {0.0, 0.0, 1.0}}});
  }
  const auto sections = sectionsIn(transformText(made::pinOf(kPicture, turns, 0)));
  for (int i = 0; i < 20; ++i) {
    EXPECT_NEAR(sections.at("Rotation").at(i).at(0), 45.0 * i, 1e-9);
  }
}

// The distance that is named is the one between the transform and what the file says.
TEST(KeyframesWriter, SaysHowFarCornersAreFromTheTransform) {
  const Pin pin = made::pinOf(kPicture, made::someTransforms(), 7);
  WriteNotes notes;
  const auto sections = sectionsIn(transformText(pin, &notes));
  double largest = 0.0;
  int worst = 0;
  for (const PinFrame& frame : pin.frames) {
    for (std::size_t i = 0; i < 4; ++i) {
      const Point p = placed(sections, frame.frame, pin.from[i]);
      const double away = std::hypot(p.x - frame.to[i].x, p.y - frame.to[i].y);
      if (away > largest) worst = frame.frame;
      largest = std::max(largest, away);
    }
  }
  EXPECT_EQ(worst, 8);
  EXPECT_GT(largest, 20.0);
  ASSERT_EQ(notes.size(), 1u);
  const std::string before =
      "position, scale and rotation do not carry all of the transform: a "
      "corner is up to ";
  ASSERT_EQ(notes[0].substr(0, before.size()), before);
  EXPECT_NEAR(std::stod(notes[0].substr(before.size())), largest, 0.01 * largest);
  EXPECT_NE(notes[0].find(" px off, farthest in frame 8"), std::string::npos) << notes[0];
}

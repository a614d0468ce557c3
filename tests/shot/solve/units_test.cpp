// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/units.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

const ShotUnits kUnits = {{{300, 200}, 0.01}, {{40, -50}, 4.0}};
const Homography kTilted = {{{1.1, 0.12, 0.3}, {-0.15, 0.95, -0.2}, {0.04, -0.03, 1}}};
const std::vector<Point> kPlaces = {{0, 0}, {310, 210}, {450, 120}};

// Whether `file` carries places of the file as `h` carries them in the other unit.
void expectTheSame(const Homography& file, const Homography& h, const Similarity& fileToOther) {
  EXPECT_EQ(file[2][2], 1.0);
  EXPECT_EQ(h[2][2], 1.0);
  for (Point p : kPlaces) {
    const Point image = fileToOther.apply(map(file, p));
    const Point expected = map(h, fileToOther.apply(p));
    EXPECT_NEAR(image.x, expected.x, 1e-9);
    EXPECT_NEAR(image.y, expected.y, 1e-9);
  }
}

}  // namespace

TEST(Units, HaveTheOptionsWords) {
  EXPECT_STREQ(nameOf(Units::Fit), "fit");
  EXPECT_STREQ(nameOf(Units::Raw), "raw");
}

TEST(ShotUnits, CarryATransformFromTheFitAndFromTheLibrary) {
  expectTheSame(kUnits.fromFit(kTilted), kTilted, kUnits.fileToFit);
  expectTheSame(kUnits.fromLibrary(kTilted), kTilted, kUnits.fileToLibrary);
}

TEST(ShotUnits, CarryATransformToTheFitAndToTheLibrary) {
  const Homography file = {{{1.1, 0.12, 30}, {-0.15, 0.95, -20}, {4e-4, -3e-4, 1}}};
  expectTheSame(file, kUnits.toFit(file), kUnits.fileToFit);
  expectTheSame(file, kUnits.toLibrary(file), kUnits.fileToLibrary);
}

TEST(ShotUnits, MeasureALengthOfTheFitInTheFile) {
  EXPECT_DOUBLE_EQ(kUnits.lengthFromFit(0.25), 25.0);
}

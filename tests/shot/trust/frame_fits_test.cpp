// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/frame_fits.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

const Homography kTilted = {{{1.1, 0.12, 30}, {-0.15, 0.95, -20}, {4e-4, -3e-4, 1}}};
const Point kCorner = {560, 430};

// Six tracks, each off by another distance.
Matches sixMatches() {
  Matches matches;
  double off = 0.1;
  for (Point p : Points{{100, 100}, {500, 120}, {480, 420}, {90, 400}, {300, 250}, {200, 350}}) {
    const Point q = map(kTilted, p);
    matches.add({p, {q.x + off, q.y - 2 * off}});
    off += 0.1;
  }
  return matches;
}

FittedFrame fittedWith(const std::vector<double>& weights) {
  FittedFrame frame;
  frame.h = kTilted;
  frame.weights = weights;
  return frame;
}

}  // namespace

TEST(FrameFits, HaveTheResidualsOfAllMatches) {
  const Matches matches = sixMatches();
  const Residuals residuals = residualsOf(matches, kTilted);
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_NEAR(residuals[0][i], 0.1 * static_cast<double>(i + 1), 1e-12);
    EXPECT_NEAR(residuals[1][i], -0.2 * static_cast<double>(i + 1), 1e-12);
  }
}

TEST(FrameFits, AreOneFitWhereTheWeightsAreTheSame) {
  const Matches matches = sixMatches();
  const FittedFrame good = fittedWith({1, 1, 1, 1, 1, 0});
  const FrameFits fits(matches, good, good);
  EXPECT_EQ(&fits.lastFit(), &fits.goodFit());
  EXPECT_EQ(&fits.stiffFit(), &fits.goodFit());
}

// The boxes are those of all matches that any of the fits counts, which leaves responses alone.
TEST(FrameFits, AreThoseOfTheirOwnWeightsAndStiffness) {
  const Matches matches = sixMatches();
  const FittedFrame good = fittedWith({1, 1, 1, 1, 1, 0});
  FittedFrame last = fittedWith({0.9, 0.8, 0.7, 0.9, 0, 0.5});
  const FittedFrame plain = last;
  last.stiffness.assign(6, {0.5, 0.1, 0.8});
  const FrameFits fits(matches, good, last);
  const auto expectAlike = [&](const LinearisedFit& a, const LinearisedFit& b) {
    EXPECT_NEAR(a.responseAt(kCorner).xx / b.responseAt(kCorner).xx, 1.0, 1e-10);
    EXPECT_NEAR(a.responseAt(kCorner).yy / b.responseAt(kCorner).yy, 1.0, 1e-10);
  };
  expectAlike(fits.goodFit(), LinearisedFit(matches, good));
  expectAlike(fits.lastFit(), LinearisedFit(matches, plain));
  expectAlike(fits.stiffFit(), LinearisedFit(matches, last));
  EXPECT_GT(fits.stiffFit().responseAt(kCorner).xx, 1.2 * fits.lastFit().responseAt(kCorner).xx);
}

TEST(FrameFits, HaveTheHatsOfTheLastWeights) {
  const Matches matches = sixMatches();
  const FittedFrame good = fittedWith({1, 1, 1, 1, 1, 0});
  const FittedFrame last = fittedWith({1, 1, 1, 0.7, 1, 0.5});
  const FrameFits fits(matches, good, last);
  for (std::size_t i = 0; i < 6; ++i) {
    const double weight = i == 3 ? 0.7 : i == 5 ? 0.5 : 1.0;
    const Symmetric2 response = fits.lastFit().responseAt(matches.base()[i]);
    EXPECT_NEAR(fits.lastHats()[0][i], weight * weight * response.xx, 1e-12);
    EXPECT_NEAR(fits.lastHats()[1][i], weight * weight * response.xy, 1e-12);
    EXPECT_NEAR(fits.lastHats()[2][i], weight * weight * response.yy, 1e-12);
  }
}

// A match behind the horizon, whose slopes are not finite on it, counts in none.
TEST(FrameFits, TakeNoNoticeOfAMatchOnTheHorizonWithoutWeight) {
  Matches matches = sixMatches();
  const FittedFrame before = fittedWith({1, 1, 1, 1, 1, 1});
  const FrameFits without(matches, before, before);
  const double expected = without.goodFit().responseAt(kCorner).xx;
  matches.add({{-2500, 0}, {1, 2}});
  ASSERT_EQ(denominator(kTilted, matches.base()[6]), 0.0);
  const FittedFrame good = fittedWith({1, 1, 1, 1, 1, 1, 0});
  EXPECT_EQ(FrameFits(matches, good, good).goodFit().responseAt(kCorner).xx, expected);
}

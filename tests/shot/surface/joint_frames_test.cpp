// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_frames.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

using namespace cornerpin;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

JointFrame frame(JointFrame::Part part, double sigma) {
  JointFrame frame;
  frame.part = part;
  frame.sigma = sigma;
  return frame;
}

}  // namespace

TEST(Place, IsUnknownAtFirst) {
  EXPECT_FALSE(isKnown({}));
  EXPECT_TRUE(std::isnan(Place{}.covariance.xx));
  EXPECT_TRUE(isKnown({{1.0, 2.0}, {}}));
  EXPECT_FALSE(isKnown({{1.0, kInfinity}, {}}));
  EXPECT_FALSE(isKnown({{kNaN, 1.0}, {}}));
}

TEST(NoiseOf, IsSigmaButAtLeastTheMedian) {
  using Part = JointFrame::Part;
  const std::vector<double> noise =
      noiseOf({frame(Part::Free, 0.5), frame(Part::Free, 0.1), frame(Part::Free, 2.0),
               frame(Part::Free, 0.7), frame(Part::Fixed, 0.4)});
  EXPECT_EQ(noise, (std::vector<double>{0.5, 0.5, 2.0, 0.7, 0.5}));
}

TEST(NoiseOf, IsTheMedianWhereSigmaIsUnknown) {
  using Part = JointFrame::Part;
  const std::vector<double> noise =
      noiseOf({frame(Part::Fixed, 0.0), frame(Part::Free, 0.3), frame(Part::Free, kNaN)});
  EXPECT_EQ(noise, (std::vector<double>{0.3, 0.3, 0.3}));
  EXPECT_EQ(noiseOf({frame(Part::Fixed, 0.0), frame(Part::Free, 0.0)}),
            (std::vector<double>{0.0, 0.0}));
}

TEST(NoiseOf, IsZeroForFramesThatTakeNoPart) {
  using Part = JointFrame::Part;
  JointFrame broken = frame(Part::Free, 0.3);
  broken.h[1][1] = kNaN;
  const std::vector<double> noise =
      noiseOf({frame(Part::None, 9.0), frame(Part::Free, 0.3), broken});
  EXPECT_EQ(noise, (std::vector<double>{0.0, 0.3, 0.0}));
}

TEST(IsSighting, TakesAWeightAndAPlace) {
  EXPECT_TRUE(isSighting({{kNaN, kNaN}, {1, 2}, 0.5}));
  EXPECT_FALSE(isSighting({{}, {1, 2}, 0.0}));
  EXPECT_FALSE(isSighting({{}, {1, 2}, -1.0}));
  EXPECT_FALSE(isSighting({{}, {1, 2}, kNaN}));
  EXPECT_FALSE(isSighting({{}, {1, 2}, kInfinity}));
  EXPECT_FALSE(isSighting({{}, {1, kNaN}, 1.0}));
  EXPECT_FALSE(isSighting({{}, {kInfinity, 2}, 1.0}));
}

TEST(ForEachSighting, GoesThroughTheFramesWithANoiseInOrder) {
  const auto observations = [](std::size_t f) -> Matches {
    EXPECT_NE(f, 1u);
    if (f == 0) return {{{}, {}, 1.0, 4}, {{}, {}, 0.0, 5}, {{}, {}, 1.0, 3}};
    return {{{}, {}, 1.0, 7}};
  };
  std::vector<std::pair<std::size_t, int>> seen;
  forEachSighting({0.5, 0.0, 0.5}, observations,
                  [&](std::size_t f, const Match& m) { seen.emplace_back(f, m.track); });
  EXPECT_EQ(seen, (std::vector<std::pair<std::size_t, int>>{{0, 4}, {0, 3}, {2, 7}}));
}

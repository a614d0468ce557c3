// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/linear_fit.h"

#include <gtest/gtest.h>

#include <cmath>

using cornerpin::Homography;
using cornerpin::linearFit;
using cornerpin::Matches;
using cornerpin::Point;
using cornerpin::Points;

TEST(LinearFit, FindsAnExactTransform) {
  const Homography truth = {{{1.2, -0.3, 40}, {0.1, 0.8, -25}, {2e-4, -1e-4, 1}}};
  const Points base = {{100, 50}, {900, 80}, {870, 640}, {130, 600}, {420, 333}};
  Matches matches;
  for (Point p : base) matches.add({p, map(truth, p)});
  const Homography h = linearFit(matches);
  for (Point p : base) {
    EXPECT_NEAR(map(h, p).x, map(truth, p).x, 1e-7);
    EXPECT_NEAR(map(h, p).y, map(truth, p).y, 1e-7);
  }
  EXPECT_EQ(h[2][2], 1.0);
}

TEST(LinearFit, MeetsAnyFourMatches) {
  Matches matches;
  matches.add({{100, 50}, {-3, 4}});
  matches.add({{900, 80}, {5, 3}});
  matches.add({{870, 640}, {6, -4}});
  matches.add({{130, 600}, {-2, -5}});
  const Homography h = linearFit(matches);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(map(h, matches.base()[i]).x, matches.present()[i].x, 1e-11) << i;
    EXPECT_NEAR(map(h, matches.base()[i]).y, matches.present()[i].y, 1e-11) << i;
  }
}

TEST(LinearFit, TakesNoNoticeOfTheWeights) {
  Matches light, heavy;
  for (int i = 0; i < 8; ++i) {
    const cornerpin::Match m = {{std::cos(1.0 * i), std::sin(1.0 * i)}, {0.1 * i, 0.01 * i * i}};
    light.add(m);
    heavy.add({m.base, m.present, 1.0 + i});
  }
  EXPECT_EQ(linearFit(light), linearFit(heavy));
}

TEST(LinearFit, HasNoTransformForPlacesThatAreNotFinite) {
  Matches matches;
  for (int i = 0; i < 5; ++i) matches.add({{0.1 * i, 0.2 * i * i}, {0.1 * i, HUGE_VAL}});
  EXPECT_FALSE(cornerpin::isFinite(linearFit(matches)));
}

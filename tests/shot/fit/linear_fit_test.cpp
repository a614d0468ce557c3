// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/linear_fit.h"

#include <gtest/gtest.h>

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

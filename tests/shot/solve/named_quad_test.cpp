// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/named_quad.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "shot/solve/shot_solver.h"
#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;

namespace {

const Quad kSquare = {{{0, 0}, {4, 0}, {4, 4}, {0, 4}}};

}  // namespace

TEST(FlawOf, IsNoneOfSimpleConvexQuadsWithNamesOfTheirOwn) {
  EXPECT_EQ(flawOf({}), "");
  EXPECT_EQ(flawOf({{"a", kSquare}, {"b", kSquare}}), "");
}

TEST(FlawOf, NamesTheQuad) {
  EXPECT_EQ(flawOf({{"a", kSquare}, {"b", kSquare}, {"a", kSquare}}),
            "the quad \"a\" is given twice");
  EXPECT_EQ(flawOf({{"", kSquare}}), "a quad's name is empty");
  EXPECT_EQ(flawOf({{"a", kSquare}, {"sign", {{{0, 0}, {4, 4}, {4, 0}, {0, 4}}}}}),
            "the quad \"sign\" crosses itself: give its corners in the order around it");
  EXPECT_EQ(flawOf({{"sign", {{{0, 0}, {4, 0}, {1, 1}, {0, 4}}}}}),
            "the quad \"sign\" is not convex: one of its corners lies inside the triangle of the "
            "others");
  EXPECT_EQ(flawOf({{"sign", {{{0, 0}, {2, 2}, {4, 4}, {0, 4}}}}}),
            "the quad \"sign\" is flat: three of its corners lie on one line");
}

TEST(FlawOf, StopsASolve) {
  SolveOptions options;
  options.quads = {{"a", kSquare}, {"a", kSquare}};
  try {
    solveShot(small_shots::movingShot(2), options);
    ADD_FAILURE();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "the quad \"a\" is given twice");
  }
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/place_matrix.h"

#include <gtest/gtest.h>

#include "shot/fit/linearised_fit.h"

using namespace cornerpin;

namespace {

// The sum of the outer products of both rows of slopes, one place at a time.
SquareMatrix<8> plainSum(const Points& places, const Similarity& unit) {
  SquareMatrix<8> sum{};
  for (Point p : places) {
    const Slopes s = slopesOf(kIdentity, unit.apply(p));
    for (std::size_t i = 0; i < 8; ++i) {
      for (std::size_t j = 0; j < 8; ++j) sum[j * 8 + i] += s.x[i] * s.x[j] + s.y[i] * s.y[j];
    }
  }
  return sum;
}

}  // namespace

TEST(PlaceMatrix, IsTheSumOfTheProductsOfTheIdentitysSlopes) {
  const Similarity unit = {{300, 250}, 0.004};
  Points places;
  for (Point p : {Point{100, 100}, {500, 120}, {480, 420}, {90, 400}, {310, 20}, {220, 350}}) {
    places.add(p);
    const SquareMatrix<8> expected = plainSum(places, unit);
    const SquareMatrix<8> matrix = placeMatrix(places, unit);
    for (std::size_t i = 0; i < 64; ++i) {
      EXPECT_NEAR(matrix[i], expected[i], 1e-14 * static_cast<double>(places.size())) << i;
    }
  }
}

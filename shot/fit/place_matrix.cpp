// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/place_matrix.h"

#include "shot/fit/matches.h"
#include "shot/fit/normal_equations.h"

namespace cornerpin {

namespace {

// At the identity, varying a transform where its images are and varying its elements is the same,
// but for the sign of the last two.
SquareMatrix<8> matrixOf(const NormalEquations& n) {
  const double block[3][3] = {
      {n.mm[0], n.mm[1], n.mm[3]}, {n.mm[1], n.mm[2], n.mm[4]}, {n.mm[3], n.mm[4], n.mm[5]}};
  const double last[6][2] = {{n.cubic[0], n.cubic[1]}, {n.cubic[1], n.cubic[2]},
                             {n.mm[0], n.mm[1]},       {n.cubic[1], n.cubic[2]},
                             {n.cubic[2], n.cubic[3]}, {n.mm[1], n.mm[2]}};
  SquareMatrix<8> a{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) a[j * 8 + i] = a[(3 + j) * 8 + 3 + i] = block[i][j];
  }
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = 0; j < 2; ++j) a[(6 + j) * 8 + i] = a[i * 8 + 6 + j] = -last[i][j];
  }
  a[6 * 8 + 6] = n.cc[0];
  a[6 * 8 + 7] = a[7 * 8 + 6] = n.cc[1];
  a[7 * 8 + 7] = n.cc[2];
  return a;
}

}  // namespace

SquareMatrix<8> placeMatrix(const Points& places, const Similarity& unit) {
  Matches met(places.size());
  for (std::size_t i = 0; i < places.size(); ++i) {
    const Point p = unit.apply(places[i]);
    met.set(i, {p, p});
  }
  NormalEquations sums;
  NormalEquationsPass(met, met.squaredWeights(), Loss::None, 0.0)(kIdentity, sums);
  return matrixOf(sums);
}

}  // namespace cornerpin

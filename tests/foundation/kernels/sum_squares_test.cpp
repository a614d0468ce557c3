// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/kernels/sum_squares.h"

#include <gtest/gtest.h>

#include "tests/support/awkward.h"

using cornerpin::kernels::sumSquaresVariants;
using cornerpin::kernels::SumSquaresVariant;

TEST(SumSquares, EveryVariantGivesTheDefinitionsBits) {
  SumSquaresVariant variants[2];
  const int count = sumSquaresVariants(variants);
  for (const awkward::Kind kind : awkward::kKinds) {
    for (int n = 4; n <= 4096; n *= 2) {
      for (int offset = 0; offset < 16; ++offset) {
        awkward::Floats floats(static_cast<std::uint32_t>(n + offset));
        const auto in = floats.block(n, offset, kind);
        for (int v = 1; v < count; ++v) {
          EXPECT_TRUE(
              awkward::sameBits(variants[v].run(in.data(), n), variants[0].run(in.data(), n)))
              << variants[v].name << " n=" << n << " offset=" << offset;
        }
      }
    }
  }
}

TEST(SumSquares, AddsNeighboursThenPairsOfPairs) {
  // The squares are 1, 2^-24 and 2^-24: added one by one to 1 each is lost, as a pair they count.
  const float small = std::ldexp(1.0f, -12);
  const float in[] = {1.0f, 0.0f, small, small};
  SumSquaresVariant variants[2];
  for (int v = sumSquaresVariants(variants) - 1; v >= 0; --v) {
    EXPECT_EQ(variants[v].run(in, 4), 1.0f + std::ldexp(1.0f, -23)) << variants[v].name;
  }
}

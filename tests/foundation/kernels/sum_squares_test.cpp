// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/kernels/sum_squares.h"

#include <gtest/gtest.h>

#include <vector>

#include "cornerpin/foundation/norm.h"
#include "tests/support/awkward.h"

namespace {

using cornerpin::kernels::SumSquaresVariant;
using cornerpin::kernels::useSumSquares;

std::vector<SumSquaresVariant> variants() {
  SumSquaresVariant all[3];
  return {all, all + cornerpin::kernels::sumSquaresVariants(all)};
}

// The norms of the first 0, 1, ... 4096 elements.
std::vector<float> norms(const SumSquaresVariant& variant, const float* elements) {
  useSumSquares(variant.run);
  std::vector<float> result;
  for (int n = 0; n <= 4096; ++n) result.push_back(_vector_norm2(elements, n));
  useSumSquares(nullptr);
  return result;
}

}  // namespace

TEST(SumSquares, EveryVariantGivesTheDefinitionsBits) {
  for (const awkward::Kind kind : awkward::kKinds) {
    for (int n = 4; n <= 4096; n *= 2) {
      for (int offset = 0; offset < 16; ++offset) {
        awkward::Floats floats(static_cast<std::uint32_t>(n + offset));
        const auto in = floats.block(n, offset, kind);
        const float expected = variants()[0].run(in.data(), n);
        for (const SumSquaresVariant& variant : variants()) {
          EXPECT_TRUE(awkward::sameBits(variant.run(in.data(), n), expected))
              << variant.name << " n=" << n << " offset=" << offset;
        }
      }
    }
  }
}

TEST(SumSquares, EveryVariantGivesEveryLengthTheDefinitionsNorm) {
  for (const awkward::Kind kind : awkward::kKinds) {
    for (const int offset : {0, 1, 7, 15}) {
      awkward::Floats floats(static_cast<std::uint32_t>(offset));
      const auto in = floats.block(4096, offset, kind);
      const std::vector<float> expected = norms(variants()[0], in.data());
      for (const SumSquaresVariant& variant : variants()) {
        const std::vector<float> found = norms(variant, in.data());
        for (std::size_t n = 0; n < found.size(); ++n) {
          ASSERT_TRUE(awkward::sameBits(found[n], expected[n]))
              << variant.name << " n=" << n << " offset=" << offset;
        }
      }
    }
  }
}

TEST(SumSquares, AddsNeighboursThenPairsOfPairs) {
  // The squares are 1, 2^-24 and 2^-24: added one by one to 1 each is lost, as a pair they count.
  const float small = std::ldexp(1.0f, -12);
  const float in[] = {1.0f, 0.0f, small, small};
  for (const SumSquaresVariant& variant : variants()) {
    EXPECT_EQ(variant.run(in, 4), 1.0f + std::ldexp(1.0f, -23)) << variant.name;
  }
}

TEST(SumSquares, NormsUseTheVariantThatIsChosen) {
  const float in[16] = {};
  useSumSquares([](const float*, int n) { return static_cast<float>(n); });
  EXPECT_EQ(_vector_norm2(in, 16), 16.0f);
  useSumSquares(nullptr);
  EXPECT_EQ(_vector_norm2(in, 16), 0.0f);
}

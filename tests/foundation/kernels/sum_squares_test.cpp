// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/kernels/sum_squares.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "cornerpin/foundation/norm.h"
#include "tests/support/awkward.h"
#include "tests/support/processor.h"

namespace {

using cornerpin::kernels::SumSquaresKernel;
using cornerpin::kernels::sumSquaresVariants;

// The norms of the first 0, 1, ... 4096 elements.
std::vector<float> norms(const SumSquaresKernel& variant, const float* elements) {
  sumSquaresVariants().use(variant);
  std::vector<float> result;
  for (int n = 0; n <= 4096; ++n) result.push_back(_vector_norm2(elements, n));
  sumSquaresVariants().useBest();
  return result;
}

}  // namespace

TEST(SumSquares, EveryVariantGivesTheDefinitionsBits) {
  for (const awkward::Kind kind : awkward::kKinds) {
    for (int n = 4; n <= 4096; n *= 2) {
      for (int offset = 0; offset < 16; ++offset) {
        awkward::Floats floats(static_cast<std::uint32_t>(n + offset));
        const auto in = floats.block(n, offset, kind);
        const float expected = sumSquaresVariants().definition().run(in.data(), n);
        for (const SumSquaresKernel* variant : sumSquaresVariants()) {
          EXPECT_TRUE(awkward::sameBits(variant->run(in.data(), n), expected))
              << variant->name << " n=" << n << " offset=" << offset;
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
      const std::vector<float> expected = norms(sumSquaresVariants().definition(), in.data());
      for (const SumSquaresKernel* variant : sumSquaresVariants()) {
        const std::vector<float> found = norms(*variant, in.data());
        for (std::size_t n = 0; n < found.size(); ++n) {
          ASSERT_TRUE(awkward::sameBits(found[n], expected[n]))
              << variant->name << " n=" << n << " offset=" << offset;
        }
      }
    }
  }
}

TEST(SumSquares, AddsNeighboursThenPairsOfPairs) {
  // The squares are 1, 2^-24 and 2^-24: added one by one to 1 each is lost, as a pair they count.
  const float small = std::ldexp(1.0f, -12);
  const float in[] = {1.0f, 0.0f, small, small};
  for (const SumSquaresKernel* variant : sumSquaresVariants()) {
    EXPECT_EQ(variant->run(in, 4), 1.0f + std::ldexp(1.0f, -23)) << variant->name;
  }
}

TEST(SumSquares, VariantsAreThoseThatTheProcessorReports) {
  std::vector<std::string> names;
  std::set<cornerpin::kernels::SumSquares> functions;
  for (const SumSquaresKernel* variant : sumSquaresVariants()) {
    names.emplace_back(variant->name);
    functions.insert(variant->run);
  }
  EXPECT_EQ(names, processor::kernelVariants());
  EXPECT_EQ(functions.size(), names.size()) << "two variants are one function";
}

TEST(SumSquares, UsesTheBestVariantUnlessAnotherIsChosen) {
  const std::string best = processor::kernelVariants().back();
  EXPECT_EQ(sumSquaresVariants().inUse().name, best);
  sumSquaresVariants().use(sumSquaresVariants().definition());
  EXPECT_STREQ(sumSquaresVariants().inUse().name, "scalar");
  sumSquaresVariants().useBest();
  EXPECT_EQ(sumSquaresVariants().inUse().name, best);
}

TEST(SumSquares, NormsUseTheVariantThatIsChosen) {
  const float in[16] = {};
  const SumSquaresKernel length = {"length",
                                   [](const float*, int n) { return static_cast<float>(n); }};
  sumSquaresVariants().use(length);
  EXPECT_EQ(_vector_norm2(in, 16), 16.0f);
  sumSquaresVariants().useBest();
  EXPECT_EQ(_vector_norm2(in, 16), 0.0f);
}

// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/kernels/frame_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "tests/support/awkward.h"
#include "tests/support/scene.h"

namespace {

using cornerpin::kernels::ActiveTracks;
using cornerpin::kernels::FrameKernels;
using cornerpin::kernels::kParameters;

constexpr float kStep = 0.0001f;

std::vector<const FrameKernels*> variants() {
  const auto& list = cornerpin::kernels::frameKernelVariants();
  return {list.variants, list.variants + list.count};
}

constexpr int kLongest = 4096;

// Every kind of number at every alignment: all short lengths, and some around powers of two.
template <class Check>
void forEveryKind(const Check& check) {
  for (const awkward::Kind kind : awkward::kKinds) {
    for (int offset = 0; offset < 16; ++offset) {
      for (int n = 0; n <= 20; ++n) check(n, offset, kind);
    }
    for (const int n : {31, 32, 33, 63, 64, 65, 100, 127, 128, 129, 255, 256, 257, 300, 511, 513}) {
      check(n, n % 16, kind);
    }
    check(kLongest - 1, 1, kind);
    check(kLongest, 0, kind);
  }
}

// What a projection reads: a transform and n tracks.
struct Projection {
  Projection(int n, int offset, awkward::Kind kind)
      : floats(static_cast<std::uint32_t>(n * 16 + offset)),
        h(floats.block(9, offset, kind)),
        x(floats.block(n, offset, kind)),
        y(floats.block(n, offset, kind)),
        weight(floats.block(n, offset, kind)),
        tracks{x.data(), y.data(), weight.data(), n} {}

  // With a transform of this size most systems are finite.
  void makeTransformModest() {
    for (int e = 0; e < 9; ++e) h.data()[e] = e % 4 == 0 ? 1.0f : 0.01f;
  }
  ActiveTracks first(int n) const { return {x.data(), y.data(), weight.data(), n}; }
  std::vector<float> values(const FrameKernels& kernels) const {
    std::vector<float> result(static_cast<std::size_t>(2 * tracks.count));
    kernels.project(h.data(), tracks, result.data());
    return result;
  }
  std::vector<float> rows(const FrameKernels& kernels) const {
    const std::vector<float> at = values(cornerpin::kernels::scalarFrameKernels);
    std::vector<float> result(at.size() * kParameters);
    kernels.differences(h.data(), tracks, at.data(), kStep, result.data());
    return result;
  }

  awkward::Floats floats;
  awkward::Floats::Block h, x, y, weight;
  ActiveTracks tracks;
};

struct System {
  System(const FrameKernels& kernels, const float* rows, const float* goal, const float* values,
         int m) {
    kernels.normalSystem(rows, goal, values, m, a, g);
  }
  System(const FrameKernels& kernels, const float* h, const ActiveTracks& tracks,
         const float* values, const float* goal) {
    kernels.frameSystem(h, tracks, values, goal, kStep, a, g);
  }
  bool isFinite() const {
    for (int i = 0; i < kParameters; ++i) {
      for (int j = 0; j <= i; ++j) {
        if (!std::isfinite(a[i * kParameters + j])) return false;
      }
    }
    return true;
  }
  bool sameTriangle(const System& other) const {
    for (int i = 0; i < kParameters; ++i) {
      if (!awkward::sameBits(a + i * kParameters, other.a + i * kParameters, i + 1)) return false;
    }
    return true;
  }
  double a[kParameters * kParameters];
  float g[kParameters];
};

// Holds a kernel to its definition's output for every number of tracks to the longest, `perTrack`
// floats each: the first tracks' output does not depend on those behind them, and nothing is
// written behind it. `run(count, output)` is the variant.
template <class Run>
void expectPrefixes(const std::vector<float>& expected, int perTrack, const char* name,
                    const Run& run) {
  constexpr float untouched = 12345.0f;
  std::vector<float> found(expected.size() + 64);
  for (int n = 0; n <= kLongest; ++n) {
    const int length = n * perTrack;
    std::fill(found.begin() + length, found.begin() + length + 64, untouched);
    run(n, found.data());
    ASSERT_EQ(std::memcmp(found.data(), expected.data(),
                          static_cast<std::size_t>(length) * sizeof(float)),
              0)
        << name << " n=" << n;
    for (int i = length; i < length + 64; ++i) {
      ASSERT_EQ(found[static_cast<std::size_t>(i)], untouched) << name << " n=" << n;
    }
  }
}

}  // namespace

TEST(FrameKernels, EveryVariantProjectsToTheDefinitionsBits) {
  forEveryKind([](int n, int offset, awkward::Kind kind) {
    const Projection projection(n, offset, kind);
    const std::vector<float> expected = projection.values(*variants()[0]);
    for (const FrameKernels* kernels : variants()) {
      const std::vector<float> values = projection.values(*kernels);
      ASSERT_TRUE(awkward::sameBits(values.data(), expected.data(), 2 * n))
          << kernels->name << " n=" << n << " offset=" << offset;
    }
  });
}

TEST(FrameKernels, EveryVariantProjectsAnyNumberOfTracks) {
  Projection projection(kLongest, 1, awkward::Kind::Plain);
  projection.makeTransformModest();
  const std::vector<float> expected = projection.values(*variants()[0]);
  for (const FrameKernels* kernels : variants()) {
    expectPrefixes(expected, 2, kernels->name, [&](int n, float* values) {
      kernels->project(projection.h.data(), projection.first(n), values);
    });
  }
}

TEST(FrameKernels, EveryVariantFormsTheDefinitionsDifferences) {
  forEveryKind([](int n, int offset, awkward::Kind kind) {
    const Projection projection(n, offset, kind);
    const std::vector<float> expected = projection.rows(*variants()[0]);
    for (const FrameKernels* kernels : variants()) {
      const std::vector<float> rows = projection.rows(*kernels);
      ASSERT_TRUE(awkward::sameBits(rows.data(), expected.data(), 2 * n * kParameters))
          << kernels->name << " n=" << n << " offset=" << offset;
    }
  });
}

TEST(FrameKernels, EveryVariantFormsTheDifferencesOfAnyNumberOfTracks) {
  Projection projection(kLongest, 3, awkward::Kind::Plain);
  projection.makeTransformModest();
  const std::vector<float> values = projection.values(*variants()[0]);
  const std::vector<float> expected = projection.rows(*variants()[0]);
  for (const FrameKernels* kernels : variants()) {
    if (kernels == variants()[0]) continue;  // the definition, which `expected` is from
    expectPrefixes(expected, 2 * kParameters, kernels->name, [&](int n, float* rows) {
      kernels->differences(projection.h.data(), projection.first(n), values.data(), kStep, rows);
    });
  }
}

TEST(FrameKernels, EveryVariantFormsTheDefinitionsNormalSystem) {
  const auto check = [](int m, int offset, awkward::Kind kind) {
    awkward::Floats floats(static_cast<std::uint32_t>(m * 16 + offset));
    const auto rows = floats.block(m * kParameters, offset, kind);
    const auto goal = floats.block(m, offset, kind);
    const auto values = floats.block(m, offset, kind);
    const System expected(*variants()[0], rows.data(), goal.data(), values.data(), m);
    for (const FrameKernels* kernels : variants()) {
      const System system(*kernels, rows.data(), goal.data(), values.data(), m);
      ASSERT_TRUE(system.sameTriangle(expected)) << kernels->name << " m=" << m;
      ASSERT_TRUE(awkward::sameBits(system.g, expected.g, kParameters))
          << kernels->name << " m=" << m;
    }
  };
  forEveryKind(check);
}

TEST(FrameKernels, EveryVariantFormsTheNormalSystemOfAnyNumberOfRows) {
  awkward::Floats floats(5);
  const auto rows = floats.block(kLongest * kParameters, 5, awkward::Kind::Plain);
  const auto goal = floats.block(kLongest, 5, awkward::Kind::Plain);
  const auto values = floats.block(kLongest, 5, awkward::Kind::Plain);
  for (int m = 0; m <= kLongest; ++m) {
    const System expected(*variants()[0], rows.data(), goal.data(), values.data(), m);
    for (const FrameKernels* kernels : variants()) {
      if (kernels == variants()[0]) continue;
      const System system(*kernels, rows.data(), goal.data(), values.data(), m);
      ASSERT_TRUE(system.sameTriangle(expected)) << kernels->name << " m=" << m;
      ASSERT_TRUE(awkward::sameBits(system.g, expected.g, kParameters))
          << kernels->name << " m=" << m;
    }
  }
}

TEST(FrameKernels, EveryVariantFormsTheSystemOfTheDifferences) {
  int finiteSystems = 0;
  int otherSystems = 0;
  forEveryKind([&](int n, int offset, awkward::Kind kind) {
    Projection projection(n, offset, kind);
    projection.makeTransformModest();
    const std::vector<float> rows = projection.rows(*variants()[0]);
    const std::vector<float> values = projection.values(*variants()[0]);
    const auto goal = projection.floats.block(2 * n, offset, awkward::Kind::Plain);
    const System expected(*variants()[0], rows.data(), goal.data(), values.data(), 2 * n);
    ++(expected.isFinite() ? finiteSystems : otherSystems);
    for (const FrameKernels* kernels : variants()) {
      const System system(*kernels, projection.h.data(), projection.tracks, values.data(),
                          goal.data());
      ASSERT_EQ(system.isFinite(), expected.isFinite()) << kernels->name << " n=" << n;
      if (!expected.isFinite()) continue;
      ASSERT_TRUE(system.sameTriangle(expected)) << kernels->name << " n=" << n;
      ASSERT_TRUE(std::equal(system.g, system.g + kParameters, expected.g))
          << kernels->name << " n=" << n;
    }
  });
  EXPECT_GT(finiteSystems, 100);
  EXPECT_GT(otherSystems, 100);
}

TEST(FrameKernels, EveryVariantFormsTheSystemOfAnyNumberOfTracks) {
  Projection projection(kLongest, 7, awkward::Kind::Plain);
  projection.makeTransformModest();
  const std::vector<float> values = projection.values(*variants()[0]);
  const std::vector<float> rows = projection.rows(*variants()[0]);
  const auto goal = projection.floats.block(2 * kLongest, 7, awkward::Kind::Plain);
  for (int n = 0; n <= kLongest; ++n) {
    const System expected(*variants()[0], rows.data(), goal.data(), values.data(), 2 * n);
    ASSERT_TRUE(expected.isFinite()) << " n=" << n;
    for (const FrameKernels* kernels : variants()) {
      if (kernels == variants()[0]) continue;
      const System system(*kernels, projection.h.data(), projection.first(n), values.data(),
                          goal.data());
      ASSERT_TRUE(system.sameTriangle(expected)) << kernels->name << " n=" << n;
      ASSERT_TRUE(std::equal(system.g, system.g + kParameters, expected.g))
          << kernels->name << " n=" << n;
    }
  }
}

TEST(FrameKernels, EveryVariantRoundsGradientsByWayOfDouble) {
  // At the origin, with a step of 1, the row of x is the weight in element 6. The first track makes
  // the gradient 1 + e, e the distance to the next float, and the second adds (e / 2) (1 - e^2).
  // The exact sum lies below the middle between 1 + e and 1 + 2 e; as a double it is the middle,
  // which goes to the even neighbour.
  const float e = std::ldexp(1.0f, -23);
  const float h[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float origin[2] = {0, 0};
  const float weights[2] = {1.0f, 1.0f + e};
  const float values[4] = {0, 0, 0, 0};
  const float goal[4] = {1.0f + e, 0, (e / 2) * (1.0f - e), 0};
  for (const FrameKernels* kernels : variants()) {
    double a[kParameters * kParameters];
    float g[kParameters];
    kernels->frameSystem(h, {origin, origin, weights, 2}, values, goal, 1.0f, a, g);
    EXPECT_EQ(g[6], 1.0f + 2 * e) << kernels->name;
  }
}

TEST(FrameKernels, EveryVariantSolvesShotsToTheSameBits) {
  for (const std::uint32_t seed : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u}) {
    const reference::Scene shot = scenes::randomShot(seed);
    scenes::Bits expected;
    for (const FrameKernels* kernels : variants()) {
      cornerpin::kernels::useFrameKernels(kernels);
      MMatchmove scene;
      scenes::fill(scene, shot, seed);
      const scenes::Bits result = scenes::resultOf(scene, scenes::solve(scene));
      if (expected.empty()) expected = result;
      EXPECT_EQ(result, expected) << kernels->name << " seed " << seed;
    }
    cornerpin::kernels::useFrameKernels(nullptr);
  }
}

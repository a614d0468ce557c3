// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/kernels/frame_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// Every length to 600, then every 13th to 4096 and that one, at every alignment and with every kind
// of number.
template <class Check>
void forEachLength(const Check& check) {
  for (int n = 0; n <= 4096;
       n = n < 600 || n == 4095 ? n + 1 : std::min(n + 13, n < 4095 ? 4095 : 4097)) {
    check(n, n % 16, awkward::kKinds[n / 16 % 4]);
  }
  for (int n = 0; n <= 20; ++n) {
    for (int offset = 0; offset < 16; ++offset) {
      for (const awkward::Kind kind : awkward::kKinds) check(n, offset, kind);
    }
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
  System(const FrameKernels& kernels, const Projection& p, const float* goal) {
    kernels.frameSystem(p.h.data(), p.tracks, p.values(*variants()[0]).data(), goal, kStep, a, g);
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

}  // namespace

TEST(FrameKernels, EveryVariantProjectsToTheDefinitionsBits) {
  forEachLength([](int n, int offset, awkward::Kind kind) {
    const Projection projection(n, offset, kind);
    const std::vector<float> expected = projection.values(*variants()[0]);
    for (const FrameKernels* kernels : variants()) {
      const std::vector<float> values = projection.values(*kernels);
      ASSERT_TRUE(awkward::sameBits(values.data(), expected.data(), 2 * n))
          << kernels->name << " n=" << n << " offset=" << offset;
    }
  });
}

TEST(FrameKernels, EveryVariantFormsTheDefinitionsDifferences) {
  forEachLength([](int n, int offset, awkward::Kind kind) {
    const Projection projection(n, offset, kind);
    const std::vector<float> expected = projection.rows(*variants()[0]);
    for (const FrameKernels* kernels : variants()) {
      const std::vector<float> rows = projection.rows(*kernels);
      ASSERT_TRUE(awkward::sameBits(rows.data(), expected.data(), 2 * n * kParameters))
          << kernels->name << " n=" << n << " offset=" << offset;
    }
  });
}

TEST(FrameKernels, EveryVariantFormsTheDefinitionsNormalSystem) {
  forEachLength([](int m, int offset, awkward::Kind kind) {
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
  });
}

TEST(FrameKernels, EveryVariantFormsTheSystemOfTheDifferences) {
  int finiteSystems = 0;
  int otherSystems = 0;
  forEachLength([&](int n, int offset, awkward::Kind kind) {
    Projection projection(n, offset, kind);
    // With a transform of this size most systems are finite.
    for (int e = 0; e < 9; ++e) projection.h.data()[e] = e % 4 == 0 ? 1.0f : 0.01f;
    const std::vector<float> rows = projection.rows(*variants()[0]);
    const std::vector<float> values = projection.values(*variants()[0]);
    const auto goal = projection.floats.block(2 * n, offset, awkward::Kind::Plain);
    const System expected(*variants()[0], rows.data(), goal.data(), values.data(), 2 * n);
    ++(expected.isFinite() ? finiteSystems : otherSystems);
    for (const FrameKernels* kernels : variants()) {
      const System system(*kernels, projection, goal.data());
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

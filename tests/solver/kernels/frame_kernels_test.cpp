// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/kernels/frame_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "cornerpin/solver/kernels/frame_kernels_avx512.h"
#include "cornerpin/solver/lm_solver.h"
#include "cornerpin/solver/matchmove.h"
#include "cornerpin/solver/matchmove_problem.h"
#include "tests/solver/client_problems.h"
#include "tests/solver/shots.h"
#include "tests/support/awkward.h"
#include "tests/support/processor.h"
#include "tests/support/scene.h"

namespace {

using cornerpin::kernels::ActiveTracks;
using cornerpin::kernels::FrameKernels;
using cornerpin::kernels::frameKernelVariants;
using cornerpin::kernels::kParameters;

std::vector<const FrameKernels*> variants() {
  return {frameKernelVariants().begin(), frameKernelVariants().end()};
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
    kernels.differences(h.data(), tracks, at.data(), result.data());
    return result;
  }

  awkward::Floats floats;
  awkward::Floats::Block h, x, y, weight;
  ActiveTracks tracks;
};

struct System {
  System(const FrameKernels& kernels, const float* rows, const float* goal, const float* values,
         int m) {
    kernels.normalSums(rows, goal, values, m, a, g);
  }
  System(const FrameKernels& kernels, const float* h, const ActiveTracks& tracks,
         const float* values, const float* goal) {
    kernels.frameSums(h, tracks, values, goal, a, g);
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

// Sixteen tracks.
struct Batch {
  void expectSameSystems(const float* h) const {
    const ActiveTracks tracks = {x, y, weight, 16};
    float values[32];
    float goal[32];
    variants()[0]->project(h, tracks, values);
    for (int k = 0; k < 32; ++k) goal[k] = 1.5f * values[k];
    const System expected(*variants()[0], h, tracks, values, goal);
    for (const FrameKernels* kernels : variants()) {
      if (kernels == variants()[0]) continue;
      const System system(*kernels, h, tracks, values, goal);
      ASSERT_TRUE(system.sameTriangle(expected)) << kernels->name << " " << x[0];
      ASSERT_TRUE(std::equal(system.g, system.g + kParameters, expected.g)) << kernels->name;
    }
  }
  float x[16], y[16], weight[16];
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

// Whether the AVX-512 variant needs no other to form the system; nothing where it is not the best.
std::optional<bool> avx512FormsItself([[maybe_unused]] const float* h,
                                      [[maybe_unused]] const ActiveTracks& tracks,
                                      [[maybe_unused]] const float* values,
                                      [[maybe_unused]] const float* goal) {
#ifdef CORNERPIN_HAVE_AVX512
  if (std::strcmp(frameKernelVariants().best().name, "avx512") == 0) {
    double a[kParameters * kParameters];
    float g[kParameters];
    return cornerpin::kernels::avx512::formSystem(h, tracks, values, goal, a, g);
  }
#endif
  return std::nullopt;
}

// The best variant, counting its calls.
struct Calls {
  int project, residuals, differences, normalSums, frameSums;
};
Calls calls;

const FrameKernels& best() { return frameKernelVariants().best(); }
const FrameKernels counting = {
    "counting",
    [](const float* h, const ActiveTracks& tracks, float* values) {
      ++calls.project;
      best().project(h, tracks, values);
    },
    [](const float* h, const ActiveTracks& tracks, const float* goal, float* values,
       float* residuals) {
      ++calls.residuals;
      best().residuals(h, tracks, goal, values, residuals);
    },
    [](const float* h, const ActiveTracks& tracks, const float* values, float* rows) {
      ++calls.differences;
      best().differences(h, tracks, values, rows);
    },
    [](const float* rows, const float* goal, const float* values, int m, double* a, float* g) {
      ++calls.normalSums;
      best().normalSums(rows, goal, values, m, a, g);
    },
    [](const float* h, const ActiveTracks& tracks, const float* values, const float* goal,
       double* a, float* g) {
      ++calls.frameSums;
      best().frameSums(h, tracks, values, goal, a, g);
    }};

// What `work` calls of the variant in use.
template <class Work>
Calls callsOf(const Work& work) {
  calls = {};
  frameKernelVariants().use(counting);
  work();
  frameKernelVariants().useBest();
  return calls;
}

}  // namespace

TEST(FrameKernels, VariantsAreThoseThatTheProcessorReports) {
  std::vector<std::string> names;
  std::set<cornerpin::kernels::FrameSums> systems;
  for (const FrameKernels* kernels : variants()) {
    names.emplace_back(kernels->name);
    systems.insert(kernels->frameSums);
  }
  EXPECT_EQ(names, processor::kernelVariants());
  EXPECT_EQ(systems.size(), names.size()) << "two variants form systems with one function";
}

TEST(FrameKernels, UsesTheBestVariantUnlessAnotherIsChosen) {
  const std::string expected = processor::kernelVariants().back();
  EXPECT_EQ(cornerpin::kernels::frameKernels().name, expected);
  frameKernelVariants().use(*variants()[0]);
  EXPECT_STREQ(cornerpin::kernels::frameKernels().name, "scalar");
  frameKernelVariants().useBest();
  EXPECT_EQ(cornerpin::kernels::frameKernels().name, expected);
}

TEST(FrameKernels, SolvesUseTheVariantThatIsChosen) {
  MMatchmove scene = shots::panningShot(3, 1);
  const Calls found = callsOf([&scene] { scene.solve(); });
  // Two frames, each with a start and at least one step.
  EXPECT_GE(found.residuals, 4);
  EXPECT_GE(found.frameSums, 2);
}

TEST(FrameKernels, ProblemsUseTheVariantThatIsChosen) {
  MMatchmove scene = shots::panningShot(3, 1);
  scene.setupOutputs();
  scene.solveBaseFrame();
  MMatchmoveProblem problem(&scene, 2);
  const Calls values = callsOf([&problem] {
    problem.setX(scenes::vectorOf({1, 0, 0, 0, 1, 0, 0, 0}));
    MGenVector<float> y;
    problem.evalY(y);
  });
  EXPECT_EQ(values.project, 1);
  const Calls slopes = callsOf([&problem] {
    MGenMatrix<float> dy;
    problem.evalDy(dy);
  });
  EXPECT_EQ(slopes.differences, 1);
}

TEST(FrameKernels, SolversOfEightParametersUseTheVariantThatIsChosen) {
  clients::Identity problem;
  MLMSolver solver;
  clients::prepare(solver, problem, {0, 0, 0, 0, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_GE(callsOf([&solver] { solver.solve(); }).normalSums, 1);
}

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

TEST(FrameKernels, EveryVariantFindsTheDefinitionsResiduals) {
  forEveryKind([](int n, int offset, awkward::Kind kind) {
    Projection projection(n, offset, kind);
    const auto goal = projection.floats.block(2 * n, offset, kind);
    const std::vector<float> expected = projection.values(*variants()[0]);
    for (const FrameKernels* kernels : variants()) {
      std::vector<float> values(expected.size());
      std::vector<float> residuals(expected.size());
      kernels->residuals(projection.h.data(), projection.tracks, goal.data(), values.data(),
                         residuals.data());
      ASSERT_TRUE(awkward::sameBits(values.data(), expected.data(), 2 * n))
          << kernels->name << " n=" << n << " offset=" << offset;
      for (std::size_t k = 0; k < expected.size(); ++k) {
        ASSERT_TRUE(awkward::sameBits(residuals[k], expected[k] - goal.data()[k]))
            << kernels->name << " n=" << n << " offset=" << offset << " k=" << k;
      }
    }
  });
}

TEST(FrameKernels, EveryVariantFindsTheResidualsOfAnyNumberOfTracks) {
  Projection projection(kLongest, 1, awkward::Kind::Plain);
  projection.makeTransformModest();
  const auto goal = projection.floats.block(2 * kLongest, 5, awkward::Kind::Plain);
  std::vector<float> expected = projection.values(*variants()[0]);
  for (std::size_t k = 0; k < expected.size(); ++k) expected[k] -= goal.data()[k];
  std::vector<float> values(expected.size());
  for (const FrameKernels* kernels : variants()) {
    expectPrefixes(expected, 2, kernels->name, [&](int n, float* residuals) {
      kernels->residuals(projection.h.data(), projection.first(n), goal.data(), values.data(),
                         residuals);
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
      kernels->differences(projection.h.data(), projection.first(n), values.data(), rows);
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

TEST(FrameKernels, Avx512NeedsNoOtherVariantForOrdinaryTracks) {
  Projection projection(300, 7, awkward::Kind::Plain);
  projection.makeTransformModest();
  const std::vector<float> values = projection.values(*variants()[0]);
  const auto goal = projection.floats.block(2 * 300, 7, awkward::Kind::Plain);
  for (int n = 0; n <= 300; ++n) {
    const ActiveTracks tracks = projection.first(n);
    EXPECT_NE(avx512FormsItself(projection.h.data(), tracks, values.data(), goal.data()), false)
        << n;
  }
}

TEST(FrameKernels, EveryVariantDividesEveryMantissaByTheStep) {
  // All of the transform is next to nothing: with the step in element 0, x goes to weight x step.
  const float h[9] = {0, 0, 0, 0, 0, 0, 0x1p-70f, 0x1p-70f, 1};
  constexpr float step = cornerpin::kernels::kDifferenceStep;
  constexpr float almostOne = 1.0f - 0x1p-24f;
  Batch batch{};
  int filled = 0;
  int missed = 0;
  for (float number = 1.0f; number < 2.0f; number += 0x1p-23f) {
    batch.weight[filled] = 0.0f;
    for (const float weight : {1.0f, almostOne}) {
      const float near = number / step;
      for (const float x : {near, std::nextafter(near, 0.0f), std::nextafter(near, 1e9f)}) {
        if (weight * (x * step) != number) continue;
        batch.x[filled] = x;
        batch.weight[filled] = weight;
      }
    }
    if (batch.weight[filled] == 0.0f) ++missed;
    if (++filled < 16) continue;
    filled = 0;
    ASSERT_NO_FATAL_FAILURE(batch.expectSameSystems(h)) << number;
  }
  EXPECT_EQ(missed, 0);
}

TEST(FrameKernels, EveryVariantDividesEveryExponentByTheStep) {
  const float h[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  std::mt19937 random(1);
  const auto number = [&random](int exponent) {
    const float size = std::ldexp(static_cast<float>(random() >> 8), exponent - 24);
    return random() % 2 == 0 ? size : -size;
  };
  Batch batch{};
  for (int exponent = -149; exponent <= 20; ++exponent) {
    for (int round = 0; round < 50; ++round) {
      for (int i = 0; i < 16; ++i) {
        batch.x[i] = number(exponent);
        batch.y[i] = number(exponent);
        batch.weight[i] = std::fabs(number(1));
      }
      ASSERT_NO_FATAL_FAILURE(batch.expectSameSystems(h)) << exponent;
    }
  }
}

TEST(FrameKernels, EveryVariantRoundsGradientsByWayOfDouble) {
  // A row that adds half a unit in the last place, but for less than a double shows next to the
  // gradient: by way of double that is a tie. One is searched for in each element of the gradient
  // and each coordinate, in the second of two tracks; the first makes the gradient what it is.
  const float h[9] = {0.98f, 0.03f, 0.02f, -0.04f, 1.01f, -0.03f, 0.01f, -0.02f, 1};
  std::mt19937 random(1);
  const auto number = [&random] { return std::ldexp(static_cast<float>(random() >> 8), -24); };
  const FrameKernels& definition = *variants()[0];
  for (int element = 0; element < kParameters; ++element) {
    for (int coordinate = 0; coordinate < 2; ++coordinate) {
      const bool isShared = element % 3 == 2;
      if (!isShared && element % 3 != coordinate) continue;
      int found = 0;
      for (int trial = 0; trial < 1000000 && found < 3; ++trial) {
        const float x[2] = {0.5f, number()}, y[2] = {0.25f, number()}, weight[2] = {1, number()};
        float values[4], rows[4 * kParameters], goal[4];
        definition.project(h, {x, y, weight, 2}, values);
        definition.differences(h, {x, y, weight, 2}, values, rows);
        goal[0] = values[0] + 1.0f;
        goal[1] = values[1] + 0.3f;
        goal[2] = values[2];
        goal[3] = values[3];
        const float before = System(definition, rows, goal, values, 4).g[element];
        const float unit = std::nextafter(std::fabs(before), 1e9f) - std::fabs(before);
        const float row = rows[(2 + coordinate) * kParameters + element];
        if (row == 0.0f) continue;
        goal[2 + coordinate] += std::copysign(unit / 2, before) / row;
        const float difference = goal[2 + coordinate] - values[2 + coordinate];
        const double sum = static_cast<double>(before) +
                           static_cast<double>(row) * static_cast<double>(difference);
        if (std::fma(row, difference, before) == static_cast<float>(sum)) continue;
        ++found;
        EXPECT_NE(avx512FormsItself(h, {x, y, weight, 2}, values, goal), true);
        const System expected(definition, rows, goal, values, 4);
        for (const FrameKernels* kernels : variants()) {
          const System system(*kernels, h, {x, y, weight, 2}, values, goal);
          EXPECT_TRUE(std::equal(system.g, system.g + kParameters, expected.g))
              << kernels->name << " element " << element << " coordinate " << coordinate;
        }
      }
      EXPECT_EQ(found, 3) << element << " " << coordinate;
    }
  }
}

TEST(FrameKernels, EveryVariantSolvesShotsToTheSameBits) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    const reference::Scene shot = scenes::randomShot(seed);
    scenes::Bits expected;
    for (const FrameKernels* kernels : variants()) {
      frameKernelVariants().use(*kernels);
      MMatchmove scene;
      scenes::fill(scene, shot, seed);
      const scenes::Bits result = scenes::resultOf(scene, scenes::solve(scene));
      if (expected.empty()) expected = result;
      EXPECT_EQ(result, expected) << kernels->name << " seed " << seed;
    }
    frameKernelVariants().useBest();
  }
}

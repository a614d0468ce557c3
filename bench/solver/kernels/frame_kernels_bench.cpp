// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/kernels/frame_kernels.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/support/shot.h"
#include "cornerpin/solver/matchmove.h"

namespace {

using cornerpin::kernels::ActiveTracks;
using cornerpin::kernels::FrameKernels;

struct Tracks {
  explicit Tracks(std::int64_t n)
      : count(static_cast<std::size_t>(n)),
        x(count),
        y(count),
        weights(count, 1.0f),
        values(2 * count),
        goal(2 * count),
        rows(16 * count) {
    for (std::size_t i = 0; i < count; ++i) {
      x[i] = static_cast<float>(i % 17) / 9.0f - 1;
      y[i] = static_cast<float>(i % 23) / 12.0f - 1;
      goal[2 * i] = x[i] + 0.01f;
      goal[2 * i + 1] = y[i];
    }
  }
  ActiveTracks active() const {
    return {x.data(), y.data(), weights.data(), static_cast<int>(count)};
  }
  std::size_t count;
  std::vector<float> x, y, weights, values, goal, rows;
};

constexpr float transform[9] = {1.01f, 0.02f, 0.01f, -0.02f, 0.99f, 0.03f, 0.1f, 0.2f, 1.0f};

void project(benchmark::State& state, const FrameKernels* kernels) {
  Tracks tracks(state.range(0));
  for (auto _ : state) {
    kernels->project(transform, tracks.active(), tracks.values.data());
    benchmark::ClobberMemory();
  }
}

void differences(benchmark::State& state, const FrameKernels* kernels) {
  Tracks tracks(state.range(0));
  kernels->project(transform, tracks.active(), tracks.values.data());
  for (auto _ : state) {
    kernels->differences(transform, tracks.active(), tracks.values.data(), tracks.rows.data());
    benchmark::ClobberMemory();
  }
}

void normalSums(benchmark::State& state, const FrameKernels* kernels) {
  Tracks tracks(state.range(0));
  kernels->project(transform, tracks.active(), tracks.values.data());
  kernels->differences(transform, tracks.active(), tracks.values.data(), tracks.rows.data());
  double triangle[64];
  float gradient[8];
  for (auto _ : state) {
    kernels->normalSums(tracks.rows.data(), tracks.goal.data(), tracks.values.data(),
                        static_cast<int>(2 * tracks.count), triangle, gradient);
    benchmark::ClobberMemory();
  }
}

void frameSums(benchmark::State& state, const FrameKernels* kernels) {
  Tracks tracks(state.range(0));
  kernels->project(transform, tracks.active(), tracks.values.data());
  double triangle[64];
  float gradient[8];
  for (auto _ : state) {
    kernels->frameSums(transform, tracks.active(), tracks.values.data(), tracks.goal.data(),
                       triangle, gradient);
    benchmark::ClobberMemory();
  }
}

// A whole solve of 100 frames.
void solve(benchmark::State& state, const FrameKernels* kernels) {
  MMatchmove scene;
  bench::fill(scene, bench::syntheticShot(static_cast<int>(state.range(0)), 100));
  cornerpin::kernels::frameKernelVariants().use(*kernels);
  for (auto _ : state) scene.solve();
  cornerpin::kernels::frameKernelVariants().useBest();
}

const bool registered = [] {
  for (const FrameKernels* kernels : cornerpin::kernels::frameKernelVariants()) {
    const auto add = [kernels](const std::string& name, auto* function) {
      benchmark::RegisterBenchmark((name + "/" + kernels->name).c_str(), function, kernels)
          ->Arg(8)
          ->Arg(32)
          ->Arg(100)
          ->Arg(300);
    };
    add("project", project);
    add("differences", differences);
    add("normalSums", normalSums);
    add("frameSums", frameSums);
    add("solve", solve);
  }
  return true;
}();

}  // namespace

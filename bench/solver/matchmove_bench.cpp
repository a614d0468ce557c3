// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove.h"

#include <benchmark/benchmark.h>

#include "bench/support/shot.h"

namespace {

constexpr int kFrames = 100;

void perFrame(benchmark::State& state) {
  state.counters["per_frame"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * (kFrames - 1),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void solve(benchmark::State& state) {
  MMatchmove scene;
  bench::fill(scene, bench::syntheticShot(static_cast<int>(state.range(0)), kFrames));
  for (auto _ : state) scene.solve();
  perFrame(state);
}
BENCHMARK(solve)->Arg(8)->Arg(32)->Arg(100)->Arg(300)->Unit(benchmark::kMicrosecond);

void solvePlainly(benchmark::State& state) {
  bench::Shot shot = bench::syntheticShot(static_cast<int>(state.range(0)), kFrames);
  for (auto _ : state) shot.scene.solve();
  perFrame(state);
}
BENCHMARK(solvePlainly)->Arg(8)->Arg(32)->Arg(100)->Arg(300)->Unit(benchmark::kMicrosecond);

void projectPoint(benchmark::State& state) {
  MMatchmove scene;
  bench::fill(scene, bench::syntheticShot(8, 3));
  scene.solve();
  MGenVector<float> p(2);
  MGenVector<float> out(2);
  for (auto _ : state) {
    scene.project(2, p, out);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(projectPoint);

}  // namespace

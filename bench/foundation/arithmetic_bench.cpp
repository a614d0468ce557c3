// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/arithmetic.h"

#include <benchmark/benchmark.h>

namespace {

MGenVector<float> filled(std::int64_t n, int stride = 1) {
  MGenVector<float> all(static_cast<int>(n) * stride);
  for (int i = 0; i < all.length; ++i) all[i] = 1.5f;
  return all.view(0, static_cast<int>(n), stride);
}

void add(benchmark::State& state) {
  const MGenVector<float> a = filled(state.range(0));
  const MGenVector<float> b = filled(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize((a + b).data);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(add)->Arg(8)->Arg(280)->Arg(4096);

void addStrided(benchmark::State& state) {
  const MGenVector<float> a = filled(state.range(0), 3);
  const MGenVector<float> b = filled(state.range(0), 2);
  for (auto _ : state) benchmark::DoNotOptimize((a + b).data);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(addStrided)->Arg(280)->Arg(4096);

void divideByScalar(benchmark::State& state) {
  const MGenVector<float> a = filled(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize((a / 3.0f).data);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(divideByScalar)->Arg(8)->Arg(280)->Arg(4096);

void multiplyInPlace(benchmark::State& state) {
  MGenVector<float> a = filled(state.range(0));
  MGenVector<float> ones(a.length);
  for (int i = 0; i < ones.length; ++i) ones[i] = 1.0f;
  for (auto _ : state) {
    a *= ones;
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(multiplyInPlace)->Arg(8)->Arg(280)->Arg(4096);

}  // namespace

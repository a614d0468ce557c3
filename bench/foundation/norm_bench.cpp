// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/norm.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

std::vector<float> values(std::int64_t n) {
  return std::vector<float>(static_cast<std::size_t>(n), 0.5f);
}

void norm2(benchmark::State& state) {
  const std::vector<float> v = values(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(_vector_norm2(v.data(), static_cast<int>(v.size())));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(norm2)->Arg(8)->Arg(16)->Arg(64)->Arg(200)->Arg(280)->Arg(600)->Arg(4096);

// What a caller's own loop costs, with its sum from left to right.
void plainSumOfSquares(benchmark::State& state) {
  const std::vector<float> v = values(state.range(0));
  for (auto _ : state) {
    float sum = 0;
    for (const float x : v) sum += x * x;
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(plainSumOfSquares)->Arg(8)->Arg(200)->Arg(4096);

void finiteVector(benchmark::State& state) {
  const MGenVector<double> v(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(finite(v));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(finiteVector)->Arg(8)->Arg(4096);

void finiteMatrix(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const MGenMatrix<double> m(n, n, MGenMatrix<double>::ColumnMajor);
  for (auto _ : state) benchmark::DoNotOptimize(finite(m));
  state.SetItemsProcessed(state.iterations() * n * n);
}
BENCHMARK(finiteMatrix)->Arg(8)->Arg(512);

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/inverse.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "cornerpin/linalg/lapack.h"

namespace {

using Matrix = MGenMatrix<float>;

// Diagonally dominant, as the damped normal matrices of the solver are.
Matrix invertible(int n) {
  std::mt19937 engine(3);
  Matrix m(n, n, Matrix::ColumnMajor);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) m(i, j) = static_cast<float>(engine() % 1000) / 1000.0f;
    m(i, i) += static_cast<float>(n);
  }
  return m;
}

void invert(benchmark::State& state) {
  const Matrix a = invertible(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(inverse(a).data);
}
BENCHMARK(invert)->Arg(3)->Arg(8)->Arg(16)->Arg(64)->Arg(256);

// The same LAPACK calls on storage that is there already.
void lapackAlone(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const Matrix a = invertible(n);
  const auto size = static_cast<std::size_t>(n);
  std::vector<float> factors(size * size), work(size * 64);
  std::vector<int> pivots(size);
  const int length = static_cast<int>(work.size());
  int info = 0;
  for (auto _ : state) {
    std::copy_n(a.data, factors.size(), factors.begin());
    sgetrf_(&n, &n, factors.data(), &n, pivots.data(), &info);
    sgetri_(&n, factors.data(), &n, pivots.data(), work.data(), &length, &info);
    benchmark::DoNotOptimize(factors.data());
  }
}
BENCHMARK(lapackAlone)->Arg(3)->Arg(8)->Arg(16)->Arg(64)->Arg(256);

void determinantOf(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  MGenMatrix<double> a(n, n, MGenMatrix<double>::ColumnMajor);
  a.set(invertible(n));
  for (auto _ : state) benchmark::DoNotOptimize(determinant(a));
}
BENCHMARK(determinantOf)->Arg(3)->Arg(16)->Arg(64);

}  // namespace

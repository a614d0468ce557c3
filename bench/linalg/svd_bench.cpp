// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/svd.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "cornerpin/linalg/lapack.h"

namespace {

using Matrix = MGenMatrix<float>;

Matrix random(int n) {
  std::mt19937 engine(4);
  Matrix m(n, n, Matrix::ColumnMajor);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) m(i, j) = static_cast<float>(engine() % 1000) / 1000.0f;
  }
  return m;
}

void decompose(benchmark::State& state) {
  const Matrix a = random(static_cast<int>(state.range(0)));
  MSvd<float> svd;
  for (auto _ : state) benchmark::DoNotOptimize(_svdCall(svd, a));
}
BENCHMARK(decompose)->Arg(8)->Arg(16)->Arg(64);

// The same LAPACK call on storage that is there already.
void lapackSvdAlone(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const Matrix a = random(n);
  const auto size = static_cast<std::size_t>(n);
  const int length = std::max(10 * n, 2 * n * n);
  std::vector<float> copy(size * size), u(size * size), v(size * size), s(size);
  std::vector<float> work(static_cast<std::size_t>(length));
  int info = 0;
  for (auto _ : state) {
    std::copy_n(a.data, copy.size(), copy.begin());
    sgesvd_("S", "A", &n, &n, copy.data(), &n, s.data(), u.data(), &n, v.data(), &n, work.data(),
            &length, &info, 1, 1);
    benchmark::DoNotOptimize(s.data());
  }
}
BENCHMARK(lapackSvdAlone)->Arg(8)->Arg(16)->Arg(64);

}  // namespace

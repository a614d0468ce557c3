// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/matrix.h"

#include <benchmark/benchmark.h>

namespace {

using Matrix = MGenMatrix<float>;

template <class To>
void setFrom(benchmark::State& state, Matrix::Layout from, typename MGenMatrix<To>::Layout to) {
  const int n = static_cast<int>(state.range(0));
  const Matrix source(n, n, from);
  MGenMatrix<To> target(n, n, to);
  for (auto _ : state) {
    target.set(source);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n * n);
}

void setSameLayout(benchmark::State& state) {
  setFrom<float>(state, Matrix::ColumnMajor, Matrix::ColumnMajor);
}
BENCHMARK(setSameLayout)->Arg(3)->Arg(64)->Arg(1024);

void setOtherLayout(benchmark::State& state) {
  setFrom<float>(state, Matrix::RowMajor, Matrix::ColumnMajor);
}
BENCHMARK(setOtherLayout)->Arg(3)->Arg(64)->Arg(1024);

void setToDouble(benchmark::State& state) {
  setFrom<double>(state, Matrix::RowMajor, MGenMatrix<double>::RowMajor);
}
BENCHMARK(setToDouble)->Arg(64)->Arg(1024);

void copyTransform(benchmark::State& state) {
  const Matrix h(3, 3, Matrix::ColumnMajor);
  for (auto _ : state) benchmark::DoNotOptimize(h.copy(Matrix::ColumnMajor).data);
}
BENCHMARK(copyTransform);

}  // namespace

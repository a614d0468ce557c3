// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_matrix44.h"

#include <benchmark/benchmark.h>
#ifdef CORNERPIN_BENCH_IMATH
#include <Imath/ImathMatrix.h>
#include <Imath/ImathVec.h>
#endif

namespace {

constexpr double kElements[4][4] = {
    {0.9, 0.1, 0.2, 3}, {-0.1, 1.1, 0.3, -2}, {0.2, -0.3, 0.8, 1}, {0.01, 0.02, -0.01, 1}};

LvMatrix44Tmpl<double> matrix() {
  LvMatrix44Tmpl<double> m;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) m(i, j) = kElements[i][j];
  }
  return m;
}

void multiplyMatrices(benchmark::State& state) {
  const LvMatrix44Tmpl<double> a = matrix();
  LvMatrix44Tmpl<double> b = matrix();
  for (auto _ : state) {
    benchmark::DoNotOptimize(b);
    LvMatrix44Tmpl<double> product = a;
    product.rightMult(b);
    benchmark::DoNotOptimize(product);
  }
}
BENCHMARK(multiplyMatrices);

template <class Point>
void transform(benchmark::State& state, Point p) {
  const LvMatrix44Tmpl<double> m = matrix();
  for (auto _ : state) {
    benchmark::DoNotOptimize(p);
    Point moved;
    m.transform(p, moved);
    benchmark::DoNotOptimize(moved);
  }
}
BENCHMARK_CAPTURE(transform, LvVector2, LvVector2<double>(0.5, -0.25));
BENCHMARK_CAPTURE(transform, LvVector3, LvVector3<double>(0.5, -0.25, 0.125));
BENCHMARK_CAPTURE(transform, LvVector4, LvVector4<double>(0.5, -0.25, 0.125, 1));

#ifdef CORNERPIN_BENCH_IMATH

// Imath's points are rows.
Imath::M44d imathMatrix() {
  Imath::M44d m;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) m[i][j] = kElements[j][i];
  }
  return m;
}

void multiplyMatricesByImath(benchmark::State& state) {
  const Imath::M44d a = imathMatrix();
  Imath::M44d b = imathMatrix();
  for (auto _ : state) {
    benchmark::DoNotOptimize(b);
    Imath::M44d product = b * a;
    benchmark::DoNotOptimize(product);
  }
}
BENCHMARK(multiplyMatricesByImath);

void transformVec3ByImath(benchmark::State& state) {
  const Imath::M44d m = imathMatrix();
  Imath::V3d p(0.5, -0.25, 0.125);
  for (auto _ : state) {
    benchmark::DoNotOptimize(p);
    Imath::V3d moved;
    m.multVecMatrix(p, moved);
    benchmark::DoNotOptimize(moved);
  }
}
BENCHMARK(transformVec3ByImath);

void transformVec4ByImath(benchmark::State& state) {
  const Imath::M44d m = imathMatrix();
  Imath::V4d p(0.5, -0.25, 0.125, 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(p);
    Imath::V4d moved = p * m;
    benchmark::DoNotOptimize(moved);
  }
}
BENCHMARK(transformVec4ByImath);

#endif

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/roots.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <random>

namespace {

// Polynomials with roots of their own, drawn from -2 .. 2, in turns.
template <std::size_t Degree>
class Polynomials {
 public:
  Polynomials() {
    std::mt19937 engine(11);
    std::uniform_real_distribution<double> root(-2, 2);
    for (auto& c : coefficients_) {
      c[0] = 1;
      for (std::size_t n = 1; n <= Degree; ++n) {
        const double r = root(engine);
        for (std::size_t i = n; i > 0; --i) c[i] -= r * c[i - 1];
      }
    }
  }
  const double* next() { return coefficients_[turn_++ % kCount]; }

 private:
  static constexpr std::size_t kCount = 256;
  double coefficients_[kCount][Degree + 1] = {};
  std::size_t turn_ = 0;
};

void quadratic(benchmark::State& state) {
  Polynomials<2> polynomials;
  int count = 0;
  double roots[2] = {};
  for (auto _ : state) {
    const double* c = polynomials.next();
    solveQuadratic(c[0], c[1], c[2], &count, roots);
    benchmark::DoNotOptimize(roots);
  }
}
BENCHMARK(quadratic);

void cubic(benchmark::State& state) {
  Polynomials<3> polynomials;
  int count = 0;
  double roots[3] = {};
  for (auto _ : state) {
    const double* c = polynomials.next();
    solveCubic(c[0], c[1], c[2], c[3], &count, roots);
    benchmark::DoNotOptimize(roots);
  }
}
BENCHMARK(cubic);

void quartic(benchmark::State& state) {
  Polynomials<4> polynomials;
  int count = 0;
  double roots[4] = {};
  for (auto _ : state) {
    const double* c = polynomials.next();
    solveQuartic(c[0], c[1], c[2], c[3], c[4], &count, roots);
    benchmark::DoNotOptimize(roots);
  }
}
BENCHMARK(quartic);

void realRootsOfQuadratic(benchmark::State& state) {
  Polynomials<2> polynomials;
  for (auto _ : state) {
    const double* c = polynomials.next();
    benchmark::DoNotOptimize(cornerpin::realRoots(c[0], c[1], c[2]));
  }
}
BENCHMARK(realRootsOfQuadratic);

void realRootsOfCubic(benchmark::State& state) {
  Polynomials<3> polynomials;
  for (auto _ : state) {
    const double* c = polynomials.next();
    benchmark::DoNotOptimize(cornerpin::realRoots(c[0], c[1], c[2], c[3]));
  }
}
BENCHMARK(realRootsOfCubic);

void realRootsOfQuartic(benchmark::State& state) {
  Polynomials<4> polynomials;
  for (auto _ : state) {
    const double* c = polynomials.next();
    benchmark::DoNotOptimize(cornerpin::realRoots(c[0], c[1], c[2], c[3], c[4]));
  }
}
BENCHMARK(realRootsOfQuartic);

}  // namespace

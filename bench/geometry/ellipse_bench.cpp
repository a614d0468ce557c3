// SPDX-License-Identifier: BSD-3-Clause
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "cornerpin/geometry/MGeometry.h"

namespace {

// An ellipse of axis ratio 0.5, turned, and points around it that lie off its axes, in turns.
template <class T>
class Points {
 public:
  Points() {
    for (int i = 0; i < 256; ++i) {
      const double angle = 0.1 + 0.024 * i;
      const double distance = 0.3 + 0.01 * i;
      points_.emplace_back(static_cast<T>(1 + distance * std::cos(angle)),
                           static_cast<T>(2 + distance * std::sin(angle)));
    }
  }
  const LvVector2<T>& next() { return points_[turn_++ % points_.size()]; }

  const LvVector2<T> centre{T(1), T(2)};
  const LvVector2<T> a{T(1.6), T(1.2)};
  const LvVector2<T> b{T(-0.6), T(0.8)};

 private:
  std::vector<LvVector2<T>> points_;
  std::size_t turn_ = 0;
};

void pointOnSegment(benchmark::State& state) {
  Points<float> points;
  for (auto _ : state) {
    benchmark::DoNotOptimize(nearestPointOnSegment(points.centre, points.a, points.next()));
  }
}
BENCHMARK(pointOnSegment);

void normalPoints(benchmark::State& state) {
  Points<float> points;
  MArray<LvVector2<float>> found;
  for (auto _ : state) {
    normalPointsOnEllipse(points.centre, points.a, points.b, points.next(), found);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(normalPoints);

void closestPointByQuartic(benchmark::State& state) {
  Points<float> points;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        closestPointOnEllipse(points.centre, points.a, points.b, points.next()));
  }
}
BENCHMARK(closestPointByQuartic);

void closestPoint(benchmark::State& state) {
  Points<double> points;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        cornerpin::closestPointOnEllipse(points.centre, points.a, points.b, points.next()));
  }
}
BENCHMARK(closestPoint);

}  // namespace

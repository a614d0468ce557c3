// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/robust_fit.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "shot/fit/homography_fit.h"

namespace {

using cornerpin::Homography;
using cornerpin::Matches;
using cornerpin::Point;

constexpr int kFrames = 60;
constexpr double kNoise = 1e-3;

Homography motion(int frame) {
  const double t = 0.002 * frame;
  return {{{1 + t, -0.5 * t, 2 * t}, {0.3 * t, 1 - t, -t}, {0.05 * t, 0.1 * t, 1}}};
}

// Frames of one shot with normal noise; the first `bad` per cent of its tracks lie anywhere.
class Frames {
 public:
  Frames(int tracks, int bad) {
    prior.recentSigma = kNoise;
    prior.confidence.assign(static_cast<std::size_t>(tracks), 1.0);
    std::mt19937 engine(3);
    std::uniform_real_distribution<double> place(-1, 1);
    std::normal_distribution<double> noise(0, kNoise);
    std::vector<Point> base;
    base.reserve(static_cast<std::size_t>(tracks));
    for (int t = 0; t < tracks; ++t) base.push_back({place(engine), place(engine)});
    for (int f = 0; f < kFrames; ++f) {
      Matches matches;
      for (int t = 0; t < tracks; ++t) {
        const Point from = base[static_cast<std::size_t>(t)];
        const Point to = map(motion(f), from);
        const bool isBad = t * 100 < bad * tracks;
        matches.add({from,
                     isBad ? Point{place(engine), place(engine)}
                           : Point{to.x + noise(engine), to.y + noise(engine)},
                     1.0});
      }
      frames.push_back(matches);
    }
  }

  // In turns, from the neighbour's transform.
  int next() { return turn_ = turn_ + 1 < kFrames ? turn_ + 1 : 1; }

  std::vector<Matches> frames;
  cornerpin::Prior prior;

 private:
  int turn_ = 0;
};

void plainSquares(benchmark::State& state) {
  Frames shot(static_cast<int>(state.range(0)), 0);
  for (auto _ : state) {
    const int f = shot.next();
    benchmark::DoNotOptimize(
        cornerpin::fitHomography(shot.frames[static_cast<std::size_t>(f)], motion(f - 1)));
  }
}
BENCHMARK(plainSquares)->Arg(8)->Arg(32)->Arg(100)->Arg(300);

void robust(benchmark::State& state, int bad) {
  Frames shot(static_cast<int>(state.range(0)), bad);
  for (auto _ : state) {
    const int f = shot.next();
    benchmark::DoNotOptimize(cornerpin::fitRobustly(shot.frames[static_cast<std::size_t>(f)],
                                                    {{cornerpin::Stage::Neighbour, motion(f - 1)}},
                                                    shot.prior, {}));
  }
}
BENCHMARK_CAPTURE(robust, clean, 0)->Arg(8)->Arg(32)->Arg(100)->Arg(300);
BENCHMARK_CAPTURE(robust, fifth_bad, 20)->Arg(32)->Arg(100)->Arg(300);

}  // namespace

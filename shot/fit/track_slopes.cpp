// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/track_slopes.h"

#include "shot/fit/track_slopes.inc"

namespace cornerpin {

#ifdef CORNERPIN_X86_64
extern const SlopePasses kAvx2SlopePasses;
#endif

namespace {

constexpr std::size_t kProduct[3][3] = {{0, 1, 3}, {1, 2, 4}, {3, 4, 5}};

}  // namespace

const std::vector<SlopePasses>& slopePasses() {
  static const std::vector<SlopePasses> passes = [] {
    std::vector<SlopePasses> available = {passesNamed("base")};
#ifdef CORNERPIN_X86_64
    if (__builtin_cpu_supports("avx2")) available.push_back(kAvx2SlopePasses);
#endif
    return available;
  }();
  return passes;
}

const SlopePasses& fastestSlopePasses() {
  static const SlopePasses& fastest = slopePasses().back();
  return fastest;
}

TrackSlopes trackSlopes(const Points& places, const Similarity& unit, const Homography& h,
                        const std::vector<double>& weights) {
  TrackSlopes slopes(places.size());
  const double similarity[3] = {unit.scale, unit.centre.x, unit.centre.y};
  fastestSlopePasses().slopes(places.x(), places.y(), weights.data(), slopes.count(), similarity,
                              h[0].data(), slopes[0]);
  return slopes;
}

SquareMatrix<8> sumOfProducts(const TrackSlopes& slopes, const Symmetric2s& v) {
  SlopeProducts sums;
  fastestSlopePasses().sums(slopes[0], v[0], slopes.count(), sums);
  SquareMatrix<8> matrix{};
  const auto set = [&](std::size_t i, std::size_t j, double x) {
    matrix[j * 8 + i] = matrix[i * 8 + j] = x;
  };
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const std::size_t k = kProduct[i][j];
      set(i, j, sums.xx[k]);
      set(i, 3 + j, sums.xy[k]);
      set(3 + i, 3 + j, sums.yy[k]);
      if (j == 2) continue;
      set(i, 6 + j, sums.xz[k]);
      set(3 + i, 6 + j, sums.yz[k]);
      if (i < 2) set(6 + i, 6 + j, sums.zz[k]);
    }
  }
  return matrix;
}

Symmetric2s responses(const TrackSlopes& slopes, const SquareMatrix<8>& c) {
  SlopeProducts factors;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const std::size_t k = kProduct[i][j];
      factors.xx[k] += c[j * 8 + i];
      factors.xy[k] += c[(3 + j) * 8 + i];
      factors.yy[k] += c[(3 + j) * 8 + 3 + i];
      if (j == 2) continue;
      factors.xz[k] += c[(6 + j) * 8 + i];
      factors.yz[k] += c[(6 + j) * 8 + 3 + i];
      if (i < 2) factors.zz[k] += c[(6 + j) * 8 + 6 + i];
    }
  }
  Symmetric2s g(slopes.count());
  fastestSlopePasses().responses(slopes[0], factors, slopes.count(), g[0]);
  return g;
}

}  // namespace cornerpin

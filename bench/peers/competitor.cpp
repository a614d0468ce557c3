// SPDX-License-Identifier: BSD-3-Clause
#include "bench/peers/competitor.h"

#include <array>
#include <memory>

#include "cornerpin/linalg/lapack.h"

namespace bench {

namespace {

Run preparePlain(const Shot& shot, const std::vector<Frame>& frames) {
  auto scene = std::make_shared<reference::Scene>(shot.scene);
  const auto results = [scene, &frames] {
    std::vector<Parameters> fitted(frames.size());
    for (std::size_t f = 0; f < frames.size(); ++f) {
      const reference::Transform& h = scene->outputs[reference::size(frames[f].index)];
      for (std::size_t e = 0; e < 8; ++e) fitted[f][e] = static_cast<double>(h[e]);
    }
    return fitted;
  };
  return {[scene] { scene->solve(); }, results};
}

Run prepareLibrary(const Shot& shot, const std::vector<Frame>& frames) {
  auto scene = std::make_shared<MMatchmove>();
  fill(*scene, shot);
  const auto results = [scene, &frames] {
    std::vector<Parameters> fitted(frames.size());
    for (std::size_t f = 0; f < frames.size(); ++f) {
      const MGenMatrix<float>& h = scene->outputs[frames[f].index];
      for (std::size_t e = 0; e < 8; ++e) fitted[f][e] = static_cast<double>(h.data[e]);
    }
    return fitted;
  };
  return {[scene] { scene->solve(); }, results};
}

constexpr int kSize = 8;
using Square = std::array<float, 64>;

// Diagonally dominant, as the damped normal matrices are.
Square normalMatrix() {
  Square a{};
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t j = 0; j < kSize; ++j) {
      a[i * kSize + j] = (i == j ? 3.0f : 0.0f) + 1.0f / static_cast<float>(1 + i + j);
    }
  }
  return a;
}

void invertSevenTimes() {
  static const Square a = normalMatrix();
  float work[64 * kSize];
  const int length = 64 * kSize;
  int pivots[kSize];
  int info = 0;
  for (int pass = 0; pass < 7; ++pass) {
    Square copy = a;
    sgetrf_(&kSize, &kSize, copy.data(), &kSize, pivots, &info);
    sgetri_(&kSize, copy.data(), &kSize, pivots, work, &length, &info);
  }
}

}  // namespace

Competitor inversionsAlone() {
  const auto prepare = [](const Shot&, const std::vector<Frame>& frames) -> Run {
    return {[&frames] {
              for (std::size_t f = 0; f < frames.size(); ++f) invertSevenTimes();
            },
            {}};
  };
  return {"LAPACK alone", "seven inversions of 8 x 8", true, prepare};
}

Competitor framewise(const std::string& name, const std::string& settings, Fit fit) {
  const auto prepare = [fit](const Shot&, const std::vector<Frame>& frames) -> Run {
    auto fitted = std::make_shared<std::vector<Parameters>>(frames.size());
    const auto solve = [fit, fitted, &frames] {
      for (std::size_t f = 0; f < frames.size(); ++f) (*fitted)[f] = fit(frames[f]);
    };
    return {solve, [fitted] { return *fitted; }};
  };
  return {name, settings, true, prepare};
}

std::vector<Competitor> competitors() {
  std::vector<Competitor> all;
  all.push_back({"plain", "the definition in plain loops", true, preparePlain});
  all.push_back({"library", "MMatchmove::solve", true, prepareLibrary});
#ifdef CORNERPIN_BENCH_HOMOGRAPHY_FIT
  addHomographyFit(all);
#endif
#ifdef CORNERPIN_BENCH_CERES
  addCeres(all);
#endif
#ifdef CORNERPIN_BENCH_OPENCV
  addOpencv(all);
#endif
#ifdef CORNERPIN_BENCH_EIGEN
  addEigen(all);
#endif
#ifdef CORNERPIN_BENCH_CMINPACK
  addCminpack(all);
#endif
#ifdef CORNERPIN_BENCH_GSL
  addGsl(all);
#endif
  return all;
}

std::vector<std::string> absentPeers() {
  return {
#ifndef CORNERPIN_BENCH_HOMOGRAPHY_FIT
      "homography fit",
#endif
#ifndef CORNERPIN_BENCH_CERES
      "Ceres",
#endif
#ifndef CORNERPIN_BENCH_OPENCV
      "OpenCV",
#endif
#ifndef CORNERPIN_BENCH_EIGEN
      "Eigen",
#endif
#ifndef CORNERPIN_BENCH_CMINPACK
      "cminpack",
#endif
#ifndef CORNERPIN_BENCH_GSL
      "GSL",
#endif
  };
}

}  // namespace bench

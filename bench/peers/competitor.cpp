// SPDX-License-Identifier: BSD-3-Clause
#include "bench/peers/competitor.h"

#include <memory>

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

}  // namespace

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
#ifdef CORNERPIN_BENCH_ENGINE
  addEngine(all);
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
#ifndef CORNERPIN_BENCH_ENGINE
      "shot engine",
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

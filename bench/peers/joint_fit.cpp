// SPDX-License-Identifier: BSD-3-Clause
#include "bench/peers/joint_fit.h"

#include <stdexcept>

#ifdef CORNERPIN_BENCH_CERES
#include <ceres/ceres.h>

#include <array>
#include <utility>
#endif

using namespace cornerpin;

namespace bench {

#ifdef CORNERPIN_BENCH_CERES

namespace {

// Lengths are counted in these, so that all parameters are about 1.
constexpr double kUnit = 500.0;

using Transform = std::array<double, 8>;
using Place = std::array<double, 2>;

Transform transformOf(const Homography& file) {
  const Homography h = withLastOne(file);
  return {h[0][0], h[0][1],         h[0][2] / kUnit, h[1][0],
          h[1][1], h[1][2] / kUnit, h[2][0] * kUnit, h[2][1] * kUnit};
}

Homography homographyOf(const Transform& p) {
  return {
      {{p[0], p[1], p[2] * kUnit}, {p[3], p[4], p[5] * kUnit}, {p[6] / kUnit, p[7] / kUnit, 1.0}}};
}

struct Residual {
  double x, y, weight;
  template <class T>
  bool operator()(const T* p, const T* place, T* r) const {
    const T s = p[6] * place[0] + p[7] * place[1] + 1.0;
    r[0] = weight * ((p[0] * place[0] + p[1] * place[1] + p[2]) / s - x);
    r[1] = weight * ((p[3] * place[0] + p[4] * place[1] + p[5]) / s - y);
    return true;
  }
};

// The place whose image is (x, y): the base places whose images have this x, and those whose images
// have this y, are two lines, which cross there.
Point carriedBack(const Homography& h, double x, double y) {
  std::array<std::array<double, 3>, 2> line{};
  for (std::size_t j = 0; j < 3; ++j) {
    line[0][j] = h[0][j] - x * h[2][j];
    line[1][j] = h[1][j] - y * h[2][j];
  }
  const double d = line[0][0] * line[1][1] - line[0][1] * line[1][0];
  return {(line[0][1] * line[1][2] - line[0][2] * line[1][1]) / d,
          (line[0][2] * line[1][0] - line[0][0] * line[1][2]) / d};
}

std::vector<Place> placesOf(const Tracks& tracks, const std::vector<Homography>& all) {
  std::vector<Place> places(tracks.names.size(), Place{});
  std::vector<int> seen(places.size(), 0);
  for (const Observation& o : tracks.observations) {
    const auto t = static_cast<std::size_t>(o.track);
    const auto f = static_cast<std::size_t>(o.frame - tracks.firstFrame());
    const Point p = carriedBack(all[f], o.x, o.y);
    const double step = 1.0 / ++seen[t];
    places[t][0] += step * (p.x / kUnit - places[t][0]);
    places[t][1] += step * (p.y / kUnit - places[t][1]);
  }
  return places;
}

ceres::Solver::Options settings(ceres::ParameterBlockOrdering* placesFirst) {
  ceres::Solver::Options options;
  options.num_threads = 1;
  options.linear_solver_type = ceres::SPARSE_SCHUR;
  options.linear_solver_ordering.reset(placesFirst);
  options.max_num_iterations = 200;
  options.function_tolerance = 1e-12;
  options.parameter_tolerance = 1e-10;
  options.logging_type = ceres::SILENT;
  return options;
}

}  // namespace

bool hasJointFit() { return true; }

std::vector<Homography> jointFit(const Tracks& tracks, int base,
                                 const std::vector<Homography>& given) {
  std::vector<Homography> start = given;
  start[static_cast<std::size_t>(base - tracks.firstFrame())] = kIdentity;
  std::vector<Place> places = placesOf(tracks, start);
  std::vector<Transform> transforms;
  transforms.reserve(start.size());
  for (const Homography& h : start) transforms.push_back(transformOf(h));
  const auto at = [&](int frame) {
    return transforms[static_cast<std::size_t>(frame - tracks.firstFrame())].data();
  };
  ceres::Problem problem;
  auto* order = new ceres::ParameterBlockOrdering;
  for (const Observation& o : tracks.observations) {
    using Cost = ceres::AutoDiffCostFunction<Residual, 2, 8, 2>;
    double* place = places[static_cast<std::size_t>(o.track)].data();
    problem.AddResidualBlock(new Cost(new Residual{o.x / kUnit, o.y / kUnit, o.weight}), nullptr,
                             at(o.frame), place);
    order->AddElementToGroup(place, 0);
    order->AddElementToGroup(at(o.frame), 1);
  }
  problem.SetParameterBlockConstant(at(base));
  ceres::Solver::Summary summary;
  ceres::Solve(settings(order), &problem, &summary);
  if (summary.termination_type != ceres::CONVERGENCE) throw std::runtime_error(summary.message);
  for (std::size_t f = 0; f < start.size(); ++f) start[f] = homographyOf(transforms[f]);
  return start;
}

#else

bool hasJointFit() { return false; }

std::vector<Homography> jointFit(const Tracks&, int, const std::vector<Homography>&) {
  throw std::logic_error("built without Ceres");
}

#endif

}  // namespace bench

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/smooth_path.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "shot/plane/median.h"
#include "shot/time/path_equations.h"

namespace cornerpin {

namespace {

constexpr std::size_t kFewest = 8;
// Times the median. Of jitter alone none is as large in any shot; a lower limit takes the path
// apart wherever a motion is quick.
constexpr double kJump = 8.0;
// Strengths from next to nothing, for motions that jitter of their own, to paths that bend over
// more than a hundred frames.
constexpr double kWeakest = 1.0 / 16777216.0;
constexpr double kStep = 4.0;
constexpr int kStrengths = 27;
constexpr double kExact = 1e8;  // the weight of an exact point, that of the median one being 1

// The third derivative that four points have: factors to multiply them with.
std::array<double, 4> thirdDerivative(const PathPoint* p) {
  std::array<double, 4> factors{};
  for (std::size_t i = 0; i < 4; ++i) {
    double product = 1.0;
    for (std::size_t j = 0; j < 4; ++j) {
      if (j != i) product *= static_cast<double>(p[i].frame) - p[j].frame;
    }
    factors[i] = 6.0 / product;
  }
  return factors;
}

// How far the four points are from a parabola, in its root mean square under their errors.
double sizeOf(const std::array<double, 4>& factors, const PathPoint* p) {
  Point bend;
  double variance = 0.0;
  for (std::size_t i = 0; i < 4; ++i) {
    bend.x += factors[i] * p[i].place.x;
    bend.y += factors[i] * p[i].place.y;
    const double error = factors[i] * p[i].error;
    variance += error * error;
  }
  return std::sqrt(squaredDistance(bend, {}) / variance);
}

// Tukey's weight: 1 for what is like the others, 0 for what stands out.
double weightOf(double size, double limit) {
  if (!(size < limit)) return 0.0;
  const double u = size / limit;
  const double rest = 1.0 - u * u;
  return rest * rest;
}

std::vector<double> weightsOf(const std::vector<PathPoint>& path) {
  std::vector<double> errors;
  for (const PathPoint& p : path) {
    if (p.error > 0.0) errors.push_back(p.error);
  }
  const double usual = upperMedian(errors);
  std::vector<double> weights;
  for (const PathPoint& p : path) {
    const double ratio = usual / p.error;
    weights.push_back(p.error > 0.0 ? std::min(ratio * ratio, kExact) : kExact);
  }
  return weights;
}

// The harmonic mean of four points' weights.
double worthOf(const double* weights) {
  return 4.0 / (1.0 / weights[0] + 1.0 / weights[1] + 1.0 / weights[2] + 1.0 / weights[3]);
}

// Weighted like the points, so that the path is as stiff where these are uncertain as elsewhere.
std::vector<PathBend> bendsOf(const std::vector<PathPoint>& path,
                              const std::vector<double>& weights) {
  std::vector<PathBend> bends(path.size() - 3);
  std::vector<double> sizes;
  for (std::size_t j = 0; j < bends.size(); ++j) {
    bends[j].factors = thirdDerivative(&path[j]);
    sizes.push_back(sizeOf(bends[j].factors, &path[j]));
  }
  const double limit = kJump * upperMedian(sizes);
  for (std::size_t j = 0; j < bends.size(); ++j) {
    const double span = static_cast<double>(path[j + 3].frame) - path[j].frame;
    bends[j].weight = weightOf(sizes[j], limit) * worthOf(&weights[j]) * span / 3.0;
  }
  return bends;
}

// What cross-validation expects of a solution, up to a factor; the less, the better.
double scoreOf(const PathEquations& equations, const std::vector<double>& weights,
               const std::vector<Point>& given, const std::vector<Point>& found) {
  const std::vector<double> variances = equations.variances();
  double squares = 0.0;
  double rest = 0.0;  // what the solution is less free than the points
  for (std::size_t i = 0; i < given.size(); ++i) {
    squares += weights[i] * squaredDistance(given[i], found[i]);
    rest += 1.0 - weights[i] * variances[i];
  }
  return squares / (rest * rest);
}

}  // namespace

std::vector<Point> smoothPath(const std::vector<PathPoint>& path) {
  std::vector<Point> given;
  given.reserve(path.size());
  for (const PathPoint& p : path) given.push_back(p.place);
  std::vector<Point> best = given;
  if (path.size() < kFewest) return best;
  const std::vector<double> weights = weightsOf(path);
  const std::vector<PathBend> bends = bendsOf(path, weights);
  double least = std::numeric_limits<double>::infinity();
  double strength = kWeakest;
  for (int i = 0; i < kStrengths; ++i, strength *= kStep) {
    const PathEquations equations(weights, bends, strength);
    std::vector<Point> found = equations.solve(given);
    const double score = scoreOf(equations, weights, given, found);
    if (!(score < least)) continue;
    least = score;
    best = std::move(found);
  }
  return best;
}

}  // namespace cornerpin

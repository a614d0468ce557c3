// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/smooth_path.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "tests/shot/random.h"

using namespace cornerpin;

namespace {

using Motion = std::function<Point(double)>;

Point wave(double t) { return {3.0 * t + 40.0 * std::sin(t / 9.0), 25.0 * std::cos(t / 14.0)}; }

// Points of a motion with an error of 0.5 to 1 px each.
std::vector<PathPoint> noisy(const Motion& motion, int count, std::uint32_t seed) {
  made::Random random(seed);
  std::vector<PathPoint> path;
  for (int f = 0; f < count; ++f) {
    const double error = random.real(0.5, 1.0);
    const double dx = random.noise(error / std::sqrt(2.0));
    const double dy = random.noise(error / std::sqrt(2.0));
    const Point p = motion(f);
    path.push_back({f, {p.x + dx, p.y + dy}, error});
  }
  return path;
}

double distance(Point a, Point b) { return std::sqrt(squaredDistance(a, b)); }

double rms(const std::vector<Point>& places, const Motion& motion) {
  double squares = 0.0;
  for (std::size_t f = 0; f < places.size(); ++f) {
    squares += squaredDistance(places[f], motion(static_cast<double>(f)));
  }
  return std::sqrt(squares / static_cast<double>(places.size()));
}

std::vector<Point> placesOf(const std::vector<PathPoint>& path) {
  std::vector<Point> places;
  for (const PathPoint& p : path) places.push_back(p.place);
  return places;
}

// The same by matrices in full: among strengths a factor 4 apart the solution that generalised
// cross-validation likes best.
std::vector<Point> byMatricesInFull(const std::vector<PathPoint>& path) {
  const auto n = static_cast<Eigen::Index>(path.size());
  Eigen::MatrixXd y(n, 2);
  Eigen::VectorXd variances(n);
  std::vector<double> errors;
  for (Eigen::Index i = 0; i < n; ++i) {
    const PathPoint& p = path[static_cast<std::size_t>(i)];
    y.row(i) << p.place.x, p.place.y;
    variances(i) = p.error * p.error;
    errors.push_back(p.error);
  }
  std::sort(errors.begin(), errors.end());
  const double usual = errors[errors.size() / 2];
  const Eigen::VectorXd w = usual * usual * variances.cwiseInverse();
  // Rows that give the third derivative of the cubic through four points.
  Eigen::MatrixXd d = Eigen::MatrixXd::Zero(n - 3, n);
  Eigen::VectorXd span(n - 3);
  Eigen::VectorXd worth(n - 3);
  for (Eigen::Index j = 0; j + 3 < n; ++j) {
    Eigen::Matrix4d powers;
    for (Eigen::Index i = 0; i < 4; ++i) {
      const double t =
          path[static_cast<std::size_t>(j + i)].frame - path[static_cast<std::size_t>(j)].frame;
      powers.row(i) << 1, t, t * t, t * t * t;
      if (i == 3) span(j) = t / 3.0;
    }
    d.row(j).segment(j, 4) = 6.0 * powers.inverse().row(3);
    worth(j) = usual * usual / variances.segment(j, 4).mean();
  }
  const Eigen::VectorXd deviations = (d.cwiseAbs2() * variances).cwiseSqrt();
  const Eigen::VectorXd sizes = (d * y).rowwise().norm().cwiseQuotient(deviations);
  std::vector<double> sorted(sizes.data(), sizes.data() + sizes.size());
  std::sort(sorted.begin(), sorted.end());
  const Eigen::ArrayXd u = (sizes / (8.0 * sorted[sorted.size() / 2])).array().min(1.0);
  const Eigen::VectorXd v = (1.0 - u * u).square().matrix().cwiseProduct(span).cwiseProduct(worth);
  double least = std::numeric_limits<double>::infinity();
  Eigen::MatrixXd best;
  for (int power = -12; power < 15; ++power) {
    Eigen::MatrixXd a = std::pow(4.0, power) * d.transpose() * v.asDiagonal() * d;
    a += w.asDiagonal();
    const Eigen::MatrixXd hat = a.ldlt().solve(Eigen::MatrixXd(w.asDiagonal()));
    const Eigen::MatrixXd x = hat * y;
    const double rest = static_cast<double>(n) - hat.trace();
    const double score = w.dot((x - y).rowwise().squaredNorm()) / (rest * rest);
    if (score < least) best = x;
    least = std::min(least, score);
  }
  std::vector<Point> places;
  for (Eigen::Index i = 0; i < n; ++i) places.push_back({best(i, 0), best(i, 1)});
  return places;
}

}  // namespace

// With a gap, and errors that grow thirtyfold.
TEST(SmoothPath, IsTheOneOfMatricesInFull) {
  for (std::uint32_t seed : {1u, 2u, 3u}) {
    made::Random random(seed);
    std::vector<PathPoint> path = noisy(wave, 60, seed);
    for (PathPoint& p : path) {
      p.error = 0.05 * (1.0 + 0.5 * p.frame) * random.real(0.7, 1.4);
      const double dx = random.noise(p.error);
      p.place.x = wave(p.frame).x + dx;
    }
    path.erase(path.begin() + 20, path.begin() + 23);
    const std::vector<Point> expected = byMatricesInFull(path);
    const std::vector<Point> found = smoothPath(path);
    for (std::size_t f = 0; f < path.size(); ++f) {
      EXPECT_LT(distance(found[f], expected[f]), 1e-6) << path[f].frame;
    }
  }
}

TEST(SmoothPath, TakesJitterOutOfAMotion) {
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    const std::vector<PathPoint> path = noisy(wave, 120, seed);
    EXPECT_LT(rms(smoothPath(path), wave), 0.6 * rms(placesOf(path), wave)) << seed;
  }
}

// A shaking of 20 px that takes seven frames from side to side and back.
TEST(SmoothPath, LeavesAMotionThatIsFast) {
  const auto motion = [](double t) { return Point{20.0 * std::sin(0.9 * t), 9.0 * std::cos(t)}; };
  for (std::uint32_t seed = 1; seed <= 5; ++seed) {
    const std::vector<PathPoint> path = noisy(motion, 80, seed);
    EXPECT_LT(rms(smoothPath(path), motion), 1.02 * rms(placesOf(path), motion)) << seed;
  }
}

TEST(SmoothPath, KeepsAParabola) {
  const auto motion = [](double t) { return Point{1.0 + 2.0 * t, 0.25 * t * t - 7.0 * t}; };
  std::vector<PathPoint> path;
  for (int f = 0; f < 30; f += f % 7 == 3 ? 4 : 1) path.push_back({f, motion(f), 1.0 + f % 3});
  const std::vector<Point> found = smoothPath(path);
  for (std::size_t i = 0; i < path.size(); ++i) {
    EXPECT_LT(distance(found[i], path[i].place), 1e-9);
  }
}

// Beside the cut the path is as good as at its ends.
TEST(SmoothPath, StopsAtACut) {
  const auto motion = [](double t) {
    const Point p = wave(t);
    return t < 30 ? p : Point{700.0 - p.x, p.y + 90.0};
  };
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    const std::vector<PathPoint> path = noisy(motion, 60, seed);
    const std::vector<Point> found = smoothPath(path);
    for (std::size_t f : {28u, 29u, 30u, 31u}) {
      EXPECT_LT(distance(found[f], motion(static_cast<double>(f))), 2.0) << f << ", " << seed;
    }
    EXPECT_LT(rms(found, motion), 0.8 * rms(placesOf(path), motion)) << seed;
  }
}

TEST(SmoothPath, IsNotDrawnByOneFrameThatIsFarOff) {
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    std::vector<PathPoint> path = noisy(wave, 60, seed);
    path[30].place.x += 200.0;
    const std::vector<Point> found = smoothPath(path);
    for (std::size_t f : {27u, 28u, 29u, 31u, 32u, 33u}) {
      EXPECT_LT(distance(found[f], wave(static_cast<double>(f))), 2.0) << f << ", " << seed;
    }
  }
}

TEST(SmoothPath, GoesByTheBetterPoints) {
  made::Random random(8);
  std::vector<PathPoint> path = noisy(wave, 100, 8);
  double good = 0.0;
  for (std::size_t f = 0; f < 100; ++f) {
    const double error = f % 2 == 0 ? 0.05 : 2.0;
    const Point p = wave(static_cast<double>(f));
    const double dx = random.noise(error / std::sqrt(2.0));
    const double dy = random.noise(error / std::sqrt(2.0));
    path[f].place = {p.x + dx, p.y + dy};
    path[f].error = error;
  }
  const std::vector<Point> found = smoothPath(path);
  for (std::size_t f = 1; f < 99; f += 2) {
    good += squaredDistance(found[f], wave(static_cast<double>(f)));
  }
  EXPECT_LT(std::sqrt(good / 49.0), 0.2);
}

TEST(SmoothPath, GoesThroughExactPoints) {
  std::vector<PathPoint> path = noisy(wave, 60, 3);
  path[20].error = 0.0;
  path[20].place = wave(20);
  EXPECT_LT(distance(smoothPath(path)[20], wave(20)), 1e-3);
}

TEST(SmoothPath, LeavesFewPointsAsTheyAre) {
  const std::vector<PathPoint> path = noisy(wave, 7, 3);
  const std::vector<Point> found = smoothPath(path);
  for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(distance(found[i], path[i].place), 0.0);
  EXPECT_TRUE(smoothPath({}).empty());
}

TEST(SmoothPath, ReadsRisingFramesWithGaps) {
  double before = 0.0;
  double after = 0.0;
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    std::vector<PathPoint> path = noisy(wave, 100, seed);
    path.erase(path.begin() + 40, path.begin() + 52);
    const std::vector<Point> found = smoothPath(path);
    for (std::size_t i = 0; i < path.size(); ++i) {
      before += squaredDistance(path[i].place, wave(path[i].frame));
      after += squaredDistance(found[i], wave(path[i].frame));
    }
  }
  EXPECT_LT(after, 0.4 * before);
}

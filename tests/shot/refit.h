// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_REFIT_H
#define TESTS_SHOT_REFIT_H

#include <Eigen/Dense>
#include <vector>

#include "shot/fit/matches.h"

// Weighted least-squares fits to compare with: dense Gauss-Newton steps by QR, in coordinates
// divided by a length, from a start near the solution.
namespace refit {

constexpr double kLength = 300.0;

inline Eigen::Vector2d image(const Eigen::VectorXd& x, Eigen::Vector2d p) {
  const double s = x[6] * p.x() + x[7] * p.y() + 1;
  return {(x[0] * p.x() + x[1] * p.y() + x[2]) / s, (x[3] * p.x() + x[4] * p.y() + x[5]) / s};
}

inline Eigen::VectorXd parameters(const cornerpin::Homography& h) {
  Eigen::VectorXd x(8);
  x << h[0][0], h[0][1], h[0][2] / kLength, h[1][0], h[1][1], h[1][2] / kLength, h[2][0] * kLength,
      h[2][1] * kLength;
  return x / h[2][2];
}

inline cornerpin::Homography homography(const Eigen::VectorXd& x) {
  return {{{x[0], x[1], x[2] * kLength},
           {x[3], x[4], x[5] * kLength},
           {x[6] / kLength, x[7] / kLength, 1.0}}};
}

// `free`: as many columns as the model has parameters; x moves by free * step.
inline Eigen::VectorXd fit(const std::vector<cornerpin::Match>& matches, Eigen::VectorXd x,
                           const Eigen::MatrixXd& free) {
  const auto n = static_cast<Eigen::Index>(matches.size());
  Eigen::MatrixXd j(2 * n, 8);
  Eigen::VectorXd r(2 * n);
  for (int iteration = 0; iteration < 30; ++iteration) {
    for (Eigen::Index i = 0; i < n; ++i) {
      const cornerpin::Match& m = matches[static_cast<std::size_t>(i)];
      const Eigen::Vector2d p(m.base.x / kLength, m.base.y / kLength);
      const double g = m.weight / (x[6] * p.x() + x[7] * p.y() + 1);
      const Eigen::Vector2d q = image(x, p);
      j.row(2 * i) << g * p.x(), g * p.y(), g, 0, 0, 0, -g * q.x() * p.x(), -g * q.x() * p.y();
      j.row(2 * i + 1) << 0, 0, 0, g * p.x(), g * p.y(), g, -g * q.y() * p.x(), -g * q.y() * p.y();
      r[2 * i] = m.weight * (m.present.x / kLength - q.x());
      r[2 * i + 1] = m.weight * (m.present.y / kLength - q.y());
    }
    const Eigen::VectorXd step = free * (j * free).colPivHouseholderQr().solve(r);
    x += step;
    if (step.norm() < 1e-13) break;
  }
  return x;
}

inline Eigen::MatrixXd projectiveDirections() { return Eigen::MatrixXd::Identity(8, 8); }
inline Eigen::MatrixXd affineDirections() { return Eigen::MatrixXd::Identity(8, 6); }
inline Eigen::MatrixXd similarityDirections() {
  Eigen::MatrixXd d = Eigen::MatrixXd::Zero(8, 4);
  d(0, 0) = d(4, 0) = 1;
  d(1, 1) = -1;
  d(3, 1) = 1;
  d(2, 2) = d(5, 3) = 1;
  return d;
}
inline Eigen::MatrixXd translationDirections() {
  Eigen::MatrixXd d = Eigen::MatrixXd::Zero(8, 2);
  d(2, 0) = d(5, 1) = 1;
  return d;
}

inline cornerpin::Homography fit(const std::vector<cornerpin::Match>& matches,
                                 const cornerpin::Homography& start,
                                 const Eigen::MatrixXd& free = projectiveDirections()) {
  return homography(fit(matches, parameters(start), free));
}

}  // namespace refit

#endif

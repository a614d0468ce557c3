// SPDX-License-Identifier: BSD-3-Clause
#include <Eigen/Core>
#include <unsupported/Eigen/NonLinearOptimization>

#include "bench/peers/competitor.h"

namespace bench {

namespace {

struct Function {
  const Frame& frame;
  int inputs() const { return 8; }
  int values() const { return 2 * frame.count(); }
  int operator()(const Eigen::VectorXd& p, Eigen::VectorXd& r) const {
    evaluate(frame, p.data(), r.data(), nullptr, 0, 0);
    return 0;
  }
  int df(const Eigen::VectorXd& p, Eigen::MatrixXd& jacobian) const {
    residuals.resize(values());
    evaluate(frame, p.data(), residuals.data(), jacobian.data(), 1, values());
    return 0;
  }
  mutable Eigen::VectorXd residuals;  // not asked for where derivatives are
};

Parameters fit(const Frame& frame) {
  Function function{frame, {}};
  Eigen::LevenbergMarquardt<Function> solver(function);
  Eigen::VectorXd x = Eigen::Map<const Eigen::VectorXd>(frame.start.data(), 8);
  solver.minimize(x);
  Parameters p;
  std::copy(x.data(), x.data() + 8, p.begin());
  return p;
}

}  // namespace

void addEigen(std::vector<Competitor>& all) {
  const std::string version = std::to_string(EIGEN_WORLD_VERSION) + "." +
                              std::to_string(EIGEN_MAJOR_VERSION) + "." +
                              std::to_string(EIGEN_MINOR_VERSION);
  all.push_back(framewise(
      "Eigen LM",
      "Eigen " + version + ": NonLinearOptimization, default options, derivatives by hand", fit));
}

}  // namespace bench

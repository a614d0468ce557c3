// SPDX-License-Identifier: BSD-3-Clause
#include <ceres/ceres.h>
#include <ceres/tiny_solver.h>
#include <ceres/tiny_solver_autodiff_function.h>

#include "bench/peers/competitor.h"

namespace bench {

namespace {

struct TrackResidual {
  const Frame* frame;
  int track;
  template <class T>
  bool operator()(const T* p, T* r) const {
    residual(*frame, track, p, r);
    return true;
  }
};

// As the manual shows it: one automatically differentiated block per track.
Parameters fitByDefault(const Frame& frame) {
  Parameters p = frame.start;
  ceres::Problem problem;
  for (int i = 0; i < frame.count(); ++i) {
    using Cost = ceres::AutoDiffCostFunction<TrackResidual, 2, 8>;
    problem.AddResidualBlock(new Cost(new TrackResidual{&frame, i}), nullptr, p.data());
  }
  ceres::Solver::Options options;
  ceres::Solver::Summary summary;
  options.num_threads = 1;
  ceres::Solve(options, &problem, &summary);
  return p;
}

class FrameCost : public ceres::CostFunction {
 public:
  explicit FrameCost(const Frame& frame) : frame_(frame) {
    mutable_parameter_block_sizes()->push_back(8);
    set_num_residuals(2 * frame.count());
  }
  bool Evaluate(const double* const* p, double* r, double** jacobians) const override {
    evaluate(frame_, p[0], r, jacobians == nullptr ? nullptr : jacobians[0], 8, 1);
    return true;
  }

 private:
  const Frame& frame_;
};

// One block for the whole frame, derivatives by hand, 8 x 8 normal equations.
Parameters fitTuned(const Frame& frame) {
  Parameters p = frame.start;
  FrameCost function(frame);
  ceres::Problem::Options ownership;
  ownership.cost_function_ownership = ceres::DO_NOT_TAKE_OWNERSHIP;
  ownership.disable_all_safety_checks = true;
  ceres::Problem problem(ownership);
  problem.AddResidualBlock(&function, nullptr, p.data());
  ceres::Solver::Options options;
  options.num_threads = 1;
  options.linear_solver_type = ceres::DENSE_NORMAL_CHOLESKY;
  options.logging_type = ceres::SILENT;
  ceres::Solver::Summary summary;
  ceres::Solve(options, &problem, &summary);
  return p;
}

struct TinyFrame {
  using Scalar = double;
  enum { NUM_RESIDUALS = Eigen::Dynamic, NUM_PARAMETERS = 8 };
  const Frame& frame;
  int NumResiduals() const { return 2 * frame.count(); }
  bool operator()(const double* p, double* r, double* jacobian) const {
    evaluate(frame, p, r, jacobian, 1, NumResiduals());
    return true;
  }
};

struct AllResiduals {
  const Frame& frame;
  int NumResiduals() const { return 2 * frame.count(); }
  template <class T>
  bool operator()(const T* p, T* r) const {
    for (int i = 0; i < frame.count(); ++i) residual(frame, i, p, r + 2 * i);
    return true;
  }
};

// The solver is kept: it keeps its matrices from frame to frame.
template <class Function>
Parameters fitTiny(const Frame& frame, const Function& function) {
  static ceres::TinySolver<Function> solver;
  Eigen::Matrix<double, 8, 1> x(frame.start.data());
  solver.Solve(function, &x);
  Parameters p;
  std::copy(x.data(), x.data() + 8, p.begin());
  return p;
}

Parameters fitTinyByHand(const Frame& frame) { return fitTiny(frame, TinyFrame{frame}); }

Parameters fitTinyAutomatically(const Frame& frame) {
  const AllResiduals all{frame};
  using Function = ceres::TinySolverAutoDiffFunction<AllResiduals, Eigen::Dynamic, 8>;
  return fitTiny(frame, Function(all));
}

}  // namespace

void addCeres(std::vector<Competitor>& all) {
  const std::string version = "Ceres " CERES_VERSION_STRING ": ";
  all.push_back(
      framewise("Ceres default", version + "default options, automatic derivatives", fitByDefault));
  all.push_back(framewise(
      "Ceres tuned", version + "DENSE_NORMAL_CHOLESKY, one block, derivatives by hand", fitTuned));
  all.push_back(framewise("Ceres TinySolver", version + "default options, derivatives by hand",
                          fitTinyByHand));
  all.push_back(framewise("Ceres TinySolver auto",
                          version + "default options, automatic derivatives",
                          fitTinyAutomatically));
}

}  // namespace bench

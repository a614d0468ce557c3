// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove.h"

#include "cornerpin/solver/lm_solver.h"
#include "cornerpin/solver/matchmove_problem.h"
#include "cornerpin/solver/same_layout.h"

template class MArray<MMatchmoveTrack>;
template class MArray<MGenMatrix<float>>;

using Matrix = MGenMatrix<float>;

// The problem and solver of one frame after another, with room for all active tracks, so that a
// frame allocates nothing but its output.
struct MMatchmove::FrameFit {
  explicit FrameFit(MMatchmove* scene)
      : problem(scene), goal(2 * scene->trackCount), start(8), y(2 * scene->trackCount) {
    solver.setProblem(&problem);
    solver.driven_ = &problem;
    solver.scratch_.values = MGenVector<float>(2 * scene->trackCount);
    solver.scratch_.difference = MGenVector<float>(2 * scene->trackCount);
  }

  // Sizes everything for the frame's active tracks, in the storage that is there.
  void select(int frame) {
    problem.select(frame);
    problem.y = y.view(0, 2 * problem.activeCount);
  }

  MMatchmoveProblem problem;
  MLMSolver solver;
  MGenVector<float> goal;
  MGenVector<float> start;
  MGenVector<float> y;
};

void MMatchmove::solve() {
  setupOutputs();
  solveBaseFrame();
  FrameFit fit(this);
  for (int f = baseFrame + 1; f < frameCount; ++f) {
    outputs[f] = outputs[f - 1].copy(Matrix::ColumnMajor);
    solveFrame(f, fit);
  }
  for (int f = baseFrame - 1; f >= 0; --f) {
    outputs[f] = outputs[f + 1].copy(Matrix::ColumnMajor);
    solveFrame(f, fit);
  }
}

void MMatchmove::setupOutputs() {
  trackCount = tracks.size();
  frameCount = tracks[0].weights.length;  // fails without tracks, before any output changes
  cornerpin::internal::resizeKeepingLayout(basePositions, trackCount, 2);
  baseWeights.resize(trackCount);
  outputs.resize(frameCount);
}

void MMatchmove::solveBaseFrame() {
  Matrix identity(3, 3, Matrix::ColumnMajor);
  for (int i = 0; i < 3; ++i) identity(i, i) = 1.0f;
  outputs[baseFrame] = identity;
  for (int i = 0; i < baseWeights.length; ++i) baseWeights[i] = 0.0f;
  for (int i = 0; i < trackCount; ++i) {
    baseWeights[i] = tracks[i].weights[baseFrame];
    basePositions(i, 0) = tracks[i].positions(baseFrame, 0);
    basePositions(i, 1) = tracks[i].positions(baseFrame, 1);
  }
}

void MMatchmove::solveFrame(int frame) {
  FrameFit fit(this);
  solveFrame(frame, fit);
}

void MMatchmove::solveFrame(int frame, FrameFit& fit) {
  fit.select(frame);
  MMatchmoveProblem& problem = fit.problem;
  if (problem.activeCount == 0) return;
  MGenVector<float> goal = fit.goal.view(0, 2 * problem.activeCount);
  problem.packGoal(goal);
  problem.xToVector(outputs[frame], fit.start);
  fit.solver.setGoal(goal);
  fit.solver.setState(fit.start);
  fit.solver.solve();
  Matrix& output = outputs[frame];
  if (!output.ownsBuffer()) output = output.copy(Matrix::ColumnMajor);
  problem.xToMatrix(fit.solver.getState(), output);
}

void MMatchmove::project(int frame, const MGenVector<float>& p, MGenVector<float>& out) const {
  const Matrix& h = outputs[frame];
  const float x = p[0];
  const float y = p[1];
  const auto row = [&](int r) { return (x * h(r, 0) + y * h(r, 1)) + h(r, 2); };
  const float u = row(0);
  const float v = row(1);
  const float w = row(2);
  out.resize(2);
  out[0] = u / w;
  out[1] = v / w;
}

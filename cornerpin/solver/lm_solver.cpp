// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/lm_solver.h"

#include <algorithm>
#include <cmath>

#include "cornerpin/foundation/elementwise.h"
#include "cornerpin/foundation/exception.h"
#include "cornerpin/foundation/norm.h"
#include "cornerpin/foundation/shared_buffer.h"
#include "cornerpin/solver/kernels/frame_kernels.h"
#include "cornerpin/solver/lm_iteration.h"
#include "cornerpin/solver/normal_system.h"

namespace {

// The Euclidean distance over y's length. `room` is replaced when it is too short.
float distance(const MGenVector<float>& y, const MGenVector<float>& goal, MGenVector<float>& room) {
  if (room.length < y.length) room = MGenVector<float>(y.length);
  static const auto op = [](float a, float b) { return a - b; };
  MGenVector<float> difference = room.view(0, y.length);
  cornerpin::internal::forEachElement(difference, y, goal, op);
  return std::sqrt(_vector_norm2(room.data, y.length));
}

// One solve of any problem, on the solver's own vectors.
class ProblemFit {
 public:
  explicit ProblemFit(MLMSolver& solver) : solver_(solver) {}

  float start();
  void formSystem(bool moved);
  float tryStep(float damping);
  void accept();

 private:
  bool formSystemOfEight();
  void formSystemPlainly();
  MGenVector<float>& freeCandidate();

  MLMSolver& solver_;
  cornerpin::internal::NormalSystem system_;
  MGenVector<float> candidates_[2];
  MGenVector<float>* candidate_ = nullptr;
  MGenVector<float> candidateValues_;
  MGenVector<float> room_;
};

float ProblemFit::start() {
  MGenVector<float>& values = solver_.values;
  solver_.problem->setX(solver_.state);
  solver_.problem->evalY(values);
  // No other vector shall see what is written into the values.
  if (!values.ownsBuffer()) values = values.copy();
  return distance(values, solver_.goal, room_);
}

// The Jacobian is asked for only where the problem holds `state`. The system is formed in every
// pass: a client may share the storage of the Jacobian or the goal and change it.
void ProblemFit::formSystem(bool moved) {
  if (moved) solver_.problem->evalDy(solver_.jacobian);
  system_.resize(solver_.stateSize);
  if (!formSystemOfEight()) formSystemPlainly();
}

// Eight parameters and contiguous rows. False when it is not so.
bool ProblemFit::formSystemOfEight() {
  constexpr int n = cornerpin::kernels::kParameters;
  const MGenMatrix<float>& jacobian = solver_.jacobian;
  const MGenVector<float>& goal = solver_.goal;
  const MGenVector<float>& values = solver_.values;
  const int m = solver_.goalSize;
  const bool contiguous =
      jacobian.colStride == 1 && jacobian.rowStride == n && goal.stride == 1 && values.stride == 1;
  const bool inRange =
      jacobian.rows >= m && jacobian.cols == n && goal.length >= m && values.length >= m;
  if (solver_.stateSize != n || !contiguous || !inRange) return false;
  double triangle[n * n];
  cornerpin::kernels::frameKernels().normalSums(jacobian.data, goal.data, values.data, m, triangle,
                                                system_.gradient());
  system_.setTriangle(triangle);
  return true;
}

void ProblemFit::formSystemPlainly() {
  const MGenMatrix<float>& jacobian = solver_.jacobian;
  const int n = solver_.stateSize;
  // The products are formed in float and summed in double.
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j <= i; ++j) {
      double sum = 0.0;
      for (int k = 0; k < solver_.goalSize; ++k) {
        const float term = jacobian(k, j) * jacobian(k, i);
        sum += static_cast<double>(term);
        cornerpin::internal::throwUnlessFinite(sum);
      }
      system_.setElement(i, j, sum);
    }
  }
  // The differences are formed in float, the products and sums in double; every sum is stored as
  // float before the next value is added.
  float* const g = system_.gradient();
  std::fill(g, g + n, 0.0f);
  for (int k = 0; k < solver_.goalSize; ++k) {
    for (int j = 0; j < n; ++j) {
      const float difference = solver_.goal[k] - solver_.values[k];
      const double term = static_cast<double>(jacobian(k, j)) * static_cast<double>(difference);
      g[j] = static_cast<float>(static_cast<double>(g[j]) + term);
    }
  }
}

float ProblemFit::tryStep(float damping) {
  const MGenVector<float>& state = solver_.state;
  const MGenVector<float>& step = system_.step(damping, solver_.trust);
  candidate_ = &freeCandidate();
  for (int i = 0; i < state.length; ++i) candidate_->data[i] = step[i] + state[i];
  candidateValues_ = MGenVector<float>();
  solver_.problem->setX(*candidate_);
  solver_.problem->evalY(candidateValues_);
  return distance(candidateValues_, solver_.goal, room_);
}

// A vector as long as `state` that the problem does not hold: it may keep the last candidate.
MGenVector<float>& ProblemFit::freeCandidate() {
  const bool isHeld = cornerpin::internal::holderCount(candidates_[0].buffer) > 1;
  MGenVector<float>& candidate = candidates_[isHeld ? 1 : 0];
  if (candidate.length != solver_.state.length || !candidate.ownsBuffer()) {
    candidate = MGenVector<float>(solver_.state.length);
  }
  return candidate;
}

void ProblemFit::accept() {
  solver_.state.set(*candidate_);
  solver_.values.set(candidateValues_);
}

}  // namespace

MLMProblem::~MLMProblem() = default;

MLMSolver::~MLMSolver() = default;

void MLMSolver::setProblem(MLMProblem* p) { problem = p; }

void MLMSolver::setState(const MGenVector<float>& x) {
  state = x;
  stateSize = x.length;
}

void MLMSolver::setGoal(const MGenVector<float>& g) {
  goal = g;
  goalSize = g.length;
}

void MLMSolver::setTrust(const MGenVector<float>& t) { trust = t; }

float MLMSolver::computeEpsilon(const MGenVector<float>& y) const {
  MGenVector<float> room;
  return distance(y, goal, room);
}

void MLMSolver::solve() {
  if (problem == nullptr) throw LvIllegalArgumentException("MLMSolver::solve");
  ProblemFit fit(*this);
  cornerpin::internal::iterate(*this, fit);
}

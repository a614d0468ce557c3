// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/lm_solver.h"

#include <algorithm>
#include <cmath>

#include "cornerpin/foundation/elementwise.h"
#include "cornerpin/foundation/exception.h"
#include "cornerpin/foundation/norm.h"
#include "cornerpin/foundation/shared_buffer.h"
#include "cornerpin/linalg/invert_in_place.h"
#include "cornerpin/solver/kernels/frame_kernels.h"
#include "cornerpin/solver/matchmove_problem.h"

using cornerpin::internal::holderCount;

namespace {

constexpr float kInitialDamping = 0.01f;

[[noreturn]] void throwNan() { throw LvException("nan"); }

inline void throwUnlessFinite(double value) {
  if (!std::isfinite(value)) throwNan();
}

// Makes `scratch` a vector of n elements, of any values, on a buffer of its own.
void reserve(MGenVector<float>& scratch, int n) {
  if (scratch.length != n || !scratch.ownsBuffer()) scratch = MGenVector<float>(n);
}

void reserve(MGenMatrix<float>& scratch, int n) {
  if (scratch.rows != n) scratch = MGenMatrix<float>(n, n, MGenMatrix<float>::ColumnMajor);
}

// Damping is multiplicative, on the diagonal only.
void damp(MGenMatrix<float>& a, float damping) {
  const double factor = static_cast<double>(damping) + 1.0;
  for (std::ptrdiff_t i = 0; i < a.rows; ++i) {
    float& diagonal = a.data[i * (a.rows + 1)];
    diagonal = static_cast<float>(static_cast<double>(diagonal) * factor);
    throwUnlessFinite(static_cast<double>(diagonal));
  }
}

// result = a * x, each row's sum in float from left to right, starting at 0; all rows at once.
void multiply(const MGenMatrix<float>& a, const MGenVector<float>& x, MGenVector<float>& result) {
  const std::ptrdiff_t n = a.rows;
  std::fill(result.data, result.data + n, 0.0f);
  for (std::ptrdiff_t j = 0; j < n; ++j) {
    for (std::ptrdiff_t i = 0; i < n; ++i) result.data[i] += a.data[i + j * n] * x.data[j];
  }
}

// The Euclidean distance over y's length. `room` is replaced when it is too short.
float distance(const MGenVector<float>& y, const MGenVector<float>& goal, MGenVector<float>& room) {
  if (room.length < y.length) room = MGenVector<float>(y.length);
  static const auto op = [](float a, float b) { return a - b; };
  MGenVector<float> difference = room.view(0, y.length);
  cornerpin::internal::forEachElement(difference, y, goal, op);
  return std::sqrt(_vector_norm2(room.data, y.length));
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

// Gives `values` storage that no other vector sees.
void MLMSolver::detachValues() {
  if (values.ownsBuffer()) return;
  const MGenVector<float>& room = scratch_.values;
  const bool fits = room.length >= values.length && room.ownsBuffer();
  MGenVector<float> detached =
      fits ? room.view(0, values.length) : MGenVector<float>(values.length);
  detached.set(values);
  values = detached;
}

// Makes the normal matrix and the gradient those at `state`.
void MLMSolver::updateSystem(bool jacobianValid) {
  if (driven_ == nullptr) {
    if (!jacobianValid) problem->evalDy(jacobian);
    // Anew in every pass: a client may share the storage of the Jacobian or the goal and change it.
    formSystem();
  } else if (!jacobianValid) {
    constexpr int n = cornerpin::kernels::kParameters;
    reserve(scratch_.normal, n);
    reserve(scratch_.gradient, n);
    double triangle[n * n];
    driven_->formSystem(goal, triangle, scratch_.gradient.data);
    storeSystemOfEight(triangle);
  }
}

void MLMSolver::formSystem() {
  reserve(scratch_.normal, stateSize);
  reserve(scratch_.gradient, stateSize);
  if (!formSystemOfEight()) formSystemPlainly();
}

// Eight parameters and contiguous rows, as a match-move has them. False when it is not so.
bool MLMSolver::formSystemOfEight() {
  constexpr int n = cornerpin::kernels::kParameters;
  const bool contiguous =
      jacobian.colStride == 1 && jacobian.rowStride == n && goal.stride == 1 && values.stride == 1;
  const bool inRange = jacobian.rows >= goalSize && jacobian.cols == n && goal.length >= goalSize &&
                       values.length >= goalSize;
  if (stateSize != n || !contiguous || !inRange) return false;
  double triangle[n * n];
  cornerpin::kernels::frameKernels().normalSystem(jacobian.data, goal.data, values.data, goalSize,
                                                  triangle, scratch_.gradient.data);
  storeSystemOfEight(triangle);
  return true;
}

void MLMSolver::storeSystemOfEight(const double* triangle) {
  constexpr int n = cornerpin::kernels::kParameters;
  float* const a = scratch_.normal.data;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j <= i; ++j) {
      // Once a product or a partial sum is infinite or NaN, so is the sum.
      const double sum = triangle[i * n + j];
      throwUnlessFinite(sum);
      a[i + j * n] = static_cast<float>(sum);
      a[j + i * n] = static_cast<float>(sum);
    }
  }
}

void MLMSolver::formSystemPlainly() {
  // The products are formed in float and summed in double.
  MGenMatrix<float>& a = scratch_.normal;
  for (int i = 0; i < stateSize; ++i) {
    for (int j = 0; j <= i; ++j) {
      double sum = 0.0;
      for (int k = 0; k < goalSize; ++k) {
        const float term = jacobian(k, j) * jacobian(k, i);
        sum += static_cast<double>(term);
        throwUnlessFinite(sum);
      }
      a(i, j) = static_cast<float>(sum);
      a(j, i) = static_cast<float>(sum);
    }
  }
  // The differences are formed in float, the products and sums in double; every sum is stored as
  // float before the next value is added.
  MGenVector<float>& g = scratch_.gradient;
  std::fill(g.data, g.data + g.length, 0.0f);
  for (int k = 0; k < goalSize; ++k) {
    for (int j = 0; j < stateSize; ++j) {
      const float difference = goal[k] - values[k];
      const double term = static_cast<double>(jacobian(k, j)) * static_cast<double>(difference);
      g[j] = static_cast<float>(static_cast<double>(g[j]) + term);
    }
  }
}

// Turns the system in x into the system in u, x = T u with T the diagonal of `trust`.
void MLMSolver::scaleByTrust() {
  MGenMatrix<float>& a = scratch_.damped;
  MGenVector<float>& g = scratch_.scaledGradient;
  for (int i = 0; i < stateSize; ++i) {
    g[i] = g[i] * trust[i];
    for (int j = 0; j < stateSize; ++j) {
      a(i, j) = a(i, j) * trust[i];
      a(i, j) = a(i, j) * trust[j];
    }
  }
}

void MLMSolver::computeStep(float damping) {
  reserve(scratch_.damped, stateSize);
  reserve(scratch_.scaledGradient, stateSize);
  reserve(scratch_.step, stateSize);
  const std::ptrdiff_t n = stateSize;
  std::copy(scratch_.normal.data, scratch_.normal.data + n * n, scratch_.damped.data);
  std::copy(scratch_.gradient.data, scratch_.gradient.data + n, scratch_.scaledGradient.data);
  if (trust.length != 0) scaleByTrust();
  damp(scratch_.damped, damping);
  cornerpin::internal::invertInPlace(scratch_.damped, scratch_.pivots, scratch_.work);
  multiply(scratch_.damped, scratch_.scaledGradient, scratch_.step);
  if (trust.length != 0) limitByTrust();
}

// Cuts the step in u to unit length and turns it into a step in x.
void MLMSolver::limitByTrust() {
  MGenVector<float>& d = scratch_.step;
  const float squaredLength = _vector_norm2(d.data, d.length);
  if (squaredLength > 1.0f) d /= std::sqrt(squaredLength);
  d *= trust;
}

// A vector as long as `state` that the problem does not hold: it may keep the last candidate.
MGenVector<float>& MLMSolver::freeCandidate() {
  MGenVector<float>* const candidates = scratch_.candidates;
  MGenVector<float>& candidate =
      holderCount(candidates[0].buffer) > 1 ? candidates[1] : candidates[0];
  reserve(candidate, state.length);
  return candidate;
}

void MLMSolver::solve() {
  if (problem == nullptr) throw LvIllegalArgumentException("MLMSolver::solve");
  problem->setX(state);
  problem->evalY(values);
  detachValues();
  float epsilon = distance(values, goal, scratch_.difference);
  float damping = kInitialDamping;
  int stalls = 0;
  bool jacobianValid = false;

  for (int pass = 1; pass < maxIterations; ++pass) {
    // Only the first pass and those after an accepted step come here without a Jacobian: the
    // problem holds `state` then.
    updateSystem(jacobianValid);
    jacobianValid = true;
    computeStep(damping);

    MGenVector<float>& candidate = freeCandidate();
    for (std::ptrdiff_t i = 0; i < state.length; ++i) {
      candidate.data[i] = scratch_.step.data[i] + state.data[i * state.stride];
    }
    MGenVector<float> candidateValues;
    problem->setX(candidate);
    problem->evalY(candidateValues);
    const float candidateEpsilon = distance(candidateValues, goal, scratch_.difference);

    const float difference = epsilon - candidateEpsilon;
    const double improvement =
        static_cast<double>(difference) / (std::fabs(static_cast<double>(epsilon)) + 1.0);
    if (static_cast<double>(tolerance) >= improvement) {
      // The candidate that completes the stalls is dropped, however good it is.
      if (++stalls >= maxStalls) return;
    } else {
      stalls = 0;  // also when the improvement is not a number
    }

    if (epsilon > candidateEpsilon) {
      state.set(candidate);
      values.set(candidateValues);
      damping /= 10.0f;
      epsilon = candidateEpsilon;
      jacobianValid = false;
    } else {
      // Damping shrinks after a rejected step as well: the retry is bolder, not shorter.
      damping = static_cast<float>(static_cast<double>(damping) * 0.1);
      if (resetStallsOnReject && damping < 0.05f) stalls = 0;
    }
  }
}

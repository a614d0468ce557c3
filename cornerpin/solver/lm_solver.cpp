// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/lm_solver.h"

#include <cmath>

#include "cornerpin/foundation/arithmetic.h"
#include "cornerpin/foundation/exception.h"
#include "cornerpin/foundation/norm.h"
#include "cornerpin/linalg/inverse.h"

namespace {

constexpr float kInitialDamping = 0.01f;

void throwUnlessFinite(double value) {
  if (!std::isfinite(value)) throw LvException("nan");
}

// Damping is multiplicative, on the diagonal only.
void damp(MGenMatrix<float>& a, float damping) {
  for (int i = 0; i < a.rows; ++i) {
    a(i, i) = static_cast<float>(a(i, i) * (static_cast<double>(damping) + 1.0));
    throwUnlessFinite(static_cast<double>(a(i, i)));
  }
}

// Each row's sum runs in float from left to right, starting at 0.
MGenVector<float> product(const MGenMatrix<float>& a, const MGenVector<float>& x) {
  MGenVector<float> result(a.rows);
  for (int i = 0; i < a.rows; ++i) {
    float sum = 0.0f;
    for (int j = 0; j < a.cols; ++j) sum += a(i, j) * x[j];
    result[i] = sum;
  }
  return result;
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
  const MGenVector<float> difference = y - goal;
  return std::sqrt(_vector_norm2(difference.data, difference.length));
}

// The products are formed in float and summed in double.
MGenMatrix<float> MLMSolver::normalMatrix() const {
  MGenMatrix<float> a(stateSize, stateSize, MGenMatrix<float>::ColumnMajor);
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
  return a;
}

// The differences are formed in float, the products and sums in double; every sum is stored as
// float before the next value is added.
MGenVector<float> MLMSolver::gradient() const {
  MGenVector<float> g(stateSize);
  for (int k = 0; k < goalSize; ++k) {
    for (int j = 0; j < stateSize; ++j) {
      const float difference = goal[k] - values[k];
      const double term = static_cast<double>(jacobian(k, j)) * static_cast<double>(difference);
      g[j] = static_cast<float>(static_cast<double>(g[j]) + term);
    }
  }
  return g;
}

// Turns the system in x into the system in u, x = T u with T the diagonal of `trust`.
void MLMSolver::scaleByTrust(MGenMatrix<float>& a, MGenVector<float>& g) const {
  for (int i = 0; i < stateSize; ++i) {
    g[i] = g[i] * trust[i];
    for (int j = 0; j < stateSize; ++j) {
      a(i, j) = a(i, j) * trust[i];
      a(i, j) = a(i, j) * trust[j];
    }
  }
}

// Cuts the step in u to unit length and turns it into a step in x.
void MLMSolver::limitByTrust(MGenVector<float>& d) const {
  const float squaredLength = _vector_norm2(d.data, d.length);
  if (squaredLength > 1.0f) d /= std::sqrt(squaredLength);
  d *= trust;
}

void MLMSolver::solve() {
  if (problem == nullptr) throw LvIllegalArgumentException("MLMSolver::solve");
  problem->setX(state);
  problem->evalY(values);
  if (!values.ownsBuffer()) values = values.copy();
  float epsilon = computeEpsilon(values);
  float damping = kInitialDamping;
  int stalls = 0;
  bool jacobianValid = false;

  for (int pass = 1; pass < maxIterations; ++pass) {
    // Only the first pass and those after an accepted step come here without a Jacobian: the
    // problem holds `state` then.
    if (!jacobianValid) {
      problem->evalDy(jacobian);
      jacobianValid = true;
    }
    MGenMatrix<float> a = normalMatrix();
    MGenVector<float> g = gradient();
    if (trust.length != 0) scaleByTrust(a, g);
    damp(a, damping);
    MGenVector<float> step = product(inverse(a), g);
    if (trust.length != 0) limitByTrust(step);

    const MGenVector<float> candidate = state + step;
    MGenVector<float> candidateValues;
    problem->setX(candidate);
    problem->evalY(candidateValues);
    const float candidateEpsilon = computeEpsilon(candidateValues);

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

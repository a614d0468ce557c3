// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/normal_system.h"

#include <algorithm>
#include <cmath>

#include "cornerpin/foundation/norm.h"
#include "cornerpin/linalg/invert_in_place.h"
#include "cornerpin/solver/kernels/frame_kernels.h"

namespace cornerpin::internal {
namespace {

// Damping is multiplicative, on the diagonal only.
void damp(MGenMatrix<float>& a, float damping) {
  const double factor = static_cast<double>(damping) + 1.0;
  for (std::ptrdiff_t i = 0; i < a.rows; ++i) {
    float& diagonal = a.data[i * (a.rows + 1)];
    diagonal = static_cast<float>(static_cast<double>(diagonal) * factor);
    throwUnlessFinite(static_cast<double>(diagonal));
  }
}

// result[i] = the sum over j of a[i + j * n] * x[j], in float from left to right, starting at 0,
// for `Rows` rows at once.
template <int Rows>
void multiplyRows(const float* a, std::ptrdiff_t n, const float* x, float* result) {
  float sums[Rows] = {};
  for (std::ptrdiff_t j = 0; j < n; ++j) {
    for (std::ptrdiff_t i = 0; i < Rows; ++i) sums[i] += a[i + j * n] * x[j];
  }
  std::copy(sums, sums + Rows, result);
}

// result = a * x
void multiply(const MGenMatrix<float>& a, const MGenVector<float>& x, MGenVector<float>& result) {
  const std::ptrdiff_t n = a.rows;
  std::ptrdiff_t i = 0;
  for (; i + 8 <= n; i += 8) multiplyRows<8>(a.data + i, n, x.data, result.data + i);
  for (; i < n; ++i) multiplyRows<1>(a.data + i, n, x.data, result.data + i);
}

}  // namespace

void NormalSystem::resize(int n) {
  if (matrix_.rows == n) return;
  matrix_ = MGenMatrix<float>(n, n, MGenMatrix<float>::ColumnMajor);
  gradient_ = MGenVector<float>(n);
  damped_ = MGenMatrix<float>(n, n, MGenMatrix<float>::ColumnMajor);
  scaledGradient_ = MGenVector<float>(n);
  step_ = MGenVector<float>(n);
}

void NormalSystem::setElement(int i, int j, double sum) {
  const std::ptrdiff_t n = matrix_.rows;
  matrix_.data[i + j * n] = static_cast<float>(sum);
  matrix_.data[j + i * n] = static_cast<float>(sum);
}

void NormalSystem::setTriangle(const double* triangle) {
  constexpr int n = kernels::kParameters;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j <= i; ++j) {
      // Once a product or a partial sum is infinite or NaN, so is the sum.
      throwUnlessFinite(triangle[i * n + j]);
      setElement(i, j, triangle[i * n + j]);
    }
  }
}

const MGenVector<float>& NormalSystem::step(float damping, const MGenVector<float>& trust) {
  const std::ptrdiff_t n = matrix_.rows;
  std::copy(matrix_.data, matrix_.data + n * n, damped_.data);
  std::copy(gradient_.data, gradient_.data + n, scaledGradient_.data);
  if (trust.length != 0) scaleBy(trust);
  damp(damped_, damping);
  wasReported_ = !invertInPlace(damped_, pivots_, work_);
  multiply(damped_, scaledGradient_, step_);
  if (trust.length != 0) limitBy(trust);
  return step_;
}

// Turns the system in x into the system in u, x = T u with T the diagonal of `trust`.
void NormalSystem::scaleBy(const MGenVector<float>& trust) {
  MGenMatrix<float>& a = damped_;
  MGenVector<float>& g = scaledGradient_;
  for (int i = 0; i < a.rows; ++i) {
    g[i] = g[i] * trust[i];
    for (int j = 0; j < a.rows; ++j) {
      a(i, j) = a(i, j) * trust[i];
      a(i, j) = a(i, j) * trust[j];
    }
  }
}

// Cuts the step in u to unit length and turns it into a step in x.
void NormalSystem::limitBy(const MGenVector<float>& trust) {
  const float squaredLength = _vector_norm2(step_.data, step_.length);
  if (squaredLength > 1.0f) step_ /= std::sqrt(squaredLength);
  step_ *= trust;
}

}  // namespace cornerpin::internal

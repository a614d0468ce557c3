// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_NORMAL_SYSTEM_H
#define CORNERPIN_SOLVER_NORMAL_SYSTEM_H

#include <cmath>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"

namespace cornerpin::internal {

// Private. Throws LvException "nan" for an infinity or a NaN.
inline void throwUnlessFinite(double value) {
  if (!std::isfinite(value)) throw LvException("nan");
}

// Private: the normal system of a least-squares problem and the step that its damped form gives, in
// storage that is kept from pass to pass.
class NormalSystem {
 public:
  // Room for n parameters.
  void resize(int n);

  // Sets element (i, j) and its mirror image to a finite sum.
  void setElement(int i, int j, double sum);

  // Eight parameters: the lower triangle, in rows of eight, as the kernels write it. Throws
  // LvException "nan" unless all of it is finite.
  void setTriangle(const double* triangle);

  // Element j is `gradient()[j]`.
  float* gradient() { return gradient_.data; }

  // Inverts the system with its diagonal multiplied by 1 + damping, and multiplies the gradient by
  // it. With `trust`, not empty, the system is scaled first and the step cut and scaled back.
  const MGenVector<float>& step(float damping, const MGenVector<float>& trust);

  // Whether the last inversion was reported: then an error handler has run, and has returned.
  bool wasReported() const { return wasReported_; }

 private:
  void scaleBy(const MGenVector<float>& trust);
  void limitBy(const MGenVector<float>& trust);

  MGenMatrix<float> matrix_;  // undamped and unscaled, as is the gradient
  MGenVector<float> gradient_;
  MGenMatrix<float> damped_;  // the damped system, then its inverse
  MGenVector<float> scaledGradient_;
  MGenVector<float> step_;
  MGenVector<int> pivots_;
  MGenVector<float> work_;
  bool wasReported_ = false;
};

}  // namespace cornerpin::internal

#endif

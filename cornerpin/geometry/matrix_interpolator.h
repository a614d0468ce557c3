// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_GEOMETRY_MATRIX_INTERPOLATOR_H
#define CORNERPIN_GEOMETRY_MATRIX_INTERPOLATOR_H

#include "cornerpin/export.h"
#include "cornerpin/foundation/lv_matrix44.h"

/// A plain blend of two 4 x 4 transforms: each of the sixteen elements by itself.
///
/// Nothing is decomposed, so between two rotations the blend is not a rotation: halfway between
/// quarter turns to either side it flattens the plane to a line. Holds no state besides A and B.
class CORNERPIN_API MMatrixInterpolator {
 public:
  MMatrixInterpolator(const LvMatrix44Tmpl<double>& a, const LvMatrix44Tmpl<double>& b);
  MMatrixInterpolator(const MMatrixInterpolator&) = default;
  MMatrixInterpolator& operator=(const MMatrixInterpolator& other);
  ~MMatrixInterpolator() = default;

  const LvMatrix44Tmpl<double>& getA() const { return A; }
  const LvMatrix44Tmpl<double>& getB() const { return B; }
  /// Takes effect at the next blend.
  void setA(const LvMatrix44Tmpl<double>& a);
  /// Takes effect at the next blend.
  void setB(const LvMatrix44Tmpl<double>& b);

  /// (1 - u) * A + u * B with u the parameter t cut to 0 .. 1; a NaN counts as 1 and gives B.
  ///
  /// At the ends the result equals A and B as long as the other matrix is finite: its elements
  /// still enter, times 0.
  LvMatrix44Tmpl<double> operator()(double t) const;

  LvMatrix44Tmpl<double> A;  ///< at parameter 0
  LvMatrix44Tmpl<double> B;  ///< at parameter 1
};

#endif

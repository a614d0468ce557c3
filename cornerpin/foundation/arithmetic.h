// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_ARITHMETIC_H
#define CORNERPIN_FOUNDATION_ARITHMETIC_H

#include "cornerpin/export.h"
#include "cornerpin/foundation/vector.h"

/// \file
/// Element-wise operators that return a new vector, stride 1, of the left operand's length.
/// Lengths are not compared: the right operand must be at least as long as the left.

/// b[i] + a[i].
CORNERPIN_API MGenVector<float> operator+(const MGenVector<float>& a, const MGenVector<float>& b);
/// a[i] - b[i].
CORNERPIN_API MGenVector<float> operator-(const MGenVector<float>& a, const MGenVector<float>& b);
/// v[i] / s: a true division each, not a multiplication by 1 / s.
CORNERPIN_API MGenVector<float> operator/(const MGenVector<float>& v, float s);

#endif

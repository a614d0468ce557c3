// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_quat.h"

#include <cmath>
#include <ostream>

#include "cornerpin/foundation/lv_quat_impl.h"

template class LvQuat<double>;

namespace {

// Written so that a NaN is not near anything.
bool isSmall(double x) { return std::abs(x) < 1e-7; }

}  // namespace

std::ostream& operator<<(std::ostream& os, const LvQuat<double>& q) {
  const LvVector3<double>& v = q.vector();
  return os << "(" << q.scalar() << " " << v._x << " " << v._y << " " << v._z << ")";
}

bool LvMath::equal(const LvQuat<double>& a, const LvQuat<double>& b) {
  const LvVector3<double>& p = a.vector();
  const LvVector3<double>& q = b.vector();
  const bool same = isSmall(a.scalar() - b.scalar()) && isSmall(p._x - q._x) &&
                    isSmall(p._y - q._y) && isSmall(p._z - q._z);
  if (same) return true;
  return isSmall(a.scalar() + b.scalar()) && isSmall(p._x + q._x) && isSmall(p._y + q._y) &&
         isSmall(p._z + q._z);
}

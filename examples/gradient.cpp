// SPDX-License-Identifier: BSD-3-Clause
// The value and the gradient of a function of one's own, from its formula alone.
#include <cornerpin/cornerpin.h>

#include <cmath>
#include <cstdio>

// Where a lens shows the x coordinate of a point: the distance r from the axis becomes (1 + k r) r.
// Written once for every number type.
template <class T>
T distorted(const T& x, const T& y, const T& k) {
  using std::sqrt;  // for plain numbers; derivative numbers bring their own
  const T r = sqrt(x * x + y * y);
  return x * (1.0 + k * r);
}

// The variable number `index`: its derivative with respect to itself is 1, all others are 0.
MDeriv<double> variable(double value, int index) {
  double derivatives[3] = {};
  derivatives[index] = 1;
  return MDeriv<double>(value, derivatives, index + 1, true);
}

int main() {
  std::printf("value alone %.3f\n", distorted(3.0, 4.0, 0.1));

  const MDeriv<double> f = distorted(variable(3.0, 0), variable(4.0, 1), variable(0.1, 2));
  std::printf("value %.3f, by x %.3f, by y %.3f, by k %.3f\n", f.x(), f.d(0), f.d(1), f.d(2));
}

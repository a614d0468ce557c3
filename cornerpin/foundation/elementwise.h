// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_ELEMENTWISE_H
#define CORNERPIN_FOUNDATION_ELEMENTWISE_H

#include <cstddef>

#include "cornerpin/foundation/vector.h"

// Private: the one loop behind the element-wise vector operators. It runs over the length of
// `result`; operands are not compared with it and must be at least as long.
namespace cornerpin::internal {

// result[i] = op(a[i], b[i])
template <class T, class Operation>
void forEachElement(MGenVector<T>& result, const MGenVector<T>& a, const MGenVector<T>& b,
                    const Operation& op) {
  const std::ptrdiff_t n = result.length;
  if (result.stride == 1 && a.stride == 1 && b.stride == 1) {
    for (std::ptrdiff_t i = 0; i < n; ++i) result.data[i] = op(a.data[i], b.data[i]);
    return;
  }
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    result.data[i * result.stride] = op(a.data[i * a.stride], b.data[i * b.stride]);
  }
}

// result[i] = op(a[i], s)
template <class T, class Operation>
void forEachElement(MGenVector<T>& result, const MGenVector<T>& a, T s, const Operation& op) {
  const std::ptrdiff_t n = result.length;
  if (result.stride == 1 && a.stride == 1) {
    for (std::ptrdiff_t i = 0; i < n; ++i) result.data[i] = op(a.data[i], s);
    return;
  }
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    result.data[i * result.stride] = op(a.data[i * a.stride], s);
  }
}

}  // namespace cornerpin::internal

#endif

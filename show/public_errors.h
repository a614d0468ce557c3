// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_PUBLIC_ERRORS_H
#define SHOW_PUBLIC_ERRORS_H

#include "shot/interface/boundary.h"

namespace cornerpin {

/// Does a piece of work of this layer, with errors as `cornerpin/shot.h` has them.
template <class Work>
auto withPublicErrors(const Work& work) {
  return shot::atBoundary({}, [&work](const Progress&) { return work(); });
}

}  // namespace cornerpin

#endif

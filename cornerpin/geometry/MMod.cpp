// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/MMod.h"

#include "cornerpin/foundation/exception.h"

void _MMod_error(const char* message, const char* file, int line) {
  throw LvIllegalArgumentException(message, file, line);
}

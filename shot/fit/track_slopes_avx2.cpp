// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/track_slopes.inc"

namespace cornerpin {

extern const SlopePasses kAvx2SlopePasses;
const SlopePasses kAvx2SlopePasses = passesNamed("avx2");

}  // namespace cornerpin

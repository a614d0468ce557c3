// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/normal_equations.inc"

namespace cornerpin {

void normalSumsAvx2(const PassInput& in, NormalSums& out) { anyPass(in, out); }

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/normal_sums.inc"

namespace cornerpin {

void normalSumsAvx2(const PassInput& in, NormalSums& out) { anyPass(in, out); }

}  // namespace cornerpin

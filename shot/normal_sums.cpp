// SPDX-License-Identifier: BSD-3-Clause
#include "shot/normal_sums.inc"

namespace cornerpin {

void normalSumsBase(const Matches& matches, const Homography& h, Loss loss, double width,
                    NormalSums& out) {
  anyPass(matches, h, loss, width, out);
}

NormalPass normalSums() {
#if defined(__x86_64__)
  static const NormalPass best = __builtin_cpu_supports("avx2") ? normalSumsAvx2 : normalSumsBase;
  return best;
#else
  return normalSumsBase;
#endif
}

}  // namespace cornerpin

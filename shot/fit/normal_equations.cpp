// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/normal_equations.inc"

namespace cornerpin {

PassInput passInput(const Matches& matches, const Homography& h, Loss loss, double width) {
  return {matches.x(),
          matches.y(),
          matches.u(),
          matches.v(),
          matches.w2(),
          matches.paddedSize(),
          {h[0][0], h[0][1], h[0][2], h[1][0], h[1][1], h[1][2], h[2][0], h[2][1], h[2][2]},
          loss,
          width};
}

void normalSumsBase(const PassInput& in, NormalSums& out) { anyPass(in, out); }

NormalPass normalSums() {
#if defined(__x86_64__)
  static const NormalPass best = __builtin_cpu_supports("avx2") ? normalSumsAvx2 : normalSumsBase;
  return best;
#else
  return normalSumsBase;
#endif
}

}  // namespace cornerpin

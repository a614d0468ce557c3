// SPDX-License-Identifier: BSD-3-Clause
#include "shot/normal_sums.inc"

namespace cornerpin {

void normalSumsAvx2(const Matches& matches, const Homography& h, Loss loss, double width,
                    NormalSums& out) {
  anyPass(matches, h, loss, width, out);
}

}  // namespace cornerpin

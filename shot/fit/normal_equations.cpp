// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/normal_equations.h"

#include "shot/fit/normal_equations.inc"

namespace cornerpin {

#ifdef CORNERPIN_HAVE_AVX2
void normalEquationsAvx2(const NormalEquationsInput& in, NormalEquations& out);
#endif

const std::vector<NormalEquationsVariant>& normalEquationsVariants() {
  static const std::vector<NormalEquationsVariant> variants = [] {
    std::vector<NormalEquationsVariant> available = {{"base", sumNormalEquations}};
#ifdef CORNERPIN_HAVE_AVX2
    if (__builtin_cpu_supports("avx2")) available.push_back({"avx2", normalEquationsAvx2});
#endif
    return available;
  }();
  return variants;
}

NormalEquationsInput inputOf(const Matches& matches, const std::vector<double>& squaredWeights,
                             const Homography& h, Loss loss, double width) {
  return {matches.base().x(),
          matches.base().y(),
          matches.present().x(),
          matches.present().y(),
          squaredWeights.data(),
          matches.base().paddedSize(),
          {h[0][0], h[0][1], h[0][2], h[1][0], h[1][1], h[1][2], h[2][0], h[2][1], h[2][2]},
          loss,
          width};
}

NormalEquations normalEquations(const Matches& matches, const std::vector<double>& squaredWeights,
                                const Homography& h, Loss loss, double width) {
  static const auto run = normalEquationsVariants().back().run;
  NormalEquations sums;
  run(inputOf(matches, squaredWeights, h, loss, width), sums);
  return sums;
}

}  // namespace cornerpin

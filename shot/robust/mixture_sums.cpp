// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_sums.h"

#include "shot/robust/mixture_sums.inc"

namespace cornerpin {

#ifdef CORNERPIN_X86_64
void weighMixtureAvx2(const MixtureInput& in, double* squaredWeights, MixtureSums& sums);
double mixtureLogLikelihoodAvx2(const MixtureInput& in);
#endif

const std::vector<MixtureVariant>& mixtureVariants() {
  static const std::vector<MixtureVariant> variants = [] {
    std::vector<MixtureVariant> available = {{"base", weighMixture, mixtureLogLikelihood}};
#ifdef CORNERPIN_X86_64
    if (__builtin_cpu_supports("avx2")) {
      available.push_back({"avx2", weighMixtureAvx2, mixtureLogLikelihoodAvx2});
    }
#endif
    return available;
  }();
  return variants;
}

}  // namespace cornerpin

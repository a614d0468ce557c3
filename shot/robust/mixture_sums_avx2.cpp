// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_sums.inc"

namespace cornerpin {

void weighMixtureAvx2(const MixtureInput& in, double* squaredWeights, MixtureSums& sums);
double mixtureLogLikelihoodAvx2(const MixtureInput& in);

void weighMixtureAvx2(const MixtureInput& in, double* squaredWeights, MixtureSums& sums) {
  weighMixture(in, squaredWeights, sums);
}

double mixtureLogLikelihoodAvx2(const MixtureInput& in) { return mixtureLogLikelihood(in); }

}  // namespace cornerpin

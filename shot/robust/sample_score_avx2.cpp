// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/sample_score.inc"

namespace cornerpin {

double sampleScoreAvx2(const SampleScoreInput& in, double bound);

double sampleScoreAvx2(const SampleScoreInput& in, double bound) { return sampleScore(in, bound); }

}  // namespace cornerpin

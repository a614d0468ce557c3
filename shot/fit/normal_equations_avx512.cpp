// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/normal_equations.inc"

namespace cornerpin {

void normalEquationsAvx512(const NormalEquationsInput& in, NormalEquations& out);

void normalEquationsAvx512(const NormalEquationsInput& in, NormalEquations& out) {
  sumNormalEquations(in, out);
}

}  // namespace cornerpin

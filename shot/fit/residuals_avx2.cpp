// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/residuals.inc"

namespace cornerpin {

void squaresAvx2(const SquaresInput& in, double* squares);

void squaresAvx2(const SquaresInput& in, double* squares) { squaresOf(in, squares); }

}  // namespace cornerpin

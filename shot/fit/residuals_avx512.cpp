// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/residuals.inc"

namespace cornerpin {

void squaresAvx512(const SquaresInput& in, double* squares);

void squaresAvx512(const SquaresInput& in, double* squares) { squaresOf(in, squares); }

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/units.h"

namespace cornerpin {

const char* nameOf(Units units) { return units == Units::Fit ? "fit" : "raw"; }

}  // namespace cornerpin

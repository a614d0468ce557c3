// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/this_program.h"

#include "commit.h"

namespace cornerpin {

ProgramVersion thisProgram() { return {"cornerpin", CORNERPIN_VERSION, CORNERPIN_COMMIT}; }

}  // namespace cornerpin

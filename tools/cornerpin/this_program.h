// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_THIS_PROGRAM_H
#define TOOLS_CORNERPIN_THIS_PROGRAM_H

#include "shot/solve/provenance.h"

namespace cornerpin {

/// What results say of the program that made them.
ProgramVersion thisProgram();

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_THIS_PROGRAM_H
#define SHOT_SOLVE_THIS_PROGRAM_H

#include "shot/solve/provenance.h"

namespace cornerpin {

/// What results say of the program that made them.
ProgramVersion thisProgram();

}  // namespace cornerpin

#endif

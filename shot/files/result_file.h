// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_FILE_H
#define SHOT_FILES_RESULT_FILE_H

#include "shot/files/format.h"
#include "shot/files/output_file.h"
#include "shot/solve/progress.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// Writes a result in a format. Numbers read back as the same doubles, in every locale.
void writeResult(const ShotResult& result, Format format, OutputFile& out,
                 const Progress& progress = {});

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_INFO_H
#define SHOT_FILES_RESULT_INFO_H

#include <string>

#include "shot/files/file_look.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// What a result is, as lines for people: the file, the program and the tracks that it was made by
/// and of, the options as they are typed, its frames, tracks and quads; and `closingWords`.
std::string resultInfo(const ShotResult& result, const FileLook& look, bool colour);

}  // namespace cornerpin

#endif

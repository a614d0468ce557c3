// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_WRITTEN_TRANSFORMS_H
#define SHOT_FILES_WRITTEN_TRANSFORMS_H

#include <string>

#include "shot/files/result_transforms.h"

namespace cornerpin {

/// The frames, the frames between them and the quads' corners in a result in JSON
/// (`writeResultJson`); their status and all else is left as it is by default. In memory for these
/// alone, however much else there is in the file, which is neither kept nor checked.
///
/// Throws `InputError` with file and line for what is not JSON, and for a frame or a quad without
/// its numbers.
ResultTransforms readWrittenTransforms(const std::string& path);

}  // namespace cornerpin

#endif

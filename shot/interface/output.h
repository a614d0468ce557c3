// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_INTERFACE_OUTPUT_H
#define SHOT_INTERFACE_OUTPUT_H

#include <string>

#include "cornerpin/shot.h"
#include "shot/files/export.h"

namespace cornerpin::shot {

/// Refuses an empty path of a file that is to be written.
void requireFile(const std::string& path);

/// What is to be written. Refuses a format that does not hold it, or is not told.
Export exportOf(const std::string& path, const WriteOptions& options);

/// What is said of a file that was written; it is read again unless it is standard output.
Written saidOf(const std::string& path, Format format, const cornerpin::Written& written,
               bool readBack);

}  // namespace cornerpin::shot

#endif

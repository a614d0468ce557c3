// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_FILE_LOOK_H
#define SHOT_FILES_FILE_LOOK_H

#include <cstdint>
#include <string>

namespace cornerpin {

/// What a file shows before it is read as anything.
struct FileLook {
  std::string path;         ///< what to read it from
  std::string name;         ///< for people
  std::uint64_t bytes = 0;  ///< as it stands there
  bool packed = false;      ///< a gzip file
  bool json = false;        ///< what is in it begins like JSON without tracks
  bool table = false;       ///< what is in it begins like a result in CSV
};

/// Looks at a file's size and beginning; "-" is standard input. What can be read only once, such as
/// a pipe, takes the place of standard input from a temporary file, which goes with the process:
/// then the path is "-". Throws `InputError` for a file that cannot be read.
FileLook lookAt(const std::string& path);

/// "812 bytes", "1.23 MB".
std::string sizeText(std::uint64_t bytes);

}  // namespace cornerpin

#endif

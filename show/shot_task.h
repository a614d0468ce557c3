// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_SHOT_TASK_H
#define SHOW_SHOT_TASK_H

#include <cornerpin/shot.h>

#include <string>
#include <vector>

#include "show/show.h"

namespace cornerpin {

/// A shot as a pure function: whatever decides about its bytes is here.
struct ShotTask {
  std::string name;
  std::string input;                 ///< its name
  std::string sha256;                ///< of its bytes; empty where they cannot be read
  std::vector<std::string> options;  ///< of `cornerpin solve`, as they are typed
  std::vector<std::string> files;    ///< that are made
  std::string key;  ///< SHA-256 of all this, of the bytes of files in options, and of the program
};

/// Reads the bytes of the input, and of the file that the option `quads` may name.
ShotTask taskOf(const Show& show, const ShowShot& shot, const shot::Version& program);

/// The input as `cornerpin solve` is given it.
std::string inputWord(const ShowShot& shot);

/// What `cornerpin` is called with to do a task: files go to a folder, nothing is printed but
/// errors.
std::vector<std::string> solveWords(const Show& show, const ShowShot& shot,
                                    const std::string& folder);

/// Where a name in a shot leads to.
std::string pathOf(const ShowShot& shot, const std::string& name);

}  // namespace cornerpin

#endif

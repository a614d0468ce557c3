// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_SHOW_RUN_H
#define SHOW_SHOW_RUN_H

#include <cornerpin/shot.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "show/output_folder.h"
#include "show/show.h"

namespace cornerpin {

struct RunOptions {
  std::string program;  ///< path of the command, which solves a shot in a process of its own
  shot::Version version = shot::version();
  std::size_t workers = 1;  ///< processes at once
  bool retry = false;       ///< shots that failed are done again
  unsigned timeLimit = 0;   ///< seconds of the processor that a shot may take; 0 for no limit
  std::size_t first = 0;    ///< of the shots in their order
  std::size_t last = std::numeric_limits<std::size_t>::max();
};

/// Tells how many shots are done; throws `shot::Cancelled` where that says to end.
void tellShots(const shot::Progress& progress, std::size_t done, std::size_t total);

struct RunCounts {
  std::size_t done = 0;
  std::size_t kept = 0;
};

/// Does the shots that are not done yet: whose record is not there or has another key, or whose
/// files are not all there. Each is one process; of one that is killed or stops, `kMostTries` are
/// made. What is wrong with a shot is in its record. Of a shot that failed there are no files.
///
/// Throws `Interrupted` where this process is asked to end, and `shot::Cancelled` where the
/// progress says so, once no child is left; `std::system_error` for a folder that cannot be
/// written.
RunCounts runShow(const Show& show, const RunOptions& options, OutputFolder& folder,
                  const shot::Progress& progress = {});
constexpr int kMostTries = 3;

/// A shot that is not done.
struct OpenShot {
  std::size_t index = 0;
  std::string key;  ///< of its task
};

/// What `runShow` would do.
std::vector<OpenShot> openShots(const Show& show, const RunOptions& options, OutputFolder& folder);

}  // namespace cornerpin

#endif

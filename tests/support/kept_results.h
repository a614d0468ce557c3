// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_KEPT_RESULTS_H
#define TESTS_SUPPORT_KEPT_RESULTS_H

#include <cstdlib>
#include <functional>
#include <string>

#include "tests/support/files.h"

// Where CORNERPIN_KEPT_RESULTS names a folder, puts a text that begins as a result in JSON does, as
// tracks do, as what a page is made from, or as a file of a batch, there: the schemas are held
// against all that tests have written.
inline void keepResult(const std::string& text) {
  const char* folder = std::getenv("CORNERPIN_KEPT_RESULTS");
  const bool isTracks = text.rfind("{\n\"cornerpin_tracks\":", 0) == 0;
  const bool isPage = text.rfind("{\"page\":", 0) == 0;
  const bool isBatch = text.rfind("{\"cornerpin_task\":", 0) == 0 ||
                       text.rfind("{\"cornerpin_show\":", 0) == 0 ||
                       text.rfind("{\"cornerpin_batch\":", 0) == 0;
  const bool isKept = isTracks || isPage || isBatch || text.rfind("{\"cornerpin\":", 0) == 0;
  if (folder == nullptr || !isKept) return;
  const std::string name = std::to_string(std::hash<std::string>()(text));
  writeFile(std::string(folder) + "/" + name + ".json", text);
}

#endif

// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/file_talk.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>

#include "shot/files/info_row.h"
#include "shot/solve/wording.h"
#include "tools/cornerpin/output_paths.h"

namespace cornerpin {

void FileTalk::add(const std::vector<std::string>& notes) {
  notes_.insert(notes_.end(), notes.begin(), notes.end());
}

void FileTalk::add(const Export& what, const Written& written) {
  for (const std::string& note : written.notes) notes_.push_back(what.path + ": " + note);
  if (isStandardOutput(what.path)) return;
  const std::string text = readBackText(what.path, what.format, written);
  if (!text.empty()) rows_ += infoRow(rows_.empty() ? "written" : "", what.path + "  " + text);
}

void FileTalk::tellNotes() const {
  const std::size_t told = std::min(notes_.size(), kTold);
  for (std::size_t i = 0; i < told; ++i) {
    std::cerr << "cornerpin: note: " << printable(notes_[i]) << '\n';
  }
  const std::size_t more = notes_.size() - told;
  if (more > 0) std::cerr << "cornerpin: note: and " << counted(more, "more note") << '\n';
}

}  // namespace cornerpin

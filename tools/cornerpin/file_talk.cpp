// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/file_talk.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "shot/files/info_row.h"
#include "shot/solve/wording.h"
#include "tools/cornerpin/output_paths.h"

namespace cornerpin {

void FileTalk::add(const std::vector<std::string>& notes) {
  notes_.insert(notes_.end(), notes.begin(), notes.end());
}

void FileTalk::add(const Export& what, const Written& written) {
  for (const std::string& note : written.notes) notes_.push_back(what.path + ": " + note);
  std::error_code ignored;
  const bool isThere = std::filesystem::is_regular_file(what.path, ignored);
  if (isStandardOutput(what.path) || !isThere) return;
  rows_ += infoRow(rows_.empty() ? "written" : "",
                   what.path + "  " + readBackText(what.path, what.format, written));
}

void FileTalk::addSize(const std::string& file, const Written& written) {
  if (written.size.empty()) return;
  const std::string note = fmt::format("{}: the picture is {}, as it says", file, written.size);
  if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) notes_.push_back(note);
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

// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/file_talk.h"

#include <cornerpin/shot.h>
#include <fmt/format.h>

#include <algorithm>
#include <iostream>

namespace cornerpin {

void FileTalk::add(const std::vector<std::string>& notes) {
  notes_.insert(notes_.end(), notes.begin(), notes.end());
}

void FileTalk::add(const std::string& path, const shot::Written& written) {
  for (const std::string& note : written.notes) notes_.push_back(fmt::format("{}: {}", path, note));
  if (written.readBack.empty()) return;
  rows_ += fmt::format("{:<14}{}\n", rows_.empty() ? "written" : "",
                       shot::printable(path + "  " + written.readBack));
}

void FileTalk::addSize(const std::string& file, const shot::Written& written) {
  if (written.size.empty()) return;
  const std::string note = fmt::format("{}: the picture is {}, as it says", file, written.size);
  if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) notes_.push_back(note);
}

void FileTalk::tellNotes() const {
  const std::size_t told = std::min(notes_.size(), kTold);
  for (std::size_t i = 0; i < told; ++i) {
    std::cerr << "cornerpin: note: " << shot::printable(notes_[i]) << '\n';
  }
  const std::size_t more = notes_.size() - told;
  if (more > 0)
    std::cerr << "cornerpin: note: and " << more << (more == 1 ? " more note\n" : " more notes\n");
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/shot.h"
#include "shot/files/format.h"
#include "shot/plane/picture.h"
#include "shot/solve/nearest_names.h"
#include "shot/solve/this_program.h"
#include "shot/solve/wording.h"

namespace cornerpin::shot {

static_assert(kFurthestFrame == cornerpin::kFurthestFrame);

Version version() {
  const ProgramVersion program = thisProgram();
  return {program.name, program.version, program.commit};
}

std::vector<FileFormat> fileFormats() {
  std::vector<FileFormat> formats;
  formats.reserve(allFormats().size());
  for (const FormatFacts& facts : allFormats()) {
    formats.push_back({facts.word, facts.what, facts.extension, facts.readsTracks,
                       facts.writesTracks, facts.writesPins});
  }
  return formats;
}

std::string fileFormatOf(const std::string& path) {
  const std::optional<Format> format = formatOf(path);
  return format ? factsOf(*format).word : "";
}

std::string printable(const std::string& text) { return cornerpin::printable(text); }

std::string shellWord(const std::string& word) { return cornerpin::shellWord(word); }

std::size_t slipsBetween(const std::string& a, const std::string& b) {
  return cornerpin::slipsBetween(a, b);
}

}  // namespace cornerpin::shot

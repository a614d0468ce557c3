// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_FORMAT_H
#define SHOT_FILES_FORMAT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "shot/plane/picture.h"

namespace cornerpin {

enum class Format {
  Csv,
  Json,
  Points,
  Nk,
  Blocks,
  Keyframes,
  Paths,
  Rz2,
  Uv,
  Blender,
  Natron,
  Usda,
};

/// What is to be known of a format before a file of it is there.
struct FormatFacts {
  Format format;
  const char* word;       ///< for --from and --to
  const char* what;       ///< for people
  const char* extension;  ///< that tells it from all others; empty for none
  bool readsTracks;       ///< or pins
  bool writesTracks;
  bool writesPins;  ///< transforms, or where four corners go
  Picture picture;  ///< what every file of it tells
};

const std::vector<FormatFacts>& allFormats();
const FormatFacts& factsOf(Format format);

/// None for a word that is not there.
std::optional<Format> formatNamed(std::string_view word);

/// By the path's extension, in any case; none where it tells no format.
std::optional<Format> formatOf(const std::string& path);

/// The format of a file that begins like this; CSV where nothing speaks for another one.
Format formatIn(std::string_view beginning);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_EXPORT_OPTIONS_H
#define TOOLS_CORNERPIN_EXPORT_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "shot/files/export.h"
#include "shot/files/format.h"
#include "shot/plane/picture.h"

namespace CLI {
class App;
}

/// The options about files of other programs. A text that is refused throws
/// `std::invalid_argument` with a message that names the option or the text.
namespace cornerpin {

/// --nk, --keyframes, --fps and --par: how pins are written.
struct StyleOptions {
  std::string nk = "points";
  std::string keyframes = "pin";
  std::string fps;
  std::string pixelAspect;
  void addTo(CLI::App& parser);
  /// Refuses a format that needs what is not given.
  PinStyle value(Format format) const;
};

/// The format and kind of a file that is written, as it is said by --to, --as and its name. Refuses
/// what the format does not hold, and a name without a format; standard output is JSON.
Export exportOf(const std::string& path, const std::string& word, const std::string& kind);

/// --to and --as for the one file that is written.
void addFormatOptions(CLI::App& parser, std::string& word, std::string& kind);

/// -o, --to and --as: the files that are written, in the order of the arguments. A --to or --as is
/// about the -o behind it; behind the last -o, about that one.
struct ExportOptions {
  std::vector<std::string> paths;
  std::vector<std::string> words;  ///< of --to and --format
  std::vector<std::string> kinds;  ///< of --as
  void addTo(CLI::App& parser);
  /// What each file holds (`exportOf`).
  std::vector<Export> value(const StyleOptions& style) const;

 private:
  const CLI::App* parser_ = nullptr;
};

/// --from: the format of the input; none where it is to be found.
struct FromOption {
  std::string text;
  void addTo(CLI::App& parser);
  std::optional<Format> value() const;
};

/// --size, --y-up, --y-down, --pixel-center and --first-frame: what files do not say.
struct PictureOptions {
  std::string size;
  bool up = false;
  bool down = false;
  std::string pixelCentre;
  std::string firstFrame;
  void addTo(CLI::App& parser);
  Picture value() const;
};

}  // namespace cornerpin

#endif

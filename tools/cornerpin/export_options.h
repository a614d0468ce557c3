// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_EXPORT_OPTIONS_H
#define TOOLS_CORNERPIN_EXPORT_OPTIONS_H

#include <cornerpin/shot.h>

#include <string>
#include <vector>

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
};

/// How a file is written, as it is said by --to, --as, its name and the style. Refuses a name
/// without a format; standard output is JSON.
shot::WriteOptions writeOptionsOf(const std::string& path, const std::string& word,
                                  const std::string& kind, const StyleOptions& style);

/// A file that is written.
struct ExportedFile {
  std::string path;
  shot::WriteOptions how;

  /// Whether it holds the result as it is, not what other programs take.
  bool isResult() const { return how.as != "tracks" && (how.to == "json" || how.to == "csv"); }
};

/// --to and --as for the one file that is written.
void addFormatOptions(CLI::App& parser, std::string& word, std::string& kind);

/// -o, --to and --as: the files that are written, in the order of the arguments. A --to or --as is
/// about the -o behind it; behind the last -o, about that one.
struct ExportOptions {
  std::vector<std::string> paths;
  std::vector<std::string> words;  ///< of --to and --format
  std::vector<std::string> kinds;  ///< of --as
  void addTo(CLI::App& parser);
  /// Refuses a format that does not hold what it is to hold, or lacks what it needs.
  std::vector<ExportedFile> value(const StyleOptions& style) const;

 private:
  const CLI::App* parser_ = nullptr;
};

/// The words of the formats that tracks and pins are read from.
std::vector<std::string> formatsThatAreRead();

/// --from: the format of the input; empty where it is to be found.
struct FromOption {
  std::string text;
  void addTo(CLI::App& parser);
};

/// --size, --y-up, --y-down, --pixel-center and --first-frame: what files do not say.
struct PictureOptions {
  std::string size;
  bool up = false;
  bool down = false;
  std::string pixelCentre;
  std::string firstFrame;
  void addTo(CLI::App& parser);
  shot::Picture value() const;
};

}  // namespace cornerpin

#endif

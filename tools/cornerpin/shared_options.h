// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_SHARED_OPTIONS_H
#define TOOLS_CORNERPIN_SHARED_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shot/files/result_file.h"
#include "shot/plane/points.h"
#include "shot/solve/frame_range.h"
#include "shot/solve/named_quad.h"
#include "shot/solve/shot_solver.h"
#include "shot/solve/tracks.h"
#include "tools/cornerpin/colour.h"
#include "tools/cornerpin/progress_bar.h"

namespace CLI {
class App;
}

/// The options that several subcommands take. Each is defined here and nowhere else: its name, its
/// line in the help, and what its text means. A subcommand holds those that it takes, adds them in
/// the order of its help, and asks for their values once all arguments are parsed. A text that is
/// refused throws `std::invalid_argument` with a message that names the option or the text.
namespace cornerpin {

/// The file with the tracks; "-" is standard input.
struct TracksArgument {
  std::string path;
  void addTo(CLI::App& parser);
  /// The file's name without its folder; empty for what is no plain file, which has none of its
  /// own.
  std::string fileName() const;
};

/// The file with a result; "-" is standard input.
struct ResultArgument {
  std::string path;
  void addTo(CLI::App& parser);
};

/// -o and --format: the file that is written, none when the path is empty.
struct OutputOptions {
  std::string path;
  std::string formatName;
  void addTo(CLI::App& parser);
  bool isStandardOutput() const;
  /// As named, else by the path's extension; JSON without a file and on standard output.
  Format format() const;
};

/// --json: the result as JSON on standard output.
struct JsonOption {
  bool given = false;
  void addTo(CLI::App& parser);
};

/// --base: a frame number, or none for "auto".
struct BaseOption {
  std::string text = "auto";
  void addTo(CLI::App& parser);
  std::optional<int> value() const;
};

/// --reference: a frame number; none when it is not given.
struct ReferenceOption {
  std::string text;
  void addTo(CLI::App& parser);
  std::optional<int> value() const;
};

/// Reads "x0,y0,x1,y1,x2,y2,x3,y3".
Quad parseQuad(const std::string& text);

/// --quad and --quads: corners by name.
struct QuadOptions {
  std::vector<std::string> quad;
  std::string quads;
  void addTo(CLI::App& parser);
  /// The option that was given, --quad of both; null for none.
  const char* given() const;
  /// Reads the file too. \param frame  on which they were read; without one there are no quads, and
  /// a file that names another is refused
  std::vector<NamedQuad> value(std::optional<int> frame) const;
};

/// --frames: the range of the shot that is solved; all when it is not given.
struct FramesOption {
  std::string text;
  void addTo(CLI::App& parser);
  FrameRange value() const;
};

/// --drop and --keep: which tracks count, and where.
struct SelectionOptions {
  std::vector<std::string> drop;
  std::vector<std::string> keep;
  void addTo(CLI::App& parser);
  /// Leaves the frames of the range (`takeFrames`) and in them what is selected (`select`). A list
  /// may name any frames of the whole shot.
  void apply(Tracks& tracks, const FrameRange& frames) const;
};

/// --units: the coordinates that the solver works in.
struct UnitsOption {
  std::string text = "fit";
  void addTo(CLI::App& parser);
  Units value() const;
};

/// --loss: how far-off tracks count.
struct LossOption {
  std::string text = "tukey";
  void addTo(CLI::App& parser);
  Loss value() const;
};

/// --base-only: tracks that the base frame lacks take no part.
struct BaseOnlyOption {
  bool given = false;
  void addTo(CLI::App& parser);
};

/// --hold: frames with too few tracks are held, not reduced.
struct HoldOption {
  bool given = false;
  void addTo(CLI::App& parser);
};

/// --seed: of the random samples.
struct SeedOption {
  std::string text = "1";
  void addTo(CLI::App& parser);
  std::uint64_t value() const;
};

/// --threads: how many at most.
struct ThreadsOption {
  std::string text = "2";
  void addTo(CLI::App& parser);
  unsigned value() const;
};

/// --max-error: the expected error above which a frame is doubtful; none when it is not given.
struct MaxErrorOption {
  std::string text;
  void addTo(CLI::App& parser);
  std::optional<double> value() const;
};

/// --max: how far corners may be apart in results that count as the same; none when not given.
struct MaxMoveOption {
  std::string text;
  void addTo(CLI::App& parser);
  std::optional<double> value() const;
};

/// --strict: doubtful frames end the program like those that are not solved in full.
struct StrictOption {
  bool given = false;
  void addTo(CLI::App& parser);
};

/// --smooth: how far jitter is taken out, in pixels; none when it is not given.
struct SmoothOption {
  std::string text;
  void addTo(CLI::App& parser);
  std::optional<double> value() const;
};

/// --fill: held and reduced frames are interpolated.
struct FillOption {
  bool given = false;
  void addTo(CLI::App& parser);
};

/// --at: times between frames, in the order given.
struct AtOption {
  std::vector<std::string> lists;
  void addTo(CLI::App& parser);
  std::vector<double> value() const;
};

/// --quiet: nothing is said but errors.
struct QuietOption {
  bool given = false;
  void addTo(CLI::App& parser);
};

/// --quiet and --verbose: how much is said beside what was asked for.
struct TalkOptions {
  QuietOption quiet;
  bool verbose = false;  ///< all figures
  void addTo(CLI::App& parser);
  /// Refuses both.
  void check() const;
};

/// --color: when text is coloured.
struct ColourOption {
  std::string text = "auto";
  void addTo(CLI::App& parser);
  Colour value() const;
};

/// --progress: how progress is told on standard error.
struct ProgressOption {
  std::string text = "auto";
  void addTo(CLI::App& parser);
  /// \param quiet  no bar; what programs read is told all the same
  ProgressStyle value(bool quiet) const;
};

/// Refuses an empty text, as a script's unset variable gives one: the reason, or empty.
std::string refuseEmpty(const std::string& text);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/shared_options.h"

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "tools/cornerpin/as_typed.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/parse_whole.h"

namespace cornerpin {

namespace {

// Corners have no extension and are no file.
bool isFile(const std::string& text) {
  std::error_code ignored;
  return shot::fileFormatOf(text) == "json" || std::filesystem::exists(text, ignored);
}

void addFile(const std::string& path, int frame, std::vector<shot::Quad>& quads) {
  const shot::QuadFile file = shot::readQuads(path);
  if (file.frame && *file.frame != frame) {
    const std::string its = std::to_string(*file.frame);
    throw std::invalid_argument("--quads: the quads of \"" + path + "\" were read on frame " + its +
                                ", not on " + std::to_string(frame) + ": add --reference " + its);
  }
  quads.insert(quads.end(), file.quads.begin(), file.quads.end());
}

// A length above 0; none for an empty text.
std::optional<double> parsePixels(const char* option, const std::string& text) {
  if (text.empty()) return std::nullopt;
  const std::optional<double> length = parseWhole<double>(text);
  if (!length || !std::isfinite(*length) || !(*length > 0.0)) {
    throw std::invalid_argument(
        fmt::format("{} takes a number of pixels above 0, not \"{}\"", option, text));
  }
  return length;
}

}  // namespace

void TracksArgument::addTo(CLI::App& parser) {
  takesFile(parser.add_option("tracks", path, "File with the tracks; - is standard input"))
      ->required()
      ->check(refuseEmpty);
}

void ResultArgument::addTo(CLI::App& parser) {
  takesFile(parser.add_option("result", path, "JSON file of a solve; - is standard input"))
      ->required()
      ->check(refuseEmpty);
}

void OutputOptions::addTo(CLI::App& parser) {
  takesFile(parser.add_option("-o,--output", path,
                              "Write the transforms to this file, named .json or .csv"))
      ->check(refuseEmpty)
      ->option_text("FILE");
  takesOneOf(
      parser.add_option("--format", formatName, "Write json or csv, whatever the file's name"),
      {"json", "csv"})
      ->option_text("NAME");
}

bool OutputOptions::isStandardOutput() const { return cornerpin::isStandardOutput(path); }

std::string OutputOptions::format() const {
  if (!formatName.empty() && path.empty()) {
    throw std::invalid_argument("--format: no file is written: add -o FILE");
  }
  if (!formatName.empty()) return formatName;
  if (path.empty() || isStandardOutput()) return "json";
  std::string format = shot::fileFormatOf(path);
  if (format.empty()) refuseFolder(path);
  if (format != "json" && format != "csv") {
    throw std::invalid_argument("\"" + path +
                                "\" ends neither in .json nor in .csv: add --format json or "
                                "--format csv");
  }
  return format;
}

void JsonOption::addTo(CLI::App& parser) {
  parser.add_flag("--json", given, "Print JSON instead of the table");
}

void BaseOption::addTo(CLI::App& parser) {
  parser.add_option("--base", text, "Frame to fit from; auto compares them")
      ->option_text("FRAME=auto");
}

std::optional<int> BaseOption::value() const {
  if (text == "auto") return std::nullopt;
  const std::optional<int> frame = parseWhole<int>(text);
  if (!frame) {
    throw std::invalid_argument("--base takes a frame number or auto, not \"" + text + "\"");
  }
  return frame;
}

void ReferenceOption::addTo(CLI::App& parser) {
  parser.add_option("--reference", text, "Frame that transforms start from and quads belong to")
      ->check(refuseEmpty)
      ->option_text("FRAME");
}

std::optional<int> ReferenceOption::value() const {
  if (text.empty()) return std::nullopt;
  const std::optional<int> frame = parseWhole<int>(text);
  if (!frame) throw std::invalid_argument("--reference takes a frame number, not \"" + text + "\"");
  return frame;
}

std::array<double, 8> parseQuad(const std::string& text) {
  std::array<double, 8> numbers{};
  const char* at = text.data();
  const char* end = at + text.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0 && (at == end || *at++ != ',')) at = end;
    const auto [stop, error] = std::from_chars(at, end, numbers[i]);
    if (error != std::errc() || !std::isfinite(numbers[i])) {
      throw std::invalid_argument("a quad is eight numbers, x0,y0,x1,y1,x2,y2,x3,y3, not \"" +
                                  text + "\"");
    }
    at = stop;
  }
  if (at != end)
    throw std::invalid_argument("a quad has eight numbers, not more: \"" + text + "\"");
  return numbers;
}

void QuadOptions::addTo(CLI::App& parser) {
  parser.add_option("--quad", quad, "Write where corners go: [NAME=]x0,y0,x1,y1,x2,y2,x3,y3")
      ->check(refuseEmpty)
      ->allow_extra_args(false)
      ->option_text("QUAD");
  takesFile(
      parser.add_option("--quads", quads, "The same for one quad, or for the quads of a JSON file"))
      ->check(refuseEmpty)
      ->option_text("QUADS");
}

const char* QuadOptions::given() const {
  if (!quad.empty()) return "--quad";
  return quads.empty() ? nullptr : "--quads";
}

std::vector<shot::Quad> QuadOptions::value(std::optional<int> frame) const {
  if (given() == nullptr) return {};
  if (!frame) {
    throw std::invalid_argument(std::string(given()) +
                                ": on which frame were the corners read? Add --reference FRAME");
  }
  std::vector<shot::Quad> all;
  int unnamed = 0;
  const auto add = [&](const std::string& text) {
    const std::size_t equals = text.rfind('=');
    if (equals != std::string::npos) {
      all.push_back({text.substr(0, equals), parseQuad(text.substr(equals + 1))});
    } else {
      ++unnamed;
      all.push_back({unnamed == 1 ? "quad" : "quad" + std::to_string(unnamed), parseQuad(text)});
    }
  };
  for (const std::string& text : quad) add(text);
  if (isFile(quads)) {
    addFile(quads, *frame, all);
  } else if (!quads.empty()) {
    add(quads);
  }
  shot::Options options;
  options.reference = frame;
  options.quads = all;
  asTyped([&] { shot::checkSolve(options); });
  return all;
}

void FramesOption::addTo(CLI::App& parser) {
  parser.add_option("--frames", text, "Solve these frames only: 10-60, or 60- to the last one")
      ->check(refuseEmpty)
      ->option_text("FRAMES");
}

std::string FramesOption::value() const {
  shot::Options options;
  options.frames = text;
  asTyped([&] { shot::checkSolve(options); });
  return text;
}

void SelectionOptions::addTo(CLI::App& parser) {
  parser.add_option("--drop", drop, "Leave out tracks, or frames of them: t007,n*,t042:60-81")
      ->check(refuseEmpty)
      ->allow_extra_args(false)
      ->option_text("TRACKS");
  parser.add_option("--keep", keep, "Use only these tracks, or frames of them: t00?,t042:1-50")
      ->check(refuseEmpty)
      ->allow_extra_args(false)
      ->option_text("TRACKS");
}

void UnitsOption::addTo(CLI::App& parser) {
  takesOneOf(
      parser.add_option("--units", text, "fit scales the tracks for the solver, raw does not"),
      {"fit", "raw"})
      ->option_text("NAME=fit");
}

void LossOption::addTo(CLI::App& parser) {
  takesOneOf(parser.add_option("--loss", text,
                               "tukey ignores far-off tracks, cauchy and huber weaken them"),
             {"tukey", "cauchy", "huber", "none"})
      ->option_text("NAME=tukey");
}

void BaseOnlyOption::addTo(CLI::App& parser) {
  parser.add_flag("--base-only", given, "Only tracks seen in the base frame take part");
}

void HoldOption::addTo(CLI::App& parser) {
  parser.add_flag("--hold", given, "Frames with too few tracks take the neighbour's transform");
}

void SeedOption::addTo(CLI::App& parser) {
  parser.add_option("--seed", text, "Seed of random choices; the same seed, the same result")
      ->option_text("NUMBER=1");
}

std::uint64_t SeedOption::value() const {
  const std::optional<std::uint64_t> seed = parseWhole<std::uint64_t>(text);
  if (!seed) {
    throw std::invalid_argument("--seed takes a whole number from 0 to " +
                                std::to_string(std::numeric_limits<std::uint64_t>::max()) +
                                ", not \"" + text + "\"");
  }
  return *seed;
}

void ThreadsOption::addTo(CLI::App& parser) {
  parser.add_option("--threads", text, "Threads at once; the result is the same with any number")
      ->option_text("NUMBER=2");
}

unsigned ThreadsOption::value() const {
  constexpr unsigned kMost = 1024;
  const std::optional<unsigned> threads = parseWhole<unsigned>(text);
  if (!threads || *threads < 1 || *threads > kMost) {
    throw std::invalid_argument("--threads takes a whole number from 1 to " +
                                std::to_string(kMost) + ", not \"" + text + "\"");
  }
  return *threads;
}

void MaxErrorOption::addTo(CLI::App& parser) {
  parser
      .add_option("--max-error", text, "Doubt frames whose corners are expected to be off by more")
      ->check(refuseEmpty)
      ->option_text("PX");
}

std::optional<double> MaxErrorOption::value() const { return parsePixels("--max-error", text); }

void MaxMoveOption::addTo(CLI::App& parser) {
  parser.add_option("--max", text, "Corners may be so far apart; nothing else counts but frames")
      ->check(refuseEmpty)
      ->option_text("PX");
}

std::optional<double> MaxMoveOption::value() const {
  if (text.empty()) return std::nullopt;
  const std::optional<double> value = parseWhole<double>(text);
  if (!value || !std::isfinite(*value) || *value < 0.0) {
    throw std::invalid_argument("--max takes a number of pixels from 0 on, not \"" + text + "\"");
  }
  return value;
}

void StrictOption::addTo(CLI::App& parser) {
  parser.add_flag("--strict", given, "End in 4 where frames are doubtful, too");
}

void SmoothOption::addTo(CLI::App& parser) {
  parser.add_option("--smooth", text, "Take jitter out, moving no corner by more than this")
      ->check(refuseEmpty)
      ->option_text("PX");
}

std::optional<double> SmoothOption::value() const { return parsePixels("--smooth", text); }

void FillOption::addTo(CLI::App& parser) {
  parser.add_flag("--fill", given, "Interpolate held and reduced frames between good ones");
}

void AtOption::addTo(CLI::App& parser) {
  parser.add_option("--at", lists, "Write transforms between frames, too: 10.5,11.25")
      ->check(refuseEmpty)
      ->allow_extra_args(false)
      ->option_text("FRAMES");
}

std::vector<double> AtOption::value() const {
  std::vector<double> frames;
  for (const std::string& list : lists) {
    for (std::size_t start = 0; start <= list.size();) {
      const std::size_t end = std::min(list.find(',', start), list.size());
      const std::string text = list.substr(start, end - start);
      const std::optional<double> frame = parseWhole<double>(text);
      if (!frame || !std::isfinite(*frame)) {
        throw std::invalid_argument("--at takes frames such as 10.5,11.25, not \"" + text + "\"");
      }
      frames.push_back(*frame);
      start = end + 1;
    }
  }
  return frames;
}

void QuietOption::addTo(CLI::App& parser) {
  parser.add_flag("-q,--quiet", given, "Print nothing but errors, and a result that is asked for");
}

void TalkOptions::addTo(CLI::App& parser) {
  quiet.addTo(parser);
  parser.add_flag("--verbose", verbose, "Say more: how the fits were found, lists of frames");
}

void TalkOptions::check() const {
  if (quiet.given && verbose) {
    throw std::invalid_argument("--quiet and --verbose exclude each other: leave one out");
  }
}

void ColourOption::addTo(CLI::App& parser) {
  takesOneOf(parser.add_option("--color", text, "Colour what is doubtful; auto does on terminals"),
             {"auto", "always", "never"})
      ->option_text("WHEN=auto");
}

Colour ColourOption::value() const {
  if (text == "always") return Colour::Always;
  return text == "never" ? Colour::Never : Colour::Auto;
}

void ProgressOption::addTo(CLI::App& parser) {
  takesOneOf(parser.add_option("--progress", text,
                               "auto draws a bar on terminals, json writes a line for programs"),
             {"auto", "json", "none"})
      ->option_text("HOW=auto");
}

ProgressStyle ProgressOption::value(bool quiet) const {
  if (text == "json") return ProgressStyle::Json;
  const bool bar = text == "auto" && !quiet && ::isatty(STDERR_FILENO) != 0 && !isDumbTerminal();
  return bar ? ProgressStyle::Bar : ProgressStyle::None;
}

std::string refuseEmpty(const std::string& text) { return text.empty() ? "must not be empty" : ""; }

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/export_options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <stdexcept>

#include "tools/cornerpin/as_typed.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/parse_whole.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

const std::vector<std::string> kKinds = {"pin", "stabilise", "matrix", "tracks"};

std::vector<std::string> wordsWhere(bool (*holds)(const shot::FileFormat&)) {
  std::vector<std::string> words;
  for (const shot::FileFormat& format : shot::fileFormats()) {
    if (holds(format)) words.push_back(format.word);
  }
  return words;
}

std::vector<std::string> writtenFormats() {
  return wordsWhere(
      [](const shot::FileFormat& format) { return format.writesTracks || format.writesPins; });
}

// What was said of a file by the time its name came.
struct Said {
  std::string path;
  std::string word;
  std::string kind;
};

std::optional<double> positive(const char* option, const std::string& text) {
  if (text.empty()) return std::nullopt;
  const std::optional<double> value = parseWhole<double>(text);
  if (!value || !std::isfinite(*value) || !(*value > 0.0)) {
    throw std::invalid_argument(fmt::format("{} takes a number above 0, not \"{}\"", option, text));
  }
  return value;
}

}  // namespace

void StyleOptions::addTo(CLI::App& parser) {
  takesOneOf(parser.add_option("--nk", nk, "Corner pins in nk files by points, matrix, or both"),
             {"points", "matrix", "both"})
      ->option_text("NAME=points");
  takesOneOf(parser.add_option("--keyframes", keyframes,
                               "Keyframes of corners, or of the layer's transform"),
             {"pin", "transform"})
      ->option_text("NAME=pin");
  parser.add_option("--fps", fps, "Frames a second, for keyframes and usda")
      ->check(refuseEmpty)
      ->option_text("NUMBER");
  parser.add_option("--par", pixelAspect, "Width of a pixel over its height, for keyframes")
      ->check(refuseEmpty)
      ->option_text("NUMBER=1");
}

shot::WriteOptions writeOptionsOf(const std::string& path, const std::string& word,
                                  const std::string& kind, const StyleOptions& style) {
  shot::WriteOptions how;
  how.to = word.empty() ? shot::fileFormatOf(path) : word;
  if (how.to.empty()) refuseFolder(path);
  if (how.to.empty() && !isStandardOutput(path)) {
    throw std::invalid_argument(
        fmt::format("the name \"{}\" tells no format: put --to NAME before it, one of {}", path,
                    inASentence(writtenFormats())));
  }
  if (how.to.empty()) how.to = "json";
  how.as = kind;
  how.nk = style.nk;
  how.keyframes = style.keyframes;
  how.fps = positive("--fps", style.fps);
  how.par = positive("--par", style.pixelAspect).value_or(how.par);
  return how;
}

void addFormatOptions(CLI::App& parser, std::string& word, std::string& kind) {
  takesOneOf(parser.add_option("--to", word, "Format of the output, whatever its name"),
             writtenFormats())
      ->option_text("NAME");
  takesOneOf(parser.add_option("--as", kind, "What the output holds"), kKinds)->option_text("NAME");
}

void ExportOptions::addTo(CLI::App& parser) {
  parser_ = &parser;
  takesFile(parser.add_option("-o,--output", paths,
                              "Write this file, in the format of its name; as often as you like"))
      ->check(refuseEmpty)
      ->allow_extra_args(false)
      ->option_text("FILE");
  takesOneOf(parser.add_option("--to,--format", words,
                               "Format of the -o behind it, whatever the file's name"),
             writtenFormats())
      ->allow_extra_args(false)
      ->option_text("NAME");
  takesOneOf(parser.add_option("--as", kinds, "What the -o behind it holds"), kKinds)
      ->allow_extra_args(false)
      ->option_text("NAME=pin");
}

std::vector<ExportedFile> ExportOptions::value(const StyleOptions& style) const {
  std::vector<Said> said;
  Said next;
  std::size_t path = 0;
  std::size_t word = 0;
  std::size_t kind = 0;
  for (const CLI::Option* option : parser_->parse_order()) {
    if (option == parser_->get_option("--to")) next.word = words[word++];
    if (option == parser_->get_option("--as")) next.kind = kinds[kind++];
    if (option != parser_->get_option("--output")) continue;
    next.path = paths[path++];
    said.push_back(next);
    next = {};
  }
  if (said.empty() && !(next.word + next.kind).empty()) {
    throw std::invalid_argument(
        fmt::format("{}: no file is written: add -o FILE", next.word.empty() ? "--as" : "--to"));
  }
  if (!said.empty() && said.back().word.empty()) said.back().word = next.word;
  if (!said.empty() && said.back().kind.empty()) said.back().kind = next.kind;
  std::vector<ExportedFile> exports;
  exports.reserve(said.size());
  for (const Said& one : said) {
    exports.push_back({one.path, writeOptionsOf(one.path, one.word, one.kind, style)});
    asTyped([&] { shot::checkWrite(one.path, exports.back().how); });
  }
  return exports;
}

std::vector<std::string> formatsThatAreRead() {
  return wordsWhere([](const shot::FileFormat& format) { return format.readsTracks; });
}

void FromOption::addTo(CLI::App& parser) {
  takesOneOf(parser.add_option("--from", text, "Format of the input, which is found otherwise"),
             formatsThatAreRead())
      ->option_text("NAME");
}

void PictureOptions::addTo(CLI::App& parser) {
  parser.add_option("--size", size, "How large the picture is, in pixels: 1920x1080")
      ->check(refuseEmpty)
      ->option_text("WxH");
  parser.add_flag("--y-up", up, "y grows upwards");
  parser.add_flag("--y-down", down, "y grows downwards");
  parser
      .add_option("--pixel-center", pixelCentre,
                  "The first pixel's centre: 0.5 where whole numbers are edges")
      ->check(refuseEmpty)
      ->option_text("0|0.5");
  parser
      .add_option("--first-frame", firstFrame,
                  "The clip's first frame, for files that count from there")
      ->check(refuseEmpty)
      ->option_text("FRAME");
}

shot::Picture PictureOptions::value() const {
  shot::Picture picture;
  if (up && down) {
    throw std::invalid_argument("--y-up and --y-down exclude each other: leave one out");
  }
  if (up || down) picture.y = up ? "up" : "down";
  if (!size.empty()) {
    const std::size_t cross = size.find('x');
    const auto width = parseWhole<int>(size.substr(0, cross));
    const auto height =
        cross == std::string::npos ? std::nullopt : parseWhole<int>(size.substr(cross + 1));
    if (!width || !height || *width < 1 || *height < 1) {
      throw std::invalid_argument(fmt::format(
          "--size takes the picture's width and height such as 1920x1080, not \"{}\"", size));
    }
    picture.width = width;
    picture.height = height;
  }
  if (!pixelCentre.empty()) {
    picture.pixelCentre = parseWhole<double>(pixelCentre);
    if (picture.pixelCentre != 0.0 && picture.pixelCentre != 0.5) {
      throw std::invalid_argument(
          fmt::format("--pixel-center takes 0 or 0.5, not \"{}\"", pixelCentre));
    }
  }
  if (!firstFrame.empty()) {
    picture.firstFrame = parseWhole<int>(firstFrame);
    if (!picture.firstFrame || std::abs(*picture.firstFrame) > shot::kFurthestFrame) {
      throw std::invalid_argument(
          fmt::format("--first-frame takes a frame number, not \"{}\"", firstFrame));
    }
  }
  return picture;
}

}  // namespace cornerpin

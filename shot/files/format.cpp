// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/format.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <filesystem>

#include "shot/files/number_text.h"

namespace cornerpin {

namespace {

Picture pixels(std::optional<YAxis> y, std::optional<double> pixelCentre) {
  Picture picture;
  picture.y = y;
  picture.pixelCentre = pixelCentre;
  return picture;
}

Picture scaled(Scale scale, YAxis y, double pixelCentre) {
  Picture picture = pixels(y, pixelCentre);
  picture.scale = scale;
  return picture;
}

Picture fromFrame(Picture picture, int firstFrame) {
  picture.firstFrame = firstFrame;
  return picture;
}

bool startsWith(std::string_view text, std::string_view part) {
  return text.substr(0, part.size()) == part;
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// The line without blanks at its ends, taken off the text.
std::string_view takeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
  const std::string_view line = trimmed(text.substr(0, end));
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

constexpr std::size_t kLines = 5;  // tell all formats
using Lines = std::array<std::string_view, kLines>;

// The first lines with anything in them but a comment, without blanks at their ends.
Lines firstLines(std::string_view text) {
  Lines lines;
  std::size_t count = 0;
  while (!text.empty() && count < kLines) {
    const std::string_view line = takeLine(text);
    if (!line.empty() && line[0] != '#') lines[count++] = line;
  }
  return lines;
}

std::vector<std::string_view> wordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  while (!(line = trimmed(line)).empty()) {
    const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
    words.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
  return words;
}

bool isNumber(std::string_view text) {
  double value = 0.0;
  return parse(text, value) != Parsed::Nothing;
}

bool isWhole(std::string_view text) {
  std::int32_t value = 0;
  return parse(text, value) != Parsed::Nothing;
}

bool isFrame(std::string_view text) {
  std::int32_t value = 0;
  return parseFrame(text, value) != Parsed::Nothing;
}

// A name of letters and digits in front of a brace, as nodes have it.
bool opensNode(std::string_view line) {
  if (line.size() < 3 || line.back() != '{') return false;
  const std::string_view name = trimmed(line.substr(0, line.size() - 1));
  const auto isLetter = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
  };
  return !name.empty() && std::all_of(name.begin(), name.end(), isLetter) &&
         std::isdigit(static_cast<unsigned char>(name[0])) == 0;
}

bool isNodeScript(std::string_view text, const Lines& lines) {
  const auto begins = [&](const char* word) { return startsWith(lines[0], word); };
  if (begins("set cut_paste_input") || begins("version ") || begins("define_window_layout_xml"))
    return true;
  if (opensNode(lines[0])) return true;
  return contains(text, "\nTracker4 {") || contains(text, "\nTracker3 {") ||
         contains(text, "\nCornerPin2D {");
}

// name frame u v status
bool isPathLine(std::string_view line) {
  const std::vector<std::string_view> words = wordsOf(line);
  if (words.size() < 5) return false;
  const auto from = words.end() - 4;
  return isFrame(from[0]) && isNumber(from[1]) && isNumber(from[2]) && isWhole(from[3]);
}

// Only a name in quotes.
bool isQuotedName(std::string_view line) {
  return line.size() >= 2 && line.front() == '"' && line.find('"', 1) == line.size() - 1;
}

// How many numbers a line of nothing else has.
std::size_t numbersIn(std::string_view line) {
  const std::vector<std::string_view> words = wordsOf(line);
  return std::all_of(words.begin(), words.end(), isNumber) ? words.size() : 0;
}

// A count, then blocks: in point text a name, a colour number, the number of keys, and keys of
// three numbers; otherwise a name, the number of keys, and keys of four numbers, or of three. Names
// may be numbers, and blocks empty: the first key tells.
Format countedFormat(std::string_view text) {
  std::string_view line;
  for (line = takeLine(text); line.empty() || line[0] == '#';) line = takeLine(text);
  std::size_t wholes = 0;  // in a row
  for (std::size_t i = 1; !text.empty();) {
    line = takeLine(text);
    if (line.empty()) continue;
    const std::size_t numbers = numbersIn(line);
    if (numbers > 3 && i >= 3) return Format::Uv;
    if (numbers == 3 && i >= 3) return i >= 4 && wholes >= 2 ? Format::Points : Format::Uv;
    wholes = isWhole(line) ? wholes + 1 : 0;
    ++i;
  }
  return wholes >= 2 ? Format::Points : Format::Uv;
}

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

const std::vector<FormatFacts>& allFormats() {
  constexpr bool kYes = true;
  constexpr bool kNo = false;
  const Picture upright = pixels(YAxis::Up, 0.5);
  const Picture downward = pixels(YAxis::Down, 0.5);
  static const std::vector<FormatFacts> all = {
      {Format::Csv, "csv", "CSV", ".csv", kYes, kYes, kYes, {}},
      {Format::Json, "json", "JSON", ".json", kYes, kYes, kYes, {}},
      {Format::Points, "points", "point text", "", kYes, kYes, kYes, fromFrame(upright, 1)},
      {Format::Nk, "nk", "a node script", ".nk", kYes, kYes, kYes, upright},
      {Format::Blocks, "blocks", "blocks with quoted names", ".2dt", kYes, kYes, kNo,
       fromFrame(pixels(YAxis::Up, 0.0), 1)},
      {Format::Keyframes, "keyframes", "keyframe text", "", kYes, kNo, kYes,
       fromFrame(downward, 0)},
      {Format::Paths, "paths", "normalised paths", "", kYes, kNo, kNo,
       scaled(Scale::AboutZero, YAxis::Down, 0.0)},
      {Format::Rz2, "rz2", "point tracks with confidence", ".rz2", kYes, kNo, kNo, downward},
      {Format::Uv, "uv", "JSON in units of the picture", "", kYes, kYes, kNo,
       scaled(Scale::Picture, YAxis::Up, 0.5)},
      {Format::Blender, "blender", "a Python script for Blender", "", kNo, kNo, kYes,
       scaled(Scale::Picture, YAxis::Up, 0.5)},
      {Format::Natron, "natron", "a Python script for Natron", "", kNo, kNo, kYes, upright},
      {Format::Usda, "usda", "a USD layer", ".usda", kNo, kNo, kYes, upright},
  };
  return all;
}

const FormatFacts& factsOf(Format format) { return allFormats()[static_cast<std::size_t>(format)]; }

std::optional<Format> formatNamed(std::string_view word) {
  for (const FormatFacts& facts : allFormats()) {
    if (word == facts.word) return facts.format;
  }
  return std::nullopt;
}

std::optional<Format> formatOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  for (const FormatFacts& facts : allFormats()) {
    if (!extension.empty() && extension == facts.extension) return facts.format;
  }
  return std::nullopt;
}

Format formatIn(std::string_view beginning) {
  if (startsWith(beginning, kByteOrderMark)) beginning.remove_prefix(kByteOrderMark.size());
  const Lines lines = firstLines(beginning);
  if (startsWith(lines[0], "{") || startsWith(lines[0], "[")) return Format::Json;
  if (startsWith(lines[0], "Adobe After Effects")) return Format::Keyframes;
  if (startsWith(lines[0], "imageSequence") || startsWith(lines[0], "pointTrack"))
    return Format::Rz2;
  if (isNodeScript(beginning, lines)) return Format::Nk;
  if (isQuotedName(lines[0]) && isWhole(lines[1].substr(0, lines[1].find(' '))))
    return Format::Blocks;
  if (isQuotedName(lines[0]) && isQuotedName(lines[1])) return Format::Blocks;
  if (isWhole(lines[0])) return countedFormat(beginning);
  return isPathLine(lines[0]) ? Format::Paths : Format::Csv;
}

}  // namespace cornerpin

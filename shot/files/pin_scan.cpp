// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/pin_scan.h"

#include <cstdint>
#include <string_view>

#include "shot/files/byte_source.h"
#include "shot/files/line_reader.h"
#include "shot/files/number_text.h"

namespace cornerpin {

namespace {

constexpr std::string_view kNumberCharacters = "+-.0123456789eE";
constexpr std::string_view kBetween = " \t(),:";

// A frame and the numbers behind it; none where the line has anything else in it.
struct KeyLine {
  std::int32_t frame = 0;
  std::vector<double> numbers;
};
std::optional<KeyLine> keyIn(std::string_view line) {
  KeyLine key;
  bool isFirst = true;
  while (true) {
    const std::size_t start = line.find_first_not_of(kBetween);
    if (start == std::string_view::npos) break;
    line.remove_prefix(start);
    const std::string_view word =
        line.substr(0, std::min(line.find_first_not_of(kNumberCharacters), line.size()));
    line.remove_prefix(word.size());
    double value = 0.0;
    const bool isNumber =
        isFirst ? parse(word, key.frame) == Parsed::Number : parse(word, value) == Parsed::Number;
    if (!isNumber) return std::nullopt;
    if (!isFirst) key.numbers.push_back(value);
    isFirst = false;
  }
  if (isFirst) return std::nullopt;
  return key;
}

constexpr std::string_view kMatrix = "transform_matrix";

// Behind its name, all that is in the knob's braces.
std::string matrixText(const std::string& path) {
  ByteSource source(path);
  LineReader lines(source);
  std::string text;
  int depth = 0;
  while (lines.next()) {
    std::string_view line = lines.text();
    if (text.empty()) {
      line = trimmed(line);
      if (line.substr(0, kMatrix.size()) != kMatrix) continue;
      line.remove_prefix(kMatrix.size());
    }
    for (char c : line) depth += c == '{' ? 1 : c == '}' ? -1 : 0;
    text.append(line).append(" ");
    if (depth == 0) break;
  }
  return text;
}

}  // namespace

KeyedNumbers numbersInLines(const std::string& path, std::size_t count) {
  ByteSource source(path);
  LineReader lines(source);
  KeyedNumbers found;
  while (lines.next()) {
    std::optional<KeyLine> key = keyIn(lines.text());
    if (key && key->numbers.size() == count) found[key->frame] = std::move(key->numbers);
  }
  return found;
}

std::map<std::string, KeyedNumbers> numbersInSections(const std::string& path) {
  ByteSource source(path);
  LineReader lines(source);
  std::map<std::string, KeyedNumbers> sections;
  KeyedNumbers* section = nullptr;
  while (lines.nextFilled()) {
    if (lines.text()[0] != '\t') {
      section = &sections[std::string(lines.text())];
    } else if (section != nullptr) {
      std::optional<KeyLine> key = keyIn(lines.text());
      if (key) (*section)[key->frame] = std::move(key->numbers);
    }
  }
  return sections;
}

ScannedMatrix::ScannedMatrix(const std::string& path) { take(matrixText(path)); }

// Rows are in braces within the knob's, and curves in a third pair.
void ScannedMatrix::take(const std::string& text) {
  constexpr int kInRow = 2;
  constexpr int kInCurve = 3;
  std::string_view rest = text;
  int depth = 0;
  std::int32_t frame = 0;
  while (!(rest = trimmed(rest)).empty()) {
    const bool isBrace = rest[0] == '{' || rest[0] == '}';
    const std::size_t size = isBrace ? 1 : std::min(rest.find_first_of("{} \t"), rest.size());
    const std::string_view word = rest.substr(0, size);
    rest.remove_prefix(size);
    double value = 0.0;
    if (isBrace) {
      depth += word == "{" ? 1 : -1;
      if (word == "{" && depth == kInCurve) elements_.emplace_back();
      frame = 0;
    } else if (depth == kInRow && parse(word, value) == Parsed::Number) {
      elements_.push_back({value, {}});
    } else if (depth == kInCurve && word[0] == 'x') {
      parse(word.substr(1), frame);
    } else if (depth == kInCurve && parse(word, value) == Parsed::Number) {
      elements_.back().keys[frame++] = value;
    }
  }
}

std::optional<Homography> ScannedMatrix::at(int frame) const {
  if (elements_.size() != kSize) return std::nullopt;
  constexpr std::array<std::size_t, 3> kPlaces = {0, 1, 3};  // the third is of z
  Homography h{};
  for (std::size_t i = 0; i < h.size(); ++i) {
    for (std::size_t k = 0; k < h.size(); ++k) {
      const Element& element = elements_[4 * kPlaces[i] + kPlaces[k]];
      const auto key = element.keys.find(frame);
      if (!element.always && key == element.keys.end()) return std::nullopt;
      h[i][k] = element.always ? *element.always : key->second;
    }
  }
  return h;
}

}  // namespace cornerpin

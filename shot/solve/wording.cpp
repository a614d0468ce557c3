// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/wording.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>

namespace cornerpin {

namespace {

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

// U+0080 to U+009F, which terminals may obey, too: two bytes.
bool isLateControl(std::string_view text) {
  return text.size() > 1 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) >= 0x80 &&
         static_cast<unsigned char>(text[1]) < 0xA0;
}

// Between quotes with a dollar in front of them.
std::string escaped(const std::string& word) {
  std::string text;
  for (char c : word) {
    if (isControl(c)) {
      text += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    } else {
      if (c == '\'' || c == '\\') text += '\\';
      text += c;
    }
  }
  return text;
}

std::array<std::string, 4> sidesOf(const Quad& corners, std::optional<YAxis> y) {
  Point middle;
  for (Point corner : corners) {
    middle.x += corner.x / 4.0;
    middle.y += corner.y / 4.0;
  }
  std::array<std::string, 4> sides;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    const bool above = y == YAxis::Up ? corners[i].y >= middle.y : corners[i].y < middle.y;
    sides[i] =
        fmt::format("{} {}", above ? "top" : "bottom", corners[i].x < middle.x ? "left" : "right");
  }
  return sides;
}

}  // namespace

std::string pixels(double length) {
  const bool large = length >= 999.5 && length < 1e6;
  return (large ? fmt::format("{:.0f}", length) : fmt::format("{:.3g}", length)) + " px";
}

std::string counted(std::size_t count, const std::string& noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isLate = isLateControl(text.substr(i));
    shown += isLate || isControl(text[i]) ? '?' : text[i];
    if (isLate) ++i;
  }
  return shown;
}

std::string shellWord(const std::string& word) {
  const bool plain = !word.empty() && word.find_first_not_of(
                                          "abcdefghijklmnopqrstuvwxyz"
                                          "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                          "0123456789_./,:=+@%-") == std::string::npos;
  if (plain) return word;
  if (std::any_of(word.begin(), word.end(), isControl)) return "$'" + escaped(word) + "'";
  std::string text = "'";
  for (char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}

std::string cornerName(const Quad& corners, std::optional<YAxis> y, std::size_t index) {
  const std::array<std::string, 4> sides = sidesOf(corners, y);
  const bool apart = std::set<std::string>(sides.begin(), sides.end()).size() == sides.size();
  return apart ? fmt::format("the {} corner", sides[index]) : fmt::format("corner {}", index);
}

std::string cornerName(const std::vector<NamedQuad>& quads, std::optional<YAxis> y,
                       std::size_t quad, std::size_t index) {
  const std::string name = cornerName(quads[quad].corners, y, index);
  return quads.size() == 1 ? name : fmt::format("{} of \"{}\"", name, printable(quads[quad].name));
}

std::vector<Stretch> stretchesOf(const std::vector<int>& frames) {
  std::vector<Stretch> stretches;
  for (int frame : frames) {
    if (stretches.empty() || stretches.back().last != frame - 1)
      stretches.push_back({frame, frame});
    stretches.back().last = frame;
  }
  return stretches;
}

std::string textOf(Stretch stretch) {
  if (stretch.first == stretch.last) return fmt::format("{}", stretch.first);
  return fmt::format("{}-{}", stretch.first, stretch.last);
}

std::string textOf(const std::vector<Stretch>& stretches, std::size_t most) {
  std::string text;
  std::size_t left = 0;
  for (std::size_t i = 0; i < stretches.size(); ++i) {
    if (i < most) text += (i > 0 ? ", " : "") + textOf(stretches[i]);
    if (i >= most) left += static_cast<std::size_t>(stretches[i].last - stretches[i].first + 1);
  }
  return left > 0 ? text + " and " + counted(left, "more frame") : text;
}

}  // namespace cornerpin

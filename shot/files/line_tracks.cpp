// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/line_tracks.h"

#include <fmt/format.h>

#include <cmath>

#include "shot/files/number_text.h"
#include "shot/solve/wording.h"

namespace cornerpin {

bool LineTracks::nextUncommented() {
  while (lines.nextFilled()) {
    if (trimmed(lines.text())[0] != '#') return true;
  }
  return false;
}

void LineTracks::require(const char* what) {
  if (lines.nextFilled()) return;
  throw InputError(lines.file(), lines.line(),
                   fmt::format("the file ends here, where {} is wanted", what));
}

std::int32_t LineTracks::takeCount(Words words, const char* name) const {
  const std::string_view text = words.rest();
  const std::int32_t count = words.takeWhole(name);
  words.requireEnd();
  if (count < 0) {
    throw lines.error(text, fmt::format("{} must not be negative: {}", name, shown(text)));
  }
  return count;
}

std::int32_t LineTracks::takeFirstCount(const char* things) {
  if (!nextUncommented()) throw InputError(lines.file(), "the file is empty");
  return takeCount(Words(lines), fmt::format("the count of {}", things).c_str());
}

void LineTracks::noteCount(std::uint32_t line, const char* things, std::int32_t count,
                           std::int32_t met) {
  note(line, fmt::format("the count of {} is {}, and {} {} in the file", things, count, met,
                         met == 1 ? "is" : "are"));
}

Tracks LineTracks::finish(const Picture& picture, TrackBuilder::Repeats repeats) {
  input_.trace.rows = static_cast<std::int64_t>(tracks.rows());
  Tracks all = tracks.finish(repeats);
  all.picture = picture;
  return all;
}

// Whatever else is wrong with it: three words, and the first is a number.
bool LineTracks::isRow() const {
  Words words(lines);
  double frame = 0.0;
  if (parse(words.take(), frame) == Parsed::Nothing) return false;
  return !words.take().empty() && !words.take().empty();
}

void LineTracks::refuseEnd(const std::string& name, std::int32_t met, std::int32_t count) const {
  throw InputError(lines.file(), lines.line(),
                   fmt::format("the file ends here, after {} of {} of track {}", met,
                               counted(static_cast<std::size_t>(count), "key"), shown(name)));
}

void LineTracks::refuseLine(const std::string& name, std::int32_t met, std::int32_t count) const {
  throw InputError(lines.file(), lines.line(),
                   fmt::format("this is no key, and there were only {} of {} of track {}: {}", met,
                               counted(static_cast<std::size_t>(count), "key"), shown(name),
                               shown(trimmed(lines.text()))));
}

bool takePlace(const LineReader& lines, Words& words, Observation& row) {
  const std::string_view text = words.rest();
  row.x = words.takePosition("x");
  row.y = words.takePosition("y");
  const bool isGap = std::isnan(row.x);
  if (isGap == std::isnan(row.y)) return !isGap;
  throw lines.error(text, fmt::format("{} is NaN and {} is a number: of a gap both are NaN",
                                      isGap ? "x" : "y", isGap ? "y" : "x"));
}

float takeWeight(const LineReader& lines, Words& words, const char* name) {
  const std::string_view text = words.rest();
  const double weight = words.takePosition(name);
  if (weight >= 0.0) return static_cast<float>(weight);
  throw lines.error(text, fmt::format("{} must not be negative or NaN: {}", name,
                                      shown(text.substr(0, text.find_first_of(" \t")))));
}

}  // namespace cornerpin

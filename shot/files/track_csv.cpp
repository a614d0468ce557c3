// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_csv.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <system_error>
#include <tuple>
#include <unordered_map>

#include "shot/files/csv_reader.h"
#include "shot/files/input_error.h"

namespace cornerpin {

namespace {

constexpr std::size_t kShownLength = 60;

// How much of the text is shown: never a part of a UTF-8 character.
std::size_t shownLength(std::string_view text) {
  if (text.size() <= kShownLength) return text.size();
  const auto continues = [&](std::size_t i) { return (text[i] & 0xc0) == 0x80; };
  std::size_t length = kShownLength;
  while (length > kShownLength - 3 && continues(length)) --length;
  return length;
}

// A value as messages show it: in quotes, on one line, not too long.
std::string shown(std::string_view value) {
  std::string text(value.substr(0, shownLength(value)));
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  }
  return "\"" + text + (value.size() > kShownLength ? "...\"" : "\"");
}

// The whole text as a number; a leading plus is fine.
template <class T>
bool parses(std::string_view text, T& value) {
  text = trimmed(text);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end;
}

enum Column : std::size_t { kTrack, kFrame, kX, kY, kWeight, kColumnCount };
constexpr std::array<std::string_view, kColumnCount> kColumnNames = {"track", "frame", "x", "y",
                                                                     "weight"};
constexpr std::size_t kNoColumn = std::numeric_limits<std::size_t>::max();

class TrackReader {
 public:
  explicit TrackReader(const std::string& path) : csv_(path) {}

  Tracks read() {
    readHeader();
    while (csv_.next()) readRow();
    if (tracks_.observations.empty()) {
      throw InputError(csv_.name(), "there is a header but no track below it");
    }
    const auto isPresent = [](const Observation& o) { return o.weight > 0.0f; };
    if (std::none_of(tracks_.observations.begin(), tracks_.observations.end(), isPresent)) {
      throw InputError(csv_.name(), "no track has a weight above 0");
    }
    sortByFrame();
    return std::move(tracks_);
  }

 private:
  [[noreturn]] void refuse(const std::string& text) const {
    throw InputError(csv_.name(), csv_.line(), text);
  }
  [[noreturn]] void refuse(Column column, std::string_view what) const {
    refuse(fmt::format("{} {}", what, shown(value(column))));
  }

  std::string_view value(Column column) const { return csv_.field(columns_[column]); }

  void readHeader() {
    if (!csv_.next()) throw InputError(csv_.name(), "the file is empty");
    columns_.fill(kNoColumn);
    fieldCount_ = csv_.fieldCount();
    for (std::size_t i = 0; i < fieldCount_; ++i) addColumn(i);
    for (std::size_t column = 0; column < kWeight; ++column) {
      if (columns_[column] == kNoColumn) {
        refuse(fmt::format("the header {} has no column {}", shown(headerText()),
                           shown(kColumnNames[column])));
      }
    }
  }

  std::string headerText() const {
    std::string text;
    for (std::size_t i = 0; i < fieldCount_ && text.size() <= kShownLength; ++i) {
      text += (i > 0 ? "," : "") + std::string(csv_.field(i));
    }
    return text;
  }

  void addColumn(std::size_t field) {
    const std::string_view name = trimmed(csv_.field(field));
    const auto found = std::find(kColumnNames.begin(), kColumnNames.end(), name);
    if (found == kColumnNames.end()) return;
    std::size_t& column = columns_[static_cast<std::size_t>(found - kColumnNames.begin())];
    if (column != kNoColumn) refuse(fmt::format("the header repeats the column {}", shown(name)));
    column = field;
  }

  void readRow() {
    if (csv_.fieldCount() != fieldCount_) {
      refuse(
          fmt::format("the row has {} fields, the header has {}", csv_.fieldCount(), fieldCount_));
    }
    Observation row;
    row.line = csv_.line();
    row.track = readTrack();
    row.frame = readFrame();
    row.x = readPosition(kX);
    row.y = readPosition(kY);
    if (columns_[kWeight] != kNoColumn) row.weight = readWeight();
    tracks_.observations.push_back(row);
  }

  std::int32_t readTrack() {
    if (value(kTrack).empty()) refuse(kTrack, "a row needs a track name, not");
    if (lastIndex_ >= 0 && value(kTrack) == lastName_) return lastIndex_;
    lastName_.assign(value(kTrack));
    const auto next = static_cast<std::int32_t>(tracks_.names.size());
    const auto [entry, isNew] = indices_.try_emplace(lastName_, next);
    if (isNew) tracks_.names.push_back(lastName_);
    lastIndex_ = entry->second;
    return lastIndex_;
  }

  std::int32_t readFrame() {
    std::int32_t frame = 0;
    if (!parses(value(kFrame), frame)) refuse(kFrame, "frame must be a whole number, not");
    const bool first = tracks_.observations.empty();
    firstFrame_ = first ? frame : std::min(firstFrame_, frame);
    lastFrame_ = first ? frame : std::max(lastFrame_, frame);
    if (std::int64_t{lastFrame_} - firstFrame_ >= kMaxFrames) {
      refuse(kFrame, fmt::format("frames {} to {} span more than {}: frame", firstFrame_,
                                 lastFrame_, kMaxFrames));
    }
    return frame;
  }

  double readNumber(Column column) const {
    double number = 0.0;
    if (!parses(value(column), number)) {
      refuse(column, fmt::format("{} must be a number, not", kColumnNames[column]));
    }
    return number;
  }

  // What single precision, in which the library computes, does not hold.
  void refuseTooLarge(Column column, double number) const {
    if (std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
      refuse(column, fmt::format("{} is too large:", kColumnNames[column]));
    }
  }

  double readPosition(Column column) const {
    const double number = readNumber(column);
    if (!std::isfinite(number)) {
      refuse(column, fmt::format("{} must be finite, not", kColumnNames[column]));
    }
    refuseTooLarge(column, number);
    return number;
  }

  float readWeight() const {
    const double number = readNumber(kWeight);
    if (!(number >= 0.0)) refuse(kWeight, "weight must not be negative or NaN:");
    refuseTooLarge(kWeight, number);
    return static_cast<float>(number);
  }

  void sortByFrame() {
    const auto key = [](const Observation& o) { return std::tie(o.frame, o.track, o.line); };
    const auto less = [&](const auto& a, const auto& b) { return key(a) < key(b); };
    auto& rows = tracks_.observations;
    std::sort(rows.begin(), rows.end(), less);
    const Observation* repeated = nullptr;
    for (std::size_t i = 1; i < rows.size(); ++i) {
      if (rows[i].frame != rows[i - 1].frame || rows[i].track != rows[i - 1].track) continue;
      if (!repeated || rows[i].line < repeated->line) repeated = &rows[i];
    }
    if (repeated) refuseRepeated(repeated[0], repeated[-1]);
  }

  [[noreturn]] void refuseRepeated(const Observation& row, const Observation& earlier) const {
    throw InputError(csv_.name(), row.line,
                     fmt::format("track {} is given twice in frame {}, first on line {}",
                                 shown(tracks_.names[static_cast<std::size_t>(row.track)]),
                                 row.frame, earlier.line));
  }

  CsvReader csv_;
  std::array<std::size_t, kColumnCount> columns_{};
  std::size_t fieldCount_ = 0;
  Tracks tracks_;
  std::unordered_map<std::string, std::int32_t> indices_;
  std::string lastName_;
  std::int32_t lastIndex_ = -1;
  std::int32_t firstFrame_ = 0;
  std::int32_t lastFrame_ = 0;
};

}  // namespace

Tracks readTracks(const std::string& path) { return TrackReader(path).read(); }

}  // namespace cornerpin

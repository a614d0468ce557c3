// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include "shot/files/csv_records.h"
#include "shot/files/input_error.h"
#include "shot/files/number_text.h"
#include "shot/files/track_builder.h"
#include "shot/files/track_input.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kReported = 65536;  // rows between two reports

// In single precision, in which the library computes.
constexpr double kLargest = static_cast<double>(std::numeric_limits<float>::max());

// Room is made for one row more in so many than the file is estimated to have.
constexpr std::size_t kMargin = 32;

enum Column : std::size_t { kTrack, kFrame, kX, kY, kWeight, kColumnCount };
constexpr std::array<std::string_view, kColumnCount> kColumnNames = {"track", "frame", "x", "y",
                                                                     "weight"};
constexpr std::size_t kNoColumn = std::numeric_limits<std::size_t>::max();

class TrackReader {
 public:
  explicit TrackReader(const TrackInput& input)
      : input_(input), csv_(input.source), tracks_(input.source.name(), input.frames) {}

  Tracks read() {
    readHeader();
    const std::size_t rows = csv_.estimatedRecords();
    tracks_.reserve(rows + rows / kMargin);
    input_.report();
    for (std::size_t row = 1; hasNext(); ++row) {
      take();
      if (row % kReported == 0) input_.report();
    }
    tracks_.raise();
    if (tracks_.rows() == 0) {
      throw InputError(csv_.name(), "there is a header but no track below it");
    }
    input_.trace.rows = static_cast<std::int64_t>(tracks_.rows());
    input_.trace.separator = csv_.separator();
    return tracks_.finish();
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
      if (columns_[column] == kNoColumn) refuseHeader(kColumnNames[column]);
    }
  }

  [[noreturn]] void refuseHeader(std::string_view missing) const {
    std::string hint;
    if (hasField("frame") && hasField("h00")) {
      hint = ": this is a result, not tracks: give the file that it was solved from";
    } else if (fieldCount_ == 1) {
      hint = ": columns are separated by commas, semicolons or tabs";
    } else {
      hint = ": the first line must name track, frame, x and y";
    }
    refuse(
        fmt::format("the header {} has no column {}{}", shown(headerText()), shown(missing), hint));
  }

  bool hasField(std::string_view name) const {
    for (std::size_t i = 0; i < fieldCount_; ++i) {
      if (trimmed(csv_.field(i)) == name) return true;
    }
    return false;
  }

  std::string headerText() const {
    std::string text;
    for (std::size_t i = 0; i < fieldCount_ && text.size() <= kShownLength; ++i) {
      if (i > 0) text += csv_.separator();
      text += csv_.field(i);
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

  bool hasNext() {
    try {
      return csv_.next();
    } catch (const InputError& error) {
      tracks_.refuseLast(error);
      return false;
    }
  }

  void take() {
    try {
      tracks_.add(readRow());
    } catch (const InputError& error) {
      tracks_.refuse(error);
    }
  }

  Observation readRow() {
    if (csv_.fieldCount() != fieldCount_) {
      refuse(fmt::format("the row has {}, the header has {}", counted(csv_.fieldCount(), "field"),
                         fieldCount_));
    }
    Observation row;
    row.line = csv_.line();
    row.track = readTrack();
    row.frame = readFrame();
    row.x = readPosition(kX);
    row.y = readPosition(kY);
    if (columns_[kWeight] != kNoColumn) row.weight = readWeight();
    return row;
  }

  std::int32_t readTrack() {
    const std::string_view name = value(kTrack);
    if (name.empty()) refuse(kTrack, "a row needs a track name, not");
    return tracks_.track(name);
  }

  std::int32_t readFrame() const {
    std::int32_t frame = 0;
    if (parsesPlain(value(kFrame), frame)) return frame;
    const Parsed parsed = parseFrame(value(kFrame), frame);
    const std::string flaw = flawOfFrame(value(kFrame), parsed, frame);
    if (!flaw.empty()) refuse(flaw);
    return frame;
  }

  double readNumber(Column column) const {
    double number = 0.0;
    if (!parsesPlain(value(column), number)) {
      const Parsed parsed = parse(value(column), number);
      if (parsed != Parsed::Number) {
        refuse(flawOfNumber(kColumnNames[column], value(column), parsed));
      }
    }
    return number;
  }

  double readPosition(Column column) const {
    const double number = readNumber(column);
    refuseTooLarge(column, number);
    return number;
  }

  void refuseTooLarge(Column column, double number) const {
    if (std::fabs(number) <= kLargest) return;  // the usual case, and never NaN
    const std::string flaw = flawOfPosition(kColumnNames[column], value(column), number);
    if (!flaw.empty()) refuse(flaw);
  }

  float readWeight() const {
    const double number = readNumber(kWeight);
    if (!(number >= 0.0)) refuse(kWeight, "weight must not be negative or NaN:");
    refuseTooLarge(kWeight, number);
    return static_cast<float>(number);
  }

  const TrackInput& input_;
  CsvRecords csv_;
  TrackBuilder tracks_;
  std::array<std::size_t, kColumnCount> columns_{};
  std::size_t fieldCount_ = 0;
};

}  // namespace

Tracks readCsv(const TrackInput& input) { return TrackReader(input).read(); }

}  // namespace cornerpin

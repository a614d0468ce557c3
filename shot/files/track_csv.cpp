// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_csv.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <vector>

#include "shot/files/csv_reader.h"
#include "shot/files/far_frame.h"
#include "shot/files/file_kind.h"
#include "shot/files/input_error.h"
#include "shot/files/refused_rows.h"
#include "shot/solve/selection.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kShownLength = 60;
constexpr std::size_t kReported = 65536;  // rows between two reports

// Room is made for one row more in so many than the file is estimated to have.
constexpr std::size_t kMargin = 32;

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

constexpr std::size_t kExactDigits = 15;
constexpr std::array<double, kExactDigits> kPowersOfTen = {
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};

// Takes digits off the front of the text and appends them to the number; how many.
std::size_t takeDigits(std::string_view& text, std::int64_t& number) {
  std::size_t count = 0;
  for (; count < text.size() && text[count] >= '0' && text[count] <= '9'; ++count) {
    number = 10 * number + (text[count] - '0');
  }
  text.remove_prefix(count);
  return count;
}

// A short decimal number without an exponent. A double holds its digits and the power of ten below
// them exactly, so that their quotient is the double nearest to the number, as `from_chars` gives
// it, in a fraction of the time.
bool parsesPlain(std::string_view text, double& value) {
  const bool negative = !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  if (text.size() > kExactDigits) return false;
  std::int64_t digits = 0;
  const std::size_t whole = takeDigits(text, digits);
  if (!text.empty() && text[0] == '.') text.remove_prefix(1);
  const std::size_t decimals = takeDigits(text, digits);
  if (!text.empty() || whole + decimals == 0) return false;
  value = static_cast<double>(digits) / kPowersOfTen[decimals];
  if (negative) value = -value;
  return true;
}

enum class Parsed { Number, OutOfRange, Nothing };

template <class T>
Parsed parseBare(std::string_view text, T& value) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (stop == end && error == std::errc()) return Parsed::Number;
  const bool all = stop == end && error == std::errc::result_out_of_range;
  return all ? Parsed::OutOfRange : Parsed::Nothing;
}

// The whole text as a number; blanks around it and a leading plus are fine.
template <class T>
Parsed parse(std::string_view text, T& value) {
  if (parseBare(text, value) == Parsed::Number) return Parsed::Number;
  text = trimmed(text);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  return parseBare(text, value);
}

// Whether a number becomes of it with a point in place of a comma.
bool hasDecimalComma(std::string_view text) {
  std::string pointed(text);
  const std::size_t comma = pointed.find(',');
  if (comma == std::string::npos || comma + 1 == pointed.size()) return false;
  pointed[comma] = '.';
  double value = 0.0;
  return parse(std::string_view(pointed), value) == Parsed::Number;
}

enum Column : std::size_t { kTrack, kFrame, kX, kY, kWeight, kColumnCount };
constexpr std::array<std::string_view, kColumnCount> kColumnNames = {"track", "frame", "x", "y",
                                                                     "weight"};
constexpr std::size_t kNoColumn = std::numeric_limits<std::size_t>::max();

class TrackReader {
 public:
  TrackReader(const std::string& path, const Progress& progress, const FrameRange& frames,
              Sha256* digest)
      : csv_(path, digest), progress_(progress), frames_(frames) {}

  Tracks read() {
    readHeader();
    const std::size_t rows = csv_.estimatedRecords();
    tracks_.observations.reserve(rows + rows / kMargin);
    report();
    for (std::size_t row = 1; hasNext(); ++row) {
      take();
      if (row % kReported == 0) report();
    }
    refused_.raise();
    if (tracks_.observations.empty()) refuseEmpty();
    if (!anyPresent_) throw InputError(csv_.name(), "no track has a weight above 0");
    rows_ = static_cast<std::int64_t>(tracks_.observations.size());
    tracks_.sortNames();
    if (frames_.isAll()) {
      refuseFarFrames();
    } else {
      leaveOutFarFrames();
    }
    refuseTooMany();
    if (!tracks_.arrange()) refuseRepeated();
    return std::move(tracks_);
  }

  std::int64_t rows() const { return rows_; }
  char separator() const { return csv_.separator(); }

 private:
  void report() const {
    if (!progress_) return;
    const ByteSource::Position position = csv_.position();
    progress_(Phase::Reading, position.done, position.total);
  }

  [[noreturn]] void refuse(const std::string& text) const {
    throw InputError(csv_.name(), csv_.line(), text);
  }
  [[noreturn]] void refuse(Column column, std::string_view what) const {
    refuse(fmt::format("{} {}", what, shown(value(column))));
  }

  std::string_view value(Column column) const { return csv_.field(columns_[column]); }

  void readHeader() {
    if (const std::string kind = otherThanRecords(csv_.beginning()); !kind.empty()) {
      throw InputError(csv_.name(), kind);
    }
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
      refused_.addLast(error);
      return false;
    }
  }

  void take() {
    try {
      const Observation row = readRow();
      anyPresent_ = anyPresent_ || row.weight > 0.0f;
      firstFrame_ = std::min(firstFrame_, row.frame);
      lastFrame_ = std::max(lastFrame_, row.frame);
      tracks_.observations.push_back(row);
    } catch (const InputError& error) {
      refused_.add(error);
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

  // Tracks mostly come in the order of the frame before, or one stays for many rows: the track that
  // followed the last one when that was met before is guessed, and itself where none did.
  std::int32_t readTrack() {
    const std::string_view name = value(kTrack);
    if (name.empty()) refuse(kTrack, "a row needs a track name, not");
    if (tracks_.names.empty() || tracks_.names[followers_[last_]] != name) {
      const std::size_t index = indexOf(name);
      followers_[last_] = index;
    }
    last_ = followers_[last_];
    return static_cast<std::int32_t>(last_);
  }

  std::size_t indexOf(std::string_view name) {
    name_.assign(name);
    const auto [entry, isNew] = indices_.try_emplace(name_, tracks_.names.size());
    if (isNew) {
      tracks_.names.push_back(name_);
      followers_.push_back(entry->second);
    }
    return entry->second;
  }

  std::int32_t readFrame() const {
    std::int32_t frame = 0;
    const Parsed parsed = parse(value(kFrame), frame);
    if (parsed == Parsed::Nothing) refuse(kFrame, "frame must be a whole number, not");
    const bool fits =
        parsed == Parsed::Number && -kFurthestFrame <= frame && frame <= kFurthestFrame;
    if (!fits) refuse(kFrame, "frame is too large:");
    return frame;
  }

  double readNumber(Column column) const {
    double number = 0.0;
    if (!parsesPlain(value(column), number)) {
      const Parsed parsed = parse(value(column), number);
      if (parsed != Parsed::Number) refuseNumber(column, parsed);
    }
    return number;
  }

  [[noreturn]] void refuseNumber(Column column, Parsed parsed) const {
    const std::string_view name = kColumnNames[column];
    if (parsed == Parsed::OutOfRange) refuse(column, fmt::format("{} is out of range:", name));
    const bool comma = hasDecimalComma(value(column));
    refuse(fmt::format("{} must be a number, not {}{}", name, shown(value(column)),
                       comma ? ": write a decimal point" : ""));
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

  [[noreturn]] void refuseEmpty() const {
    throw InputError(csv_.name(), "there is a header but no track below it");
  }

  std::optional<FarFrame> farFrame() const {
    return findFarFrame(tracks_.observations, firstFrame_, lastFrame_);
  }

  void refuseFarFrames() const {
    const std::optional<FarFrame> far = farFrame();
    if (!far) return;
    throw InputError(csv_.name(), far->line,
                     fmt::format("frame {} is {} frames from the nearest other, and the shot has "
                                 "{}: if that is right, name the frames with --frames",
                                 far->frame, far->away, far->frames));
  }

  void leaveOutFarFrames() {
    if (!farFrame()) return;
    try {
      takeFrames(tracks_, frames_);
    } catch (const std::invalid_argument&) {
      throw InputError(csv_.name(),
                       fmt::format("no track is seen in the frames {}", frames_.text()));
    }
    const auto [first, last] = std::minmax_element(
        tracks_.observations.begin(), tracks_.observations.end(),
        [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
    firstFrame_ = first->frame;
    lastFrame_ = last->frame;
  }

  void refuseTooMany() const {
    if (std::int64_t{lastFrame_} - firstFrame_ < kMaxFrames) return;
    throw InputError(csv_.name(), fmt::format("frames {} to {} span more than {}", firstFrame_,
                                              lastFrame_, kMaxFrames));
  }

  // Of the rows whose track the frame has already, the first in the file.
  [[noreturn]] void refuseRepeated() const {
    const auto& rows = tracks_.observations;
    std::vector<const Observation*> repeated;
    for (std::size_t i = 1; i < rows.size(); ++i) {
      if (rows[i].frame == rows[i - 1].frame && rows[i].track == rows[i - 1].track) {
        repeated.push_back(&rows[i]);
      }
    }
    std::sort(repeated.begin(), repeated.end(),
              [](const Observation* a, const Observation* b) { return a->line < b->line; });
    RefusedRows refused;
    for (const Observation* row : repeated) {
      refused.add({csv_.name(), row->line,
                   fmt::format("track {} is given twice in frame {}, first on line {}",
                               shown(tracks_.names[static_cast<std::size_t>(row->track)]),
                               row->frame, row[-1].line)});
    }
    refused.raise();
    throw std::logic_error("no track is repeated");
  }

  CsvReader csv_;
  const Progress& progress_;
  const FrameRange& frames_;
  std::int64_t rows_ = 0;
  RefusedRows refused_;
  std::array<std::size_t, kColumnCount> columns_{};
  std::size_t fieldCount_ = 0;
  Tracks tracks_;
  std::unordered_map<std::string, std::size_t> indices_;
  std::string name_;                    // to look up
  std::vector<std::size_t> followers_;  // of each track, the one to guess for the next row
  std::size_t last_ = 0;                // the track of the last row
  std::int32_t firstFrame_ = std::numeric_limits<std::int32_t>::max();
  std::int32_t lastFrame_ = std::numeric_limits<std::int32_t>::min();
  bool anyPresent_ = false;
};

}  // namespace

Tracks readTracks(const std::string& path, const Progress& progress, const FrameRange& frames,
                  ReadTrace* trace) {
  Sha256* const digest = trace != nullptr && trace->digest ? &*trace->digest : nullptr;
  TrackReader reader(path, progress, frames, digest);
  Tracks tracks = reader.read();
  if (trace != nullptr) {
    trace->rows = reader.rows();
    trace->separator = reader.separator();
  }
  return tracks;
}

}  // namespace cornerpin

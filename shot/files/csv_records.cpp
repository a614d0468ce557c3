// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/csv_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>

#include "shot/files/input_error.h"

namespace cornerpin {

namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
constexpr std::size_t kFieldBlock = 4096;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// So many line ends stand behind the bytes that were read: a scan needs no other bound.
constexpr std::size_t kGuard = sizeof(std::uint64_t);

// A header shows its separator within so many bytes.
constexpr std::size_t kShowing = std::size_t{64} * 1024;

constexpr std::size_t kSamples = 32;
constexpr std::size_t kSampleSize = 4096;

bool endsLine(char c) { return c == '\n' || c == '\r'; }

// Those of eight bytes that may be a separator, a quote, a blank or a line end have the highest bit
// set, the first of them in the lowest place: all ASCII below '-', so no letter, digit, point or
// minus, and semicolons where they separate.
template <char kSeparator>
std::uint64_t marksIn(const char* bytes) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHigh = 0x80 * kOnes;
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  word = __builtin_bswap64(word);
#endif
  const std::uint64_t notBelow = (word & ~kHigh) + (0x80 - '-') * kOnes;
  const std::uint64_t marks = ~(notBelow | word) & kHigh;
  if (kSeparator < '-') return marks;
  const std::uint64_t other = word ^ (kOnes * kSeparator);
  return marks | (~(((other & ~kHigh) + ~kHigh) | other) & kHigh);
}

std::size_t firstOf(std::uint64_t marks) {
  return static_cast<std::size_t>(__builtin_ctzll(marks)) / 8;
}

// The lines that are not empty.
std::size_t linesIn(std::string_view text) {
  std::size_t lines = 0;
  for (std::size_t i = 1; i < text.size(); ++i)
    lines += endsLine(text[i]) && !endsLine(text[i - 1]);
  return lines;
}

// How often each separator stands in a line, outside of quotes.
class SeparatorCount {
 public:
  // False where the line ends and is not blank.
  bool add(char c) {
    if (c == '"') quoted_ = !quoted_;
    if (quoted_) return true;
    if (endsLine(c)) {
      if (!blank_) return false;
      counts_ = {};
      return true;
    }
    blank_ = blank_ && (c == ' ' || c == '\t');
    const std::size_t separator = kSeparators.find(c);
    if (separator != std::string_view::npos) ++counts_[separator];
    return true;
  }

  // The first of several alike.
  char most() const {
    const auto found = std::max_element(counts_.begin(), counts_.end());
    return kSeparators[static_cast<std::size_t>(found - counts_.begin())];
  }

 private:
  static constexpr std::string_view kSeparators = ",;\t";
  std::array<std::size_t, 3> counts_{};
  bool quoted_ = false;
  bool blank_ = true;
};

}  // namespace

CsvRecords::CsvRecords(ByteSource& source) : source_(source), buffer_(kBufferSize + kGuard, '\n') {
  if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
  csv_set_blk_size(&parser_, kFieldBlock);
  while (filled_ < kByteOrderMark.size() && fill()) {
  }
  if (std::string_view(buffer_.data(), filled_).substr(0, 3) == kByteOrderMark) next_ = 3;
  separator_ = findSeparator();
  csv_set_delim(&parser_, static_cast<unsigned char>(separator_));
}

CsvRecords::~CsvRecords() { csv_free(&parser_); }

char CsvRecords::findSeparator() {
  SeparatorCount count;
  for (std::size_t i = next_; i < kShowing; ++i) {
    if (i == filled_ && !fill()) break;
    if (!count.add(buffer_[i])) break;
  }
  return count.most();
}

std::size_t CsvRecords::estimatedRecords() const {
  std::array<char, kSampleSize> sample;
  const std::size_t size = source_.size();
  std::size_t lines = 0;
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < kSamples; ++i) {
    const std::size_t count = source_.readAt(size / kSamples * i, sample.data(), sample.size());
    lines += linesIn({sample.data(), count});
    bytes += count;
  }
  const double perByte =
      static_cast<double>(lines) / static_cast<double>(std::max<std::size_t>(bytes, 1));
  return static_cast<std::size_t>(perByte * static_cast<double>(size));
}

bool CsvRecords::next() {
  do {
    recordLine_ = nextNumber_;
    if (!nextLine()) return false;
  } while (ends_.empty() && !hasQuote_ && trimmed(line(length_)).empty());
  padded_ = hasBlank_ && !hasQuote_;
  if (hasQuote_) {
    parseQuoted();
  } else {
    text_ = buffer_.data() + begin_;
    ends_.push_back(length_);
  }
  return true;
}

// Makes the bytes behind the current line the current one; false at the end of the file.
bool CsvRecords::nextLine() {
  begin_ = next_;
  length_ = 0;
  hasQuote_ = false;
  hasBlank_ = false;
  ends_.clear();
  while (!scan()) {
    if (fill()) continue;
    next_ = filled_;
    return length_ > 0;
  }
  if (length_ > kLongest) fail(fmt::format("the line is longer than {} bytes", kLongest));
  next_ = begin_ + length_ + 1;
  countLine();
  return true;
}

// Goes on behind the line's first `length_` bytes to its end, noting separators, quotes and
// blanks on the way; false when what has been read ends before. A quote makes the separators
// meaningless.
template <char kSeparator>
bool CsvRecords::scan() {
  const char* const text = buffer_.data() + begin_;
  for (std::size_t i = length_;; i += sizeof(std::uint64_t)) {
    for (std::uint64_t marks = marksIn<kSeparator>(text + i); marks != 0; marks &= marks - 1) {
      const std::size_t at = i + firstOf(marks);
      if (text[at] == kSeparator) {
        ends_.push_back(at);
      } else if (endsLine(text[at])) {
        length_ = at;
        return begin_ + at < filled_;
      } else {
        hasQuote_ = hasQuote_ || text[at] == '"';
        hasBlank_ = hasBlank_ || text[at] == ' ' || text[at] == '\t';
      }
    }
  }
}

bool CsvRecords::scan() {
  if (separator_ == ',') return scan<','>();
  return separator_ == ';' ? scan<';'>() : scan<'\t'>();
}

void CsvRecords::countLine() {
  const char end = buffer_[begin_ + length_];
  const bool secondOfPair = afterReturn_ && length_ == 0 && end == '\n';
  afterReturn_ = end == '\r';
  if (!secondOfPair && nextNumber_ < std::numeric_limits<std::uint32_t>::max()) ++nextNumber_;
}

// Reads more behind the current line, which moves to the front; false at the end of the file.
bool CsvRecords::fill() {
  if (ended_) return false;
  filled_ -= begin_;
  std::memmove(buffer_.data(), buffer_.data() + begin_, filled_);
  begin_ = 0;
  if (filled_ > kLongest) fail(fmt::format("the line is longer than {} bytes", kLongest));
  if (hasQuote_) ends_.clear();  // those of separators that mean nothing
  if (ends_.size() > kMostFields) {
    fail(fmt::format("the line has more than {} fields", kMostFields));
  }
  if (filled_ + kGuard == buffer_.size()) buffer_.resize(2 * filled_ + kGuard);
  const std::size_t count =
      source_.read(buffer_.data() + filled_, buffer_.size() - kGuard - filled_);
  filled_ += count;
  ended_ = count == 0;
  std::fill_n(buffer_.data() + filled_, kGuard, '\n');
  return !ended_;
}

// Takes the record that begins on the current line from the CSV library.
void CsvRecords::parseQuoted() {
  parsed_.clear();
  parsedEnds_.clear();
  parsedLines_ = 0;
  complete_ = false;
  feedLine();
  while (!complete_ && nextLine()) feedLine();
  if (!complete_ && csv_fini(&parser_, onField, onRecord, this) != 0) {
    fail("a quote is never closed");
  }
  if (outOfMemory_) throw std::bad_alloc();
  text_ = parsed_.data();
  ends_.swap(parsedEnds_);
}

// A line holds the end of one record at most.
void CsvRecords::feedLine() {
  const std::string_view text = line(next_ - begin_);
  parsedLines_ += text.size();
  if (parsedLines_ > kLongest) fail(fmt::format("a quote is not closed in {} bytes", kLongest));
  if (csv_parse(&parser_, text.data(), text.size(), onField, onRecord, this) == text.size()) return;
  if (csv_error(&parser_) != CSV_EPARSE) throw std::bad_alloc();
  fail("a quote stands where none belongs");
}

// No exception may pass through the C parser: the callbacks leave a note instead.
void CsvRecords::onField(void* text, std::size_t length, void* self) {
  auto& reader = *static_cast<CsvRecords*>(self);
  try {
    if (!reader.parsedEnds_.empty()) reader.parsed_.push_back(',');
    reader.parsed_.append(static_cast<const char*>(text), length);
    reader.parsedEnds_.push_back(reader.parsed_.size());
  } catch (const std::bad_alloc&) {
    reader.outOfMemory_ = true;
  }
}

void CsvRecords::onRecord(int, void* self) { static_cast<CsvRecords*>(self)->complete_ = true; }

void CsvRecords::fail(const std::string& text) const {
  throw InputError(name(), recordLine_, text);
}

}  // namespace cornerpin

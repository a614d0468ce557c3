// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/csv_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

#include "shot/files/input_error.h"
#include "shot/files/sha256.h"

namespace cornerpin {

namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
constexpr std::size_t kFieldBlock = 4096;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// So many line ends stand behind the bytes that were read: a scan needs no other bound.
constexpr std::size_t kGuard = sizeof(std::uint64_t);

constexpr std::int64_t kSamples = 32;
constexpr std::size_t kSampleSize = 4096;

bool endsLine(char c) { return c == '\n' || c == '\r'; }

// Those of eight bytes that may be a comma, a quote, a blank or a line end have the highest bit
// set, the first of them in the lowest place: all ASCII below '-', so no letter, digit, point or
// minus.
std::uint64_t marksIn(const char* bytes) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHigh = 0x80 * kOnes;
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  word = __builtin_bswap64(word);
#endif
  const std::uint64_t notBelow = (word & ~kHigh) + (0x80 - '-') * kOnes;
  return ~(notBelow | word) & kHigh;
}

std::size_t firstOf(std::uint64_t marks) {
  return static_cast<std::size_t>(__builtin_ctzll(marks)) / 8;
}

// The lines that are not empty.
std::int64_t linesIn(std::string_view text) {
  std::int64_t lines = 0;
  for (std::size_t i = 1; i < text.size(); ++i)
    lines += endsLine(text[i]) && !endsLine(text[i - 1]);
  return lines;
}

}  // namespace

CsvReader::CsvReader(const std::string& path, Sha256* digest)
    : name_(path == "-" ? "<stdin>" : path), digest_(digest), buffer_(kBufferSize + kGuard, '\n') {
  if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
  csv_set_blk_size(&parser_, kFieldBlock);
  fd_ = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) throw InputError(name_, std::strerror(errno));
  while (filled_ < kByteOrderMark.size() && fill()) {
  }
  if (std::string_view(buffer_.data(), filled_).substr(0, 3) == kByteOrderMark) next_ = 3;
}

CsvReader::~CsvReader() {
  if (fd_ > STDIN_FILENO) ::close(fd_);
  csv_free(&parser_);
}

std::size_t CsvReader::estimatedRecords() const {
  struct stat file {};
  if (::fstat(fd_, &file) != 0 || !S_ISREG(file.st_mode)) return 0;
  std::array<char, kSampleSize> sample;
  std::int64_t lines = 0;
  std::int64_t bytes = 0;
  for (std::int64_t i = 0; i < kSamples; ++i) {
    const std::int64_t begin = file.st_size / kSamples * i;
    const ssize_t count = ::pread(fd_, sample.data(), sample.size(), begin);
    if (count <= 0) continue;
    lines += linesIn({sample.data(), static_cast<std::size_t>(count)});
    bytes += count;
  }
  const double perByte =
      static_cast<double>(lines) / static_cast<double>(std::max<std::int64_t>(bytes, 1));
  return static_cast<std::size_t>(perByte * static_cast<double>(file.st_size));
}

CsvReader::Position CsvReader::position() const {
  struct stat file {};
  if (::fstat(fd_, &file) != 0 || !S_ISREG(file.st_mode)) return {};
  return {static_cast<std::size_t>(::lseek(fd_, 0, SEEK_CUR)),
          static_cast<std::size_t>(file.st_size)};
}

bool CsvReader::next() {
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
bool CsvReader::nextLine() {
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
  next_ = begin_ + length_ + 1;
  countLine();
  return true;
}

// Goes on behind the line's first `length_` bytes to its end, noting commas, quotes and blanks on
// the way; false when what has been read ends before. A quote makes the commas meaningless.
bool CsvReader::scan() {
  const char* const text = buffer_.data() + begin_;
  for (std::size_t i = length_;; i += sizeof(std::uint64_t)) {
    for (std::uint64_t marks = marksIn(text + i); marks != 0; marks &= marks - 1) {
      const std::size_t at = i + firstOf(marks);
      if (text[at] == ',') {
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

void CsvReader::countLine() {
  const char end = buffer_[begin_ + length_];
  const bool secondOfPair = afterReturn_ && length_ == 0 && end == '\n';
  afterReturn_ = end == '\r';
  if (!secondOfPair && nextNumber_ < std::numeric_limits<std::uint32_t>::max()) ++nextNumber_;
}

// Reads more behind the current line, which moves to the front; false at the end of the file.
bool CsvReader::fill() {
  if (ended_) return false;
  filled_ -= begin_;
  std::memmove(buffer_.data(), buffer_.data() + begin_, filled_);
  begin_ = 0;
  if (filled_ + kGuard == buffer_.size()) buffer_.resize(2 * filled_ + kGuard);
  filled_ += readSome(buffer_.data() + filled_, buffer_.size() - kGuard - filled_);
  std::fill_n(buffer_.data() + filled_, kGuard, '\n');
  return !ended_;
}

std::size_t CsvReader::readSome(char* to, std::size_t most) {
  for (;;) {
    const ssize_t count = ::read(fd_, to, most);
    if (count >= 0) {
      ended_ = count == 0;
      if (digest_ != nullptr) digest_->add(to, static_cast<std::size_t>(count));
      return static_cast<std::size_t>(count);
    }
    if (errno == EINTR) continue;
    if (errno == EBADF && fd_ == STDIN_FILENO) throw InputError(name_, "standard input is closed");
    throw InputError(name_, std::strerror(errno));
  }
}

// Takes the record that begins on the current line from the CSV library.
void CsvReader::parseQuoted() {
  parsed_.clear();
  parsedEnds_.clear();
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
void CsvReader::feedLine() {
  const std::string_view text = line(next_ - begin_);
  if (csv_parse(&parser_, text.data(), text.size(), onField, onRecord, this) == text.size()) return;
  if (csv_error(&parser_) != CSV_EPARSE) throw std::bad_alloc();
  fail("a quote stands where none belongs");
}

// No exception may pass through the C parser: the callbacks leave a note instead.
void CsvReader::onField(void* text, std::size_t length, void* self) {
  auto& reader = *static_cast<CsvReader*>(self);
  try {
    if (!reader.parsedEnds_.empty()) reader.parsed_.push_back(',');
    reader.parsed_.append(static_cast<const char*>(text), length);
    reader.parsedEnds_.push_back(reader.parsed_.size());
  } catch (const std::bad_alloc&) {
    reader.outOfMemory_ = true;
  }
}

void CsvReader::onRecord(int, void* self) { static_cast<CsvReader*>(self)->complete_ = true; }

void CsvReader::fail(const std::string& text) const { throw InputError(name_, recordLine_, text); }

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/csv_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

#include "shot/files/input_error.h"

namespace cornerpin {

namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
constexpr std::size_t kFieldBlock = 4096;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool endsLine(char c) { return c == '\n' || c == '\r'; }

bool isBlank(std::string_view piece) {
  return piece.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

CsvReader::CsvReader(const std::string& path)
    : name_(path == "-" ? "<stdin>" : path), buffer_(kBufferSize) {
  if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
  csv_set_blk_size(&parser_, kFieldBlock);
  fd_ = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) throw InputError(name_, std::strerror(errno));
  while (filled_ < kByteOrderMark.size() && fill()) {
  }
  if (std::string_view(buffer_.data(), filled_).substr(0, 3) == kByteOrderMark) position_ = 3;
}

CsvReader::~CsvReader() {
  if (fd_ > STDIN_FILENO) ::close(fd_);
  csv_free(&parser_);
}

std::string_view CsvReader::field(std::size_t i) const {
  const std::size_t begin = i == 0 ? 0 : ends_[i - 1];
  return std::string_view(text_).substr(begin, ends_[i] - begin);
}

bool CsvReader::next() {
  text_.clear();
  ends_.clear();
  begun_ = false;
  complete_ = false;
  while (!complete_ && !ended_) {
    const std::string_view piece = nextPiece();
    if (!piece.empty()) {
      feed(piece);
    } else {
      ended_ = true;
      if (csv_fini(&parser_, onField, onRecord, this) != 0) fail("a quote is never closed");
    }
  }
  if (outOfMemory_) throw std::bad_alloc();
  return complete_;
}

// No exception may pass through the C parser: the callbacks leave a note instead.
void CsvReader::onField(void* text, std::size_t length, void* self) {
  auto& reader = *static_cast<CsvReader*>(self);
  try {
    reader.text_.append(static_cast<const char*>(text), length);
    reader.ends_.push_back(reader.text_.size());
  } catch (const std::bad_alloc&) {
    reader.outOfMemory_ = true;
  }
}

void CsvReader::onRecord(int, void* self) { static_cast<CsvReader*>(self)->complete_ = true; }

// Reads more behind what is there; false at the end of the file.
bool CsvReader::fill() {
  for (;;) {
    const ssize_t count = ::read(fd_, buffer_.data() + filled_, buffer_.size() - filled_);
    if (count >= 0) {
      filled_ += static_cast<std::size_t>(count);
      return count > 0;
    }
    if (errno == EINTR) continue;
    if (errno == EBADF && fd_ == STDIN_FILENO) throw InputError(name_, "standard input is closed");
    throw InputError(name_, std::strerror(errno));
  }
}

// The bytes up to the end of the line, or as many as have been read; empty at the end of the file.
// A piece holds one line at most, so no more than one record ends in it.
std::string_view CsvReader::nextPiece() {
  if (position_ == filled_) {
    position_ = filled_ = 0;
    if (!fill()) return {};
  }
  const char* begin = buffer_.data() + position_;
  const char* end = buffer_.data() + filled_;
  const char* stop = std::find_if(begin, end, endsLine);
  if (stop != end) ++stop;
  position_ += static_cast<std::size_t>(stop - begin);
  return {begin, static_cast<std::size_t>(stop - begin)};
}

void CsvReader::feed(std::string_view piece) {
  if (!begun_) {
    recordLine_ = line_;
    begun_ = !isBlank(piece);
  }
  if (csv_parse(&parser_, piece.data(), piece.size(), onField, onRecord, this) != piece.size()) {
    if (csv_error(&parser_) != CSV_EPARSE) throw std::bad_alloc();
    fail("a quote stands where none belongs");
  }
  const bool secondOfPair = afterReturn_ && piece == "\n";
  afterReturn_ = piece.back() == '\r';
  if (endsLine(piece.back()) && !secondOfPair &&
      line_ < std::numeric_limits<std::uint32_t>::max()) {
    ++line_;
  }
}

void CsvReader::fail(const std::string& text) const { throw InputError(name_, recordLine_, text); }

}  // namespace cornerpin

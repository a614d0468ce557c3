// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/line_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "shot/files/number_text.h"

namespace cornerpin {

namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// The first of these characters in the bytes, or their end.
std::size_t find(char c, const char* bytes, std::size_t count) {
  const auto* found = static_cast<const char*>(std::memchr(bytes, c, count));
  return found != nullptr ? static_cast<std::size_t>(found - bytes) : count;
}

// The first line end in the bytes, or their end. Looks piece by piece, so that a file without line
// feeds is not searched for one to the end of the buffer for each line.
std::size_t lineEnd(const char* bytes, std::size_t count) {
  constexpr std::size_t kPiece = 256;
  for (std::size_t begin = 0; begin < count; begin += kPiece) {
    const std::size_t piece = std::min(kPiece, count - begin);
    const std::size_t end = find('\r', bytes + begin, find('\n', bytes + begin, piece));
    if (end < piece) return begin + end;
  }
  return count;
}

}  // namespace

LineReader::LineReader(ByteSource& source) : source_(source), buffer_(kBufferSize) {
  while (filled_ < kByteOrderMark.size() && fill()) {
  }
  if (std::string_view(buffer_.data(), filled_).substr(0, 3) == kByteOrderMark) next_ = 3;
}

bool LineReader::next() {
  if (stays_) {
    stays_ = false;
    return true;
  }
  std::size_t searched = next_;
  for (;;) {
    if (afterReturn_ && next_ < filled_) {
      if (buffer_[next_] == '\n') searched = ++next_;
      afterReturn_ = false;
    }
    const std::size_t end = searched + lineEnd(buffer_.data() + searched, filled_ - searched);
    if (end < filled_) {
      text_ = {buffer_.data() + next_, end - next_};
      afterReturn_ = buffer_[end] == '\r';
      next_ = end + 1;
      break;
    }
    const std::size_t length = filled_ - next_;
    const bool more = fill();
    searched = next_ + length;
    if (more) continue;
    if (length == 0) return false;
    text_ = {buffer_.data() + next_, length};
    next_ = filled_;
    break;
  }
  if (text_.size() > kLongest) refuseLong();
  if (line_ < std::numeric_limits<std::uint32_t>::max()) ++line_;
  return true;
}

bool LineReader::nextFilled() {
  while (next()) {
    if (!trimmed(text_).empty()) return true;
  }
  return false;
}

// Moves what is left of the buffer to its front, makes room, and reads on.
bool LineReader::fill() {
  const std::size_t left = filled_ - next_;
  if (left > kLongest) refuseLong();
  std::memmove(buffer_.data(), buffer_.data() + next_, left);
  next_ = 0;
  filled_ = left;
  if (left == buffer_.size()) buffer_.resize(2 * left);
  const std::size_t count = source_.read(buffer_.data() + filled_, buffer_.size() - filled_);
  filled_ += count;
  return count > 0;
}

void LineReader::refuseLong() const {
  throw InputError(file(), line_ + 1,
                   fmt::format("the line is longer than {} MB: this is no file of this kind",
                               kLongest / 1024 / 1024));
}

InputError LineReader::error(std::string_view part, const std::string& text) const {
  const auto column = static_cast<std::size_t>(part.data() - text_.data()) + 1;
  return {file(), line_, fmt::format("column {}: {}", column, text)};
}

void Words::skipBlanks() {
  while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
}

std::string_view Words::take() {
  const auto end = std::find_if(rest_.begin(), rest_.end(), isBlank);
  const std::string_view word = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
  rest_.remove_prefix(word.size());
  skipBlanks();
  return word;
}

std::string_view Words::takeQuoted(const char* name) {
  const std::size_t end =
      rest_.empty() || rest_[0] != '"' ? std::string_view::npos : rest_.find('"', 1);
  if (end == std::string_view::npos) {
    throw lines_.error(rest_,
                       fmt::format("{} must stand in double quotes, not {}", name, shown(rest_)));
  }
  const std::string_view text = rest_.substr(1, end - 1);
  rest_.remove_prefix(end + 1);
  skipBlanks();
  return text;
}

std::string_view Words::require(const char* name) {
  if (atEnd()) throw lines_.error(rest_, fmt::format("the line ends where {} is wanted", name));
  return take();
}

std::int32_t Words::takeWhole(const char* name) {
  const std::string_view word = require(name);
  std::int32_t value = 0;
  const Parsed parsed = parse(word, value);
  if (parsed != Parsed::Number) throw lines_.error(word, flawOfWholeNumber(name, word, parsed));
  return value;
}

std::int32_t Words::takeFrame() {
  const std::string_view word = require("frame");
  std::int32_t frame = 0;
  const Parsed parsed = parseFrame(word, frame);
  const std::string flaw = flawOfFrame(word, parsed, frame);
  if (!flaw.empty()) throw lines_.error(word, flaw);
  return frame;
}

double Words::takeNumber(const char* name) {
  const std::string_view word = require(name);
  double value = 0.0;
  if (parsesPlain(word, value)) return value;
  const Parsed parsed = parse(word, value);
  if (parsed != Parsed::Number) throw lines_.error(word, flawOfNumber(name, word, parsed));
  return value;
}

double Words::takePosition(const char* name) {
  const std::string_view before = rest_;
  const double value = takeNumber(name);
  if (std::isnan(value)) return value;
  const std::string_view word = before.substr(0, before.find_first_of(" \t"));
  const std::string flaw = flawOfPosition(name, word, value);
  if (!flaw.empty()) throw lines_.error(word, flaw);
  return value;
}

void Words::requireEnd() const {
  if (!atEnd())
    throw lines_.error(rest_, fmt::format("nothing is wanted here, not {}", shown(rest_)));
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/node_words.h"

#include <fmt/format.h>

#include <algorithm>

namespace cornerpin {

namespace {

// What ends a word, and what counts in a group that is skipped.
constexpr unsigned char kEndsWord = 1;
constexpr unsigned char kCountsInGroup = 2;

constexpr std::array<unsigned char, 256> characterTable() {
  std::array<unsigned char, 256> table{};
  table[' '] = table['\t'] = kEndsWord;
  table['{'] = table['}'] = table['\\'] = kEndsWord | kCountsInGroup;
  return table;
}
constexpr std::array<unsigned char, 256> kCharacters = characterTable();

bool is(unsigned char what, char c) {
  return (kCharacters[static_cast<unsigned char>(c)] & what) != 0;
}

// Of a text over several lines no more is kept: a name has not as much.
constexpr std::size_t kLongestQuoted = std::size_t{64} * 1024;

// The quote that ends a text, or the line's end.
const char* closingQuote(const char* at, const char* end) {
  for (; at < end && *at != '"'; ++at) {
    if (*at == '\\' && at + 1 < end) ++at;
  }
  return at;
}

}  // namespace

bool NodeWords::fill() {
  inLine_ = lines_.next();
  if (!inLine_) return false;
  at_ = lines_.text().data();
  end_ = at_ + lines_.text().size();
  taken_ = at_;
  return true;
}

NodeWords::Kind NodeWords::requireEnd() const {
  if (depth_ == 0) return Kind::End;
  throw InputError(file(), opened_[depth_ - 1],
                   "the brace that opens here is not closed: the file is cut off");
}

NodeWords::Kind NodeWords::next() {
  if (!inLine_ && !fill()) return requireEnd();
  while (at_ < end_ && (*at_ == ' ' || *at_ == '\t')) ++at_;
  taken_ = at_;
  if (at_ == end_) {
    inLine_ = false;
    return Kind::LineEnd;
  }
  switch (*at_) {
    case '{':
      return open();
    case '}':
      return close();
    case '"':
      return takeQuoted();
    default:
      return takeWord();
  }
}

NodeWords::Kind NodeWords::nextItem() {
  Kind kind = next();
  while (kind == Kind::LineEnd) kind = next();
  return kind;
}

NodeWords::Kind NodeWords::open() {
  text_ = {at_, 1};
  if (depth_ == kMostNested) {
    throw error(
        fmt::format("braces in braces, more than {} deep: this is no node script", kMostNested));
  }
  ++at_;
  opened_[depth_++] = line();
  return Kind::Open;
}

NodeWords::Kind NodeWords::close() {
  text_ = {at_++, 1};
  if (depth_ > 0) --depth_;
  return Kind::Close;
}

NodeWords::Kind NodeWords::takeWord() {
  const char* at = at_;
  for (;;) {
    while (at < end_ && !is(kEndsWord, *at)) ++at;
    if (at == end_ || *at != '\\') break;
    at = std::min(at + 2, end_);
  }
  text_ = {at_, static_cast<std::size_t>(at - at_)};
  at_ = at;
  return Kind::Word;
}

NodeWords::Kind NodeWords::takeQuoted() {
  const char* close = closingQuote(at_ + 1, end_);
  if (close == end_) {
    takeLongQuoted();
    return Kind::Quoted;
  }
  text_ = {at_ + 1, static_cast<std::size_t>(close - at_ - 1)};
  at_ = close + 1;
  return Kind::Quoted;
}

void NodeWords::takeLongQuoted() {
  const std::uint32_t first = line();
  quoted_.clear();
  const char* from = at_ + 1;
  for (;;) {
    const char* close = closingQuote(from, end_);
    const auto length = static_cast<std::size_t>(close - from);
    quoted_.append(from, std::min(length, kLongestQuoted - quoted_.size()));
    at_ = close;
    if (close < end_) break;
    if (!fill()) {
      throw InputError(file(), first, "the quotes that open here are not closed");
    }
    if (quoted_.size() < kLongestQuoted) quoted_ += '\n';
    from = at_;
  }
  ++at_;
  text_ = quoted_;
}

void NodeWords::skipGroup() {
  const std::size_t outside = depth_ - 1;
  while (depth_ > outside) {
    if (!inLine_ && !fill()) requireEnd();
    while (at_ < end_ && !is(kCountsInGroup, *at_)) ++at_;
    if (at_ == end_) {
      inLine_ = false;
    } else if (*at_ == '{') {
      open();
    } else if (*at_ == '}') {
      close();
    } else {
      at_ = std::min(at_ + 2, end_);
    }
  }
}

NodeWords::Kind NodeWords::skipCommand() {
  for (;;) {
    const Kind kind = next();
    if (kind == Kind::Open) {
      skipGroup();
    } else if (kind != Kind::Word && kind != Kind::Quoted) {
      return kind;
    }
  }
}

std::string NodeWords::since(Mark mark, std::size_t most) const {
  if (mark.line != line() || !inLine_) return "";
  const auto length = static_cast<std::size_t>(at_ - mark.at);
  return {mark.at, std::min(length, most)};
}

std::string unescaped(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      plain += text[i];
      continue;
    }
    const char c = text[++i];
    plain += c == 'n' ? '\n' : c == 't' ? '\t' : c;
  }
  return plain;
}

}  // namespace cornerpin

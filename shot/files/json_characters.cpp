// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/json_characters.h"

#include "shot/files/input_error.h"

namespace cornerpin {

JsonCharacters::JsonCharacters(ByteSource& source) : source_(source), block_(kBlock, '\0') {
  fill();
}

void JsonCharacters::fill() {
  next_ = 0;
  filled_ = source_.read(block_.data(), block_.size());
  sinceEnd_ += filled_;
  if (sinceEnd_ > kLongest) {
    throw InputError(file(), line_,
                     "a text or a number is longer than 1 MB: this is no file of this kind");
  }
}

std::string jsonFlaw(const std::exception& error) {
  constexpr std::size_t kMost = 300;
  const std::string text = error.what();
  const std::size_t colon = text.find(": ");
  const std::size_t from = colon == std::string::npos ? 0 : colon + 2;
  return text.substr(from, kMost) + (text.size() - from > kMost ? "..." : "");
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_string.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// The formatted text, or an empty one when the format cannot be converted.
std::string formatted(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int size = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (size <= 0) return {};
  std::string text(static_cast<std::size_t>(size), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

}  // namespace

LvString::LvString(const char* text) {
  if (text != nullptr) text_ = text;
}

LvString LvString::ssprintf(const char* format, ...) {
  LvString result;
  std::va_list arguments;
  va_start(arguments, format);
  try {
    result.text_ = formatted(format, arguments);
  } catch (...) {
    va_end(arguments);
    throw;
  }
  va_end(arguments);
  return result;
}

void LvString::sprintf(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  try {
    text_ = formatted(format, arguments);
  } catch (...) {
    va_end(arguments);
    throw;
  }
  va_end(arguments);
}

void LvString::append(const char* text) {
  if (text != nullptr) text_.append(text);
}

void LvString::append(const LvString& text) { text_.append(text.text_); }

char* LvString::createCStr() const noexcept {
  char* copy = static_cast<char*>(std::malloc(text_.size() + 1));
  if (copy != nullptr) std::memcpy(copy, text_.c_str(), text_.size() + 1);
  return copy;
}

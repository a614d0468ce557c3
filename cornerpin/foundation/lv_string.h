// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_LV_STRING_H
#define CORNERPIN_FOUNDATION_LV_STRING_H

/// \file
/// The text of messages.

#include <cstddef>
#include <string>

#include "cornerpin/export.h"

/// A text of bytes, used for exception messages. A plain value: copies are independent.
class CORNERPIN_API LvString {
 public:
  /// The empty text.
  LvString() = default;
  /// Copies a NUL-terminated text; a null pointer gives the empty text.
  LvString(const char* text);  // NOLINT(google-explicit-constructor): messages are literals

  /// Formats as printf does, to any length.
  static LvString ssprintf(const char* format, ...) CORNERPIN_PRINTF(1, 2);
  /// Replaces the text by the formatted one; arguments may point into the old text.
  void sprintf(const char* format, ...) CORNERPIN_PRINTF(2, 3);

  /// \{
  /// A null pointer appends nothing. The text itself may be its argument.
  void append(const char* text);
  void append(const LvString& text);
  /// \}

  /// Number of characters, the terminating NUL not counted.
  std::size_t size() const noexcept { return text_.size(); }
  /// NUL-terminated; valid until the text changes.
  const char* c_str() const noexcept { return text_.c_str(); }

  /// A NUL-terminated copy from `malloc`: the caller releases it with `free`. Null when memory
  /// has run out.
  char* createCStr() const noexcept;

  /// \{
  /// Byte by byte.
  bool operator==(const LvString& other) const noexcept { return text_ == other.text_; }
  bool operator!=(const LvString& other) const noexcept { return text_ != other.text_; }
  /// \}

 private:
  std::string text_;
};

#endif

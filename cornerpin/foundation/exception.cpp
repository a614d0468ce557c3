// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/exception.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace {

LvString description(const LvException& exception) {
  LvString text = exception.className();
  if (exception.message.size() != 0) {
    text.append(": ");
    text.append(exception.message);
  }
  if (exception.line != 0) {
    text.append(" (");
    text.append(exception.file);
    text.append(":");
    text.append(LvString::ssprintf("%d", exception.line));
    text.append(")");
  }
  return text;
}

}  // namespace

LvException::LvException(const LvString& message) : message(message) {}

LvException::LvException(const LvString& message, const LvString& file, int line)
    : message(message), file(file), line(line) {}

LvException::~LvException() = default;

const char* LvException::what() const noexcept {
  try {
    return description(*this).createCStr();
  } catch (...) {
    return nullptr;
  }
}

LvString LvException::className() const { return "LvException"; }

void LvException::report() const {
  char* text = description(*this).createCStr();
  if (text != nullptr) std::cerr << text;
  std::free(text);
  std::cerr << std::endl;
}

MMatrixError::Handler MMatrixError::sHandler = nullptr;

MMatrixError::MMatrixError(const LvString& message) : LvException(message) {}

MMatrixError::~MMatrixError() = default;

MMatrixError::Handler MMatrixError::setErrorHandler(Handler handler) noexcept {
  const Handler previous = sHandler;
  sHandler = handler;
  return previous;
}

void MMatrixError::err(const char* format, ...) {
  char text[1000] = "";
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  if (sHandler != nullptr) {
    sHandler(text);
    return;
  }
  // Looked up once: setting or clearing the variable after the first error has no effect.
  static const bool echo = std::getenv("QXEXCEPTION") != nullptr;
  if (echo) std::cerr << "Matrix exception - " << text << std::endl;
  throw MMatrixError(text);
}

LvIllegalArgumentException::LvIllegalArgumentException(const LvString& message)
    : LvException(message) {}

LvIllegalArgumentException::LvIllegalArgumentException(const LvString& message,
                                                       const LvString& file, int line)
    : LvException(message, file, line) {}

LvIllegalArgumentException::~LvIllegalArgumentException() = default;

LvString LvIllegalArgumentException::className() const { return "LvIllegalArgumentException"; }

LvBadIndexException::LvBadIndexException(const LvString& message)
    : LvIllegalArgumentException(message) {}

LvBadIndexException::LvBadIndexException(const LvString& message, const LvString& file, int line)
    : LvIllegalArgumentException(message, file, line) {}

LvBadIndexException::~LvBadIndexException() = default;

LvString LvBadIndexException::className() const { return "LvBadIndexException"; }

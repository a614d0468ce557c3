// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_EXCEPTION_H
#define CORNERPIN_FOUNDATION_EXCEPTION_H

/// \file
/// The exceptions of the library and how matrices and vectors report errors.

#include <exception>

#include "cornerpin/export.h"
#include "cornerpin/foundation/lv_string.h"

/// Base of every exception that the library throws by itself, `std::bad_alloc` aside.
///
/// The description is the class name, then ": " and the message when there is one, then
/// " (file:line)" when the line is not 0. A file without a line is never shown.
class CORNERPIN_API LvException : public std::exception {
 public:
  /// \{
  /// Without a file and a line the description ends with the message.
  explicit LvException(const LvString& message);
  LvException(const LvString& message, const LvString& file, int line);
  /// \}
  LvException(const LvException&) = default;
  LvException& operator=(const LvException&) = default;
  ~LvException() override;

  /// The description, in a new allocation at every call: the caller releases it with `free`.
  /// Null when memory has run out.
  const char* what() const noexcept override;

  /// The name that opens the description.
  virtual LvString className() const;

  /// Writes the description and a line end to standard error.
  virtual void report() const;

  LvString message;  ///< what went wrong, without class and location
  LvString file;     ///< source file; empty for every matrix, vector, array and decomposition error
  int line = 0;      ///< source line; 0 means that there is no location
};

/// A matrix or vector error: a bad shape or index, or a LAPACK failure. Names itself
/// "LvException" in its description.
class CORNERPIN_API MMatrixError : public LvException {
 public:
  /// Called with the formatted text, which is gone when it returns.
  using Handler = void (*)(const char* message);

  /// Without a location.
  explicit MMatrixError(const LvString& message);
  MMatrixError(const MMatrixError&) = default;
  MMatrixError& operator=(const MMatrixError&) = default;
  ~MMatrixError() override;

  /// Installs a handler for all threads and returns the one that was there. Null restores
  /// throwing. Not to be called while another thread may report an error.
  static Handler setErrorHandler(Handler handler) noexcept;

  /// Reports a matrix or vector error, formatted as printf does and cut at 999 characters.
  ///
  /// With a handler installed, calls it with the text and returns: the caller carries on as if
  /// nothing had happened. Otherwise throws `MMatrixError`; when the environment variable
  /// QXEXCEPTION was set (to anything) at the first such error of the process, "Matrix
  /// exception - ", the text and a line end go to standard error first.
  static void err(const char* format, ...) CORNERPIN_PRINTF(1, 2);

  static Handler sHandler;  ///< the installed handler; null at first
};

/// An argument that a function cannot work with.
class CORNERPIN_API LvIllegalArgumentException : public LvException {
 public:
  /// \{
  /// As the base class.
  explicit LvIllegalArgumentException(const LvString& message);
  LvIllegalArgumentException(const LvString& message, const LvString& file, int line);
  /// \}
  LvIllegalArgumentException(const LvIllegalArgumentException&) = default;
  LvIllegalArgumentException& operator=(const LvIllegalArgumentException&) = default;
  ~LvIllegalArgumentException() override;

  LvString className() const override;
};

/// An array index outside its range.
class CORNERPIN_API LvBadIndexException : public LvIllegalArgumentException {
 public:
  /// \{
  /// As the base class.
  explicit LvBadIndexException(const LvString& message);
  LvBadIndexException(const LvString& message, const LvString& file, int line);
  /// \}
  LvBadIndexException(const LvBadIndexException&) = default;
  LvBadIndexException& operator=(const LvBadIndexException&) = default;
  ~LvBadIndexException() override;

  LvString className() const override;
};

#endif

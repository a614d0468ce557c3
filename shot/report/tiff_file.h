// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_TIFF_FILE_H
#define SHOT_REPORT_TIFF_FILE_H

#include <cstdarg>
#include <string>

#include "shot/report/view.h"

namespace cornerpin {

/// While it lives, the TIFF library prints nothing; afterwards it tells what it did before.
class QuietTiff {
 public:
  QuietTiff();
  ~QuietTiff();
  QuietTiff(const QuietTiff&) = delete;
  QuietTiff& operator=(const QuietTiff&) = delete;

 private:
  using Handler = void (*)(const char* where, const char* format, std::va_list values);
  Handler warning_;
  Handler error_;
};

/// The size of the first picture in a TIFF file; 0 x 0 where the file does not tell it.
PictureSize sizeOfTiff(const std::string& path);

}  // namespace cornerpin

#endif

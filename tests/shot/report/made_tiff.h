// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_REPORT_MADE_TIFF_H
#define TESTS_SHOT_REPORT_MADE_TIFF_H

#include <string>

#include "shot/report/tiff_file.h"
#include "tests/shot/report/made_pictures.h"

inline void writeTiff(const std::string& path, int width, int height) {
  const cornerpin::QuietTiff quiet;  // the writer warns of its own way to compress
  writeHalves(path, width, height, ::gdImageTiff);
}

#endif

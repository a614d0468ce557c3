// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_REPORT_MADE_PICTURES_H
#define TESTS_SHOT_REPORT_MADE_PICTURES_H

#include <gd.h>

#include <cstdio>
#include <string>

// A picture that is black on its left half and white on its right.
inline gdImagePtr halves(int width, int height) {
  gdImagePtr image = ::gdImageCreateTrueColor(width, height);
  ::gdImageFilledRectangle(image, width / 2, 0, width - 1, height - 1, 0xffffff);
  return image;
}

inline void writeJpeg(const std::string& path, int width, int height) {
  gdImagePtr image = halves(width, height);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  ::gdImageJpeg(image, file, 90);
  std::fclose(file);
  ::gdImageDestroy(image);
}

inline void writePng(const std::string& path, int width, int height) {
  gdImagePtr image = halves(width, height);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  ::gdImagePng(image, file);
  std::fclose(file);
  ::gdImageDestroy(image);
}

#endif

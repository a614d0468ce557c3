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

template <class Write>
void writeHalves(const std::string& path, int width, int height, const Write& write) {
  gdImagePtr image = halves(width, height);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  write(image, file);
  std::fclose(file);
  ::gdImageDestroy(image);
}

inline void writeJpeg(const std::string& path, int width, int height) {
  writeHalves(path, width, height,
              [](gdImagePtr image, std::FILE* file) { ::gdImageJpeg(image, file, 90); });
}

inline void writePng(const std::string& path, int width, int height) {
  writeHalves(path, width, height, ::gdImagePng);
}

inline void writeWebP(const std::string& path, int width, int height) {
  writeHalves(path, width, height, ::gdImageWebp);
}

inline void writeLosslessWebP(const std::string& path, int width, int height) {
  writeHalves(path, width, height, [](gdImagePtr image, std::FILE* file) {
    ::gdImageWebpEx(image, file, gdWebpLossless);
  });
}

inline void writeGif(const std::string& path, int width, int height) {
  writeHalves(path, width, height, ::gdImageGif);
}

#endif

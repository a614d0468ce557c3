// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/tiff_file.h"

#include <tiffio.h>

#include <cstdint>
#include <limits>
#include <memory>

namespace cornerpin {

QuietTiff::QuietTiff()
    : warning_(::TIFFSetWarningHandler(nullptr)), error_(::TIFFSetErrorHandler(nullptr)) {}

QuietTiff::~QuietTiff() {
  ::TIFFSetErrorHandler(error_);
  ::TIFFSetWarningHandler(warning_);
}

PictureSize sizeOfTiff(const std::string& path) {
  const QuietTiff quiet;
  const std::unique_ptr<TIFF, void (*)(TIFF*)> file(::TIFFOpen(path.c_str(), "r"), ::TIFFClose);
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  if (!file || ::TIFFGetField(file.get(), TIFFTAG_IMAGEWIDTH, &width) != 1 ||
      ::TIFFGetField(file.get(), TIFFTAG_IMAGELENGTH, &height) != 1)
    return {};
  constexpr std::uint32_t kMost = std::numeric_limits<int>::max();
  if (width > kMost || height > kMost) return {};
  return {static_cast<int>(width), static_cast<int>(height)};
}

}  // namespace cornerpin

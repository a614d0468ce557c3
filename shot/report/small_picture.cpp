// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/small_picture.h"

#include <gd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>

#include "shot/files/input_error.h"
#include "shot/report/picture_head.h"
#include "shot/report/tiff_file.h"

namespace cornerpin {

namespace {

constexpr int kQuality = 75;

using Image = std::unique_ptr<gdImage, void (*)(gdImagePtr)>;

// What the library would print: whether a picture is whole is told by whoever reads it.
void saysNothing(int /*priority*/, const char* /*format*/, va_list /*values*/) {}

using Reader = gdImagePtr (*)(std::FILE* file);

Reader readerOf(PictureKind kind) {
  switch (kind) {
    case PictureKind::Png:
      return ::gdImageCreateFromPng;
    case PictureKind::WebP:
      return ::gdImageCreateFromWebp;
    case PictureKind::Gif:
      return ::gdImageCreateFromGif;
    case PictureKind::Tiff:
      return ::gdImageCreateFromTiff;
    case PictureKind::Jpeg:
      break;
  }
  return ::gdImageCreateFromJpeg;
}

Image imageIn(const std::string& path, PictureKind kind) {
  ::gdSetErrorMethod(saysNothing);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  if (!file) throw InputError(path, "cannot be opened");
  const QuietTiff quiet;
  Image image(readerOf(kind)(file.get()), ::gdImageDestroy);
  if (!image) throw InputError(path, "is not a whole picture");
  return image;
}

Image shrunk(Image image, int widest) {
  const int width = gdImageSX(image.get());
  const int height = gdImageSY(image.get());
  if (width <= widest) return image;
  const int lower = static_cast<int>(
      std::max<std::int64_t>((std::int64_t{height} * widest + width / 2) / width, 1));
  Image small(::gdImageCreateTrueColor(widest, lower), ::gdImageDestroy);
  if (!small) throw std::bad_alloc();
  ::gdImageCopyResampled(small.get(), image.get(), 0, 0, 0, 0, widest, lower, width, height);
  return small;
}

}  // namespace

std::string smallPicture(const std::string& path, int widest) {
  const Image small = shrunk(imageIn(path, headOf(path).kind), widest);
  int size = 0;
  const std::unique_ptr<void, void (*)(void*)> bytes(::gdImageJpegPtr(small.get(), &size, kQuality),
                                                     ::gdFree);
  if (!bytes) throw std::bad_alloc();
  return {static_cast<const char*>(bytes.get()), static_cast<std::size_t>(size)};
}

}  // namespace cornerpin

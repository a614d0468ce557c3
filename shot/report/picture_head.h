// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PICTURE_HEAD_H
#define SHOT_REPORT_PICTURE_HEAD_H

#include <cstdint>
#include <string>

#include "shot/report/view.h"

namespace cornerpin {

enum class PictureKind { Jpeg, Png, WebP, Gif, Tiff };

/// What a picture's file says at its beginning.
struct PictureHead {
  PictureKind kind = PictureKind::Jpeg;
  PictureSize size;
};

/// Reads the head of a picture's file; of the file a few bytes alone. Throws `InputError` where it
/// cannot be read, is of none of these kinds, cut off or an animated WebP file, and where it has
/// more than `kMostPixels`.
PictureHead headOf(const std::string& path);

/// Of 8192 x 8192: 268 MB in memory, and as much as that again and more while a JPEG file is read
/// that comes in several scans.
constexpr std::int64_t kMostPixels = std::int64_t{1} << 26;

/// Whether a file begins as one of a picture does.
bool isPicture(const std::string& path);

}  // namespace cornerpin

#endif

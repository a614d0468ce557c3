// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_READ_BACK_H
#define SHOT_FILES_READ_BACK_H

#include <cstddef>
#include <string>

#include "shot/files/format.h"
#include "shot/files/pin.h"
#include "shot/files/result_transforms.h"
#include "shot/plane/picture.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// How a file that was written differs from what was to be written.
struct ReadBack {
  double largest = 0.0;         ///< of all coordinates; infinite where one of them leads nowhere
  Scale scale = Scale::Pixels;  ///< of that: others where the picture's size is not known
  std::size_t missing = 0;      ///< positions that the file lacks, or frames of transforms
  std::size_t added = 0;        ///< that it has besides

  bool isWhole() const { return missing == 0 && added == 0; }
};

/// Reads tracks that were just written in a format and compares them. What is given has the picture
/// of the format, as its writer gets it. Tracks that the format spells otherwise are found by their
/// places; positions without a weight may be missing.
///
/// Throws `InputError` where the file cannot be read, which is a difference, too.
ReadBack readBack(const std::string& path, Format format, const Tracks& written);

/// The same for a pin. Frames with a corner that goes nowhere have no key in formats of corners.
/// Where a file has transforms, those of the pin's rectangle's corners are compared, and where it
/// has positions, rotations and scales, where these carry the corners.
ReadBack readBack(const std::string& path, Format format, const Pin& written,
                  const PinStyle& style);

/// The same for a result in JSON or CSV: where its transforms, those between frames, too, carry the
/// corners of its quads.
ReadBack readBack(const std::string& path, Format format, const ResultTransforms& written);

/// "read back: largest difference 0 px", and what is missing.
std::string textOf(const ReadBack& read);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_TRANSFORMS_H
#define SHOT_FILES_RESULT_TRANSFORMS_H

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "shot/plane/picture.h"
#include "shot/solve/named_quad.h"
#include "shot/solve/result.h"

namespace cornerpin {

struct FrameTransform {
  int frame = 0;
  Status status = Status::Solved;
  Homography h{};  ///< reference frame to this frame; the last element is 1
};

/// What pins are made of in a result; all as it is in a `ShotResult`.
struct ResultTransforms {
  Picture picture;
  int baseFrame = 0;
  int referenceFrame = 0;
  Point baseCentre;
  std::vector<NamedQuad> quads;
  std::deque<FrameTransform> frames;
  std::deque<BetweenFrame> between;
};

ResultTransforms transformsOf(const ShotResult& result);

/// Whether a file that begins like this is a result in CSV (`writeResultCsv`).
bool isResultCsv(std::string_view beginning);

/// Reads from a result in CSV what pins are made of. A quad without a name is called "quad". In
/// front of the horizon is the middle of the quads' corners. The file does not tell of its picture,
/// nor whether a quad was asked for.
///
/// Columns are found by their names. Throws `InputError` with file and line for a file that lacks
/// one of these, for a value that is not as `writeResultCsv` writes it, for frames that do not
/// follow one another, where no frame shows all corners of a quad, for more than `kMaxFrames`
/// frames or transforms between them, and for more than `kMostQuads`.
ResultTransforms readResultCsv(const std::string& path);
constexpr std::size_t kMostQuads = 100'000;

}  // namespace cornerpin

#endif

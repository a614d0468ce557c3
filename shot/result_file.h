// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_RESULT_FILE_H
#define SHOT_RESULT_FILE_H

#include <array>
#include <optional>
#include <string>

#include "shot/conditioning.h"
#include "shot/output_file.h"
#include "shot/solve.h"

namespace cornerpin {

/// Four corners in the base frame.
using Quad = std::array<Point, 4>;

/// Reads "x0,y0,x1,y1,x2,y2,x3,y3". Throws `std::invalid_argument`.
Quad parseQuad(const std::string& text);

enum class Format { Json, Csv };

/// By the path's extension, .json or .csv in any case; none for others.
std::optional<Format> formatOf(const std::string& path);

/// Writes a result. Numbers are the shortest that read back as the same double, in every locale.
///
/// JSON: {"cornerpin": 1, "base_frame", "base_tracks", "left_out", "units", "loss", "seed",
/// "frames": [...]}, each frame {"frame", "status", "tracks", "rms", "h": three rows of three}; a
/// held frame has "reason", a solved one "inliers", "inlier_rms", "scale", "stage" and, unless the
/// loss is none, "why"; one frame per line.
/// CSV: frame,h00,h01,...,h22,rms,tracks,status,inliers,inlier_rms,scale,stage.
///
/// With a quad, each frame also has the corners' places: "quad" in JSON, four pairs, and the
/// columns qx0,qy0,...,qx3,qy3 at the end in CSV.
///
/// What has no value is null in JSON and empty in CSV: the rms of a frame without active tracks,
/// the scale with loss none, what only solved frames have (CSV), and a corner on or behind the
/// horizon.
void writeResult(const ShotResult& result, Format format, const std::optional<Quad>& quad,
                 OutputFile& out);

}  // namespace cornerpin

#endif

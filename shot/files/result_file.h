// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_FILE_H
#define SHOT_FILES_RESULT_FILE_H

#include <optional>
#include <string>

#include "shot/files/output_file.h"
#include "shot/plane/similarity.h"
#include "shot/solve/shot_solver.h"
#include "shot/trust/trust.h"

namespace cornerpin {

/// Reads "x0,y0,x1,y1,x2,y2,x3,y3". Throws `std::invalid_argument`.
Quad parseQuad(const std::string& text);

enum class Format { Json, Csv };

/// By the path's extension, .json or .csv in any case; none for others.
std::optional<Format> formatOf(const std::string& path);

/// Writes a result. Numbers are the shortest that read back as the same double, in every locale.
///
/// Both formats are described in docs/json.md. CSV:
/// frame,h00,h01,...,h22,rms,tracks,status,inliers,inlier_rms,scale,stage, with a quad the corners'
/// places qx0,qy0,...,qx3,qy3, then model,on_top,noise,deviation0,...,deviation3,why,reason.
///
/// What has no value is null in JSON and empty in CSV: the rms of a frame without active tracks,
/// the scale with loss none, what only some frames have (CSV), and a corner on or behind the
/// horizon.
void writeResult(const ShotResult& result, const ShotTrust& trust, Format format,
                 const std::optional<Quad>& quad, OutputFile& out);

/// The header of the file that explains: a row for each track of each frame but the base frame.
constexpr const char* kExplanationHeader = "track,frame,residual,weight,leverage,influence\n";

/// A row, with its line end. The name is quoted where it has to be.
std::string explanationRow(const std::string& track, int frame, const TrackInfluence& influence);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_QUAD_FILE_H
#define SHOT_FILES_QUAD_FILE_H

#include <optional>
#include <string>
#include <vector>

#include "shot/files/json_field.h"
#include "shot/plane/points.h"
#include "shot/solve/named_quad.h"

namespace cornerpin {

struct QuadFile {
  std::vector<NamedQuad> quads;
  std::optional<int> frame;  ///< on which they were read, where the file says it
};

/// Reads quads from a JSON file; "-" is standard input. It holds an object with the names and the
/// corners, {"sign": [[x,y],[x,y],[x,y],[x,y]], ...}, taken in the order of the names, or one with
/// a list `quads` of objects with `name` and `corners`, taken in the order of the list, and if it
/// likes `reference_frame`; so a result is such a file.
///
/// Throws `InputError` for a file that is nothing of the kind, without quads, or with quads that
/// have a flaw (`flawOf`).
QuadFile readQuads(const std::string& path);

/// Four corners, [[x,y],[x,y],[x,y],[x,y]].
Quad cornersIn(const JsonField& field);

/// The same for writing, and a quad as an object with `name` and `corners`.
nlohmann::ordered_json cornersJson(const Quad& corners);
nlohmann::ordered_json quadJson(const NamedQuad& quad);

/// A list of objects with `name` and `corners`.
std::vector<NamedQuad> quadsIn(const JsonField& list);

}  // namespace cornerpin

#endif

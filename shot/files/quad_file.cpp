// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/quad_file.h"

#include "shot/files/input_error.h"

namespace cornerpin {

Quad cornersIn(const JsonField& field) {
  Quad quad;
  field.list(quad.size());
  for (std::size_t i = 0; i < quad.size(); ++i) {
    const JsonField corner = field.at(i);
    corner.list(2);
    quad[i] = {corner.at(std::size_t{0}).number(), corner.at(std::size_t{1}).number()};
  }
  return quad;
}

std::vector<NamedQuad> quadsIn(const JsonField& list) {
  std::vector<NamedQuad> quads;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const JsonField quad = list.at(i);
    quads.push_back({quad.at("name").text(), cornersIn(quad.at("corners"))});
  }
  return quads;
}

nlohmann::ordered_json cornersJson(const Quad& corners) {
  auto list = nlohmann::ordered_json::array();
  for (Point p : corners) list.push_back({p.x, p.y});
  return list;
}

nlohmann::ordered_json quadJson(const NamedQuad& quad) {
  return {{"name", quad.name}, {"corners", cornersJson(quad.corners)}};
}

QuadFile readQuads(const std::string& path) {
  const JsonFile file(path, JsonFile::Names::Once);
  const JsonField whole = file.whole();
  QuadFile result;
  if (whole.has("quads")) {
    result.quads = quadsIn(whole.at("quads"));
    if (whole.has("reference_frame")) result.frame = whole.at("reference_frame").integer();
  } else {
    for (const auto& member : whole.json().items()) {
      result.quads.push_back({member.key(), cornersIn(whole.at(member.key()))});
    }
  }
  if (result.quads.empty()) throw InputError(file.name(), "there is no quad");
  if (const std::string flaw = flawOf(result.quads); !flaw.empty()) {
    throw InputError(file.name(), flaw);
  }
  return result;
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_INTERFACE_RESULT_H
#define SHOT_INTERFACE_RESULT_H

#include <memory>
#include <string>
#include <vector>

#include "cornerpin/shot.h"
#include "shot/interface/tracks.h"
#include "shot/solve/named_quad.h"
#include "shot/solve/result.h"

namespace cornerpin::shot {

struct Result::Data {
  ShotResult result;
  std::shared_ptr<const cornerpin::Tracks> tracks;  ///< that take part; null: not at hand
  std::vector<std::string> notes;                   ///< on the file of the tracks
  std::string source;      ///< the file that the tracks, or it itself, were read from
  bool explained = false;  ///< whether it holds the influences
};

std::vector<NamedQuad> namedQuadsOf(const std::vector<Quad>& quads);

}  // namespace cornerpin::shot

#endif

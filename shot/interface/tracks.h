// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_INTERFACE_TRACKS_H
#define SHOT_INTERFACE_TRACKS_H

#include <optional>
#include <string>
#include <vector>

#include "cornerpin/shot.h"
#include "shot/solve/provenance.h"
#include "shot/solve/tracks.h"

namespace cornerpin::shot {

struct Tracks::Data {
  cornerpin::Tracks tracks;
  std::optional<InputFile> input;  ///< none where they are from no file
  std::vector<std::string> notes;
};

}  // namespace cornerpin::shot

#endif

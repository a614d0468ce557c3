// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_INTERFACE_TRACKS_H
#define SHOT_INTERFACE_TRACKS_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cornerpin/shot.h"
#include "shot/solve/provenance.h"
#include "shot/solve/tracks.h"

namespace cornerpin::shot {

struct Tracks::Data {
  cornerpin::Tracks tracks;
  std::string source;                         ///< the path that they were read from; empty for none
  std::optional<cornerpin::InputFile> input;  ///< none where they are from no file
  std::vector<std::string> notes;
};

/// Those of all tracks that take part in a solve (`Options::frames`, `keep` and `drop`): they
/// themselves, a copy of them, or where they may be changed what was made of them.
std::shared_ptr<const cornerpin::Tracks> takingPart(const std::shared_ptr<const Tracks::Data>& all,
                                                    const Options& options, bool mayChange);

}  // namespace cornerpin::shot

#endif

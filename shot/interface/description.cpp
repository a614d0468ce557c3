// SPDX-License-Identifier: BSD-3-Clause
#include <string>

#include "cornerpin/shot.h"
#include "shot/files/file_look.h"
#include "shot/files/result_info.h"
#include "shot/files/result_reader.h"
#include "shot/files/track_info.h"
#include "shot/files/track_reader.h"
#include "shot/interface/boundary.h"

namespace cornerpin::shot {

FileDescription describeFile(const std::string& path, bool colour) {
  return atBoundary({}, [&](const cornerpin::Progress&) {
    const FileLook look = lookAt(path);
    if (look.json)
      return FileDescription{resultInfo(cornerpin::readResult(look.path), look, colour), {}};
    ReadTrace trace;
    trace.digest.emplace();
    // Asked for by number, frames far from all others are no mistake.
    const cornerpin::Tracks tracks =
        cornerpin::readTracks(look.path, {}, {-kFurthestFrame, kFurthestFrame}, &trace);
    return FileDescription{trackInfo(tracks, look, trace), trace.notes};
  });
}

}  // namespace cornerpin::shot

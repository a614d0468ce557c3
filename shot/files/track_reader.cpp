// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_reader.h"

#include "shot/files/byte_source.h"
#include "shot/files/file_kind.h"
#include "shot/files/input_error.h"
#include "shot/files/json_reader.h"
#include "shot/files/track_input.h"
#include "shot/files/uv_json.h"

namespace cornerpin {

namespace {

Tracks readAs(Format format, const TrackInput& input) {
  switch (format) {
    case Format::Csv:
      return readCsv(input);
    case Format::Json:
      return readJson(input);
    case Format::Points:
      return readPoints(input);
    case Format::Blocks:
      return readBlocks(input);
    case Format::Paths:
      return readPaths(input);
    case Format::Rz2:
      return readRz2(input);
    case Format::Uv:
      return readUv(input);
    case Format::Keyframes:
      return readKeyframes(input);
    case Format::Nk:
      return readNk(input);
    default:
      throw InputError(input.source.name(),
                       std::string("no tracks are read from ") + factsOf(format).word + " files");
  }
}

}  // namespace

Tracks readTracks(const std::string& path, const Progress& progress, const FrameRange& frames,
                  ReadTrace* trace) {
  ReadTrace nobody;
  ReadTrace& noted = trace != nullptr ? *trace : nobody;
  ByteSource source(path, noted.digest ? &*noted.digest : nullptr);
  const std::string_view beginning = source.beginning();
  if (const std::string kind = otherThanText(beginning); !kind.empty()) {
    throw InputError(source.name(), kind);
  }
  if (!noted.format) noted.format = formatIn(beginning);
  const TrackInput input = {source, progress, frames, noted};
  if (*noted.format != Format::Json || isTracksJson(beginning)) {
    return readAs(*noted.format, input);
  }
  if (const std::string other = otherThanTracks(beginning); !other.empty()) {
    throw InputError(source.name(), other);
  }
  noted.format = Format::Uv;
  return readUvJson(input);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include <cerrno>
#include <string>
#include <string_view>

#include "cornerpin/shot.h"
#include "shot/files/byte_source.h"
#include "shot/files/csv_records.h"
#include "shot/files/file_kind.h"
#include "shot/files/file_look.h"
#include "shot/files/format.h"
#include "shot/files/json_reader.h"
#include "shot/files/result_info.h"
#include "shot/files/result_reader.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_info.h"
#include "shot/files/track_reader.h"
#include "shot/files/unreadable.h"
#include "shot/interface/boundary.h"

namespace cornerpin::shot {

namespace {

bool hasTrackColumns(ByteSource& source) {
  CsvRecords csv(source);
  if (!csv.next()) return false;
  const auto has = [&csv](std::string_view name) {
    for (std::size_t i = 0; i < csv.fieldCount(); ++i) {
      if (csv.field(i) == name) return true;
    }
    return false;
  };
  return has("track") && has("frame") && has("x") && has("y");
}

const char* heldInCsv(ByteSource& source) {
  if (isResultCsv(source.beginning())) return "result";
  try {
    return hasTrackColumns(source) ? "tracks" : "";
  } catch (const cornerpin::InputError&) {
    return "";  // its first line is none of CSV
  }
}

const char* heldInJson(std::string_view beginning) {
  if (otherThanTracks(beginning).empty()) return "tracks";
  return beginning.find("\"cornerpin\"") != std::string_view::npos ? "result" : "";
}

}  // namespace

FileKind fileKindOf(const std::string& path) {
  return atBoundary({}, [&](const cornerpin::Progress&) {
    if (path == "-") throw cornerpin::InputError(path, whyUnreadable(path, ENOENT));
    ByteSource source(path);
    const std::string_view beginning = source.beginning();
    if (beginning.empty() || !otherThanText(beginning).empty()) return FileKind{};
    const Format format = formatIn(beginning);
    const char* holds = format == Format::Csv    ? heldInCsv(source)
                        : format == Format::Json ? heldInJson(beginning)
                                                 : "tracks";
    return FileKind{holds, factsOf(format).word};
  });
}

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

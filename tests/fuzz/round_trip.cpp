// SPDX-License-Identifier: BSD-3-Clause
#include "tests/fuzz/round_trip.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <map>
#include <tuple>
#include <utility>

#include "shot/files/input_error.h"
#include "shot/files/pin.h"
#include "shot/files/provenance_json.h"
#include "shot/files/result_file.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_reader.h"
#include "shot/files/track_writers.h"
#include "tests/support/files.h"

namespace cornerpin {

namespace {

// What a file carries of tracks.
struct Carried {
  bool names = true;
  bool weights = true;  // otherwise rows of weight 0 are not there
};

using Row = std::tuple<std::int32_t, double, double, float>;
using NamedRows = std::pair<std::string, std::vector<Row>>;

// By name where names count, otherwise by their rows.
std::vector<NamedRows> tracksIn(const Tracks& tracks, const Carried& carried) {
  std::map<std::int32_t, std::vector<Row>> rows;
  for (const Observation& row : tracks.observations) {
    if (!carried.weights && row.weight == 0.0f) continue;
    rows[row.track].emplace_back(row.frame, row.x, row.y, carried.weights ? row.weight : 1.0f);
  }
  std::vector<NamedRows> all;
  for (auto& [track, of] : rows) {
    std::sort(of.begin(), of.end());
    all.emplace_back(carried.names ? tracks.names[static_cast<std::size_t>(track)] : "", of);
  }
  std::sort(all.begin(), all.end());
  return all;
}

std::string flawOf(const Tracks& first, const Tracks& again, const Carried& carried) {
  const std::vector<NamedRows> a = tracksIn(first, carried);
  const std::vector<NamedRows> b = tracksIn(again, carried);
  if (a.size() != b.size()) {
    return std::to_string(a.size()) + " tracks have become " + std::to_string(b.size());
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].first != b[i].first) return "\"" + a[i].first + "\" is named \"" + b[i].first + "\"";
    if (a[i].second != b[i].second) return "the rows of track \"" + a[i].first + "\" differ";
  }
  return "";
}

bool saysOfNames(const WriteNotes& notes) {
  return std::any_of(notes.begin(), notes.end(), [](const std::string& note) {
    return note.find("the name ") != std::string::npos;
  });
}

class Trip {
 public:
  Trip(Format format, std::string_view bytes) : path_(folder_ / "in") {
    std::ofstream(path_, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    trace_.format = format;
  }

  RoundTrip run() {
    RoundTrip result;
    try {
      tracks_ = readTracks(path_, {}, {}, &trace_);
    } catch (const InputError&) {
      return result;
    }
    result.isRead = true;
    result.flaw = writtenAndRead();
    return result;
  }

 private:
  std::string writtenAndRead() {
    switch (*trace_.format) {
      case Format::Json:
        return again(Format::Json, writeJsonTracks);
      case Format::Points:
        return again(Format::Points, writePointsTracks);
      case Format::Blocks:
        return again(Format::Blocks, writeBlocksTracks);
      case Format::Uv:
        return again(Format::Uv, writeUvTracks);
      case Format::Nk:
        return withPin(again(Format::Nk, writeNkTracks), Format::Nk, writeNkPin);
      case Format::Keyframes:
        return withPin(again(Format::Csv, writeCsvTracks), Format::Keyframes, writeKeyframesPin);
      default:
        return again(Format::Csv, writeCsvTracks);
    }
  }

  template <class WritePin>
  std::string withPin(const std::string& flaw, Format format, WritePin writePin) {
    const bool hasSize = tracks_.picture.width && tracks_.picture.height;
    if (!flaw.empty() || !trace_.isPin || !hasSize) return flaw;
    const Pin pin = pinOf(tracks_, "fuzzed");
    // Keyframes are those in which every corner is somewhere.
    if (format == Format::Keyframes && !hasAllCorners()) return flaw;
    return again(format, [&](const Tracks&, OutputFile& out) { return writePin(pin, {}, out); });
  }

  bool hasAllCorners() const {
    std::map<std::int32_t, std::size_t> corners;
    for (const Observation& row : tracks_.observations) {
      if (row.weight > 0.0f) ++corners[row.frame];
    }
    return std::all_of(corners.begin(), corners.end(),
                       [](const auto& frame) { return frame.second == kCornerNames.size(); });
  }

  template <class Write>
  std::string again(Format format, Write write) {
    const std::string path = folder_ / "out";
    OutputFile out(path);
    const WriteNotes notes = write(tracks_, out);
    out.commit();
    Carried carried;
    carried.names = !saysOfNames(notes);
    carried.weights = format == Format::Csv || format == Format::Json || format == Format::Uv;
    ReadTrace trace;
    trace.format = format;
    try {
      const Tracks read = readTracks(path, {}, {}, &trace);
      if (format == Format::Json && pictureJson(tracks_.picture) != pictureJson(read.picture)) {
        return "the picture differs";
      }
      return flawOf(tracks_, read, carried);
    } catch (const InputError& error) {
      return std::string("what was written is refused: ") + error.what() + "\n" + readFile(path);
    }
  }

  const TemporaryFolder folder_;
  std::string path_;
  ReadTrace trace_;
  Tracks tracks_;
};

constexpr std::size_t kMostRows = 2000;

ShotResult resultWith(const ResultTransforms& transforms) {
  ShotResult result;
  result.baseFrame = transforms.baseFrame;
  result.referenceFrame = transforms.referenceFrame;
  result.baseCentre = transforms.baseCentre;
  result.quads = transforms.quads;
  result.between.assign(transforms.between.begin(), transforms.between.end());
  for (const FrameTransform& frame : transforms.frames) {
    FrameResult made;
    made.frame = frame.frame;
    made.verdict.status = frame.status;
    made.h = frame.h;
    made.figures = baseFrameFigures(transforms.quads.size());
    result.frames.push_back(std::move(made));
  }
  return result;
}

// The file names no quad where there is one alone.
std::string flawOf(const ResultTransforms& first, const ResultTransforms& again) {
  const auto isSameFrame = [](const FrameTransform& a, const FrameTransform& b) {
    return a.frame == b.frame && a.status == b.status && a.h == b.h;
  };
  const auto isSameBetween = [](const BetweenFrame& a, const BetweenFrame& b) {
    return a.frame == b.frame && a.h == b.h;
  };
  const auto isSameQuad = [&](const NamedQuad& a, const NamedQuad& b) {
    return (a.name == b.name || first.quads.size() == 1) && a.corners == b.corners;
  };
  const auto areSame = [](const auto& a, const auto& b, const auto& isSame) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame);
  };
  if (!areSame(first.frames, again.frames, isSameFrame)) return "the frames differ";
  if (!areSame(first.between, again.between, isSameBetween)) return "those between frames differ";
  if (!areSame(first.quads, again.quads, isSameQuad)) return "the quads differ";
  return first.referenceFrame == again.referenceFrame ? "" : "the reference frame differs";
}

RoundTrip tripOfResult(std::string_view bytes) {
  const TemporaryFolder folder;
  writeFile(folder / "in", std::string(bytes));
  RoundTrip trip;
  ResultTransforms first;
  try {
    first = readResultCsv(folder / "in");
  } catch (const InputError&) {
    return trip;
  }
  trip.isRead = true;
  const bool isTold = std::any_of(first.frames.begin(), first.frames.end(),
                                  [](const FrameTransform& f) { return f.h == kIdentity; });
  const std::size_t frames = first.frames.size() + first.between.size();
  if (!isTold || frames * first.quads.size() > kMostRows) return trip;
  OutputFile out(folder / "out");
  writeResult(resultWith(first), Format::Csv, out);
  out.commit();
  try {
    trip.flaw = flawOf(first, readResultCsv(folder / "out"));
  } catch (const InputError& error) {
    trip.flaw = std::string("what was written is refused: ") + error.what() + "\n" +
                readFile(folder / "out");
  }
  return trip;
}

}  // namespace

const std::vector<FuzzedReader>& fuzzedReaders() {
  static const std::vector<FuzzedReader> all = {{"csv", Format::Csv},
                                                {"json", Format::Json},
                                                {"points", Format::Points},
                                                {"nk", Format::Nk},
                                                {"blocks", Format::Blocks},
                                                {"keyframes", Format::Keyframes},
                                                {"paths", Format::Paths},
                                                {"rz2", Format::Rz2},
                                                {"uv", Format::Uv},
                                                {"uv_json", Format::Json},
                                                {"result_csv", Format::Csv, true}};
  return all;
}

RoundTrip roundTrip(Format format, std::string_view bytes) { return Trip(format, bytes).run(); }

RoundTrip roundTrip(const FuzzedReader& reader, std::string_view bytes) {
  return reader.isOfResults ? tripOfResult(bytes) : roundTrip(reader.format, bytes);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/export.h"

#include <fmt/format.h>

#include <stdexcept>

#include "shot/files/conversion.h"
#include "shot/files/read_back.h"
#include "shot/files/result_file.h"
#include "shot/files/result_pin.h"
#include "shot/files/track_writers.h"
#include "shot/solve/good_tracks.h"

namespace cornerpin {

namespace {

bool isResult(Format format) { return format == Format::Json || format == Format::Csv; }

bool isOneOf(Format format, std::initializer_list<Format> formats) {
  for (Format one : formats) {
    if (format == one) return true;
  }
  return false;
}

bool holds(Format format, ExportKind kind) {
  switch (kind) {
    case ExportKind::Pin:
      return factsOf(format).writesPins;
    case ExportKind::Stabilise:
      return factsOf(format).writesPins && !isResult(format);
    case ExportKind::Matrix:
      return isResult(format) || isOneOf(format, {Format::Nk, Format::Usda});
    default:
      return factsOf(format).writesTracks;
  }
}

PinKind pinKindOf(ExportKind kind) {
  if (kind == ExportKind::Stabilise) return PinKind::Stabilise;
  return kind == ExportKind::Matrix ? PinKind::Matrix : PinKind::Pin;
}

const char* wordOf(ExportKind kind) {
  switch (kind) {
    case ExportKind::Pin:
      return "pin";
    case ExportKind::Stabilise:
      return "stabilise";
    case ExportKind::Matrix:
      return "matrix";
    default:
      return "tracks";
  }
}

std::string formatsThatHold(ExportKind kind) {
  std::string words;
  for (const FormatFacts& facts : allFormats()) {
    if (holds(facts.format, kind)) words += (words.empty() ? "" : ", ") + std::string(facts.word);
  }
  return words;
}

// Matrices need no rectangle; points of corners need no more than the corners.
bool needsSize(const Export& what) {
  return what.kind == ExportKind::Pin || what.kind == ExportKind::Stabilise ||
         what.format == Format::Keyframes;
}

std::string sizeText(const Picture& picture) {
  return fmt::format("{}x{}", picture.width.value_or(0), picture.height.value_or(0));
}

// Frames that are written as they are, to a file that counts from the clip's first.
void noteFrames(const Picture& from, Format format, int first, WriteNotes& notes) {
  const FormatFacts& facts = factsOf(format);
  const std::optional<int>& begins = facts.picture.firstFrame;
  if (!begins || from.firstFrame || first == *begins) return;
  notes.push_back(
      fmt::format("{} files count frames from {}, and nothing tells the clip's first frame: frames "
                  "stay as they are, from {} on; --first-frame moves them",
                  facts.word, *begins, first));
}

WriteNotes write(const Tracks& tracks, Format format, OutputFile& out) {
  switch (format) {
    case Format::Csv:
      return writeCsvTracks(tracks, out);
    case Format::Json:
      return writeJsonTracks(tracks, out);
    case Format::Points:
      return writePointsTracks(tracks, out);
    case Format::Nk:
      return writeNkTracks(tracks, out);
    case Format::Blocks:
      return writeBlocksTracks(tracks, out);
    case Format::Uv:
      return writeUvTracks(tracks, out);
    default:
      throw std::invalid_argument(flawOf(format, ExportKind::Tracks));
  }
}

WriteNotes write(const Pin& pin, Format format, const PinStyle& style, OutputFile& out) {
  switch (format) {
    case Format::Nk:
      return writeNkPin(pin, style, out);
    case Format::Keyframes:
      return writeKeyframesPin(pin, style, out);
    case Format::Blender:
      return writeBlenderPin(pin, out);
    case Format::Natron:
      return writeNatronPin(pin, out);
    case Format::Usda:
      return writeUsdaPin(pin, style, out);
    default:
      return write(tracksOf(pin), format, out);
  }
}

}  // namespace

std::string readBackText(const std::string& path, Format format, const Written& written) {
  if (written.tracks) return textOf(readBack(path, format, *written.tracks));
  if (written.pin) return textOf(readBack(path, format, *written.pin, written.style));
  return textOf(readBack(path, format, *written.transforms));
}

std::string flawOf(Format format, ExportKind kind) {
  if (holds(format, kind)) return "";
  const char* word = factsOf(format).word;
  if (kind == ExportKind::Pin && factsOf(format).writesTracks) {
    return fmt::format("{} files hold tracks, no pins: add --as tracks, or write one of {}", word,
                       formatsThatHold(kind));
  }
  if (kind == ExportKind::Tracks && factsOf(format).writesPins) {
    return fmt::format(
        "{} files hold pins, no tracks: cornerpin solve makes pins of tracks, which as they are go "
        "to {}",
        word, formatsThatHold(kind));
  }
  return fmt::format("--as {} is not written to {} files, but to {}", wordOf(kind), word,
                     formatsThatHold(kind));
}

void requireOneQuad(const std::vector<NamedQuad>& quads) {
  if (quads.size() < 2) return;
  throw std::invalid_argument(fmt::format(
      "a pin has four corners, and there are {} quads: give one with --quad", quads.size()));
}

const NamedQuad* pinnedQuad(const ShotResult& result) {
  const auto& options = result.provenance.options;
  if (!options || options->quads.empty()) return nullptr;
  requireOneQuad(options->quads);
  return &result.quads.at(0);
}

void requireKnown(const Export& what, const Picture& picture, const std::string& file) {
  if (isResult(what.format) && what.kind != ExportKind::Tracks) return;
  const bool sized = what.kind != ExportKind::Tracks && needsSize(what);
  pictureFor(what.format, picture, file, sized ? Needs::Size : Needs::Conversion);
}

Written writeTracks(const Tracks& tracks, Format format, const std::string& file, OutputFile& out) {
  Written written;
  const Picture to = pictureFor(format, tracks.picture, file);
  written.tracks = converted(tracks, to);
  if (takesSize(tracks.picture, to)) written.size = sizeText(to);
  written.notes = write(*written.tracks, format, out);
  const std::vector<Observation>& rows = written.tracks->observations;
  if (!rows.empty()) noteFrames(tracks.picture, format, rows.front().frame, written.notes);
  return written;
}

Written writePin(const Pin& pin, Format format, const PinStyle& style, const std::string& file,
                 OutputFile& out) {
  Written written;
  const Picture to = pictureFor(format, pin.picture, file);
  written.pin = converted(pin, to);
  if (takesSize(pin.picture, to)) written.size = sizeText(to);
  written.style = style;
  written.notes = write(*written.pin, format, style, out);
  if (!pin.frames.empty()) noteFrames(pin.picture, format, pin.frames.front().frame, written.notes);
  return written;
}

Written writePin(const Tracks& corners, const Export& what, const std::string& file,
                 OutputFile& out) {
  if (holds(what.format, ExportKind::Tracks) && what.format != Format::Nk) {
    return writeTracks(corners, what.format, file, out);
  }
  requireKnown(what, corners.picture, file);
  Written written = writePin(pinOf(corners, "pin"), what.format, what.style, file, out);
  if (needsSize(what)) written.size = sizeText(corners.picture);
  return written;
}

Written writePin(const ResultTransforms& result, const NamedQuad* quad, const Export& what,
                 const std::string& file, OutputFile& out) {
  requireKnown(what, result.picture, file);
  const PinKind kind = pinKindOf(what.kind);
  PinStyle style = what.style;
  if (kind == PinKind::Matrix) style.nk = PinStyle::Nk::Matrix;
  const Pin pin = pinOf(result, kind, kind == PinKind::Pin ? quad : nullptr);
  Written written = writePin(pin, what.format, style, file, out);
  if (needsSize(what)) written.size = sizeText(result.picture);
  return written;
}

Written writeExport(const Export& what, const ShotResult& result, const Tracks* tracks,
                    const std::string& file, OutputFile& out, const Progress& progress) {
  requireKnown(what, result.provenance.picture, file);
  if (what.kind == ExportKind::Tracks) {
    return writeTracks(goodTracks(*tracks, result), what.format, file, out);
  }
  if (isResult(what.format)) {
    writeResult(result, what.format, out, progress);
    Written written;
    written.transforms = transformsOf(result);
    return written;
  }
  const NamedQuad* quad = what.kind == ExportKind::Pin ? pinnedQuad(result) : nullptr;
  return writePin(transformsOf(result), quad, what, file, out);
}

}  // namespace cornerpin

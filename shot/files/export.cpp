// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/export.h"

#include <fmt/format.h>

#include <stdexcept>

#include "shot/files/conversion.h"
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

}  // namespace

std::string flawOf(Format format, ExportKind kind) {
  if (holds(format, kind)) return "";
  const char* word = factsOf(format).word;
  if (kind == ExportKind::Pin && factsOf(format).writesTracks) {
    return fmt::format("{} files hold tracks, no pins: add --as tracks, or write one of {}", word,
                       formatsThatHold(kind));
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

WriteNotes writeTracks(const Tracks& tracks, Format format, const std::string& file,
                       OutputFile& out) {
  const Tracks ready = converted(tracks, pictureFor(format, tracks.picture, file));
  switch (format) {
    case Format::Csv:
      return writeCsvTracks(ready, out);
    case Format::Json:
      return writeJsonTracks(ready, out);
    case Format::Points:
      return writePointsTracks(ready, out);
    case Format::Nk:
      return writeNkTracks(ready, out);
    case Format::Blocks:
      return writeBlocksTracks(ready, out);
    case Format::Uv:
      return writeUvTracks(ready, out);
    default:
      throw std::invalid_argument(flawOf(format, ExportKind::Tracks));
  }
}

WriteNotes writePin(const Pin& pin, Format format, const PinStyle& style, const std::string& file,
                    OutputFile& out) {
  const Pin ready = converted(pin, pictureFor(format, pin.picture, file));
  switch (format) {
    case Format::Csv:
    case Format::Json:
    case Format::Points:
      return writeTracks(tracksOf(ready), format, file, out);
    case Format::Nk:
      return writeNkPin(ready, style, out);
    case Format::Keyframes:
      return writeKeyframesPin(ready, style, out);
    case Format::Blender:
      return writeBlenderPin(ready, out);
    case Format::Natron:
      return writeNatronPin(ready, out);
    case Format::Usda:
      return writeUsdaPin(ready, style, out);
    default:
      throw std::invalid_argument(flawOf(format, ExportKind::Pin));
  }
}

WriteNotes writePin(const Tracks& corners, const Export& what, const std::string& file,
                    OutputFile& out) {
  if (holds(what.format, ExportKind::Tracks) && what.format != Format::Nk) {
    return writeTracks(corners, what.format, file, out);
  }
  requireKnown(what, corners.picture, file);
  return writePin(pinOf(corners, "pin"), what.format, what.style, file, out);
}

WriteNotes writeExport(const Export& what, const ShotResult& result, const Tracks* tracks,
                       const std::string& file, OutputFile& out, const Progress& progress) {
  requireKnown(what, result.provenance.picture, file);
  if (what.kind == ExportKind::Tracks) {
    return writeTracks(goodTracks(*tracks, result), what.format, file, out);
  }
  if (isResult(what.format)) {
    writeResult(result, what.format, out, progress);
    return {};
  }
  const PinKind kind = pinKindOf(what.kind);
  const NamedQuad* quad = kind == PinKind::Pin ? pinnedQuad(result) : nullptr;
  PinStyle style = what.style;
  if (kind == PinKind::Matrix) style.nk = PinStyle::Nk::Matrix;
  return writePin(pinOf(result, kind, quad), what.format, style, file, out);
}

}  // namespace cornerpin

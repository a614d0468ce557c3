// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_EXPORT_H
#define SHOT_FILES_EXPORT_H

#include <optional>
#include <string>
#include <vector>

#include "shot/files/format.h"
#include "shot/files/output_file.h"
#include "shot/files/pin.h"
#include "shot/files/result_transforms.h"
#include "shot/solve/named_quad.h"
#include "shot/solve/progress.h"
#include "shot/solve/result.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// What of a solve a file is to hold.
enum class ExportKind {
  Pin,        ///< where the picture, or a quad, goes
  Stabilise,  ///< the inverse: the surface stands still as in the reference frame
  Matrix,     ///< the transforms alone
  Tracks,     ///< the good tracks
};

struct Export {
  std::string path;
  Format format = Format::Json;
  ExportKind kind = ExportKind::Pin;
  PinStyle style;
};

/// What a file was given to hold, in its format's picture: tracks, a pin, or the transforms of a
/// result.
struct Written {
  std::optional<Tracks> tracks;
  std::optional<Pin> pin;
  std::optional<ResultTransforms> transforms;
  PinStyle style;
  std::string size;  ///< of the picture, such as 1920x1080, where something depended on it
  WriteNotes notes;  ///< what the format cannot carry
};

/// Reads a file that was written again and compares: "read back: largest difference 0 px".
std::string readBackText(const std::string& path, Format format, const Written& written);

/// Why a format does not hold what it is to hold, and what to do; empty where it does.
std::string flawOf(Format format, ExportKind kind);

/// Refuses several quads, of which a pin can be put on one alone.
void requireOneQuad(const std::vector<NamedQuad>& quads);

/// The quad that a pin is put on: the only one that was asked for when the result was made; null
/// where none was. Throws `std::invalid_argument` for several.
const NamedQuad* pinnedQuad(const ShotResult& result);

/// Writes what is asked for in a format's own convention. Results in JSON and CSV are those of
/// `writeResult`. Throws `std::invalid_argument`, before anything is written, where the format
/// needs what the picture does not tell.
///
/// \param tracks  those that the result is from; null where they are not at hand: then the kind is
///                no `ExportKind::Tracks`
/// \param file    the input's name, for messages
Written writeExport(const Export& what, const ShotResult& result, const Tracks* tracks,
                    const std::string& file, OutputFile& out, const Progress& progress = {});

/// The same of a result's transforms, as a pin.
///
/// \param quad  what the pin is put on; null: the whole picture
Written writePin(const ResultTransforms& result, const NamedQuad* quad, const Export& what,
                 const std::string& file, OutputFile& out);

/// Writes a pin, or tracks, in the format's convention; a pin also from its corners as tracks.
Written writePin(const Pin& pin, Format format, const PinStyle& style, const std::string& file,
                 OutputFile& out);
Written writePin(const Tracks& corners, const Export& what, const std::string& file,
                 OutputFile& out);
Written writeTracks(const Tracks& tracks, Format format, const std::string& file, OutputFile& out);

/// Refuses what `writeExport` would refuse because of the picture.
void requireKnown(const Export& what, const Picture& picture, const std::string& file);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_WRITERS_H
#define SHOT_FILES_TRACK_WRITERS_H

#include "shot/files/output_file.h"
#include "shot/files/pin.h"
#include "shot/solve/tracks.h"

/// The writers, one format each. What they are given has the picture of the format already
/// (`factsOf`), frames too. Numbers are the shortest that read back as the same doubles, in plain
/// decimals, alike in every locale. They write all or throw, and say what the file cannot carry.
namespace cornerpin {

WriteNotes writeCsvTracks(const Tracks& tracks, OutputFile& out);
WriteNotes writeJsonTracks(const Tracks& tracks, OutputFile& out);
WriteNotes writePointsTracks(const Tracks& tracks, OutputFile& out);
WriteNotes writeBlocksTracks(const Tracks& tracks, OutputFile& out);
WriteNotes writeUvTracks(const Tracks& tracks, OutputFile& out);
WriteNotes writeNkTracks(const Tracks& tracks, OutputFile& out);

WriteNotes writeNkPin(const Pin& pin, const PinStyle& style, OutputFile& out);
WriteNotes writeKeyframesPin(const Pin& pin, const PinStyle& style, OutputFile& out);
WriteNotes writeBlenderPin(const Pin& pin, OutputFile& out);
WriteNotes writeNatronPin(const Pin& pin, OutputFile& out);
WriteNotes writeUsdaPin(const Pin& pin, const PinStyle& style, OutputFile& out);

}  // namespace cornerpin

#endif

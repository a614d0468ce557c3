// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "cornerpin/shot.h"
#include "shot/files/conversion.h"
#include "shot/files/export.h"
#include "shot/files/file_look.h"
#include "shot/files/output_file.h"
#include "shot/files/result_reader.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_reader.h"
#include "shot/interface/boundary.h"
#include "shot/interface/output.h"

namespace cornerpin::shot {

namespace {

// A conversion under way.
struct Conversion {
  const FileLook& look;
  const std::string& output;
  const ReadOptions& read;
  const WriteOptions& write;
  OutputFile& out;
  std::vector<std::string> notes;

  // What the output is to be, where the input decides whether it holds tracks or a pin.
  Export exportAs(const char* usual) const {
    WriteOptions options = write;
    if (options.as.empty()) options.as = usual;
    return exportOf(output, options);
  }
};

// What was made of a file.
struct Made {
  Format format;
  cornerpin::Written written;
};

// What of a table is the quad's, a pin of the picture would not have.
void refuseTable(const Export& what, const FileLook& look) {
  if (!isOpen(what.format)) return;
  throw std::invalid_argument(fmt::format(
      "\"{}\": a result in CSV becomes a pin of another program, no {} file: give the JSON file of "
      "the solve",
      look.name, factsOf(what.format).word));
}

// What is told of a result's picture.
void tellPicture(const Conversion& job, cornerpin::Picture& picture) {
  cornerpin::Picture contradicted;
  if (tell(picture, Format::Json, pictureOf(job.read.picture), contradicted) != 0) {
    throw std::invalid_argument(
        "--first-frame: the result tells the clip's first frame: leave the option out");
  }
  refuseContradiction(contradicted, picture, job.look.name);
}

Made convertResult(Conversion& job) {
  const FileLook& look = job.look;
  const Export what = job.exportAs("pin");
  if (what.kind == ExportKind::Tracks) {
    throw std::invalid_argument("a result holds no tracks: give --as tracks to cornerpin solve");
  }
  if (look.table) {
    refuseTable(what, look);
    ResultTransforms transforms = readResultCsv(look.path);
    tellPicture(job, transforms.picture);
    if (what.kind == ExportKind::Pin) {
      job.notes.push_back(look.name +
                          ": the pin is that of the whole picture: a result in CSV does not tell "
                          "of which quad one was wanted");
    }
    return {what.format, writePin(transforms, nullptr, what, look.name, job.out)};
  }
  ShotResult result = cornerpin::readResult(look.path);
  tellPicture(job, result.provenance.picture);
  return {what.format, writeExport(what, result, nullptr, look.name, job.out)};
}

Made convertTracks(Conversion& job) {
  const FileLook& look = job.look;
  ReadTrace trace;
  trace.format = formatOfWord("from", job.read.from);
  cornerpin::Tracks tracks =
      cornerpin::readTracks(look.path, {}, frameRangeOf(job.read.frames), &trace);
  job.notes = trace.notes;
  const cornerpin::Picture contradicted = tell(tracks, *trace.format, pictureOf(job.read.picture));
  const bool asTracks = !trace.isPin || job.write.as == "tracks";
  const Export what = job.exportAs(asTracks ? "tracks" : "pin");
  if (what.kind != (asTracks ? ExportKind::Tracks : ExportKind::Pin)) {
    throw std::invalid_argument(fmt::format("--as {}: \"{}\" holds {}: leave the option out",
                                            job.write.as, look.name,
                                            trace.isPin ? "a pin" : "tracks"));
  }
  if (isOpen(what.format)) {
    tracks = asAskedFor(inPixels(std::move(tracks), look.name), contradicted, look.name);
  } else {
    refuseContradiction(contradicted, tracks.picture, look.name);
  }
  return {what.format, asTracks ? writeTracks(tracks, what.format, look.name, job.out)
                                : writePin(tracks, what, look.name, job.out)};
}

}  // namespace

Converted convert(const std::string& input, const std::string& output, const ReadOptions& read,
                  const WriteOptions& write) {
  return atBoundary({}, [&](const cornerpin::Progress&) {
    requireFile(output);
    const FileLook look = lookAt(input);
    OutputFile out(output);
    Conversion job = {look, output, read, write, out, {}};
    const bool isResult = read.from.empty() && (look.json || look.table);
    const Made made = isResult ? convertResult(job) : convertTracks(job);
    out.commit();
    return Converted{saidOf(output, made.format, made.written, write.readBack), job.notes};
  });
}

}  // namespace cornerpin::shot

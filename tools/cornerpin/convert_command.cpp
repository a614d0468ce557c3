// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/convert_command.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "shot/files/conversion.h"
#include "shot/files/export.h"
#include "shot/files/file_look.h"
#include "shot/files/result_reader.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_reader.h"
#include "tools/cornerpin/export_options.h"
#include "tools/cornerpin/file_talk.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "convert", "Write tracks, a pin or a result in another format",
    "cornerpin convert shot.json pin.nk --size 1920x1080 --y-down --pixel-center 0.5",
    "Reads tracks, a corner pin, or the result of a solve, and writes it in another format:\n"
    "tracks as tracks, a pin or a result as a pin. The format of what is read is found by its\n"
    "content, that of what is written by its name or --to. Coordinates and frames become those\n"
    "of the other format; where a file does not say what its own are, you are asked for it.\n",
    "Nothing is solved. A result is written as a pin of the whole picture, or of the quad that\n"
    "it was solved with, which only its JSON file tells. --as stabilise writes the inverse,\n"
    "which makes the surface stand still; --as matrix the transforms alone.\n\n"
    "--y-up, --y-down, --pixel-center and --size say of the input what it does not say itself;\n"
    "where it does and the output may have either, as CSV and JSON may, they say what is to be\n"
    "written. With --first-frame 1001 the clip begins with frame 1001: files that count frames\n"
    "from the clip's first are read and written accordingly.\n"};

struct Arguments {
  std::string input;
  std::string output;
  std::string word;
  std::string kind;
  StyleOptions style;
  FromOption from;
  PictureOptions picture;
  QuietOption quiet;
};

// What the output is to be, where the input decides whether it holds tracks or a pin.
Export outputOf(const Arguments& arguments, const char* usual) {
  Export what =
      exportOf(arguments.output, arguments.word, arguments.kind.empty() ? usual : arguments.kind);
  what.style = arguments.style.value(what.format);
  return what;
}

// What was made of a file.
struct Made {
  Export what;
  Written written;
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
void tellPicture(const Arguments& arguments, const FileLook& look, Picture& picture) {
  Picture contradicted;
  if (tell(picture, Format::Json, arguments.picture.value(), contradicted) != 0) {
    throw std::invalid_argument(
        "--first-frame: the result tells the clip's first frame: leave the option out");
  }
  refuseContradiction(contradicted, picture, look.name);
}

Made convertResult(const Arguments& arguments, const FileLook& look, FileTalk& talk,
                   OutputFile& out) {
  const Export what = outputOf(arguments, "pin");
  if (what.kind == ExportKind::Tracks) {
    throw std::invalid_argument("a result holds no tracks: give --as tracks to cornerpin solve");
  }
  if (look.table) {
    refuseTable(what, look);
    ResultTransforms transforms = readResultCsv(look.path);
    tellPicture(arguments, look, transforms.picture);
    if (what.kind == ExportKind::Pin) {
      talk.add({look.name + ": the pin is that of the whole picture: a result in CSV does not tell "
                            "of which quad one was wanted"});
    }
    return {what, writePin(transforms, nullptr, what, look.name, out)};
  }
  ShotResult result = readResult(look.path);
  tellPicture(arguments, look, result.provenance.picture);
  return {what, writeExport(what, result, nullptr, look.name, out)};
}

Made convertTracks(const Arguments& arguments, const FileLook& look, FileTalk& talk,
                   OutputFile& out) {
  ReadTrace trace;
  trace.format = arguments.from.value();
  Tracks tracks = readTracks(look.path, {}, {}, &trace);
  talk.add(trace.notes);
  const Picture contradicted = tell(tracks, *trace.format, arguments.picture.value());
  const bool asTracks = !trace.isPin || arguments.kind == "tracks";
  const Export what = outputOf(arguments, asTracks ? "tracks" : "pin");
  if (what.kind != (asTracks ? ExportKind::Tracks : ExportKind::Pin)) {
    throw std::invalid_argument(fmt::format("--as {}: \"{}\" holds {}: leave the option out",
                                            arguments.kind, look.name,
                                            trace.isPin ? "a pin" : "tracks"));
  }
  if (isOpen(what.format)) {
    tracks = asAskedFor(inPixels(std::move(tracks), look.name), contradicted, look.name);
  } else {
    refuseContradiction(contradicted, tracks.picture, look.name);
  }
  return {what, asTracks ? writeTracks(tracks, what.format, look.name, out)
                         : writePin(tracks, what, look.name, out)};
}

int run(const Arguments& arguments) {
  refuseInput(arguments.input, arguments.output);
  requireWritable(arguments.output);
  const FileLook look = lookAt(arguments.input);
  OutputFile out(isStandardOutput(arguments.output) ? "-" : arguments.output);
  FileTalk talk;
  const bool isResult = arguments.from.text.empty() && (look.json || look.table);
  const Made made = isResult ? convertResult(arguments, look, talk, out)
                             : convertTracks(arguments, look, talk, out);
  out.commit();
  talk.add(made.what, made.written);
  if (arguments.picture.size.empty()) talk.addSize(look.name, made.written);
  if (arguments.quiet.given) return kSolved;
  if (!isStandardOutput(arguments.output)) print(talk.readBackRows());
  talk.tellNotes();
  return kSolved;
}

}  // namespace

Command addConvert(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  takesFile(parser.add_option("input", arguments->input,
                              "Tracks, a pin or the result of a solve; - is standard input"))
      ->required()
      ->check(refuseEmpty);
  takesFile(parser.add_option("output", arguments->output, "What is written; - is standard output"))
      ->required()
      ->check(refuseEmpty);
  arguments->from.addTo(parser);
  addFormatOptions(parser, arguments->word, arguments->kind);
  arguments->picture.addTo(parser);
  addMore(parser);
  arguments->style.addTo(parser);
  arguments->quiet.addTo(parser);
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/solve_command.h"

#include <cornerpin/shot.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/cornerpin/as_typed.h"
#include "tools/cornerpin/export_options.h"
#include "tools/cornerpin/file_talk.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/progress_bar.h"
#include "tools/cornerpin/report_options.h"
#include "tools/cornerpin/shared_options.h"
#include "tools/cornerpin/usage_error.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "solve", "Find the transform of every frame", "cornerpin solve shot.csv -o shot.json",
    "Finds the 3x3 transform that carries a shot's tracks from the base frame to each frame.\n"
    "Tracks are CSV with columns track,frame,x,y[,weight], or a file of a tracking program.\n",
    "CSV has a row for each track and frame where the track is seen. The columns stand in any\n"
    "order, with commas, semicolons or tabs between them, plain or gzip. A track's distance r\n"
    "from the fit is multiplied by its weight w: the cost is w^2 r^2, so a track of weight 0.5\n"
    "counts a quarter of one of weight 1. Weight 0 is the same as no row. A track that the base\n"
    "frame lacks takes part once other frames have told where on the surface it is.\n\n"
    "Several -o write several files of one solve. Each has the format of its name, or of the\n"
    "--to before it, and holds what the --as before it says: a pin (the usual), its inverse to\n"
    "stabilise, the transforms alone, or the good tracks. What is asked of a file and cannot be\n"
    "known from the tracks, --size, --y-up and their like have to tell.\n\n"
    "--drop and --keep take names and patterns such as n*, t? or t[1-4]. A name in double\n"
    "quotes is taken as it is, with commas and stars; keep the quotes from the shell:\n"
    "'\"p,1\":60-81'. Frames are 60, 60-81 or 60-, which goes on to the end. They may be\n"
    "negative: -5 is frame -5, and so --frames has no form that only ends.\n\n"
    "With --reference F the transforms start from frame F instead, and quads are corners read\n"
    "there; without it they are read on the frame given by --base. F has no influence on the\n"
    "fit.\n\n"
    "A frame whose tracks allow only a simpler transform gets that one, and one whose tracks\n"
    "allow none its neighbour's: then the exit code is 4. Doubtful frames are a warning, unless\n"
    "--strict or --max-error is given.\n\n"
    "--smooth, --fill and --at work on what was solved. --smooth moves a corner by no more than\n"
    "it may be off; --fill leaves frames at the ends of the shot as they are; --at takes any\n"
    "times from the first frame to the last. What the fit gave is kept beside it in the JSON.\n\n"
    "--report writes a page for a browser, one file that asks for nothing from anywhere. Under\n"
    "the tracks it shows --pictures, JPEG, PNG, WebP, GIF or TIFF files that are told by a\n"
    "pattern with the frame's number, by their folder, where it is the last number of their\n"
    "names, or by a list, one name a line. The page holds them, at most 640 pixels wide; with\n"
    "--link it asks for the files themselves. --plot writes the figures over the frames as a\n"
    "picture.\n\n"
    "--progress json writes what a program needs to show how far the work is: an object on a\n"
    "line of its own on standard error, at most ten a second, with the phase, how much of it is\n"
    "done, the total, and the seconds_left of this phase; what nobody knows is null. The phases\n"
    "are reading, choosing the base frame, solving, handing over, figures of trust, smoothing,\n"
    "filling, looking for what helps and writing. Errors and warnings begin with cornerpin:.\n"
    "The last object of a run that has ended well has the phase finished and the exit_code:\n\n"
    "  {\"phase\":\"solving\",\"done\":12,\"total\":191,\"seconds_left\":4.5}\n"
    "  {\"phase\":\"finished\",\"exit_code\":0}\n\n"
    "The environment variable NO_COLOR turns colours off, unless --color always is given.\n"};

struct Arguments {
  TracksArgument input;
  FromOption from;
  PictureOptions picture;
  ExportOptions output;
  StyleOptions style;
  JsonOption json;
  BaseOption base;
  ReferenceOption reference;
  QuadOptions quads;
  FramesOption frames;
  SelectionOptions selection;
  std::string explanation;
  std::string page;
  PagePictureOptions pictures;
  PlotOption plot;
  UnitsOption units;
  LossOption loss;
  HoldOption hold;
  BaseOnlyOption baseOnly;
  SeedOption seed;
  ThreadsOption threads;
  MaxErrorOption maxError;
  StrictOption strict;
  SmoothOption smooth;
  FillOption fill;
  AtOption at;
  TalkOptions talk;
  ColourOption colour;
  ProgressOption progress;
};

void addTo(CLI::App& parser, Arguments& arguments) {
  arguments.input.addTo(parser);
  arguments.output.addTo(parser);
  arguments.json.addTo(parser);
  arguments.base.addTo(parser);
  arguments.reference.addTo(parser);
  arguments.quads.addTo(parser);
  arguments.frames.addTo(parser);
  arguments.selection.addTo(parser);
  arguments.maxError.addTo(parser);
  arguments.smooth.addTo(parser);
  arguments.fill.addTo(parser);
  takesFile(parser.add_option("--report", arguments.page,
                              "Write a page for a browser that shows whether the solve is good"))
      ->check(refuseEmpty)
      ->option_text("FILE");
  arguments.talk.addTo(parser);

  addMore(parser);
  arguments.pictures.addTo(parser);
  arguments.plot.addTo(parser);
  takesFile(parser.add_option("--explain", arguments.explanation,
                              "Write a CSV file of how much each track pulls on each frame"))
      ->check(refuseEmpty)
      ->option_text("FILE");
  arguments.style.addTo(parser);
  arguments.from.addTo(parser);
  arguments.picture.addTo(parser);
  arguments.at.addTo(parser);
  arguments.strict.addTo(parser);
  arguments.loss.addTo(parser);
  arguments.baseOnly.addTo(parser);
  arguments.hold.addTo(parser);
  arguments.units.addTo(parser);
  arguments.seed.addTo(parser);
  arguments.threads.addTo(parser);
  arguments.colour.addTo(parser);
  arguments.progress.addTo(parser);
}

shot::Options optionsOf(const Arguments& arguments) {
  shot::Options options;
  options.base = arguments.base.value();
  options.reference = arguments.reference.value();
  options.frames = arguments.frames.value();
  options.keep = arguments.selection.keep;
  options.drop = arguments.selection.drop;
  options.baseOnly = arguments.baseOnly.given;
  options.hold = arguments.hold.given;
  options.units = arguments.units.text;
  options.loss = arguments.loss.text;
  options.seed = arguments.seed.value();
  options.maxError = arguments.maxError.value();
  options.smooth = arguments.smooth.value();
  options.fill = arguments.fill.given;
  options.at = arguments.at.value();
  options.quads = arguments.quads.value(options.reference ? options.reference : options.base);
  options.threads = arguments.threads.value();
  options.influences = !arguments.explanation.empty();
  return options;
}

// What is to be done with the tracks, and what is to be written.
struct Plan {
  shot::Options options;
  shot::Picture told;
  std::vector<ExportedFile> exports;
};

// Refuses options for what the table does not show where nothing else is written.
void checkShown(const Arguments& arguments) {
  if (!arguments.output.paths.empty() || arguments.json.given) return;
  if (!arguments.at.lists.empty()) {
    throw std::invalid_argument("--at: the table has no transforms: add -o FILE or --json");
  }
}

// What goes to standard output instead of the table; null for the table.
const ExportedFile* onStandardOutput(const Plan& plan) {
  for (const ExportedFile& what : plan.exports) {
    if (isStandardOutput(what.path)) return &what;
  }
  return nullptr;
}

bool printsTable(const Arguments& arguments, const Plan& plan) {
  return !arguments.json.given && onStandardOutput(plan) == nullptr && !arguments.talk.quiet.given;
}

// Of the files that are written beside the exports, each has a name of its own that can be written.
struct OtherFile {
  const char* option;
  const std::string& path;
};
void checkOtherFiles(const std::vector<OtherFile>& files, const Arguments& arguments) {
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto [option, path] = files[i];
    refuseInput(arguments.input.path, path);
    refuseInput(arguments.quads.quads, path);
    for (std::size_t j = 0; j < i; ++j) refuseSame(files[j].option, files[j].path, option, path);
    if (isStandardOutput(path)) {
      throw std::invalid_argument(std::string(option) + " wants a file: name one");
    }
    requireWritable(path);
  }
}

// Refuses outputs that would replace the input or one another, or cannot be written.
void checkOutputs(const Arguments& arguments, const Plan& plan) {
  std::size_t printed = arguments.json.given ? 1 : 0;
  for (std::size_t i = 0; i < plan.exports.size(); ++i) {
    const std::string& path = plan.exports[i].path;
    if (isStandardOutput(path)) {
      ++printed;
      continue;
    }
    refuseInput(arguments.input.path, path);
    refuseInput(arguments.quads.quads, path);
    refuseSame("-o", path, "--explain", arguments.explanation);
    refuseSame("-o", path, "--report", arguments.page);
    refuseSame("-o", path, "--plot", arguments.plot.path);
    for (std::size_t j = 0; j < i; ++j) refuseSame("-o", plan.exports[j].path, "-o", path);
  }
  if (printed > 1) {
    throw std::invalid_argument(arguments.json.given
                                    ? "--json and -o both want standard output: leave one out"
                                    : "-o: one file alone goes to standard output");
  }
  checkOtherFiles({{"--explain", arguments.explanation},
                   {"--report", arguments.page},
                   {"--plot", arguments.plot.path}},
                  arguments);
  if (printed > 0 || !arguments.talk.quiet.given) requireWritable("-");
  for (const ExportedFile& what : plan.exports) requireWritable(what.path);
}

// Whether anything is written that tells all of the result, and the digest of the tracks.
bool writesJson(const Arguments& arguments, const Plan& plan) {
  return arguments.json.given || !arguments.page.empty() ||
         std::any_of(plan.exports.begin(), plan.exports.end(), [](const ExportedFile& what) {
           return what.isResult() && what.how.to == "json";
         });
}

// A pin is put on one quad.
void checkPinnedQuad(const Plan& plan) {
  for (const ExportedFile& what : plan.exports) shot::checkWrite(what.path, what.how, plan.options);
}

bool tellsAdvice(const Arguments& arguments, const Plan& plan) {
  return writesJson(arguments, plan) || printsTable(arguments, plan);
}

Plan planOf(const Arguments& arguments) {
  Plan plan;
  plan.options = optionsOf(arguments);
  plan.told = arguments.picture.value();
  plan.exports = arguments.output.value(arguments.style);
  plan.options.advice = tellsAdvice(arguments, plan);
  return plan;
}

// What could fail behind the solve alone is refused before it.
shot::Result solve(const Arguments& arguments, const Plan& plan, FileTalk& talk,
                   const shot::Progress& progress) {
  shot::ReadOptions how;
  how.from = arguments.from.text;
  how.frames = plan.options.frames;
  how.picture = plan.told;
  how.digest = writesJson(arguments, plan);
  shot::Tracks tracks = shot::readTracks(arguments.input.path, how, progress);
  for (const ExportedFile& what : plan.exports) {
    shot::checkWrite(what.path, what.how, plan.options, &tracks);
  }
  talk.add(tracks.notes());
  return asTyped([&] {
    shot::checkReport(arguments.pictures.value(), plan.options, &tracks);
    return shot::solve(std::move(tracks), plan.options, progress);
  });
}

void write(const ExportedFile& what, const Arguments& arguments, const shot::Result& result,
           FileTalk& talk, const shot::Progress& progress) {
  const std::string path = isStandardOutput(what.path) ? "-" : what.path;
  const shot::Written written = result.write(path, what.how, progress);
  talk.add(what.path, written);
  if (arguments.picture.size.empty()) talk.addSize(arguments.input.path, written);
}

void writeFiles(const Arguments& arguments, const Plan& plan, const shot::Result& result,
                FileTalk& talk, const shot::Progress& progress) {
  if (!arguments.explanation.empty()) result.writeExplanation(arguments.explanation, progress);
  for (const ExportedFile& what : plan.exports) {
    if (!isStandardOutput(what.path)) write(what, arguments, result, talk, progress);
  }
  if (!arguments.page.empty()) {
    talk.add(result.report(arguments.page, arguments.pictures.value(), progress));
  }
  if (!arguments.plot.path.empty()) result.plot(arguments.plot.path);
}

void printResult(const Arguments& arguments, const Plan& plan, const shot::Result& result,
                 FileTalk& talk) {
  if (printsTable(arguments, plan)) {
    const bool coloured = isColoured(arguments.colour.value(), STDOUT_FILENO);
    print(result.summary({arguments.talk.verbose, coloured, talk.readBackRows()}));
  } else if (arguments.json.given) {
    shot::WriteOptions how;
    how.to = "json";
    result.write("-", how);
  } else if (const ExportedFile* what = onStandardOutput(plan)) {
    write(*what, arguments, result, talk, {});
  }
}

// Warns of doubtful frames on standard error, unless a person has the table before them or only
// errors are to be told.
int exitCode(const Arguments& arguments, const Plan& plan, const shot::Result& result) {
  const shot::FrameCounts counts = result.counts();
  const bool isSeen = printsTable(arguments, plan) && ::isatty(STDOUT_FILENO) != 0;
  if (counts.doubtful > 0 && !arguments.talk.quiet.given && !isSeen) {
    const Mark mark = doubtfulMark(arguments.colour.value(), STDERR_FILENO);
    std::cerr << "cornerpin: " << mark("warning:") << ' ' << result.doubtfulFrames() << '\n';
  }
  const bool strict = arguments.strict.given || arguments.maxError.value().has_value();
  const bool degraded = counts.held + counts.reduced > 0 || (strict && counts.doubtful > 0);
  return degraded ? kDegraded : kSolved;
}

int run(Arguments& arguments) {
  arguments.talk.check();
  checkShown(arguments);
  arguments.plot.check();
  arguments.pictures.check(arguments.page);
  const Plan plan = planOf(arguments);
  checkPinnedQuad(plan);
  const ProgressStyle style = arguments.progress.value(arguments.talk.quiet.given);
  checkOutputs(arguments, plan);

  FileTalk talk;
  const shot::Result result = [&] {
    ProgressBar bar(style);  // gone before anything is printed
    shot::Result solved = solve(arguments, plan, talk, bar.progress());
    writeFiles(arguments, plan, solved, talk, bar.progress());
    return solved;
  }();
  printResult(arguments, plan, result, talk);
  if (!arguments.talk.quiet.given) talk.tellNotes();
  const int code = exitCode(arguments, plan, result);
  if (style == ProgressStyle::Json) writeFinished(code);
  return code;
}

}  // namespace

Command addSolve(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  addTo(parser, *arguments);
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

void checkSolveWords(std::vector<std::string> words) {
  CLI::App app;
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  addTo(parser, *arguments);
  const Command program = {&app, nullptr, &kText};
  const Command solve = {&parser, nullptr, &kText};
  words.insert(words.begin(), kText.name);
  try {
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    app.parse(reversed);
  } catch (const CLI::ParseError& error) {
    throw std::invalid_argument(textOf(error, UsedParser{program, {solve}, &solve, words}));
  }
  arguments->talk.check();
  checkPinnedQuad(planOf(*arguments));
}

}  // namespace cornerpin

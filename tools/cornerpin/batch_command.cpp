// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/batch_command.h"

#include <cornerpin/shot.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "show/children.h"
#include "show/farm.h"
#include "show/input_files.h"
#include "show/output_folder.h"
#include "show/shot_task.h"
#include "show/show.h"
#include "show/show_page.h"
#include "show/show_run.h"
#include "show/show_table.h"
#include "show/task_record.h"
#include "show/wording.h"
#include "tools/cornerpin/export_options.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/parse_whole.h"
#include "tools/cornerpin/progress_bar.h"
#include "tools/cornerpin/shared_options.h"
#include "tools/cornerpin/solve_command.h"

namespace cornerpin {

namespace {

namespace fs = std::filesystem;

constexpr CommandText kText = {
    "batch", "Solve many shots, several at a time", "cornerpin batch shots/ -o solved/ --report",
    "Solves every shot of a manifest, of folders, or of files and patterns, each in a process\n"
    "of its own. Run again, it does what is missing. Shots that fail keep no others back.\n",
    "A manifest is a JSON file with the shots, their options and names (docs/batch.md):\n\n"
    "  {\"cornerpin_batch\": 1, \"options\": {\"smooth\": 0.5}, \"exports\": [\"nk\"],\n"
    "   \"shots\": [{\"input\": \"sh010.csv\", \"options\": {\"drop\": [\"t13?\"]}}]}\n\n"
    "Options here go before those that the manifest has for all, and behind those of a shot.\n\n"
    "Of each shot the folder gets NAME.json, the exports, with --report the page NAME.html,\n"
    "and the record NAME.task.json, last of all. A shot is done when its record is there and\n"
    "has the same key: a digest of all that decides about its files, such as the bytes of the\n"
    "tracks, the options and the program's version. Shots that failed are done again with\n"
    "--retry, or once their key differs. batch.json has all shots, from their records, and\n"
    "batch.html is a page for a browser with a table of them, the worst first.\n\n"
    "A process that is killed or stopped is started again, three times in all. The exit code\n"
    "is 1 where a shot failed, or else 4 where one has frames without a full transform. The\n"
    "phase of --progress json is solving shots.\n\n"
    "--print-commands prints a command for every --chunk shots, one a line, for queues. They\n"
    "can run at the same time, on all hosts that share the folder; the same command without it\n"
    "then puts the records together. Each does the shots of --only, counted from 0.\n\n"
    "With --scheduler the workers of dask.distributed run such commands for what is not done.\n"
    "This host does what no worker could do, and puts the records together. It has to have\n"
    "Python with dask.distributed (Debian: python3-distributed), as the workers have.\n"};

// Options of `cornerpin solve` that a batch gives itself.
const std::set<std::string> kOurs = {"output", "to",      "format",   "as",    "json",
                                     "report", "plot",    "explain",  "quiet", "verbose",
                                     "color",  "threads", "progress", "help",  "help-all"};
// Those about files of a shot, which are looked at when it is solved.
const std::set<std::string> kOfFiles = {"quads", "pictures", "picture-scale", "link"};

struct Arguments {
  CLI::App* parser = nullptr;
  std::vector<std::string> inputs;
  std::string folder;
  std::string workers;
  std::vector<std::string> exports;
  bool report = false;
  bool retry = false;
  QuietOption quiet;
  std::string only;
  bool printCommands = false;
  std::string chunk;
  std::string scheduler;
  std::string timeLimit;
  ColourOption colour;
  ProgressOption progress;

  // Options of a solve.
  BaseOption base;
  ReferenceOption reference;
  FramesOption frames;
  SelectionOptions selection;
  MaxErrorOption maxError;
  SmoothOption smooth;
  FillOption fill;
  std::vector<std::string> quad;
  StyleOptions style;
  FromOption from;
  PictureOptions picture;
  AtOption at;
  StrictOption strict;
  LossOption loss;
  BaseOnlyOption baseOnly;
  HoldOption hold;
  UnitsOption units;
  SeedOption seed;
  std::set<const CLI::Option*> solving;
};

void addSolving(CLI::App& parser, Arguments& arguments, void (*add)(CLI::App&, Arguments&)) {
  const std::vector<CLI::Option*> before = parser.get_options();
  add(parser, arguments);
  for (const CLI::Option* option : parser.get_options()) {
    if (std::find(before.begin(), before.end(), option) == before.end()) {
      arguments.solving.insert(option);
    }
  }
}

void addTo(CLI::App& parser, Arguments& arguments) {
  arguments.parser = &parser;
  takesFile(parser.add_option("shots", arguments.inputs,
                              "A manifest; or folders, patterns, or files with tracks"))
      ->required()
      ->check(refuseEmpty);
  takesFile(parser.add_option("-o,--output", arguments.folder,
                              "Folder for the results; it is made where it is missing"))
      ->required()
      ->check(refuseEmpty)
      ->option_text("FOLDER");
  parser.add_option("--workers", arguments.workers, "Processes at once; as many as processors")
      ->check(refuseEmpty)
      ->option_text("NUMBER");
  parser
      .add_option("--export", arguments.exports,
                  "Write files of this format, too, such as nk or nk:stabilise")
      ->check(refuseEmpty)
      ->allow_extra_args(false)
      ->option_text("FORMAT");
  parser.add_flag("--report", arguments.report, "Write a page for a browser of each shot");
  parser.add_flag("--retry", arguments.retry, "Do shots that failed again");
  addSolving(parser, arguments, [](CLI::App& app, Arguments& all) {
    all.reference.addTo(app);
    all.maxError.addTo(app);
    all.smooth.addTo(app);
    all.fill.addTo(app);
  });
  arguments.quiet.addTo(parser);

  addMore(parser);
  parser.add_option("--only", arguments.only, "Do these shots alone, counted from 0: 0-199, or 7")
      ->check(refuseEmpty)
      ->option_text("SHOTS");
  parser.add_flag("--print-commands", arguments.printCommands,
                  "Print commands that do the same in pieces, and nothing else");
  parser
      .add_option("--scheduler", arguments.scheduler,
                  "Have workers of dask.distributed do it: tcp://host:8786")
      ->check(refuseEmpty)
      ->option_text("ADDRESS");
  parser
      .add_option("--chunk", arguments.chunk,
                  "Shots a command does: of those printed 200, of a worker's 10")
      ->check(refuseEmpty)
      ->option_text("NUMBER");
  parser
      .add_option("--time-limit", arguments.timeLimit,
                  "Fail a shot that takes more seconds of a processor")
      ->check(refuseEmpty)
      ->option_text("SECONDS");
  addSolving(parser, arguments, [](CLI::App& app, Arguments& all) {
    all.base.addTo(app);
    app.add_option("--quad", all.quad, "Write where corners go: [NAME=]x0,y0,x1,y1,x2,y2,x3,y3")
        ->check(refuseEmpty)
        ->allow_extra_args(false)
        ->option_text("QUAD");
    all.frames.addTo(app);
    all.selection.addTo(app);
    all.style.addTo(app);
    all.from.addTo(app);
    all.picture.addTo(app);
    all.at.addTo(app);
    all.strict.addTo(app);
    all.loss.addTo(app);
    all.baseOnly.addTo(app);
    all.hold.addTo(app);
    all.units.addTo(app);
    all.seed.addTo(app);
  });
  arguments.colour.addTo(parser);
  arguments.progress.addTo(parser);
}

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

// What was typed, as words that can be typed again, of the options that are wanted.
template <class Wanted>
std::vector<std::string> typed(const Arguments& arguments, const Wanted& isWanted) {
  std::vector<std::string> words;
  for (const CLI::Option* option : arguments.parser->get_options()) {
    if (option->count() == 0 || !isWanted(*option)) continue;
    const std::string name = option->get_lnames().front();
    if (!takesValue(*option)) {
      words.push_back("--" + name);
    } else {
      for (const std::string& value : option->results()) {
        words.push_back(fmt::format("--{}={}", name, value));
      }
    }
  }
  return words;
}

ShotOptions typedOptions(const Arguments& arguments) {
  ShotOptions options;
  for (const CLI::Option* option : arguments.solving) {
    if (option->count() == 0) continue;
    options[option->get_lnames().front()] =
        takesValue(*option) ? option->results() : std::vector<std::string>();
  }
  return options;
}

std::size_t numberOf(const char* option, const std::string& text, std::size_t most) {
  const std::optional<std::size_t> number = parseWhole<std::size_t>(text);
  if (!number || *number < 1 || *number > most) {
    throw std::invalid_argument(
        fmt::format("{} takes a whole number from 1 to {}, not \"{}\"", option, most, text));
  }
  return *number;
}

std::size_t workersOf(const Arguments& arguments) {
  constexpr std::size_t kMost = 1024;
  if (!arguments.workers.empty()) return numberOf("--workers", arguments.workers, kMost);
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMost);
}

// Reads --only: "0-199", "200-" or "7".
void setRange(const std::string& text, std::size_t shots, RunOptions& options) {
  options.last = shots - 1;
  if (text.empty()) return;
  const std::size_t dash = std::min(text.find('-'), text.size());
  const auto first = parseWhole<std::size_t>(text.substr(0, dash));
  const std::string rest = dash < text.size() ? text.substr(dash + 1) : text;
  const auto last = rest.empty() ? std::optional(shots - 1) : parseWhole<std::size_t>(rest);
  if (!first || !last || *last < *first) {
    throw std::invalid_argument(
        fmt::format("--only takes shots such as 0-199, 200- or 7, not \"{}\"", text));
  }
  if (*first >= shots) {
    throw std::invalid_argument(fmt::format("--only: there is no shot {}: {} from 0 to {}", *first,
                                            shots == 1 ? "there is one," : "they are", shots - 1));
  }
  options.first = *first;
  options.last = std::min(*last, shots - 1);
}

// Nothing that ends a word's name and begins its value.
void checkName(const std::string& option) {
  constexpr const char* kLetters = "abcdefghijklmnopqrstuvwxyz0123456789-";
  if (option.empty() || option.find_first_not_of(kLetters) != std::string::npos) {
    throw std::invalid_argument("solve has no option \"" + shot::printable(option) + "\"");
  }
}

// Solves words of a shot, without those that are looked at when it is solved.
void checkOptions(const Show& show, const ShowShot& shot, const CLI::App& parser) {
  ShotOptions checked = shot.options;
  for (const auto& option : shot.options) {
    checkName(option.first);
    const CLI::Option* known = parser.get_option_no_throw("--" + option.first);
    if (known != nullptr && !takesValue(*known) && !option.second.empty()) {
      throw std::invalid_argument("--" + option.first + " takes no value: give true or false");
    }
    if (kOurs.count(option.first) > 0) {
      throw std::invalid_argument("a batch sets --" + option.first + " itself: leave it out");
    }
    if (kOfFiles.count(option.first) > 0) checked.erase(option.first);
  }
  std::vector<std::string> words = {"tracks"};
  for (std::string& word : wordsOf(checked)) words.push_back(std::move(word));
  for (const ShotExport& made : show.exports) {
    words.push_back("--to=" + made.format);
    words.push_back("--as=" + (made.kind.empty() ? "pin" : made.kind));
    words.push_back("--output=" + fileNameOf(shot.name, made));
  }
  checkSolveWords(words);
}

void checkOptions(const Show& show, const CLI::App& parser) {
  std::set<std::vector<std::string>> checked;
  for (const ShowShot& shot : show.shots) {
    if (!checked.insert(wordsOf(shot.options)).second) continue;
    try {
      checkOptions(show, shot, parser);
    } catch (const std::invalid_argument& error) {
      if (shot.where.empty()) throw;
      throw std::invalid_argument(fmt::format("{}: shot \"{}\": {}", shot::printable(shot.where),
                                              shot::printable(shot.name), error.what()));
    }
  }
}

// A file by the name that it is read by, and where links in that lead to.
void addRead(const fs::path& file, std::map<fs::path, std::string>& read) {
  std::error_code ignored;
  const std::string shown = file.string();
  read.emplace(fs::weakly_canonical(file.parent_path(), ignored) / file.filename(), shown);
  read.emplace(fs::weakly_canonical(file, ignored), shown);
}

// What the batch reads: its arguments, and of shots the tracks and the files in options.
std::map<fs::path, std::string> readFiles(const Show& show, const Arguments& arguments) {
  std::map<fs::path, std::string> read;
  for (const std::string& input : arguments.inputs) addRead(fs::absolute(input), read);
  for (const ShowShot& shot : show.shots) {
    addRead(pathOf(shot, shot.input), read);
    for (const char* option : {"quads", "pictures"}) {
      const auto files = shot.options.find(option);
      if (files == shot.options.end()) continue;
      for (const std::string& file : files->second) addRead(pathOf(shot, file), read);
    }
  }
  return read;
}

// Files that would take the place of what is read, or of what is no file.
void checkFiles(const Show& show, const Arguments& arguments) {
  std::error_code ignored;
  const std::map<fs::path, std::string> read = readFiles(show, arguments);
  const fs::path folder = fs::weakly_canonical(fs::absolute(arguments.folder), ignored);
  const auto check = [&](const std::string& name) {
    const auto found = read.find(folder / name);
    if (found != read.end()) {
      throw std::invalid_argument(fmt::format(
          "\"{}\" is read, and a file of the results would take its place: name another folder "
          "for results",
          shot::printable(found->second)));
    }
    const fs::file_status status = fs::status(folder / name, ignored);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
      throw std::invalid_argument(
          fmt::format("\"{}\" is no plain file, and a file of the results is called so: name "
                      "another folder for results",
                      shot::printable((fs::path(arguments.folder) / name).string())));
    }
  };
  check(kShowFile);
  check(kShowPage);
  for (const ShowShot& shot : show.shots) {
    for (const std::string& file : filesOf(show, shot)) check(file);
    check(recordNameOf(shot.name));
  }
}

// An export could otherwise take the place of tracks that are read.
void checkFolder(const Show& show, const Arguments& arguments) {
  const std::string& folder = arguments.folder;
  std::set<std::string> parents;
  for (const ShowShot& shot : show.shots) {
    parents.insert((fs::path(shot.folder) / shot.input).parent_path().string());
  }
  std::error_code ignored;
  for (const std::string& parent : parents) {
    if (fs::equivalent(parent, folder, ignored)) {
      throw std::invalid_argument("\"" + folder +
                                  "\" has tracks that are read: name another folder for results");
    }
  }
  if (fs::exists(folder, ignored) && !fs::is_directory(folder, ignored)) {
    throw std::invalid_argument("\"" + folder + "\" is a file: name a folder for results");
  }
  if (arguments.only.empty()) checkFiles(show, arguments);  // pieces were checked as a whole
}

Show showOf(const Arguments& arguments) {
  Show show = cornerpin::showOf(arguments.inputs, typedOptions(arguments));
  for (const std::string& text : arguments.exports) show.exports.push_back(exportIn(text));
  show.pages = show.pages || arguments.report;
  checkNames(show);
  checkOptions(show, *arguments.parser);
  checkFolder(show, arguments);
  return show;
}

std::size_t chunkOf(const Arguments& arguments, std::size_t usual) {
  return arguments.chunk.empty() ? usual : numberOf("--chunk", arguments.chunk, 1'000'000);
}

// None is 0.
unsigned timeLimitOf(const Arguments& arguments) {
  constexpr std::size_t kMost = 1'000'000'000;
  if (arguments.timeLimit.empty()) return 0;
  return static_cast<unsigned>(numberOf("--time-limit", arguments.timeLimit, kMost));
}

// Whether anybody asks for them or not.
void checkNumbers(const Arguments& arguments) {
  workersOf(arguments);
  chunkOf(arguments, 1);
  timeLimitOf(arguments);
}

// An input for a command that runs elsewhere. In front of a pattern the folder is none.
std::string inputForPieces(const std::string& input) {
  std::error_code ignored;
  if (fs::exists(input, ignored) || fs::path(input).is_absolute()) {
    return fs::absolute(input).string();
  }
  constexpr std::string_view kMeansMore = "*?[\\";
  std::string folder;
  for (char c : fs::current_path().string()) {
    if (kMeansMore.find(c) != std::string_view::npos) folder += '\\';
    folder += c;
  }
  return folder + "/" + input;
}

// As a word of a line for any shell.
std::string pieceWord(const std::string& word) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
  if (std::any_of(word.begin(), word.end(), isControl)) {
    throw std::invalid_argument(fmt::format(
        "\"{}\" holds a control character, which no command on a line can: call it otherwise",
        shot::printable(word)));
  }
  return shot::shellWord(word);
}

// The command for a piece of a batch, but for the shots in it.
std::string pieceStart(const Arguments& arguments, const char* option) {
  if (arguments.inputs.size() > 1) {
    throw std::invalid_argument(
        fmt::format("{}: name one manifest, one folder, or one pattern in quotes, so that each "
                    "command can name it",
                    option));
  }
  const std::set<std::string> others = {"shots", "output",  "print-commands", "scheduler", "chunk",
                                        "only",  "workers", "quiet",          "progress",  "color"};
  std::string start = pieceWord(fs::read_symlink("/proc/self/exe").string()) + " batch " +
                      pieceWord(inputForPieces(arguments.inputs[0])) +
                      " --output=" + pieceWord(fs::absolute(arguments.folder).string());
  start +=
      fmt::format(" --workers={} --quiet", arguments.workers.empty() ? 1 : workersOf(arguments));
  for (const std::string& word : typed(arguments, [&](const CLI::Option& option) {
         return !option.get_lnames().empty() && others.count(option.get_lnames().front()) == 0;
       })) {
    start += " " + pieceWord(word);
  }
  return start;
}

// Commands for the pieces of a batch, one a line.
std::string commandsOf(const Arguments& arguments, std::size_t shots) {
  for (const auto& [value, option] :
       {std::pair(arguments.only, "--only"), std::pair(arguments.scheduler, "--scheduler")}) {
    if (!value.empty()) {
      throw std::invalid_argument(
          fmt::format("--print-commands and {} exclude each other: leave one out", option));
    }
  }
  const std::string start = pieceStart(arguments, "--print-commands");
  const std::size_t chunk = chunkOf(arguments, 200);
  std::string lines;
  for (std::size_t first = 0; first < shots; first += chunk) {
    lines += fmt::format("{} --only={}-{}\n", start, first, std::min(first + chunk, shots) - 1);
  }
  return lines;
}

// The first of them.
std::string namesText(const std::vector<std::string>& names) {
  constexpr std::size_t kNamed = 10;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kNamed); ++i) {
    text += (i == 0 ? "" : ", ") + shot::printable(names[i]);
  }
  if (names.size() > kNamed) text += fmt::format(" and {} more", names.size() - kNamed);
  return text;
}

// A shot whose file holds tracks no more is none of a folder's; its results are still there.
void warnOfOthers(const Show& show, const std::string& folder) {
  std::set<std::string> others = recordedShots(folder);
  for (const ShowShot& shot : show.shots) others.erase(shot.name);
  if (others.empty()) return;
  std::cerr << "cornerpin: warning: \"" << shot::printable(folder) << "\" has results of "
            << countText(others.size(), "shot")
            << " that this batch lacks: " << namesText({others.begin(), others.end()}) << '\n';
}

int exitCodeOf(const ShowTable& table) {
  const std::size_t failed = table.count(ShotState::Failed);
  if (failed == 0) return table.count(ShotState::Degraded) > 0 ? kDegraded : kSolved;
  std::vector<std::string> names;
  for (const TaskRecord& record : table.records) {
    if (record.state == ShotState::Failed) names.push_back(record.task.name);
  }
  std::cerr << "cornerpin: " << countText(failed, "shot") << " failed: " << namesText(names)
            << '\n';
  return kFailure;
}

// What workers elsewhere do, and what they leave.
struct Farm {
  std::string scheduler;  // empty where there is none
  std::size_t chunk = 0;
  std::string start;     // of their commands
  std::size_t done = 0;  // shots that were open
  std::string told;      // of commands that failed

  explicit Farm(const Arguments& arguments) : scheduler(arguments.scheduler) {
    if (scheduler.empty()) return;
    chunk = chunkOf(arguments, 10);
    start = pieceStart(arguments, "--scheduler");
  }

  void run(const Show& show, const RunOptions& options, OutputFolder& folder,
           const shot::Progress& progress) {
    const std::vector<OpenShot> open = openShots(show, options, folder);
    if (open.empty()) return;
    told = runOnFarm(scheduler, piecesOf(open, chunk, start), folder, progress);
    done = open.size();
  }

  // `counts` are those of the run behind it.
  RunCounts together(const RunCounts& counts) const {
    if (done == 0) return counts;
    std::istringstream lines(told);
    for (std::string line; std::getline(lines, line);) std::cerr << "cornerpin: " << line << '\n';
    if (counts.done > 0) {
      std::cerr << "cornerpin: " << counts.done << (counts.done == 1 ? " shot" : " shots")
                << " that no worker has done " << (counts.done == 1 ? "was" : "were")
                << " done here\n";
    }
    return {done, counts.done + counts.kept - done};
  }
};

int run(const Arguments& arguments) {
  checkNumbers(arguments);
  const Show show = showOf(arguments);
  if (arguments.printCommands) {
    print(commandsOf(arguments, show.shots.size()));
    return kSolved;
  }
  RunOptions options;
  options.program = "/proc/self/exe";
  options.workers = workersOf(arguments);
  options.retry = arguments.retry;
  options.timeLimit = timeLimitOf(arguments);
  setRange(arguments.only, show.shots.size(), options);
  const bool isWhole = arguments.only.empty();
  const ProgressStyle style = arguments.progress.value(arguments.quiet.given);
  Farm farm(arguments);

  OutputFolder folder(arguments.folder);
  const RunCounts counts = [&] {
    ProgressBar bar(style);  // gone before anything is printed
    const shot::Progress progress = bar.progress();
    if (!farm.scheduler.empty()) {
      farm.run(show, options, folder, progress);
      options.retry = false;  // the workers have tried
    }
    return runShow(show, options, folder, progress);
  }();
  const RunCounts all = farm.together(counts);
  const ShowTable table = readTable(show, folder, options.first, options.last);
  if (isWhole) {
    folder.write(kShowFile, showText(table, options.version));
    folder.write(kShowPage, showPageText(table));
  }
  if (!arguments.quiet.given) {
    std::string text = summaryOf(table);
    text += fmt::format("{:<14}{} now, {} were there\n", "done", all.done, all.kept);
    if (isWhole) {
      text += fmt::format("{:<14}{}\n", "page",
                          shot::printable((fs::path(arguments.folder) / kShowPage).string()));
    }
    print(text);
  }
  if (isWhole && !arguments.quiet.given) warnOfOthers(show, arguments.folder);
  const int code = exitCodeOf(table);
  if (style == ProgressStyle::Json) writeFinished(code);
  return code;
}

// Ends as the signal would have it, once children and what they had begun are gone.
int runOrEnd(const Arguments& arguments) {
  try {
    return run(arguments);
  } catch (const Interrupted& interrupted) {
    std::cerr << "cornerpin: interrupted; what is done stays: the same command goes on from here\n";
    std::raise(interrupted.signal);
  }
  return kFailure;
}

}  // namespace

Command addBatch(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  addTo(parser, *arguments);
  return {&parser, [arguments] { return runOrEnd(*arguments); }, &kText};
}

}  // namespace cornerpin

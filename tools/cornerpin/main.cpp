// SPDX-License-Identifier: BSD-3-Clause
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <limits>
#include <new>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "shot/files/explanation_csv.h"
#include "shot/files/input_error.h"
#include "shot/files/lapack_info.h"
#include "shot/files/output_file.h"
#include "shot/files/result_file.h"
#include "shot/files/summary.h"
#include "shot/files/track_csv.h"
#include "shot/solve/selection.h"
#include "shot/solve/shot_solver.h"

namespace {

using cornerpin::Format;
using cornerpin::OutputFile;

enum ExitCode { kSolved = 0, kFailure = 1, kUsage = 2, kUnreadable = 3, kDegraded = 4 };

constexpr const char* kExample =
    "Example: cornerpin solve shot.csv -o shot.json\n\n"
    "Finds how a flat surface moves through a shot: one 3x3 transform for every frame,\n"
    "from tracked features.\n";

constexpr const char* kSolveHelp =
    "Example: cornerpin solve shot.csv -o shot.json\n\n"
    "Reads tracks, finds for every frame the 3x3 transform that carries the tracks' places in\n"
    "the base frame to their places there, and says how well it fits.\n\n"
    "The file is CSV with the columns track,frame,x,y and, if you like, weight, in any order; one\n"
    "row for each track and frame where the track is seen. The weight w multiplies a track's\n"
    "distance r from the fit, so its square multiplies the square: the cost is w^2 r^2, and\n"
    "weight 0.5 counts a quarter of weight 1. Weight 0 is the same as no row. Only tracks seen in\n"
    "the base frame take part.\n";

constexpr const char* kExitCodes =
    "Exit codes: 0 every frame solved, 1 failure, 2 wrong usage, 3 input refused or unreadable,\n"
    "4 written, but some frames were not solved in full: their tracks allow only a simpler\n"
    "transform, or none, and the neighbour's is held.";

struct Arguments {
  std::string input;
  std::string output;
  std::string format;
  std::string base = "auto";
  std::string units = "fit";
  std::string quad;
  std::string explanation;
  std::vector<std::string> keep;
  std::vector<std::string> drop;
  std::string loss = "tukey";
  bool hold = false;
  std::string seed = "1";
  bool json = false;
};

// A closed standard stream becomes one that fails: no file opened later takes its place.
void guardStandardStreams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (::fcntl(fd, F_GETFD) != -1) continue;
    const int opened = ::open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (opened >= 0 && opened != fd) ::close(opened);
  }
}

// A bar on the terminal once a solve has taken half a second; it clears itself away.
class ProgressBar {
 public:
  ProgressBar() : shown_(::isatty(STDERR_FILENO) != 0) {}
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() {
    if (drawn_) std::fputs("\r\033[K", stderr);
  }

  void update(std::size_t done, std::size_t total) {
    if (!shown_) return;
    const auto now = Clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(100);
    const int filled = static_cast<int>(done * kWidth / total);
    std::fprintf(stderr, "\rsolving [%.*s%.*s] %zu/%zu", filled, kFull, kWidth - filled, kEmpty,
                 done, total);
    std::fflush(stderr);
    drawn_ = true;
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr int kWidth = 30;
  static constexpr const char* kFull = "##############################";
  static constexpr const char* kEmpty = "..............................";
  bool shown_;
  bool drawn_ = false;
  Clock::time_point next_ = Clock::now() + std::chrono::milliseconds(500);
};

std::optional<int> parseBase(const std::string& text) {
  if (text == "auto") return std::nullopt;
  int frame = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, frame);
  if (error != std::errc() || stop != end) {
    throw std::invalid_argument("--base takes a frame number or auto, not \"" + text + "\"");
  }
  return frame;
}

std::uint64_t parseSeed(const std::string& text) {
  std::uint64_t seed = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, seed);
  if (error != std::errc() || stop != end) {
    throw std::invalid_argument("--seed takes a whole number from 0 to " +
                                std::to_string(std::numeric_limits<std::uint64_t>::max()) +
                                ", not \"" + text + "\"");
  }
  return seed;
}

cornerpin::Loss parseLoss(const std::string& text) {
  if (text == "none") return cornerpin::Loss::None;
  if (text == "huber") return cornerpin::Loss::Huber;
  return text == "cauchy" ? cornerpin::Loss::Cauchy : cornerpin::Loss::Tukey;
}

bool isStandardOutput(const std::string& path) { return path == "-" || path == "/dev/stdout"; }

Format chooseFormat(const Arguments& arguments) {
  if (arguments.format == "json") return Format::Json;
  if (arguments.format == "csv") return Format::Csv;
  if (arguments.output.empty()) return Format::Json;
  const std::optional<Format> format = cornerpin::formatOf(arguments.output);
  if (!format) {
    throw std::invalid_argument("\"" + arguments.output +
                                "\" ends neither in .json nor in .csv: add --format");
  }
  return *format;
}

// Refuses an output that would replace the very file that is read.
void refuseInput(const Arguments& arguments, const std::string& output) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  if (fs::is_regular_file(output, ignored) &&
      fs::equivalent(arguments.input == "-" ? "/dev/stdin" : arguments.input, output, ignored)) {
    throw std::invalid_argument("\"" + output + "\" is the file with the tracks: not replaced");
  }
}

// Refuses two outputs of which the second would replace the first.
void refuseSame(const std::string& a, const std::string& b) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  if (a.empty() || b.empty() || (fs::exists(a, ignored) && !fs::is_regular_file(a, ignored)))
    return;
  if (fs::weakly_canonical(a, ignored) == fs::weakly_canonical(b, ignored)) {
    throw std::invalid_argument("-o and --explain both want \"" + b + "\"");
  }
}

void print(const std::string& text) {
  OutputFile out("-");
  out.write(text);
  out.commit();
}

std::vector<cornerpin::Selected> selectionOf(const char* option,
                                             const std::vector<std::string>& lists,
                                             const cornerpin::Tracks& tracks) {
  std::vector<cornerpin::Selected> selection;
  for (const std::string& list : lists) {
    try {
      for (const cornerpin::Selected& s : cornerpin::parseSelection(list, tracks)) {
        selection.push_back(s);
      }
    } catch (const std::invalid_argument& error) {
      throw std::invalid_argument(std::string(option) + ": " + error.what());
    }
  }
  return selection;
}

int solve(const Arguments& arguments) {
  cornerpin::SolveOptions options;
  options.base = parseBase(arguments.base);
  options.units = arguments.units == "raw" ? cornerpin::Units::Raw : cornerpin::Units::Fit;
  options.loss = parseLoss(arguments.loss);
  options.reduce = !arguments.hold;
  options.seed = parseSeed(arguments.seed);
  std::optional<cornerpin::Quad> quad;
  if (!arguments.quad.empty()) quad = cornerpin::parseQuad(arguments.quad);
  if (quad && arguments.output.empty() && arguments.explanation.empty() && !arguments.json) {
    throw std::invalid_argument("--quads: the table has no corners: add -o FILE or --json");
  }
  options.corners = quad;
  options.influences = !arguments.explanation.empty();
  const Format format = chooseFormat(arguments);
  const bool fileIsStandardOutput = isStandardOutput(arguments.output);
  if (fileIsStandardOutput && arguments.json) {
    throw std::invalid_argument("--json and -o both want standard output");
  }
  if (!fileIsStandardOutput) refuseInput(arguments, arguments.output);
  refuseInput(arguments, arguments.explanation);
  refuseSame(arguments.output, arguments.explanation);
  if (isStandardOutput(arguments.explanation)) {
    throw std::invalid_argument("--explain wants a file");
  }

  cornerpin::Tracks tracks = cornerpin::readTracks(arguments.input);
  cornerpin::select(tracks, selectionOf("--keep", arguments.keep, tracks),
                    selectionOf("--drop", arguments.drop, tracks));
  cornerpin::ShotResult result;
  {
    ProgressBar bar;
    result = cornerpin::solveShot(
        tracks, options, [&](std::size_t done, std::size_t total) { bar.update(done, total); });
  }
  if (!arguments.explanation.empty()) {
    OutputFile out(arguments.explanation);
    cornerpin::writeExplanationCsv(result, tracks, out);
    out.commit();
  }
  if (!arguments.output.empty()) {
    OutputFile out(fileIsStandardOutput ? "-" : arguments.output);
    cornerpin::writeResult(result, format, quad, out);
    out.commit();
  }
  if (arguments.json) {
    OutputFile out("-");
    cornerpin::writeResult(result, Format::Json, quad, out);
    out.commit();
  } else if (!fileIsStandardOutput) {
    print(cornerpin::summaryTable(result));
  }
  const cornerpin::Summary summary = cornerpin::summarise(result);
  return summary.held + summary.reduced > 0 ? kDegraded : kSolved;
}

// A script's variable that is not set, more often than not.
std::string refuseEmpty(const std::string& text) { return text.empty() ? "must not be empty" : ""; }

void addSolve(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand("solve", "Find the transform of every frame");
  // The list of commands has the short text, the command's own help the long one.
  command.preparse_callback([&command](std::size_t) { command.description(kSolveHelp); });
  command.footer(kExitCodes);
  command.get_formatter()->column_width(21);
  command.add_option("tracks", arguments.input, "CSV file with the tracks; - is standard input")
      ->required()
      ->check(refuseEmpty)
      ->option_text(" ");
  CLI::Option* output = command
                            .add_option("-o,--output", arguments.output,
                                        "Write the transforms here; .json or .csv says how")
                            ->check(refuseEmpty)
                            ->option_text("FILE");
  command.add_option("--format", arguments.format, "Write json or csv whatever the file's name")
      ->check(CLI::IsMember({"json", "csv"}))
      ->needs(output)
      ->option_text("NAME");
  command.add_flag("--json", arguments.json, "Print the JSON instead of the table");
  command
      .add_option("--base", arguments.base, "Frame all others are measured from; auto: most tracks")
      ->option_text("FRAME=auto");
  command
      .add_option("--quads", arguments.quad,
                  "Carry the base frame's corners x0,y0,x1,y1,x2,y2,x3,y3")
      ->check(refuseEmpty)
      ->option_text("CORNERS");
  command
      .add_option("--drop", arguments.drop,
                  "Leave tracks out, maybe in some frames: t042:60-81,t007")
      ->allow_extra_args(false)
      ->option_text("TRACKS");
  command
      .add_option("--keep", arguments.keep, "Use only these, maybe in some frames: t001,t002:1-50")
      ->allow_extra_args(false)
      ->option_text("TRACKS");
  command
      .add_option("--explain", arguments.explanation,
                  "Write as CSV how much each track pulls on each frame")
      ->check(refuseEmpty)
      ->option_text("FILE");
  command
      .add_option("--units", arguments.units, "fit scales the tracks for the solver, raw does not")
      ->check(CLI::IsMember({"fit", "raw"}))
      ->option_text("NAME=fit");
  command
      .add_option("--loss", arguments.loss,
                  "tukey ignores far-off tracks, cauchy and huber weaken them")
      ->check(CLI::IsMember({"tukey", "cauchy", "huber", "none"}))
      ->option_text("NAME=tukey");
  command.add_flag("--hold", arguments.hold,
                   "Hold frames with too few tracks, not give them a simpler move");
  command
      .add_option("--seed", arguments.seed,
                  "Start of the random samples of --loss; same seed, same result")
      ->option_text("NUMBER=1");
}

int run(int argc, char** argv) {
  CLI::App app(kExample, "cornerpin");
  app.set_version_flag("--version", [] {
    return "cornerpin " CORNERPIN_VERSION "\nLAPACK " + cornerpin::lapackInfo();
  });
  Arguments arguments;
  addSolve(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream help;
    const int code = app.exit(error, help, std::cerr);
    print(help.str());
    return code == 0 ? kSolved : kUsage;
  }
  if (app.get_subcommands().empty()) {
    std::cerr << app.help();
    return kUsage;
  }
  return solve(arguments);
}

extern "C" void removeAndEnd(int signal) {
  cornerpin::removeTemporaryFiles();
  ::raise(signal);  // the handler is gone by now: it ends the process
}

// What ends the run takes the unfinished files along, unless the caller has it ignored.
void guardUnfinishedFiles() {
  for (int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;
    action.sa_handler = removeAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
  }
}

int fail(const std::string& text, ExitCode code) {
  std::cerr << text << '\n';
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  guardStandardStreams();
  guardUnfinishedFiles();
  // A reader that goes away and a file too large are failed writes.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    return run(argc, argv);
  } catch (const cornerpin::InputError& error) {
    return fail(error.what(), kUnreadable);
  } catch (const std::invalid_argument& error) {
    return fail(std::string("cornerpin: ") + error.what(), kUsage);
  } catch (const std::bad_alloc&) {
    return fail("cornerpin: out of memory", kFailure);
  } catch (const std::exception& error) {
    return fail(std::string("cornerpin: ") + error.what(), kFailure);
  }
}

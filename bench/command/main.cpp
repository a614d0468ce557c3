// SPDX-License-Identifier: BSD-3-Clause

// cornerpin_whole_command PROGRAM DATA FOLDER [ROUNDS] measures the command from the file to the
// result, and prints tables with the goals beside. The track files that it makes for that stay in
// FOLDER.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "bench/command/child.h"
#include "bench/command/inputs.h"
#include "bench/command/magsac.h"
#include "bench/support/statistics.h"
#include "shot/files/track_reader.h"

namespace {

using bench::Beside;
using bench::Input;
using bench::Taken;

constexpr double kManyTracks = 30.0;

double median(const std::vector<double>& values) { return bench::quartiles(values).median; }

class WholeCommand {
 public:
  WholeCommand(std::string program, std::string folder, int rounds)
      : program_(std::move(program)), folder_(std::move(folder)), rounds_(rounds) {}

  // In turns: each way of solving, and reading alone in this process.
  void reportRows(const Input& input) const {
    std::vector<double> none, robust, reading, walls;
    for (int round = 0; round < rounds_; ++round) {
      none.push_back(solve(input, {"--loss", "none", "--threads", "1"}).user);
      const Taken alone = solve(input, {"--threads", "1"});
      robust.push_back(alone.user);
      walls.push_back(solve(input, {"--threads", "2"}).wall / alone.wall);
      const double begin = bench::processorSeconds();
      cornerpin::readTracks(input.path);
      reading.push_back(bench::processorSeconds() - begin);
    }
    const auto aRow = [&](const std::vector<double>& seconds) {
      return median(seconds) / static_cast<double>(input.rows);
    };
    std::printf("highway repeated: %zu frames, %zu rows, one thread, user time\n\n", input.frames,
                input.rows);
    std::printf("| | measured | goal |\n|---|---|---|\n");
    std::printf("| --loss none, us a row | %.2f | 0.35 |\n", 1e6 * aRow(none));
    std::printf("| default, us a row | %.2f | 1.2 |\n", 1e6 * aRow(robust));
    std::printf("| reading alone, ns a row | %.0f | 50 |\n", 1e9 * aRow(reading));
    std::printf("| wall time of two threads / one | %.2f | |\n", median(walls));
  }

  void reportLarge(const Input& input) const {
    const Taken taken = solve(input, {});
    std::printf("\n%zu frames, %zu rows: %.1f s of user time, %.1f s in all, %.0f MB resident\n",
                input.frames, input.rows, taken.user, taken.wall, 1e-6 * taken.bytes);
  }

 private:
  Taken solve(const Input& input, const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {program_, "solve", input.path, "-o",
                                          folder_ + "/out.json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return bench::runToEnd(arguments);
  }

  std::string program_, folder_;
  int rounds_;
};

void reportMagsac(const std::vector<Beside>& shots, bool many) {
  std::printf("\n%s than %.0f tracks in the median frame, us a frame\n\n",
              many ? "No fewer" : "Fewer", kManyTracks);
  std::printf("| shot | tracks | cornerpin | MAGSAC | ratio | goal | hand-over, more |\n");
  std::printf("|---|---|---|---|---|---|---|\n");
  for (const Beside& b : shots) {
    if ((b.tracks >= kManyTracks) != many) continue;
    const char* goal = !many ? "" : b.shot == "highway" ? "1.5" : "1";
    std::printf("| %s | %.0f | %.0f | %.0f | %.2f | %s | %.0f |\n", b.shot.c_str(), b.tracks,
                b.ours, b.theirs, b.ratio, goal, b.handOver);
  }
}

void reportMostlyWrong(const std::vector<Beside>& shots) {
  std::printf("\nFrames with more than 60 %% of their tracks wrong, us a frame\n\n");
  std::printf("| shot | frames | cornerpin | MAGSAC | ratio |\n|---|---|---|---|---|\n");
  for (const Beside& b : shots) {
    if (b.mostlyWrong == 0) continue;
    std::printf("| %s | %zu of %zu | %.0f | %.0f | %.2f |\n", b.shot.c_str(), b.mostlyWrong,
                b.frames, b.oursWrong, b.theirsWrong, b.ratioWrong);
  }
}

void report(const std::string& program, const std::string& data, const std::string& folder,
            int rounds) {
  const WholeCommand command(program, folder, rounds);
  command.reportRows(bench::repeated(data + "/highway.csv", 10000, folder + "/highway.csv"));
  if (bench::hasMagsac()) {
    const std::vector<Beside> shots = bench::besideMagsac(data, rounds);
    reportMagsac(shots, true);
    reportMagsac(shots, false);
    reportMostlyWrong(shots);
  } else {
    std::printf("\nbuilt without OpenCV: no MAGSAC\n");
  }
  command.reportLarge(bench::synthetic(300, 20000, folder + "/large.csv"));
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 4 ? std::atoi(argv[4]) : 5;
  if (argc < 4 || argc > 5 || rounds < 1) {
    std::fputs("usage: cornerpin_whole_command PROGRAM DATA FOLDER [ROUNDS]\n", stderr);
    return 2;
  }
  try {
    report(argv[1], argv[2], argv[3], rounds);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "cornerpin_whole_command: %s\n", error.what());
    return 1;
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}

// SPDX-License-Identifier: BSD-3-Clause

// cornerpin_peers fits the same frames with the library, the plain implementation and every peer of
// the build, and prints processor time per frame together with the residual that was reached.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bench/peers/measure.h"
#include "bench/support/machine.h"

namespace {

using nlohmann::json;

struct Arguments {
  std::string data = "data";
  std::string output;
  std::string commit = "unknown";
  int rounds = 41;
};

std::vector<bench::Shot> shots(const std::string& data) {
  std::vector<bench::Shot> all;
  for (const char* name : {"planks", "board", "highway"}) {
    all.push_back(bench::readShot(data, name));
  }
  for (const int tracks : {8, 32, 100, 300}) all.push_back(bench::syntheticShot(tracks, 100));
  return all;
}

double meanActiveTracks(const bench::Shot& shot) {
  const std::vector<bench::Frame> frames = bench::framesOf(shot);
  double sum = 0;
  for (const bench::Frame& frame : frames) sum += frame.count();
  return sum / static_cast<double>(frames.size());
}

void print(const bench::Machine& machine, const Arguments& arguments, bool pinned) {
  std::printf("processor   %s%s\n", machine.processor.c_str(), pinned ? ", one of them" : "");
  std::printf("compiler    %s\n", machine.compiler.c_str());
  std::printf("lapack      %s\n", machine.lapack.c_str());
  std::printf("blas        %s\n", machine.blas.c_str());
  std::printf("kernels     %s\n", machine.kernels.c_str());
  std::printf("commit      %s\n", arguments.commit.c_str());
  for (const std::string& name : bench::absentPeers()) {
    std::printf("absent      %s: not installed when this was built\n", name.c_str());
  }
  std::printf("rounds      %d, interleaved\n", arguments.rounds);
}

// The least residual of those that minimise the weighted one.
double leastRms(const std::vector<bench::Figure>& figures) {
  double least = figures.front().rms;
  for (const bench::Figure& f : figures) least = std::min(least, f.rms);
  return least;
}

const bench::Figure* named(const std::string& name, const std::vector<bench::Figure>& figures) {
  for (const bench::Figure& f : figures) {
    if (f.name == name) return &f;
  }
  return nullptr;
}

void print(const bench::Shot& shot, double tracks, const std::vector<bench::Figure>& figures) {
  const double plain = figures[0].microseconds.median;
  const double library = figures[1].microseconds.median;
  const double least = leastRms(figures);
  std::printf("\n%s: %.0f active tracks, least rms %.3g\n", shot.name.c_str(), tracks, least);
  std::printf("  %-22s %9s  %-17s %8s %10s %10s\n", "", "us/frame", "quartiles", "x plain",
              "x library", "rms above");
  for (const bench::Figure& f : figures) {
    const bench::Quartiles& q = f.microseconds;
    std::printf("  %-22s %9.2f  %7.2f - %-7.2f %8.3f %10.2f ", f.name.c_str(), q.median, q.lower,
                q.upper, q.median / plain, q.median / library);
    if (std::isnan(f.rms)) {
      std::printf("%10s\n", "no fit");
    } else {
      std::printf("%9.4f%%%s\n", 100 * (f.rms / least - 1),
                  f.usesWeights ? "" : " (fits without weights)");
    }
  }
  const bench::Figure* inversions = named("LAPACK alone", figures);
  if (inversions != nullptr && shot.name.rfind("synthetic", 0) == 0) {  // seven passes a frame
    const double lapack = inversions->microseconds.median;
    std::printf("  without LAPACK alone, library / plain: %.3f\n",
                (library - lapack) / (plain - lapack));
  }
  const bench::Figure* fit = named("homography fit", figures);
  const bench::Figure* tiny = named("Ceres TinySolver", figures);
  if (fit == nullptr || tiny == nullptr) return;
  std::printf("  %s / %s: %.2f\n", fit->name.c_str(), tiny->name.c_str(),
              fit->microseconds.median / tiny->microseconds.median);
}

json toJson(const bench::Shot& shot, double tracks, const std::vector<bench::Figure>& figures) {
  json rows = json::array();
  for (const bench::Figure& f : figures) {
    rows.push_back({{"name", f.name},
                    {"settings", f.settings},
                    {"uses_weights", f.usesWeights},
                    {"microseconds_per_frame",
                     {{"lower_quartile", f.microseconds.lower},
                      {"median", f.microseconds.median},
                      {"upper_quartile", f.microseconds.upper}}},
                    {"ratio_to_plain", f.microseconds.median / figures[0].microseconds.median},
                    {"ratio_to_library", f.microseconds.median / figures[1].microseconds.median},
                    {"rms", f.rms}});
  }
  return {{"shot", shot.name}, {"active_tracks", tracks}, {"competitors", rows}};
}

void run(const Arguments& arguments) {
  const bool pinned = bench::stayOnOneProcessor();
  std::vector<bench::Competitor> competitors = bench::competitors();
  competitors.push_back(bench::inversionsAlone());
  const bench::Machine machine = bench::thisMachine();
  print(machine, arguments, pinned);
  json report = {{"processor", machine.processor}, {"pinned", pinned},
                 {"compiler", machine.compiler},   {"lapack", machine.lapack},
                 {"blas", machine.blas},           {"kernels", machine.kernels},
                 {"commit", arguments.commit},     {"absent_peers", bench::absentPeers()},
                 {"rounds", arguments.rounds},     {"shots", json::array()}};
  for (const bench::Shot& shot : shots(arguments.data)) {
    const double tracks = meanActiveTracks(shot);
    const std::vector<bench::Figure> figures = measure(shot, competitors, arguments.rounds);
    print(shot, tracks, figures);
    std::fflush(stdout);
    report["shots"].push_back(toJson(shot, tracks, figures));
  }
  if (arguments.output.empty()) return;
  std::ofstream file(arguments.output);
  file << report.dump(1) << '\n';
  if (!file.flush()) throw std::runtime_error("cannot write " + arguments.output);
}

}  // namespace

int main(int argc, char** argv) try {
  Arguments arguments;
  CLI::App app("Times fits of planar transforms by this library and by others.");
  app.add_option("--data", arguments.data, "Folder with the shots planks, board and highway");
  app.add_option("--json", arguments.output, "File for the figures");
  app.add_option("--commit", arguments.commit, "What to call the measured source");
  app.add_option("--rounds", arguments.rounds, "Runs of each competitor on each shot")
      ->check(CLI::PositiveNumber);
  CLI11_PARSE(app, argc, argv);
  run(arguments);
  return 0;
} catch (const std::exception& e) {
  std::fprintf(stderr, "cornerpin_peers: %s\n", e.what());
  return 1;
}

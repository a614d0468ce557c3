// SPDX-License-Identifier: BSD-3-Clause

// cornerpin_instructions SCENARIO does one fixed piece of work inside the function
// cornerpin_measured, whose instructions a simulator counts. Without an argument it lists the
// scenarios; --environment tells what counts depend on. The match-move kernels are those for AVX2
// whatever else the processor could run.
#include <gnu/libc-version.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/machine.h"
#include "bench/support/shot.h"
#include "cornerpin/foundation/norm.h"
#include "cornerpin/solver/kernels/frame_kernels.h"
#ifdef CORNERPIN_BENCH_SHOT
#include "bench/command/inputs.h"
#include "bench/support/matches.h"
#include "shot/files/input_error.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_reader.h"
#include "shot/fit/homography_fit.h"
#include "shot/solve/shot_solver.h"
#endif

namespace {

constexpr const char* kVariant = "avx2";

bool useFixedKernels() {
  auto& variants = cornerpin::kernels::frameKernelVariants();
  for (const auto* kernels : variants) {
    if (std::strcmp(kernels->name, kVariant) != 0) continue;
    variants.use(*kernels);
    return true;
  }
  return false;
}

std::function<void()> solveOf(int tracks) {
  auto scene = std::make_shared<MMatchmove>();
  bench::fill(*scene, bench::syntheticShot(tracks, 20));
  return [scene] { scene->solve(); };
}

#ifdef CORNERPIN_BENCH_SHOT
// Plain squares, each frame from the fit of its neighbour. The fit takes the fastest kernels that
// the processor runs: those for AVX2 where a simulator has no AVX-512.
std::function<void()> fitsOf(int tracks) {
  using namespace cornerpin;
  auto frames = std::make_shared<std::vector<std::pair<Matches, Homography>>>();
  for (const bench::Frame& frame : bench::framesOf(bench::syntheticShot(tracks, 100))) {
    frames->emplace_back(bench::matchesOf(frame), bench::homographyOf(frame.start));
  }
  return [frames] {
    for (const auto& [matches, start] : *frames) fitHomography(matches, start);
  };
}

// A track file that goes with its owner.
class TrackFile {
 public:
  TrackFile(int tracks, int frames) { bench::synthetic(tracks, frames, path_); }
  explicit TrackFile(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }
  TrackFile(const TrackFile&) = delete;
  TrackFile& operator=(const TrackFile&) = delete;
  ~TrackFile() { std::filesystem::remove(path_); }

  const std::string& path() const { return path_; }
  cornerpin::Tracks read() const { return cornerpin::readTracks(path_); }

  void readOrRefuse(cornerpin::Format format) const {
    cornerpin::ReadTrace trace;
    trace.format = format;
    try {
      cornerpin::readTracks(path_, {}, {}, &trace);
    } catch (const cornerpin::InputError&) {
    }
  }

 private:
  std::string path_ = (std::filesystem::temp_directory_path() /
                       ("cornerpin-instructions-" + std::to_string(::getpid()) + ".csv"))
                          .string();
};

std::function<void()> reading() {
  const auto file = std::make_shared<const TrackFile>(100, 100);
  return [file] { file->read(); };
}

// A file of a format that is a hundred thousand bytes of the same behind a beginning. Of what can
// be repeated, this takes each reader longest: to refuse it, or to skip it.
struct Hostile {
  const char* name;
  cornerpin::Format format;
  const char* begin;
  const char* repeated;
};

constexpr std::size_t kHostileBytes = 100'000;

const Hostile hostileFiles[] = {
    {"hostile-csv", cornerpin::Format::Csv, "track,frame,x,y\n", "a,1,1,1\n"},
    {"hostile-json", cornerpin::Format::Json,
     R"({"cornerpin_tracks": 1, "tracks": [{"name": "a", "positions": [)", "[1,1,1],"},
    {"hostile-points", cornerpin::Format::Points, "1\na\n0\n1\n", "\r"},
    {"hostile-nk", cornerpin::Format::Nk, "Tracker4 {\n tracks { { 1 3 1 }\n", "{ }"},
    {"hostile-blocks", cornerpin::Format::Blocks, "\"a\"\n2\n1\n", "\r"},
    {"hostile-keyframes", cornerpin::Format::Keyframes, "Adobe After Effects 6.0 Keyframe Data\n",
     "a\n"},
    {"hostile-paths", cornerpin::Format::Paths, "", "a 1 1 1 7\n"},
    {"hostile-rz2", cornerpin::Format::Rz2, "pointTrack \"a\"\n{\n", "\t0\t1\t1\n"},
    {"hostile-uv", cornerpin::Format::Uv, "1\na\n1\n", "\r"},
    {"hostile-uv-json", cornerpin::Format::Json,
     R"({"points": [{"name": "a", "per_frame": [{"frame": 1, "pos": [)", "1,"},
};

std::function<void()> readingOf(const Hostile& hostile) {
  std::string text = hostile.begin;
  while (text.size() < kHostileBytes) text += hostile.repeated;
  const auto file = std::make_shared<const TrackFile>(text);
  return [file, format = hostile.format] { file->readOrRefuse(format); };
}

// A result in CSV of as many bytes, whose transforms are as short as they can be.
std::function<void()> readingResult() {
  std::string text =
      "frame,h00,h01,h02,h10,h11,h12,h20,h21,h22,status,qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3\n"
      "0,1,0,0,0,1,0,0,0,1,base,1,2,3,2,3,4.5,1,4.5\n";
  for (int frame = 1; text.size() < kHostileBytes; ++frame) {
    text += std::to_string(frame) + ",1,0,0,0,1,0,0,0,1,held,,,,,,,,\n";
  }
  const auto file = std::make_shared<const TrackFile>(text);
  return [file] { cornerpin::readResultCsv(file->path()); };
}

// All of `solveShot`, from the first of 20 frames.
std::function<void()> solveShotWith(cornerpin::Loss loss) {
  const auto tracks = std::make_shared<const cornerpin::Tracks>(TrackFile(100, 20).read());
  cornerpin::SolveOptions options;
  options.base = 0;
  options.loss = loss;
  options.threads = 1;
  return [tracks, options] { cornerpin::solveShot(*tracks, options); };
}

// A shot of ten frames, a thousand frames with two tracks each, and ten more: what those take grows
// no faster than there are.
std::function<void()> solveGap() {
  const cornerpin::Tracks whole = TrackFile(8, 1020).read();
  auto tracks = std::make_shared<cornerpin::Tracks>(whole);
  const auto isLeftOut = [](const cornerpin::Observation& row) {
    return row.frame >= 10 && row.frame < 1010 && row.track >= 2;
  };
  auto& rows = tracks->observations;
  rows.erase(std::remove_if(rows.begin(), rows.end(), isLeftOut), rows.end());
  tracks->arrange();
  cornerpin::SolveOptions options;
  options.base = 0;
  options.threads = 1;
  return [tracks, options] { cornerpin::solveShot(*tracks, options); };
}
#endif

volatile float sink;

std::function<void()> norms() {
  const std::vector<float> v(1000, 0.5f);
  return [v] {
    float sum = 0;
    for (int n = 0; n <= 1000; ++n) sum += _vector_norm2(v.data(), n);
    sink = sum;
  };
}

struct Scenario {
  const char* name;
  std::function<std::function<void()>()> prepare;
};

std::vector<Scenario> allScenarios() {
  std::vector<Scenario> all = {
      {"solve-8-tracks", [] { return solveOf(8); }},
      {"solve-32-tracks", [] { return solveOf(32); }},
      {"solve-100-tracks", [] { return solveOf(100); }},
      {"solve-300-tracks", [] { return solveOf(300); }},
      {"norms-0-to-1000", norms},
#ifdef CORNERPIN_BENCH_SHOT
      {"fit-8-tracks", [] { return fitsOf(8); }},
      {"fit-32-tracks", [] { return fitsOf(32); }},
      {"fit-100-tracks", [] { return fitsOf(100); }},
      {"fit-300-tracks", [] { return fitsOf(300); }},
      {"read-10000-rows", reading},
      {"solve-shot-none", [] { return solveShotWith(cornerpin::Loss::None); }},
      {"solve-shot-tukey", [] { return solveShotWith(cornerpin::Loss::Tukey); }},
      {"solve-gap", solveGap},
#endif
  };
#ifdef CORNERPIN_BENCH_SHOT
  for (const Hostile& hostile : hostileFiles)
    all.push_back({hostile.name, [&hostile] { return readingOf(hostile); }});
  all.push_back({"hostile-result", readingResult});
#endif
  return all;
}

void printEnvironment() {
  const bench::Machine machine = bench::thisMachine();
  std::printf("%s, glibc %s, %s, kernels %s\n", machine.compiler.c_str(), gnu_get_libc_version(),
              std::filesystem::canonical(machine.lapack).filename().c_str(), kVariant);
}

}  // namespace

extern "C" __attribute__((noinline, visibility("default"))) void cornerpin_measured(
    const std::function<void()>& work) {
  work();
}

int main(int argc, char** argv) {
  const std::vector<Scenario> scenarios = allScenarios();
  if (argc < 2) {
    for (const Scenario& s : scenarios) std::puts(s.name);
    return 0;
  }
  if (std::strcmp(argv[1], "--environment") == 0) {
    printEnvironment();
    return 0;
  }
  if (!useFixedKernels()) {
    std::fprintf(stderr, "cornerpin_instructions: this processor does not run the %s kernels\n",
                 kVariant);
    return 1;
  }
  const auto wanted = std::find_if(scenarios.begin(), scenarios.end(), [argv](const Scenario& s) {
    return std::strcmp(s.name, argv[1]) == 0;
  });
  if (wanted == scenarios.end()) {
    std::fprintf(stderr, "cornerpin_instructions: no scenario %s\n", argv[1]);
    return 2;
  }
  const std::function<void()> work = wanted->prepare();
  work();  // initialises statics and resolves symbols
  cornerpin_measured(work);
  return 0;
}

// SPDX-License-Identifier: BSD-3-Clause
#include "bench/command/magsac.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "bench/support/statistics.h"
#include "shot/files/track_reader.h"
#include "shot/solve/shot_solver.h"

#ifdef CORNERPIN_BENCH_OPENCV
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#endif

namespace bench {

namespace {

using namespace cornerpin;

constexpr std::size_t kFewest = 4;
constexpr double kMostlyWrong = 0.6;

// The tracks that a frame and the base frame have in common, x and y in turns.
struct Pairs {
  int frame = 0;
  std::vector<float> base, moved;
  std::size_t count() const { return base.size() / 2; }
};

std::vector<Pairs> pairsOf(const Tracks& tracks, int baseFrame) {
  std::map<std::int32_t, Observation> base;
  for (const Observation& o : tracks.inFrame(baseFrame)) {
    if (o.weight > 0.0f) base[o.track] = o;
  }
  std::vector<Pairs> all;
  for (int f = tracks.firstFrame(); f <= tracks.lastFrame(); ++f) {
    if (f == baseFrame) continue;
    Pairs pairs;
    pairs.frame = f;
    for (const Observation& o : tracks.inFrame(f)) {
      const auto found = base.find(o.track);
      if (!(o.weight > 0.0f) || found == base.end()) continue;
      for (double v : {found->second.x, found->second.y})
        pairs.base.push_back(static_cast<float>(v));
      for (double v : {o.x, o.y}) pairs.moved.push_back(static_cast<float>(v));
    }
    if (pairs.count() >= kFewest) all.push_back(std::move(pairs));
  }
  return all;
}

#ifdef CORNERPIN_BENCH_OPENCV
void fitByMagsac(const Pairs& pairs) {
  const auto points = [&](const std::vector<float>& v) {
    return cv::Mat(static_cast<int>(pairs.count()), 1, CV_32FC2, const_cast<float*>(v.data()));
  };
  cv::Mat good;
  cv::findHomography(points(pairs.base), points(pairs.moved), cv::USAC_MAGSAC, 3.0, good);
}
#else
void fitByMagsac(const Pairs&) {}
#endif

using Times = std::map<int, double>;  // microseconds by frame

// Of each frame its own fit, and an equal part of what comes before and after all of them.
Times timesOf(const Tracks& tracks, const SolveOptions& options, ShotResult& result) {
  Times times;
  int frame = *options.base;
  const double begin = processorSeconds();
  double before = begin;
  double fits = 0.0;
  const Progress progress = [&](Phase phase, std::size_t done, std::size_t) {
    if (phase != Phase::Solving) return;
    const double now = processorSeconds();
    if (done > 0) {  // onwards from the base frame to the end, then backwards
      frame = frame == tracks.lastFrame() ? *options.base - 1
                                          : frame + (frame < *options.base ? -1 : 1);
      times[frame] = 1e6 * (now - before);
      fits += now - before;
    }
    before = now;
  };
  result = solveShot(tracks, options, progress);
  const double rest = processorSeconds() - begin - fits;
  for (auto& [f, time] : times) time += 1e6 * rest / static_cast<double>(times.size());
  return times;
}

double mean(const std::vector<double>& values) {
  double sum = 0.0;
  for (double value : values) sum += value;
  return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

double median(const std::vector<double>& values) {
  return values.empty() ? 0.0 : quartiles(values).median;
}

bool isMostlyWrong(const FrameResult& frame) {
  return frame.verdict.status == Status::Solved &&
         frame.good < (1.0 - kMostlyWrong) * static_cast<double>(frame.tracks);
}

// Both sides' times of some of the frames, a mean for each round.
struct Rounds {
  std::vector<double> ours, theirs, ratios;
  void add(const std::vector<double>& own, const std::vector<double>& other) {
    if (own.empty()) return;
    ours.push_back(mean(own));
    theirs.push_back(mean(other));
    ratios.push_back(ours.back() / theirs.back());
  }
};

Beside besideMagsac(const std::string& name, const Tracks& tracks, int baseFrame, int rounds) {
  const std::vector<Pairs> frames = pairsOf(tracks, baseFrame);
  SolveOptions options;
  options.base = baseFrame;
  options.threads = 1;
  Rounds usual, wrong;
  std::vector<double> handOver;
  Beside beside;
  beside.shot = name;
  for (int round = 0; round < rounds; ++round) {
    ShotResult result;
    options.handOver = true;
    double begin = processorSeconds();
    solveShot(tracks, options);
    const double withOthers = processorSeconds() - begin;
    options.handOver = false;
    begin = processorSeconds();
    Times ours = timesOf(tracks, options, result);
    handOver.push_back(1e6 * (withOthers - (processorSeconds() - begin)) /
                       static_cast<double>(std::max<std::size_t>(ours.size(), 1)));
    std::vector<double> own[2], other[2];
    for (const Pairs& pairs : frames) {
      begin = processorSeconds();
      fitByMagsac(pairs);
      const double theirs = 1e6 * (processorSeconds() - begin);
      const auto index = static_cast<std::size_t>(pairs.frame - tracks.firstFrame());
      const bool isWrong = isMostlyWrong(result.frames[index]);
      own[isWrong].push_back(ours[pairs.frame]);
      other[isWrong].push_back(theirs);
    }
    usual.add(own[0], other[0]);
    wrong.add(own[1], other[1]);
    beside.mostlyWrong = own[1].size();
  }
  std::vector<double> counts;
  counts.reserve(frames.size());
  for (const Pairs& pairs : frames) counts.push_back(static_cast<double>(pairs.count()));
  beside.tracks = median(counts);
  beside.frames = frames.size();
  beside.ours = median(usual.ours);
  beside.theirs = median(usual.theirs);
  beside.ratio = median(usual.ratios);
  beside.oursWrong = median(wrong.ours);
  beside.theirsWrong = median(wrong.theirs);
  beside.ratioWrong = median(wrong.ratios);
  beside.handOver = median(handOver);
  return beside;
}

}  // namespace

bool hasMagsac() {
#ifdef CORNERPIN_BENCH_OPENCV
  return true;
#else
  return false;
#endif
}

std::vector<Beside> besideMagsac(const std::string& folder, int rounds) {
#ifdef CORNERPIN_BENCH_OPENCV
  cv::setNumThreads(1);
#endif
  std::vector<std::filesystem::path> descriptions;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".json") descriptions.push_back(entry.path());
  }
  std::sort(descriptions.begin(), descriptions.end());
  std::vector<Beside> all;
  for (std::filesystem::path path : descriptions) {
    std::ifstream file(path);
    const int baseFrame = nlohmann::json::parse(file).at("base_frame");
    const std::string name = path.stem().string();
    const Tracks tracks = readTracks(path.replace_extension(".csv").string());
    all.push_back(besideMagsac(name, tracks, baseFrame, rounds));
  }
  return all;
}

}  // namespace bench

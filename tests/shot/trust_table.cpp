// SPDX-License-Identifier: BSD-3-Clause

// trust_table [WORD] prints how well the figures of trust hold: on the shots of the table of made
// ones, and on the board, whose truth is known. With a word only the lines in whose name it is.
//
// A frame holds when the worst corner of its quad lies within two of that corner's deviations of
// the truth.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "shot/files/track_csv.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/known_shots.h"
#include "tests/shot/table_rows.h"

using namespace cornerpin;

namespace {

class Line {
 public:
  // \param truthNoise  how far the truth itself may be off
  void add(const Quad& images, const Quad& truth, const std::array<double, 4>& deviations,
           double truthNoise = 0.0) {
    ++frames_;
    std::size_t worst = 0;
    std::array<double, 4> errors{};
    for (std::size_t c = 0; c < 4; ++c) {
      errors[c] = std::sqrt(squaredDistance(images[c], truth[c]));
      if (!(errors[c] <= errors[worst])) worst = c;
    }
    if (!std::isfinite(deviations[worst])) return;
    bool allWithin = true;
    for (std::size_t c = 0; c < 4; ++c) {
      allWithin = allWithin && errors[c] <= 2.0 * std::hypot(deviations[c], truthNoise);
    }
    const double deviation = std::hypot(deviations[worst], truthNoise);
    errors_.push_back(errors[worst]);
    deviations_.push_back(deviation);
    ratios_.push_back(errors[worst] / deviation);
    if (allWithin) ++allWithin_;
  }

  void print(const std::string& name) {
    const auto share = [](std::size_t part, std::size_t whole) {
      return 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    };
    const auto within = static_cast<std::size_t>(
        std::count_if(ratios_.begin(), ratios_.end(), [](double r) { return r <= 2.0; }));
    const std::size_t counted = ratios_.size();
    std::printf("| %s | %zu | %.1f %% | %.1f %% | %.1f %% | %.2f | %.2f | %.2f |\n", name.c_str(),
                frames_, share(frames_ - counted, frames_), share(within, counted),
                share(allWithin_, counted), rank(deviations_, 0.5), rank(errors_, 0.5),
                rank(ratios_, 0.9));
    std::fflush(stdout);
  }

 private:
  static double rank(std::vector<double> values, double share) {
    if (values.empty()) return kNoFigure;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
  }

  std::size_t frames_ = 0;
  std::size_t allWithin_ = 0;
  std::vector<double> errors_;  // of the worst corner, in frames with figures
  std::vector<double> deviations_;
  std::vector<double> ratios_;
};

Quad imagesOf(const Quad& quad, const Homography& h) {
  Quad images{};
  for (std::size_t c = 0; c < 4; ++c) images[c] = map(h, quad[c]);
  return images;
}

// The quads of a shot on its surface, each once, and which of them a frame is measured by.
struct Quads {
  std::vector<NamedQuad> all;
  std::vector<std::size_t> ofFrame;
};

Quads quadsOf(const made::KnownShot& shot) {
  constexpr double kSame = 1e-6;
  Quads quads;
  for (std::size_t f = 0; f < shot.corners.size(); ++f) {
    const Quad quad = imagesOf(shot.corners[f], shot.truth(static_cast<int>(f), 0));
    const bool isNew =
        quads.all.empty() || squaredDistance(quads.all.back().corners[0], quad[0]) > kSame * kSame;
    if (isNew) quads.all.push_back({std::to_string(f), quad});
    quads.ofFrame.push_back(quads.all.size() - 1);
  }
  return quads;
}

void addShot(const made::TableRow& row, unsigned seed, Line& line) {
  const made::KnownShot shot = row.make(seed);
  const Quads quads = quadsOf(shot);
  SolveOptions options;
  options.base = 0;
  options.quads = quads.all;
  const ShotResult result = solveShot(shot.tracks, options);
  for (int frame = row.first; frame <= row.last; ++frame) {
    const auto f = static_cast<std::size_t>(frame);
    const std::size_t q = quads.ofFrame[f];
    line.add(imagesOf(quads.all[q].corners, result.frames[f].h), shot.corners[f],
             result.frames[f].figures.deviations(q));
  }
}

// The board in frame 60, from which its truth leads: the outer ones of the inner corners, which the
// truth was made from and fits to 0.14 px, and its outline, to which the truth is extended.
constexpr Quad kInner = {{{308.49, 182.45}, {394.53, 103.06}, {527.65, 235.23}, {410.71, 329.38}}};
constexpr Quad kOutline = {{{267.35, 184.63}, {403.59, 56.38}, {609.57, 236.28}, {399.49, 399.15}}};
constexpr int kBoardFrame = 60;
constexpr double kBoardNoise = 0.14;

std::vector<std::optional<Homography>> boardTruth(const Tracks& tracks) {
  std::vector<std::optional<Homography>> truth(static_cast<std::size_t>(tracks.frameCount()));
  std::ifstream file(CORNERPIN_DATA "/board.truth.csv");
  std::string text;
  std::getline(file, text);
  while (std::getline(file, text)) {
    std::replace(text.begin(), text.end(), ',', ' ');
    std::istringstream row(text);
    int frame = 0;
    row >> frame;
    Homography h{};
    for (auto& r : h) {
      for (double& e : r) row >> e;
    }
    truth[static_cast<std::size_t>(frame - tracks.firstFrame())] = h;
  }
  return truth;
}

// With a base the quad is given there, else where it has been carried to.
void printBoard(const std::string& name, const Quad& board, std::optional<int> base) {
  const Tracks tracks = readTracks(CORNERPIN_DATA "/board.csv");
  const auto truth = boardTruth(tracks);
  SolveOptions options;
  options.base = base;
  if (!base) options.base = solveShot(tracks, {}).baseFrame;
  const auto& toBase = truth[static_cast<std::size_t>(*options.base - tracks.firstFrame())];
  options.quads = {{"board", imagesOf(board, *options.base == kBoardFrame ? kIdentity : *toBase)}};
  const ShotResult result = solveShot(tracks, options);
  Line line;
  for (std::size_t f = 0; f < result.frames.size(); ++f) {
    const FrameResult& frame = result.frames[f];
    if (!truth[f] || frame.verdict.status == Status::Base) continue;
    line.add(imagesOf(options.quads[0].corners, frame.h), imagesOf(board, *truth[f]),
             frame.figures.deviations(), kBoardNoise);
  }
  line.print(name + " from frame " + std::to_string(*options.base));
}

}  // namespace

int main(int argc, char** argv) {
  const std::string word = argc > 1 ? argv[1] : "";
  const auto wanted = [&](const std::string& name) { return name.find(word) != std::string::npos; };
  std::printf(
      "| shot | frames | without figures | worst corner within 2 deviations | all corners | "
      "deviation, median | error, median | error / deviation, 90 %% |\n"
      "|---|---|---|---|---|---|---|---|\n");
  for (const made::TableRow& row : made::tableRows()) {
    if (!wanted(row.name)) continue;
    Line line;
    for (unsigned seed = 1; seed <= made::kTableShots; ++seed) addShot(row, seed, line);
    line.print(row.name);
  }
  if (wanted("board")) {
    for (const std::optional<int>& base : {std::optional<int>(kBoardFrame), std::optional<int>()}) {
      printBoard("board, inner corners,", kInner, base);
      printBoard("board, outline,", kOutline, base);
    }
  }
}

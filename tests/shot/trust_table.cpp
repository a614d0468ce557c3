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

#include "shot/files/track_reader.h"
#include "shot/fit/linearised_fit.h"
#include "shot/plane/quad_map.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/known_shots.h"
#include "tests/shot/table_rows.h"

using namespace cornerpin;

namespace {

class Line {
 public:
  // \param good     whether the frame is called so
  // \param ofTruth  how far the truth itself may be off
  void add(const Quad& images, const Quad& truth, std::array<double, 4> deviations, bool good,
           const std::array<double, 4>& ofTruth = {}) {
    ++frames_;
    std::size_t worst = 0;
    std::array<double, 4> errors{};
    for (std::size_t c = 0; c < 4; ++c) {
      errors[c] = std::sqrt(squaredDistance(images[c], truth[c]));
      if (!(errors[c] <= errors[worst])) worst = c;
      deviations[c] = std::hypot(deviations[c], ofTruth[c]);
    }
    if (!std::isfinite(deviations[worst])) return;
    bool allWithin = true;
    for (std::size_t c = 0; c < 4; ++c) {
      allWithin = allWithin && errors[c] <= 2.0 * deviations[c];
    }
    errors_.push_back(errors[worst]);
    deviations_.push_back(deviations[worst]);
    ratios_.push_back(errors[worst] / deviations[worst]);
    if (good) ratiosOfGood_.push_back(ratios_.back());
    if (allWithin) ++allWithin_;
  }

  void print(const std::string& name) {
    const auto share = [](std::size_t part, std::size_t whole) {
      return 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    };
    const auto within = static_cast<std::size_t>(
        std::count_if(ratios_.begin(), ratios_.end(), [](double r) { return r <= 2.0; }));
    const std::size_t counted = ratios_.size();
    std::printf("| %s | %zu | %.1f %% | %.1f %% | %.1f %% | %.2f | %.2f | %.2f | %zu | %.2f |\n",
                name.c_str(), frames_, share(frames_ - counted, frames_), share(within, counted),
                share(allWithin_, counted), rank(deviations_, 0.5), rank(errors_, 0.5),
                rank(ratios_, 0.9), ratiosOfGood_.size(), rank(ratiosOfGood_, 0.99));
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
  std::vector<double> ratiosOfGood_;
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
             result.frames[f].figures.deviations(q), result.frames[f].doubts.empty());
  }
}

// The board's outline in frame 60, from which its truth leads: 5 by 7 squares, of which the
// inner corners were seen.
constexpr Quad kOutline = {{{267.35, 184.63}, {403.59, 56.38}, {609.57, 236.28}, {399.49, 399.15}}};
constexpr int kBoardFrame = 60;
constexpr int kAcross = 5;
constexpr int kDown = 7;
constexpr double kBoardNoise = 0.14;  // px, the distance at which the truth meets what it fits

// From places on the board, in squares, to frame 60.
Homography fromSquares() {
  return quadToQuad({{{0.0, 0.0}, {kAcross, 0.0}, {kAcross, kDown}, {0.0, kDown}}}, kOutline);
}

Quad innerCorners() {
  const Quad squares = {
      {{1.0, 1.0}, {kAcross - 1.0, 1.0}, {kAcross - 1.0, kDown - 1.0}, {1.0, kDown - 1.0}}};
  return imagesOf(squares, fromSquares());
}

// How far the truth is off at the corners of `board`: the covariance of a fit of the 4 by 6 inner
// corners that meets them to `kBoardNoise`.
std::array<double, 4> truthDeviations(const Quad& board, const Homography& truth) {
  const Homography place = fromSquares();
  Matches corners;
  for (int i = 1; i < kAcross; ++i) {
    for (int j = 1; j < kDown; ++j) {
      const Point base = map(place, {static_cast<double>(i), static_cast<double>(j)});
      corners.add({base, map(truth, base)});
    }
  }
  const auto count = static_cast<double>(corners.size());
  const double variance = kBoardNoise * kBoardNoise * count / (2.0 * count - 8.0);
  FittedFrame fitted;
  fitted.h = truth;
  fitted.weights.assign(corners.size(), 1.0);
  const LinearisedFit fit(corners, fitted);
  std::array<double, 4> deviations{};
  for (std::size_t c = 0; c < 4; ++c) {
    deviations[c] = std::sqrt(variance * fit.responseAt(board[c]).trace());
  }
  return deviations;
}

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

// With a base the quad is given there, else where it has been carried to. Once with what the
// truth's fit says of its errors at the quad, once with the distance at which it meets the inner
// corners.
void printBoard(const std::string& name, const Quad& board, std::optional<int> base) {
  const Tracks tracks = readTracks(CORNERPIN_DATA "/board.csv");
  const auto truth = boardTruth(tracks);
  SolveOptions options;
  options.base = base;
  if (!base) options.base = solveShot(tracks, {}).baseFrame;
  const auto& toBase = truth[static_cast<std::size_t>(*options.base - tracks.firstFrame())];
  options.quads = {{"board", imagesOf(board, *options.base == kBoardFrame ? kIdentity : *toBase)}};
  const ShotResult result = solveShot(tracks, options);
  Line byFit;
  Line byDistance;
  for (std::size_t f = 0; f < result.frames.size(); ++f) {
    const FrameResult& frame = result.frames[f];
    if (!truth[f] || frame.verdict.status == Status::Base) continue;
    const Quad images = imagesOf(options.quads[0].corners, frame.h);
    const Quad expected = imagesOf(board, *truth[f]);
    const std::array<double, 4> deviations = frame.figures.deviations();
    const bool good = frame.doubts.empty();
    byFit.add(images, expected, deviations, good, truthDeviations(board, *truth[f]));
    byDistance.add(images, expected, deviations, good,
                   {kBoardNoise, kBoardNoise, kBoardNoise, kBoardNoise});
  }
  const std::string from = name + " from frame " + std::to_string(*options.base);
  byFit.print(from);
  byDistance.print(from + ", 0.14 px");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string word = argc > 1 ? argv[1] : "";
  const auto wanted = [&](const std::string& name) { return name.find(word) != std::string::npos; };
  std::printf(
      "| shot | frames | without figures | worst corner within 2 deviations | all corners | "
      "deviation, median | error, median | error / deviation, 90 %% | good | of these, 99 %% |\n"
      "|---|---|---|---|---|---|---|---|---|---|\n");
  for (const made::TableRow& row : made::tableRows()) {
    if (!wanted(row.name)) continue;
    Line line;
    for (unsigned seed = 1; seed <= made::kTableShots; ++seed) addShot(row, seed, line);
    line.print(row.name);
  }
  if (wanted("board")) {
    for (const std::optional<int>& base : {std::optional<int>(kBoardFrame), std::optional<int>()}) {
      printBoard("board, inner corners,", innerCorners(), base);
      printBoard("board, outline,", kOutline, base);
    }
  }
}

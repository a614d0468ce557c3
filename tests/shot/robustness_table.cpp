// SPDX-License-Identifier: BSD-3-Clause

// robustness_table [WORD [time]] prints how far the solve's corners lie from the truth on made
// shots with known faults, beside plain squares and, where OpenCV is there, its robust estimators
// on the same frames. With a word only the shots in whose name it is; with "time" what smoothing
// and filling in are worth on these.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#ifdef CORNERPIN_TABLE_OPENCV
#include <opencv2/calib3d.hpp>
#endif

#include "shot/solve/shot_solver.h"
#include "tests/shot/key_frames.h"
#include "tests/shot/known_shots.h"
#include "tests/shot/table_rows.h"
#include "tests/shot/time_table.h"

using namespace cornerpin;

namespace {

using Solver = std::function<std::vector<Homography>(const Tracks&, const made::KeyFrames&)>;

Solver ours(Loss loss) {
  return [loss](const Tracks& tracks, const made::KeyFrames&) {
    SolveOptions options;
    options.base = 0;
    options.loss = loss;
    std::vector<Homography> all;
    for (const FrameResult& frame : solveShot(tracks, options).frames) all.push_back(frame.h);
    return all;
  };
}

#ifdef CORNERPIN_TABLE_OPENCV
std::optional<Homography> fitted(const Matches& matches, int method) {
  std::vector<cv::Point2d> from, to;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    from.emplace_back(matches[i].base.x, matches[i].base.y);
    to.emplace_back(matches[i].present.x, matches[i].present.y);
  }
  cv::setRNGSeed(1);
  cv::Mat h;
  if (from.size() >= 4) h = cv::findHomography(from, to, method, 3.0);
  if (h.empty()) return std::nullopt;
  Homography result;
  for (int e = 0; e < 9; ++e) {
    result[static_cast<std::size_t>(e / 3)][static_cast<std::size_t>(e % 3)] =
        h.at<double>(e / 3, e % 3);
  }
  return result;
}

Solver theirs(int method) {
  return [method](const Tracks& tracks, const made::KeyFrames& keys) {
    const auto fit = [method](const Matches& matches) { return fitted(matches, method); };
    return chained(tracks, 0, fit, keys);
  };
}
#endif

struct Entry {
  const char* name;
  Solver solve;
};

double worstCorner(const made::KnownShot& shot, const Homography& h, int frame) {
  const std::array<double, 4> errors = cornerErrors(shot, h, 0, frame);
  return *std::max_element(errors.begin(), errors.end());
}

void printRow(const made::TableRow& row, const std::vector<Entry>& entries) {
  std::printf("| %s |", row.name.c_str());
  for (const Entry& entry : entries) {
    std::vector<double> errors;
    for (unsigned seed = 1; seed <= made::kTableShots; ++seed) {
      const made::KnownShot shot = row.make(seed);
      const std::vector<Homography> all = entry.solve(shot.tracks, row.keys);
      for (int f = row.first; f <= row.last; ++f)
        errors.push_back(worstCorner(shot, all[static_cast<std::size_t>(f)], f));
    }
    std::sort(errors.begin(), errors.end());
    std::printf(" %.2f / %.2f |", errors[errors.size() / 2], errors.back());
  }
  std::printf("\n");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string word = argc > 1 ? argv[1] : "";
  if (argc > 2 && argv[2] == std::string("time")) {
    made::printTimeHeader();
    for (const made::TableRow& row : made::tableRows()) {
      if (row.name.find(word) != std::string::npos)
        made::printTimeRow(row.name, row.make, made::kTableShots);
    }
    return 0;
  }
  std::vector<Entry> entries = {
      {"default", ours(Loss::Tukey)}, {"cauchy", ours(Loss::Cauchy)}, {"none", ours(Loss::None)}};
#ifdef CORNERPIN_TABLE_OPENCV
  entries.push_back({"OpenCV RANSAC", theirs(cv::RANSAC)});
  entries.push_back({"USAC_DEFAULT", theirs(cv::USAC_DEFAULT)});
  entries.push_back({"USAC_MAGSAC", theirs(cv::USAC_MAGSAC)});
  entries.push_back({"USAC_ACCURATE", theirs(cv::USAC_ACCURATE)});
#endif
  std::printf("Error of the worst corner in pixels, median / worst of the frames of %u shots\n\n",
              made::kTableShots);
  std::printf("| shot |");
  for (const Entry& entry : entries) std::printf(" %s |", entry.name);
  std::printf("\n|---|");
  for (std::size_t i = 0; i < entries.size(); ++i) std::printf("---|");
  std::printf("\n");
  for (const made::TableRow& row : made::tableRows()) {
    if (row.name.find(word) != std::string::npos) printRow(row, entries);
  }
}

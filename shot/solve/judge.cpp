// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/judge.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <utility>

#include "shot/robust/robust_fit.h"
#include "shot/solve/jumps.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr int kFewestToCheck = static_cast<int>(kFewestForRobust);

// A corner in a frame.
struct Corner {
  std::size_t quad = 0;
  std::size_t index = 0;
  double deviation = 0.0;
};

std::string textOf(const ShotResult& result, const Corner& corner) {
  return cornerName(result.quads, result.provenance.picture.y, corner.quad, corner.index);
}

// The corners that have a figure, and those that have none.
std::pair<std::vector<Corner>, std::vector<Corner>> cornersOf(const ShotResult& result,
                                                              const FrameResult& frame) {
  std::pair<std::vector<Corner>, std::vector<Corner>> corners;
  for (std::size_t quad = 0; quad < result.quads.size(); ++quad) {
    const std::array<double, 4> deviations = frame.figures.deviations(quad);
    for (std::size_t i = 0; i < deviations.size(); ++i) {
      const bool known = std::isfinite(deviations[i]);
      (known ? corners.first : corners.second).push_back({quad, i, deviations[i]});
    }
  }
  return corners;
}

void judgeFigures(const ShotResult& result, FrameResult& frame, std::vector<Doubt>& doubts) {
  const auto [known, unknown] = cornersOf(result, frame);
  const auto worst =
      std::max_element(known.begin(), known.end(),
                       [](const Corner& a, const Corner& b) { return a.deviation < b.deviation; });
  frame.expectedError = unknown.empty() && worst != known.end() ? worst->deviation : kNoFigure;
  if (worst != known.end() && worst->deviation > result.maxError) {
    doubts.push_back({DoubtCode::ExpectedError,
                      fmt::format("{} may be {} off, the limit is {}", textOf(result, *worst),
                                  pixels(worst->deviation), pixels(result.maxError))});
  }
  if (unknown.empty()) return;
  const Corner& first = unknown.front();
  const Point place = carried(result, frame, result.quads[first.quad].corners[first.index]);
  const bool hidden = !std::isfinite(place.x);
  doubts.push_back({DoubtCode::NoFigures,
                    hidden ? textOf(result, first) + " lies on or behind the horizon"
                           : "nothing tells how far " + textOf(result, first) + " may be off"});
}

void judgeTracks(const ShotResult& result, const FrameResult& frame, std::vector<Doubt>& doubts) {
  if (frame.verdict.status != Status::Solved) return;
  const int checked = result.loss == Loss::None ? frame.tracks : std::min(frame.good, frame.tracks);
  if (checked >= kFewestToCheck) return;
  doubts.push_back(
      {DoubtCode::NothingToCheck,
       checked < frame.tracks
           ? fmt::format("only {} of {} tracks agree: too few to check them against each other",
                         checked, frame.tracks)
           : fmt::format("{} tracks: too few to check them against each other", checked)});
}

void judgeSearch(const FrameResult& frame, std::vector<Doubt>& doubts) {
  const Origin& origin = frame.verdict.origin;
  if (isLikelyByChance(origin)) {
    const double pictures = std::pow(10.0, -origin.chance);
    doubts.push_back(
        {DoubtCode::ChanceAgreement,
         pictures < 2.0
             ? std::string("chance makes as many tracks agree as closely in any picture")
             : fmt::format("chance makes as many tracks agree as closely in one of {:.0f} pictures",
                           pictures)});
  }
  if (origin.budgetSpent) {
    doubts.push_back(
        {DoubtCode::BudgetSpent,
         "the search ended at its limit: it may have missed a transform that fits more tracks"});
  }
  if (origin.rivalled) {
    doubts.push_back({DoubtCode::Rival, "other tracks agree on another transform about as well"});
  }
}

void judgeJump(const FrameResult& frame, double jump, std::vector<Doubt>& doubts) {
  if (frame.verdict.status != Status::Solved || !(jump > 0.0)) return;
  doubts.push_back({DoubtCode::Jump, fmt::format("a corner is {} from where the frames around it "
                                                 "put it",
                                                 pixels(jump))});
}

void judgeStatus(const FrameResult& frame, std::vector<Doubt>& doubts) {
  const auto because = [&](const char* what) {
    const std::string reason = reasonOf(frame);
    return reason.empty() ? std::string(what) : fmt::format("{}: {}", what, reason);
  };
  if (frame.verdict.status == Status::Reduced) {
    doubts.push_back({DoubtCode::Reduced, because(nameOf(frame.verdict.model))});
  } else if (frame.verdict.status == Status::Held) {
    doubts.push_back({DoubtCode::Held, because("its neighbour's transform")});
  }
}

bool isAboutFigures(const Doubt& doubt) {
  return doubt.code == DoubtCode::ExpectedError || doubt.code == DoubtCode::NoFigures;
}

}  // namespace

void judgeFigures(ShotResult& result) {
  for (FrameResult& frame : result.frames) {
    std::vector<Doubt> doubts;
    judgeFigures(result, frame, doubts);
    std::copy_if(frame.doubts.begin(), frame.doubts.end(), std::back_inserter(doubts),
                 [](const Doubt& doubt) { return !isAboutFigures(doubt); });
    frame.doubts = std::move(doubts);
  }
}

void judge(ShotResult& result) {
  const std::vector<double> jumps = jumpsOf(result);
  for (std::size_t i = 0; i < result.frames.size(); ++i) {
    FrameResult& frame = result.frames[i];
    frame.doubts.clear();
    judgeTracks(result, frame, frame.doubts);
    judgeSearch(frame, frame.doubts);
    judgeJump(frame, jumps[i], frame.doubts);
    judgeStatus(frame, frame.doubts);
  }
  judgeFigures(result);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;
constexpr int kFewest = static_cast<int>(kFewestTracks);

// Four decimals, or three digits of what these would hide or stretch.
std::string decimals(double value) {
  if (!std::isfinite(value)) return "-";
  const bool plain = value == 0.0 || (value >= 1e-3 && value < 1e5);
  return plain ? fmt::format("{:.4f}", value) : fmt::format("{:.3g}", value);
}

std::string unsolvedFrames(const Summary& s) {
  if (s.firstUnsolved.empty()) return {};
  std::string text = "not in full   frame  model        reason\n";
  for (const FrameResult* f : s.firstUnsolved) {
    text += fmt::format("{:>19}  {:<11}  {}\n", f->frame, nameOf(f->verdict.model), f->reason);
  }
  const std::size_t more = s.reduced + s.held - s.firstUnsolved.size();
  if (more > 0) text += fmt::format("{:>19}  and {} more\n", "...", more);
  return text;
}

// "0-9, 55", of the doubtful frames; after five stretches "and 12 more".
std::string doubtfulStretches(const ShotResult& result) {
  std::vector<std::pair<int, int>> stretches;
  int left = 0;
  for (const FrameResult& f : result.frames) {
    if (f.doubts.empty()) continue;
    const bool goesOn = !stretches.empty() && stretches.back().second == f.frame - 1;
    if (!goesOn && stretches.size() == kListed) {
      ++left;
      continue;
    }
    if (!goesOn) stretches.push_back({f.frame, f.frame});
    stretches.back().second = f.frame;
  }
  std::string text;
  for (const auto& [first, last] : stretches) {
    text += text.empty() ? "" : ", ";
    text += first == last ? fmt::format("{}", first) : fmt::format("{}-{}", first, last);
  }
  return left > 0 ? text + fmt::format(" and {} more", left) : text;
}

// How many frames have a doubt, and its text in the one with the largest expected error; none
// counts as the largest.
std::string doubtLine(const ShotResult& result, DoubtCode code) {
  std::size_t count = 0;
  double largest = -1.0;
  const FrameResult* worst = nullptr;
  const Doubt* example = nullptr;
  for (const FrameResult& f : result.frames) {
    const auto doubt = std::find_if(f.doubts.begin(), f.doubts.end(),
                                    [&](const Doubt& d) { return d.code == code; });
    if (doubt == f.doubts.end()) continue;
    ++count;
    const double error = std::isfinite(f.expectedError) ? f.expectedError : HUGE_VAL;
    if (error <= largest) continue;
    largest = error;
    worst = &f;
    example = &*doubt;
  }
  if (count == 0) return {};
  return fmt::format("  {:<16} {:>5}  frame {}: {}\n", nameOf(code), count, worst->frame,
                     example->text);
}

// How many frames are good, which are not, and why.
std::string judgements(const ShotResult& result, const Summary& s) {
  const std::size_t frames = result.frames.size();
  std::string text = fmt::format("good          {} of {} frames\n", frames - s.doubtful, frames);
  if (s.doubtful == 0) return text;
  text += fmt::format("doubtful      {}: {}\n", s.doubtful, doubtfulStretches(result));
  for (DoubtCode code : kDoubtCodes) text += doubtLine(result, code);
  return text;
}

// The largest corner of each frame that has a figure: the median of them and the worst.
std::string deviations(const ShotResult& result, std::size_t quad) {
  std::vector<std::pair<double, int>> figures;
  std::size_t without = 0;
  for (const FrameResult& f : result.frames) {
    const auto d = f.figures.deviations(quad);
    const double largest = *std::max_element(d.begin(), d.end());
    const bool none = std::any_of(d.begin(), d.end(), [](double x) { return !std::isfinite(x); });
    if (f.frame == result.referenceFrame) continue;
    if (none) {
      ++without;
    } else {
      figures.push_back({largest, f.frame});
    }
  }
  if (figures.empty() && without == 0) return {};
  const std::string count = fmt::format("{} frame{}", without, without == 1 ? "" : "s");
  if (figures.empty()) return "corner noise  no figure in any of " + count;
  std::sort(figures.begin(), figures.end());
  return fmt::format("corner noise  median {}, worst {} in frame {}",
                     decimals(figures[(figures.size() - 1) / 2].first),
                     decimals(figures.back().first), figures.back().second) +
         (without > 0 ? ", no figure in " + count : "");
}

// A line for each quad, with its name where there are several.
std::string deviations(const ShotResult& result) {
  std::string text;
  for (std::size_t quad = 0; quad < result.quads.size(); ++quad) {
    const std::string line = deviations(result, quad);
    if (line.empty()) continue;
    text += line;
    text += result.quads.size() > 1 ? fmt::format(" of {}\n", result.quads[quad].name) : "\n";
  }
  return text;
}

// How far smoothing has moved corners, each frame by the one that moved most.
std::string smoothing(const ShotResult& result) {
  if (!result.smooth) return {};
  std::vector<std::pair<double, int>> moves;
  for (const FrameResult& f : result.frames) {
    if (f.verdict.status == Status::Solved) moves.push_back({f.smoothed, f.frame});
  }
  if (moves.empty()) return {};
  std::sort(moves.begin(), moves.end());
  if (!(moves.back().first > 0.0)) return "smoothed      no corner moved\n";
  return fmt::format("smoothed      corners moved by median {}, most {} in frame {}\n",
                     decimals(moves[(moves.size() - 1) / 2].first), decimals(moves.back().first),
                     moves.back().second);
}

std::string filling(const ShotResult& result, const Summary& summary) {
  if (!result.fill) return {};
  const auto filled = std::count_if(result.frames.begin(), result.frames.end(),
                                    [](const FrameResult& f) { return f.filled; });
  const auto all = static_cast<std::ptrdiff_t>(summary.reduced + summary.held);
  return fmt::format(
      "filled in     {} of {} reduced or held frames{}\n", filled, all,
      filled < all
          ? ", the others are surer as they are, lack good frames on both sides or contradict "
            "them"
          : "");
}

// How many tracks the fits go by, and what led to them: of the solved frames.
std::string goodTracks(const ShotResult& result) {
  std::vector<std::pair<double, int>> shares;
  std::array<std::size_t, 3> stages{};
  for (const FrameResult& f : result.frames) {
    if (f.verdict.status != Status::Solved) continue;
    shares.push_back({100.0 * f.good / f.tracks, f.frame});
    ++stages[static_cast<std::size_t>(f.verdict.origin.stage)];
  }
  if (shares.empty()) return {};
  std::sort(shares.begin(), shares.end());
  return fmt::format("good tracks   median {:.0f} %, fewest {:.0f} % in frame {}\n",
                     shares[shares.size() / 2].first, shares.front().first, shares.front().second) +
         fmt::format("started from  the library's fit {}, the neighbour {}, samples {} (seed {})\n",
                     stages[0], stages[1], stages[2], result.seed);
}

// The tracks that the base frame lacks, and what those that take part are good for.
std::string handOver(const ShotResult& result) {
  if (result.handedOver == 0) return {};
  int with = 0;
  int needed = 0;
  for (const FrameResult& f : result.frames) {
    if (f.handedOver > 0) ++with;
    if (f.tracks >= kFewest && f.tracks - f.handedOver < kFewest) ++needed;
  }
  return fmt::format(
      "hand-over     {} tracks that the base frame lacks, in {} frames; {} of these have fewer "
      "than "
      "{} others\n",
      result.handedOver, with, needed, kFewest);
}

std::string leftOut(const ShotResult& result) {
  if (result.leftOut == 0) return ", none left out";
  if (!result.unused) return fmt::format(", {} left out", result.leftOut);
  return ", left out: " + describe(*result.unused);
}

std::string worstTracks(const ShotResult& result) {
  std::string text;
  for (const WorstTrack& track : result.worst) {
    if (!track.stretch.standsOut) continue;
    text += fmt::format("{:<14}{}\n", text.empty() ? "worst tracks" : "", describe(track));
  }
  return text;
}

}  // namespace

Summary summarise(const ShotResult& result) {
  Summary summary;
  std::vector<const FrameResult*> solved;
  for (const FrameResult& frame : result.frames) {
    if (frame.verdict.status == Status::Solved) solved.push_back(&frame);
    if (frame.verdict.status == Status::Reduced) ++summary.reduced;
    if (frame.verdict.status == Status::Held) ++summary.held;
    if (!frame.doubts.empty()) ++summary.doubtful;
    const bool unsolved =
        frame.verdict.status == Status::Reduced || frame.verdict.status == Status::Held;
    if (unsolved && summary.firstUnsolved.size() < kListed) summary.firstUnsolved.push_back(&frame);
  }
  summary.solved = solved.size();
  const auto size = [](const FrameResult* f) {
    return std::isnan(f->goodRms) ? HUGE_VAL : f->goodRms;
  };
  std::stable_sort(solved.begin(), solved.end(),
                   [&](const auto* a, const auto* b) { return size(a) > size(b); });
  const double none = std::numeric_limits<double>::quiet_NaN();
  summary.worstRms = solved.empty() ? none : solved.front()->goodRms;
  summary.medianRms = solved.empty() ? none : solved[(solved.size() - 1) / 2]->goodRms;
  solved.resize(std::min(solved.size(), kListed));
  summary.worst = solved;
  return summary;
}

std::string doubtfulFrames(const ShotResult& result) {
  const std::size_t doubtful = summarise(result).doubtful;
  if (doubtful == 0) return {};
  return fmt::format("{} of {} frames are doubtful: {}", doubtful, result.frames.size(),
                     doubtfulStretches(result));
}

std::string summaryTable(const ShotResult& result) {
  const Summary s = summarise(result);
  std::string text =
      fmt::format("base frame    {}  ({} tracks", result.baseFrame, result.baseTracks);
  text += leftOut(result) + ")\n";
  if (!result.whyBase.empty()) text += fmt::format("chosen        {}\n", result.whyBase);
  if (result.referenceFrame != result.baseFrame) {
    text += fmt::format("reference     {}\n", result.referenceFrame);
  }
  text += handOver(result);
  text += fmt::format("solved        {} of {} frames\n", s.solved + 1, result.frames.size());
  text += fmt::format("reduced       {}\n", s.reduced);
  text += fmt::format("held          {}\n", s.held);
  text += judgements(result, s);
  if (result.loss != Loss::None) text += goodTracks(result);
  text += fmt::format("RMS residual  median {}, worst {}{}\n", decimals(s.medianRms),
                      decimals(s.worstRms), result.loss == Loss::None ? "" : " of the good tracks");
  text += deviations(result);
  text += smoothing(result) + filling(result, s);
  if (!result.between.empty()) {
    text += fmt::format("between       {} more transforms\n", result.between.size());
  }
  if (!s.worst.empty()) text += "worst frames  frame      RMS  tracks\n";
  for (const FrameResult* f : s.worst) {
    text += fmt::format("{:>19} {:>8} {:>7}", f->frame, decimals(f->goodRms), f->tracks);
    text += f->good < f->tracks ? fmt::format(", {} of them good\n", f->good) : "\n";
  }
  return text + worstTracks(result) + unsolvedFrames(s);
}

}  // namespace cornerpin

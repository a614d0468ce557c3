// SPDX-License-Identifier: BSD-3-Clause
#include "shot/summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;

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
    text += fmt::format("{:>19}  {:<11}  {}\n", f->frame, nameOf(f->model), f->reason);
  }
  const std::size_t more = s.reduced + s.held - s.firstUnsolved.size();
  if (more > 0) text += fmt::format("{:>19}  and {} more\n", "...", more);
  return text;
}

// The largest corner of each frame that has a figure: the median of them and the worst.
std::string deviations(const ShotResult& result, const ShotTrust& trust) {
  std::vector<std::pair<double, int>> figures;
  for (std::size_t i = 0; i < trust.frames.size(); ++i) {
    const auto& d = trust.frames[i].deviations;
    const double largest = *std::max_element(d.begin(), d.end());
    const bool none = std::any_of(d.begin(), d.end(), [](double x) { return !std::isfinite(x); });
    if (result.frames[i].status != Status::Base && !none) {
      figures.push_back({largest, result.frames[i].frame});
    }
  }
  if (figures.empty()) return {};
  std::sort(figures.begin(), figures.end());
  return fmt::format("corner noise  median {}, worst {} in frame {}\n",
                     decimals(figures[(figures.size() - 1) / 2].first),
                     decimals(figures.back().first), figures.back().second);
}

std::string worstTracks(const ShotTrust& trust) {
  std::string text;
  for (const WorstTrack& track : trust.worst) {
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
    if (frame.status == Status::Solved) solved.push_back(&frame);
    if (frame.status == Status::Reduced) ++summary.reduced;
    if (frame.status == Status::Held) ++summary.held;
    const bool unsolved = frame.status == Status::Reduced || frame.status == Status::Held;
    if (unsolved && summary.firstUnsolved.size() < kListed) summary.firstUnsolved.push_back(&frame);
  }
  summary.solved = solved.size();
  const auto size = [](const FrameResult* f) { return std::isnan(f->rms) ? HUGE_VAL : f->rms; };
  std::stable_sort(solved.begin(), solved.end(),
                   [&](const auto* a, const auto* b) { return size(a) > size(b); });
  const double none = std::numeric_limits<double>::quiet_NaN();
  summary.worstRms = solved.empty() ? none : solved.front()->rms;
  summary.medianRms = solved.empty() ? none : solved[(solved.size() - 1) / 2]->rms;
  solved.resize(std::min(solved.size(), kListed));
  summary.worst = solved;
  return summary;
}

std::string summaryTable(const ShotResult& result, const ShotTrust& trust) {
  const Summary s = summarise(result);
  std::string text =
      fmt::format("base frame    {}  ({} tracks", result.baseFrame, result.baseTracks);
  text += result.leftOut > 0 ? fmt::format(", {} absent there and left out)\n", result.leftOut)
                             : ", none left out)\n";
  text += fmt::format("solved        {} of {} frames\n", s.solved + 1, result.frames.size());
  text += fmt::format("reduced       {}\n", s.reduced);
  text += fmt::format("held          {}\n", s.held);
  text += fmt::format("RMS residual  median {}, worst {}\n", decimals(s.medianRms),
                      decimals(s.worstRms));
  text += deviations(result, trust);
  if (!s.worst.empty()) text += "worst frames  frame      RMS  tracks\n";
  for (const FrameResult* f : s.worst) {
    text += fmt::format("{:>19} {:>8} {:>7}\n", f->frame, decimals(f->rms), f->tracks);
  }
  return text + worstTracks(trust) + unsolvedFrames(s);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;

std::string decimals(double value) { return value == value ? fmt::format("{:.4f}", value) : "-"; }

}  // namespace

Summary summarise(const ShotResult& result) {
  Summary summary;
  std::vector<const FrameResult*> solved;
  for (const FrameResult& frame : result.frames) {
    if (frame.status == Status::Solved) solved.push_back(&frame);
    if (frame.status != Status::Held) continue;
    ++summary.held;
    if (summary.firstHeld.size() < kListed) summary.firstHeld.push_back(&frame);
  }
  summary.solved = solved.size();
  std::stable_sort(solved.begin(), solved.end(),
                   [](const auto* a, const auto* b) { return a->rms > b->rms; });
  const double none = std::numeric_limits<double>::quiet_NaN();
  summary.worstRms = solved.empty() ? none : solved.front()->rms;
  summary.medianRms = solved.empty() ? none : solved[(solved.size() - 1) / 2]->rms;
  solved.resize(std::min(solved.size(), kListed));
  summary.worst = solved;
  return summary;
}

std::string summaryTable(const ShotResult& result) {
  const Summary s = summarise(result);
  std::string text =
      fmt::format("base frame    {}  ({} tracks", result.baseFrame, result.baseTracks);
  text += result.leftOut > 0 ? fmt::format(", {} absent there and left out)\n", result.leftOut)
                             : ", none left out)\n";
  text += fmt::format("solved        {} of {} frames\n", s.solved + 1, result.frames.size());
  text += fmt::format("held          {}\n", s.held);
  text += fmt::format("RMS residual  median {}, worst {}\n", decimals(s.medianRms),
                      decimals(s.worstRms));
  if (!s.worst.empty()) text += "worst frames  frame      RMS  tracks\n";
  for (const FrameResult* f : s.worst) {
    text += fmt::format("{:>19} {:>8} {:>7}\n", f->frame, decimals(f->rms), f->tracks);
  }
  if (!s.firstHeld.empty()) text += "held frames   frame  reason\n";
  for (const FrameResult* f : s.firstHeld) {
    text += fmt::format("{:>19}  {}\n", f->frame, f->reason);
  }
  if (s.held > s.firstHeld.size()) {
    text += fmt::format("{:>19}  and {} more\n", "...", s.held - s.firstHeld.size());
  }
  return text;
}

}  // namespace cornerpin

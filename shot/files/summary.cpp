// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "shot/advice/closing_words.h"
#include "shot/advice/doubtful_stretch.h"
#include "shot/files/sparkline.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;
constexpr std::size_t kWidth = 64;  // of the line over the frames
constexpr int kFewest = static_cast<int>(kFewestTracks);

std::string length(double value) { return std::isfinite(value) ? pixels(value) : "-"; }

std::string row(const char* label, const std::string& text) {
  return fmt::format("{:<14}{}\n", label, text);
}

// A figure and the frame that has it.
using Figures = std::vector<std::pair<double, int>>;

double medianOf(const Figures& sorted) { return sorted[(sorted.size() - 1) / 2].first; }

std::string baseFrame(const ShotResult& result) {
  std::string text =
      row("base frame", fmt::format("{}  ({})", result.baseFrame,
                                    counted(static_cast<std::size_t>(result.baseTracks), "track")));
  if (result.referenceFrame != result.baseFrame) {
    text += row("reference", std::to_string(result.referenceFrame));
  }
  return text;
}

// Those that the base frame lacks, and what those of them that take part are good for.
// How many tracks take part nowhere, and why, where that is known.
std::string leftOut(const ShotResult& result) {
  const std::string count = counted(static_cast<std::size_t>(result.leftOut), "track");
  if (result.unused) return count + ": " + describe(*result.unused);
  return count + (result.leftOut == 1 ? " takes part nowhere" : " take part nowhere");
}

std::string otherTracks(const ShotResult& result) {
  std::string text;
  if (!result.whyBase.empty()) text += row("chosen", result.whyBase);
  if (result.leftOut > 0) text += row("left out", leftOut(result));
  if (result.handedOver == 0) return text;
  std::size_t with = 0;
  std::size_t needed = 0;
  for (const FrameResult& f : result.frames) {
    if (f.handedOver > 0) ++with;
    if (f.tracks >= kFewest && f.tracks - f.handedOver < kFewest) ++needed;
  }
  return text +
         row("hand-over", fmt::format("{} that the base frame lacks, in {}; {} of these have fewer "
                                      "than {} others",
                                      counted(static_cast<std::size_t>(result.handedOver), "track"),
                                      counted(with, "frame"), needed, kFewest));
}

std::string solvedFrames(const ShotResult& result, const Summary& s) {
  std::string text = fmt::format("{} of {}", s.solved + 1, counted(result.frames.size(), "frame"));
  if (s.reduced > 0) text += fmt::format(", {} reduced to a simpler transform", s.reduced);
  if (s.held > 0) text += fmt::format(", {} held: their neighbour's transform", s.held);
  return row("solved", text);
}

// How many tracks the fits go by.
std::string goodTracks(const ShotResult& result) {
  Figures shares;
  for (const FrameResult& f : result.frames) {
    if (f.verdict.status == Status::Solved) shares.push_back({100.0 * f.good / f.tracks, f.frame});
  }
  if (shares.empty()) return {};
  std::sort(shares.begin(), shares.end());
  if (!(shares.front().first < 100.0))
    return row("good tracks", "all of them, in every solved frame");
  return row("good tracks", fmt::format("median {:.0f} %, fewest {:.0f} % in frame {}",
                                        shares[shares.size() / 2].first, shares.front().first,
                                        shares.front().second));
}

// What led to the fits.
std::string starts(const ShotResult& result) {
  std::array<std::size_t, 3> stages{};
  for (const FrameResult& f : result.frames) {
    if (f.verdict.status == Status::Solved) {
      ++stages[static_cast<std::size_t>(f.verdict.origin.stage)];
    }
  }
  return row("started from",
             fmt::format("the plain fit {}, the neighbour {}, random samples {} (seed {})",
                         stages[0], stages[1], stages[2], result.seed));
}

std::string residuals(const ShotResult& result, const Summary& s) {
  if (s.worst.empty()) return {};
  const FrameResult& worst = *s.worst.front();
  return row("residual", fmt::format("median {}, worst {} in frame {} (RMS{})", length(s.medianRms),
                                     length(worst.goodRms), worst.frame,
                                     result.loss == Loss::None ? "" : " of the good tracks"));
}

double largestDeviation(const FrameResult& frame, std::size_t quad) {
  const std::array<double, 4> deviations = frame.figures.deviations(quad);
  const bool known =
      std::all_of(deviations.begin(), deviations.end(), [](double x) { return std::isfinite(x); });
  return known ? *std::max_element(deviations.begin(), deviations.end()) : HUGE_VAL;
}

std::string cornerOf(const ShotResult& result, const FrameResult& frame, std::size_t quad) {
  const std::array<double, 4> deviations = frame.figures.deviations(quad);
  const auto worst = std::max_element(deviations.begin(), deviations.end());
  return cornerName(result.quads[quad].corners, result.provenance.picture.y,
                    static_cast<std::size_t>(worst - deviations.begin()));
}

// How far a quad's corners may be off, each frame by the one that may be furthest.
std::string corners(const ShotResult& result, std::size_t quad) {
  Figures figures;
  std::size_t without = 0;
  for (const FrameResult& f : result.frames) {
    if (f.frame == result.referenceFrame) continue;
    const double largest = largestDeviation(f, quad);
    if (std::isfinite(largest)) {
      figures.push_back({largest, f.frame});
    } else {
      ++without;
    }
  }
  if (figures.empty() && without == 0) return {};
  const std::string what = result.quads.size() > 1
                               ? fmt::format("of \"{}\" may", printable(result.quads[quad].name))
                               : "may";
  const char* label = quad == 0 ? "corners" : "";
  if (figures.empty()) {
    return row(label, fmt::format("nothing tells how far those {} be off, in {}", what,
                                  counted(without, "frame")));
  }
  std::sort(figures.begin(), figures.end());
  const auto worst = static_cast<std::size_t>(figures.back().second - result.frames.front().frame);
  std::string text =
      fmt::format("{} be off by median {}, worst {} in frame {}, {}", what,
                  length(medianOf(figures)), length(figures.back().first), figures.back().second,
                  cornerOf(result, result.frames[worst], quad));
  if (without > 0) text += "; no figure in " + counted(without, "frame");
  return row(label, text);
}

std::string corners(const ShotResult& result) {
  std::string text;
  for (std::size_t quad = 0; quad < result.quads.size(); ++quad) text += corners(result, quad);
  return text;
}

// The expected errors of all frames, drawn.
std::string courseOfErrors(const ShotResult& result) {
  std::vector<double> errors;
  double largest = 0.0;
  for (const FrameResult& f : result.frames) {
    errors.push_back(f.expectedError);
    if (std::isfinite(f.expectedError)) largest = std::max(largest, f.expectedError);
  }
  if (errors.size() < 2 || !(largest > 0.0)) return {};
  return row("", fmt::format("{}  frames {}, up to {}", sparkline(errors, kWidth),
                             textOf({result.frames.front().frame, result.frames.back().frame}),
                             pixels(largest)));
}

// How far smoothing has moved corners, each frame by the one that moved most.
std::string smoothing(const ShotResult& result) {
  if (!result.smooth) return {};
  Figures moves;
  for (const FrameResult& f : result.frames) {
    if (f.verdict.status == Status::Solved) moves.push_back({f.smoothed, f.frame});
  }
  if (moves.empty()) return {};
  std::sort(moves.begin(), moves.end());
  if (!(moves.back().first > 0.0)) return row("smoothed", "no corner moved");
  return row("smoothed",
             fmt::format("corners moved by median {}, most {} in frame {}", length(medianOf(moves)),
                         length(moves.back().first), moves.back().second));
}

std::string filling(const ShotResult& result, const Summary& summary) {
  if (!result.fill) return {};
  const auto filled = static_cast<std::size_t>(std::count_if(
      result.frames.begin(), result.frames.end(), [](const FrameResult& f) { return f.filled; }));
  const std::size_t all = summary.reduced + summary.held;
  return row("filled in",
             fmt::format("{} of {} reduced or held frames{}", filled, all,
                         filled < all ? ", the others are surer as they are, lack good frames on "
                                        "both sides or contradict them"
                                      : ""));
}

std::string worstTracks(const ShotResult& result) {
  std::string text;
  for (const WorstTrack& track : result.worst) {
    if (track.stretch.standsOut) text += row(text.empty() ? "worst tracks" : "", describe(track));
  }
  return text;
}

// How many frames have a doubt, and its text in the one with the largest expected error.
std::string doubtLine(const ShotResult& result, DoubtCode code) {
  std::size_t count = 0;
  const FrameResult* worst = nullptr;
  const Doubt* example = nullptr;
  for (const FrameResult& f : result.frames) {
    const auto doubt = std::find_if(f.doubts.begin(), f.doubts.end(),
                                    [&](const Doubt& d) { return d.code == code; });
    if (doubt == f.doubts.end()) continue;
    ++count;
    if (worst != nullptr && comparableError(f) <= comparableError(*worst)) continue;
    worst = &f;
    example = &*doubt;
  }
  if (count == 0) return {};
  return fmt::format("  {:<16} {:>5}  frame {}: {}\n", nameOf(code), count, worst->frame,
                     example->text);
}

std::string doubts(const ShotResult& result, const Summary& s) {
  if (s.doubtful == 0) return {};
  std::string text = row("doubts", "frames, and the worst of them");
  for (DoubtCode code : kDoubtCodes) text += doubtLine(result, code);
  return text;
}

std::string worstFrames(const Summary& s) {
  if (s.worst.empty()) return {};
  std::string text = row("worst frames", "frame       RMS  tracks");
  for (const FrameResult* f : s.worst) {
    text += fmt::format("{:>19} {:>9} {:>7}", f->frame, length(f->goodRms), f->tracks);
    text += f->good < f->tracks ? fmt::format(", {} of them good\n", f->good) : "\n";
  }
  return text;
}

std::string unsolvedFrames(const Summary& s) {
  if (s.firstUnsolved.empty()) return {};
  std::string text = row("not in full", "frame  model        reason");
  for (const FrameResult* f : s.firstUnsolved) {
    text += fmt::format("{:>19}  {:<11}  {}\n", f->frame, nameOf(f->verdict.model), reasonOf(*f));
  }
  const std::size_t more = s.reduced + s.held - s.firstUnsolved.size();
  if (more > 0) text += fmt::format("{:>19}  and {} more\n", "...", more);
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
  summary.medianRms = solved.empty() ? none : solved[(solved.size() - 1) / 2]->goodRms;
  solved.resize(std::min(solved.size(), kListed));
  summary.worst = solved;
  return summary;
}

std::string doubtfulFramesLine(const ShotResult& result) {
  const std::vector<int> frames = doubtfulFrames(result);
  if (frames.empty()) return {};
  return fmt::format("{} of {} doubtful: {}", frames.size(),
                     counted(result.frames.size(), "frame") + (frames.size() == 1 ? " is" : " are"),
                     textOf(stretchesOf(frames), kListed));
}

std::string summaryTable(const ShotResult& result, const SummaryOptions& options) {
  const Summary s = summarise(result);
  std::string text = baseFrame(result);
  if (options.verbose) text += otherTracks(result);
  text += solvedFrames(result, s);
  if (result.loss != Loss::None) text += goodTracks(result);
  if (options.verbose && result.loss != Loss::None) text += starts(result);
  text += residuals(result, s) + corners(result) + courseOfErrors(result);
  text += smoothing(result) + filling(result, s);
  if (!result.between.empty()) {
    text += row("between", counted(result.between.size(), "more transform"));
  }
  text += worstTracks(result);
  if (options.verbose) text += worstFrames(s) + unsolvedFrames(s) + doubts(result, s);
  return text + options.files + "\n" + closingWords(result, options.colour);
}

}  // namespace cornerpin

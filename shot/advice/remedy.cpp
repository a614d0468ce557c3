// SPDX-License-Identifier: BSD-3-Clause
#include "shot/advice/remedy.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "shot/advice/tried.h"
#include "shot/plane/median.h"
#include "shot/solve/selection.h"
#include "shot/solve/shot_solver.h"
#include "shot/solve/wording.h"
#include "shot/time/retouch.h"

namespace cornerpin {

namespace {

// How far from the corner tracks are added, of the sides that meet there: not on the corner itself,
// where nobody finds two features.
constexpr double kBeside = 0.05;

// Of the surface, half a pixel in 1,000: where too few tracks tell their noise.
constexpr double kLikelyNoise = 5e-4;

using Stretches = std::vector<DoubtfulStretch>;

std::size_t indexOf(const ShotResult& result, int frame) {
  return static_cast<std::size_t>(frame - result.frames.front().frame);
}

// Tries on a shot, all of them solved from the result's base frame and about its quads.
class Tries {
 public:
  Tries(const Tracks& tracks, const SolveOptions& options, const ShotResult& result)
      : tracks_(tracks), options_(options), result_(result) {
    options_.base = result.baseFrame;
    options_.reference = result.referenceFrame;
    options_.quads = result.quads;
    options_.maxError =
        std::isfinite(result.maxError) ? std::optional<double>(result.maxError) : std::nullopt;
    options_.influences = false;
  }

  void dropTracks(Stretches& open) {
    Tracks fewer = tracks_;
    std::vector<Selected> dropped;
    for (const DoubtfulStretch& s : open) {
      const int track = result_.frames[s.worst].strongest;
      if (track >= 0) dropped.push_back({track, {s.frames.first, s.frames.last}});
    }
    if (dropped.empty()) return;
    select(fewer, {}, dropped);
    take(fewer, RemedyKind::DropTrack, open);
  }

  void addTracks(Stretches& open) {
    const double noise = usualNoise();
    Tracks more = tracks_;
    for (const DoubtfulStretch& s : open) addBeside(s, noise, more);
    if (more.observations.size() == tracks_.observations.size()) return;
    if (more.observations.size() > kMostTried) return;
    more.arrange();
    take(more, RemedyKind::AddTracks, open);
  }

  void fillIn(Stretches& open) {
    ShotResult filled = result_;
    retouch(filled, {std::nullopt, true, {}});
    keepWhatHelps(filled, RemedyKind::Fill, open);
  }

  std::vector<Remedy> remedies() const { return remedies_; }

 private:
  double usualNoise() const {
    std::vector<double> noises;
    for (const FrameResult& frame : result_.frames) {
      if (std::isfinite(frame.figures.noise)) noises.push_back(frame.figures.noise);
    }
    return noises.empty() ? kLikelyNoise * longestSide() : lowerMedian(noises);
  }

  double longestSide() const {
    double squared = 0.0;
    for (const NamedQuad& quad : result_.quads) {
      for (std::size_t i = 0; i < quad.corners.size(); ++i) {
        const Point next = quad.corners[(i + 1) % quad.corners.size()];
        squared = std::max(squared, squaredDistance(quad.corners[i], next));
      }
    }
    return std::sqrt(squared);
  }

  float usualWeight(int frame) const {
    std::vector<double> weights;
    for (const Observation& o : tracks_.inFrame(frame)) {
      if (o.weight > 0.0f) weights.push_back(static_cast<double>(o.weight));
    }
    return weights.empty() ? 1.0f : static_cast<float>(lowerMedian(weights));
  }

  // Two tracks, one along either side from the corner.
  void addBeside(const DoubtfulStretch& stretch, double noise, Tracks& more) const {
    const Quad& corners = result_.quads[stretch.quad].corners;
    const Point corner = corners[stretch.corner];
    for (std::size_t side : {std::size_t{1}, std::size_t{3}}) {
      const Point next = corners[(stretch.corner + side) % corners.size()];
      addTrack({corner.x + kBeside * (next.x - corner.x), corner.y + kBeside * (next.y - corner.y)},
               stretch.frames, noise, more);
    }
  }

  // Where the result puts a place, off by `noise` in each coordinate, to all four sides in turns.
  void addTrack(Point place, Stretch frames, double noise, Tracks& more) const {
    const auto track = static_cast<std::int32_t>(more.names.size());
    more.names.push_back(fmt::format("more {}", track));
    const auto add = [&](int frame) {
      const Point at = carried(result_, result_.frames[indexOf(result_, frame)], place);
      if (!std::isfinite(at.x)) return;
      const auto turn = static_cast<unsigned>(frame + track) % 4;
      more.observations.push_back({at.x + (turn % 2 == 0 ? noise : -noise),
                                   at.y + (turn / 2 == 0 ? noise : -noise), usualWeight(frame),
                                   track, frame, 0});
    };
    const int base = result_.baseFrame;
    if (base < frames.first || base > frames.last) add(base);
    for (int frame = frames.first; frame <= frames.last; ++frame) add(frame);
  }

  void take(const Tracks& changed, RemedyKind kind, Stretches& open) {
    try {
      keepWhatHelps(solveShot(changed, options_), kind, open);
    } catch (const std::invalid_argument&) {
      // Without them the shot cannot be solved at all: no remedy.
    }
  }

  void keepWhatHelps(const ShotResult& after, RemedyKind kind, Stretches& open) {
    const std::vector<bool> found = helped(result_, after, open);
    Stretches left;
    for (std::size_t i = 0; i < open.size(); ++i) {
      const DoubtfulStretch& s = open[i];
      if (found[i]) {
        const int track = kind == RemedyKind::DropTrack ? result_.frames[s.worst].strongest : -1;
        remedies_.push_back(
            {kind, s, track, largestError(after, s.frames), doubtfulIn(after, s.frames)});
      } else {
        left.push_back(s);
      }
    }
    open = left;
  }

  const Tracks& tracks_;
  SolveOptions options_;
  const ShotResult& result_;
  std::vector<Remedy> remedies_;
};

// "it is 3 px", where the error was the trouble; else how many frames stay doubtful.
std::string outcomeOf(const Remedy& remedy, const ShotResult& result) {
  if (comparableError(result.frames[remedy.stretch.worst]) > result.maxError) {
    return "it is " + pixels(remedy.after);
  }
  if (remedy.doubtful == 0) return "no frame is doubtful";
  return fmt::format("only {} {} doubtful", counted(remedy.doubtful, "frame"),
                     remedy.doubtful == 1 ? "is" : "are");
}

}  // namespace

std::vector<Remedy> remediesFor(const Tracks& tracks, const SolveOptions& options,
                                const ShotResult& result, const Progress& progress) {
  Stretches open = worstStretches(result);
  if (open.empty() || tracks.observations.size() > kMostTried) return {};
  PhaseCount count(progress, Phase::Advice, 3);
  Tries tries(tracks, options, result);
  tries.dropTracks(open);
  count.add();
  if (!open.empty() && !result.fill) tries.fillIn(open);
  count.add();
  if (!open.empty()) tries.addTracks(open);
  count.add();
  return tries.remedies();
}

std::string describe(const Remedy& remedy, const ShotResult& result, const Tracks& tracks) {
  const DoubtfulStretch& s = remedy.stretch;
  const std::string after = outcomeOf(remedy, result);
  switch (remedy.kind) {
    case RemedyKind::DropTrack:
      return fmt::format(
          "without {} there {}: --drop {}",
          printable(tracks.names[static_cast<std::size_t>(remedy.track)]), after,
          shellWord(textOf(Selected{remedy.track, {s.frames.first, s.frames.last}}, tracks)));
    case RemedyKind::AddTracks:
      return fmt::format("with two more tracks near {}, there and in frame {}, {}",
                         cornerName(result.quads, result.provenance.picture.y, s.quad, s.corner),
                         result.baseFrame, after);
    case RemedyKind::Fill:
      return fmt::format("interpolated between the frames around {}: --fill", after);
  }
  return {};
}

void advise(const Tracks& tracks, const SolveOptions& options, ShotResult& result,
            const Progress& progress) {
  result.advice.clear();
  for (const Remedy& remedy : remediesFor(tracks, options, result, progress)) {
    result.advice.push_back({remedy.stretch.frames, describe(remedy, result, tracks)});
  }
}

}  // namespace cornerpin

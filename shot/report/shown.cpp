// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/shown.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_set>
#include <utility>

#include "shot/advice/doubtful_stretch.h"

namespace cornerpin {

namespace {

using Indices = std::vector<std::size_t>;

// Items that are taken one by one until there are enough.
class Choice {
 public:
  explicit Choice(std::size_t items) : isTaken_(items, false) {}

  std::size_t size() const { return size_; }

  // Takes an item, unless so many are taken.
  void take(std::size_t item, std::size_t most) {
    if (size_ >= most || isTaken_[item]) return;
    isTaken_[item] = true;
    ++size_;
  }

  void takeAll(const Indices& items, std::size_t most) {
    for (const std::size_t item : items) take(item, most);
  }

  // Spreads what is left of so many evenly over the items that are not taken.
  void spread(const Indices& items, std::size_t most) {
    Indices left;
    for (const std::size_t item : items) {
      if (!isTaken_[item]) left.push_back(item);
    }
    const std::size_t room = std::min(most - std::min(most, size_), left.size());
    for (std::size_t i = 0; i < room; ++i) take(left[i * left.size() / room], most);
  }

  Indices taken() const {
    Indices items;
    for (std::size_t i = 0; i < isTaken_.size(); ++i) {
      if (isTaken_[i]) items.push_back(i);
    }
    return items;
  }

 private:
  std::vector<bool> isTaken_;
  std::size_t size_ = 0;
};

Indices allOf(std::size_t count) {
  Indices all(count);
  std::iota(all.begin(), all.end(), std::size_t{0});
  return all;
}

// Items by a figure, the largest first.
Indices largestFirst(Indices items, const std::vector<double>& figures) {
  std::stable_sort(items.begin(), items.end(),
                   [&](std::size_t a, std::size_t b) { return figures[a] > figures[b]; });
  return items;
}

std::size_t indexOf(const ShotResult& result, int frame) {
  return static_cast<std::size_t>(std::int64_t{frame} - result.frames.front().frame);
}

// Those that may be furthest off first.
Indices doubtfulOf(const ShotResult& result) {
  Indices doubtful;
  std::vector<double> errors;
  errors.reserve(result.frames.size());
  for (const FrameResult& frame : result.frames) {
    if (!frame.doubts.empty()) doubtful.push_back(errors.size());
    errors.push_back(comparableError(frame));
  }
  return largestFirst(std::move(doubtful), errors);
}

void chooseFrames(const ShotResult& result, std::size_t most, Shown& shown) {
  const std::size_t all = result.frames.size();
  if (all <= most) {
    shown.frames = allOf(all);
    return;
  }
  Choice choice(all);
  const std::size_t half = (most + 1) / 2;
  const auto takeFrame = [&](int frame) {
    const std::size_t index = indexOf(result, frame);
    if (index < all) choice.take(index, half);
  };
  takeFrame(result.baseFrame);
  takeFrame(result.referenceFrame);
  choice.take(0, half);
  choice.take(all - 1, half);
  for (const WorstTrack& track : result.worst) takeFrame(track.stretch.peak);
  for (const DoubtfulStretch& stretch : worstStretches(result)) choice.take(stretch.worst, half);
  for (const DoubtfulStretch& stretch : doubtfulStretches(result)) choice.take(stretch.worst, half);
  const Indices doubtful = doubtfulOf(result);
  choice.takeAll(doubtful, half);
  choice.spread(allOf(all), most);
  shown.frames = choice.taken();
  const auto isShown = [&](std::size_t i) {
    return std::binary_search(shown.frames.begin(), shown.frames.end(), i);
  };
  const auto seen =
      static_cast<std::size_t>(std::count_if(doubtful.begin(), doubtful.end(), isShown));
  const std::string doubts =
      doubtful.empty() ? ""
      : seen == doubtful.size()
          ? "every doubtful frame, "
          : fmt::format("{} of {} doubtful frames, the worst first, ", seen, doubtful.size());
  shown.howFrames = fmt::format(
      "the base and the reference frame, the first and the last one, {}"
      "and an even selection of the others",
      doubts);
}

// By track, the root mean squared residual in the frames that go by it; 0 where none does.
std::vector<double> residualsOf(const ShotResult& result, const Tracks& tracks) {
  const std::size_t count = result.tracks.size();
  std::vector<double> squares(count, 0.0);
  std::vector<std::size_t> counts(count, 0);
  std::vector<std::size_t> runs(count, 0);  // of each track, the run that the frame is in
  for (const FrameResult& frame : result.frames) {
    for (const Observation& seen : tracks.inFrame(frame.frame)) {
      const auto t = static_cast<std::size_t>(seen.track);
      if (t >= count) continue;
      const TrackResult& track = result.tracks[t];
      while (runs[t] < track.runs.size() && track.runs[runs[t]].last < frame.frame) ++runs[t];
      if (runs[t] == track.runs.size() || track.runs[runs[t]].use != TrackUse::Good) continue;
      const double squared = squaredDistance({seen.x, seen.y}, carried(result, frame, track.place));
      if (!std::isfinite(squared)) continue;
      squares[t] += squared;
      ++counts[t];
    }
  }
  for (std::size_t t = 0; t < count; ++t) {
    if (counts[t] > 0) squares[t] = std::sqrt(squares[t] / static_cast<double>(counts[t]));
  }
  return squares;
}

// By track, in how many frames it is ignored.
std::vector<double> ignoredOf(const ShotResult& result) {
  std::vector<double> frames;
  frames.reserve(result.tracks.size());
  for (const TrackResult& track : result.tracks) {
    double count = 0.0;
    for (const TrackRun& run : track.runs) {
      if (run.use == TrackUse::Ignored) count += 1.0 + run.last - run.first;
    }
    frames.push_back(count);
  }
  return frames;
}

void chooseTracks(const PageSubject& subject, std::size_t most, Shown& shown) {
  const ShotResult& result = subject.result;
  const Tracks* const tracks = subject.tracks;
  const std::size_t all = result.tracks.size();
  if (all <= most) {
    shown.tracks = allOf(all);
    return;
  }
  Choice choice(all);
  const std::size_t half = (most + 1) / 2;
  std::unordered_set<std::string> worst;
  for (const WorstTrack& track : result.worst) worst.insert(track.name);
  Indices placed;
  for (std::size_t t = 0; t < all; ++t) {
    if (worst.count(result.tracks[t].name) > 0) choice.take(t, half);
    if (std::isfinite(result.tracks[t].place.x)) placed.push_back(t);
  }
  const std::vector<double> figures =
      tracks != nullptr ? residualsOf(result, *tracks) : ignoredOf(result);
  Indices striking;
  for (std::size_t t = 0; t < all; ++t) {
    if (figures[t] > 0.0) striking.push_back(t);
  }
  choice.takeAll(largestFirst(std::move(striking), figures), half);
  choice.spread(placed, most);
  choice.spread(allOf(all), most);
  shown.tracks = choice.taken();
  shown.howTracks = fmt::format("the worst tracks, those {}, and an even selection of the others",
                                tracks != nullptr ? "with the largest residuals where they are good"
                                                  : "that are ignored most");
}

}  // namespace

Shown shownOf(const PageSubject& subject, const PageLimits& limits) {
  const ShotResult& result = subject.result;
  Shown shown;
  const std::size_t quads = std::max<std::size_t>(result.quads.size(), 1);
  const std::size_t most = std::max<std::size_t>(std::min(limits.frames, limits.quads / quads), 1);
  chooseFrames(result, most, shown);
  Choice between(result.between.size());
  between.spread(allOf(result.between.size()), most);
  shown.between = between.taken();
  if (shown.between.size() < result.between.size()) shown.howBetween = "an even selection";
  chooseTracks(subject, std::min(limits.tracks, limits.cells / shown.frames.size()), shown);
  return shown;
}

ShotResult onlyShown(const ShotResult& result, const Shown& shown) {
  ShotResult only = result;
  only.between.clear();
  only.frames.clear();
  only.tracks.clear();
  for (const std::size_t i : shown.frames) only.frames.push_back(result.frames[i]);
  for (const std::size_t i : shown.tracks) only.tracks.push_back(result.tracks[i]);
  for (const std::size_t i : shown.between) only.between.push_back(result.between[i]);
  return only;
}

}  // namespace cornerpin

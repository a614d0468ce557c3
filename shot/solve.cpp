// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "cornerpin/cornerpin.h"
#include "shot/general_position.h"

namespace cornerpin {

namespace {

constexpr std::size_t kFewestTracks = 4;
constexpr int kBaseRow = 0;   // of the two frames in the scene
constexpr int kFrameRow = 1;

Point place(const Observation& o) { return {o.x, o.y}; }

// The active tracks of a frame, in the file's units.
struct Active {
  std::vector<Point> base;
  std::vector<Point> here;

  std::size_t size() const { return base.size(); }
};

double rmsOf(const Homography& h, const Active& active) {
  double squares = 0.0;
  for (std::size_t i = 0; i < active.size(); ++i) {
    const Point p = map(h, active.base[i]);
    const double dx = p.x - active.here[i].x;
    const double dy = p.y - active.here[i].y;
    squares += dx * dx + dy * dy;
  }
  const double rms = std::sqrt(squares / static_cast<double>(active.size()));
  return std::isfinite(rms) ? rms : std::numeric_limits<double>::quiet_NaN();
}

// Whether all the points lie strictly on one side of the horizon.
bool onOneSide(const Homography& h, const std::vector<Point>& points) {
  const bool front = denominator(h, points.front()) > 0.0;
  return std::all_of(points.begin(), points.end(), [&](Point p) {
    const double s = denominator(h, p);
    return front ? s > 0.0 : s < 0.0;
  });
}

Homography toDouble(const MGenMatrix<float>& m) {
  Homography h;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      h[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = static_cast<double>(m(i, j));
    }
  }
  return h;
}

class ShotSolver {
 public:
  ShotSolver(const Tracks& tracks, const SolveOptions& options, const Progress& progress)
      : tracks_(tracks), progress_(progress) {
    result_.units = options.units;
    result_.baseFrame = options.base ? *options.base : chooseBaseFrame(tracks);
    collectBaseTracks();
    setUpScene();
  }

  ShotResult solve() {
    result_.frames.resize(static_cast<std::size_t>(tracks_.frameCount()));
    addBaseFrame();
    const MGenMatrix<float> identity = scene_.outputs[kBaseRow];
    sweep(+1, tracks_.lastFrame(), identity);
    sweep(-1, tracks_.firstFrame(), identity);
    return std::move(result_);
  }

 private:
  void collectBaseTracks() {
    const int base = result_.baseFrame;
    if (base < tracks_.firstFrame() || base > tracks_.lastFrame()) {
      throw std::invalid_argument(fmt::format("base frame {} lies outside the shot's frames {}..{}",
                                              base, tracks_.firstFrame(), tracks_.lastFrame()));
    }
    sceneIndex_.assign(tracks_.names.size(), -1);
    for (const Observation& o : tracks_.inFrame(base)) {
      if (!(o.weight > 0.0f)) continue;
      sceneIndex_[static_cast<std::size_t>(o.track)] = static_cast<int>(base_.size());
      base_.push_back(o);
    }
    if (base_.empty()) {
      throw std::invalid_argument(fmt::format("base frame {} has no track", base));
    }
    result_.baseTracks = static_cast<int>(base_.size());
    result_.leftOut = static_cast<int>(tracks_.names.size() - base_.size());
  }

  void setUpScene() {
    Point smallest = place(base_.front());
    Point largest = smallest;
    for (const Observation& o : base_) {
      smallest = {std::min(smallest.x, o.x), std::min(smallest.y, o.y)};
      largest = {std::max(largest.x, o.x), std::max(largest.y, o.y)};
    }
    const Conditioning fitting = Conditioning::fitting(smallest, largest);
    result_.baseCentre = fitting.centre;
    if (result_.units == Units::Fit) conditioning_ = fitting;
    scene_.tracks.resize(result_.baseTracks);
    for (int i = 0; i < result_.baseTracks; ++i) {
      scene_.tracks[i].positions = MGenMatrix<float>(2, 2, MGenMatrix<float>::ColumnMajor);
      scene_.tracks[i].weights = MGenVector<float>(2);
      set(i, kBaseRow, base_[static_cast<std::size_t>(i)]);
    }
    scene_.setupOutputs();
    scene_.solveBaseFrame();
  }

  void set(int index, int row, const Observation& o) {
    const Point p = conditioning_.apply(place(o));
    MMatchmoveTrack& track = scene_.tracks[index];
    track.positions(row, 0) = static_cast<float>(p.x);
    track.positions(row, 1) = static_cast<float>(p.y);
    track.weights[row] = o.weight;
  }

  FrameResult& resultOf(int frame) {
    return result_.frames[static_cast<std::size_t>(frame - tracks_.firstFrame())];
  }

  void addBaseFrame() {
    FrameResult& result = resultOf(result_.baseFrame);
    result.frame = result_.baseFrame;
    result.status = Status::Base;
    result.tracks = result_.baseTracks;
    result.h = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
    report();
  }

  void sweep(int step, int last, MGenMatrix<float> neighbour) {
    for (int frame = result_.baseFrame; frame != last;) {
      const Homography held = resultOf(frame).h;
      frame += step;
      scene_.outputs[kFrameRow] = neighbour.copy(MGenMatrix<float>::ColumnMajor);
      FrameResult& result = resultOf(frame);
      result.frame = frame;
      solveFrame(result);
      if (result.status == Status::Solved) {
        neighbour = scene_.outputs[kFrameRow];
      } else {
        result.h = held;
      }
      result.rms = rmsOf(result.h, active_);
      report();
    }
  }

  // Leaves the tracks in the scene only while the frame is being solved.
  void solveFrame(FrameResult& result) {
    const Tracks::Range observations = tracks_.inFrame(result.frame);
    active_.base.clear();
    active_.here.clear();
    bool fits = true;
    for (const Observation& o : observations) {
      const int index = sceneIndex_[static_cast<std::size_t>(o.track)];
      if (index < 0 || !(o.weight > 0.0f)) continue;
      set(index, kFrameRow, o);
      fits = fits && isFiniteInScene(index);
      active_.base.push_back(place(base_[static_cast<std::size_t>(index)]));
      active_.here.push_back(place(o));
    }
    result.tracks = static_cast<int>(active_.size());
    result.reason = fits ? whyUnfit() : "a position is too large for single precision";
    if (result.reason.empty()) result.reason = fit(result);
    result.status = result.reason.empty() ? Status::Solved : Status::Held;
    for (const Observation& o : observations) {
      const int index = sceneIndex_[static_cast<std::size_t>(o.track)];
      if (index >= 0) scene_.tracks[index].weights[kFrameRow] = 0.0f;
    }
  }

  bool isFiniteInScene(int index) {
    const MGenMatrix<float>& p = scene_.tracks[index].positions;
    return std::isfinite(p(kBaseRow, 0)) && std::isfinite(p(kBaseRow, 1)) &&
           std::isfinite(p(kFrameRow, 0)) && std::isfinite(p(kFrameRow, 1));
  }

  // Empty when the active tracks fix a transform.
  std::string whyUnfit() const {
    if (active_.size() == 0) return "no tracks";
    if (active_.size() < kFewestTracks) {
      return fmt::format("{} of the {} tracks needed", active_.size(), kFewestTracks);
    }
    if (!inGeneralPosition(active_.base)) {
      return "all its tracks but one, or all of them, lie on one line in the base frame";
    }
    if (!inGeneralPosition(active_.here)) {
      return "all its tracks but one, or all of them, lie on one line";
    }
    return {};
  }

  // Empty when the fit is good.
  std::string fit(FrameResult& result) {
    try {
      scene_.solveFrame(kFrameRow);
    } catch (const LvException& error) {
      return fmt::format("the fit failed: {}", error.message.c_str());
    }
    const Homography fitted = toDouble(scene_.outputs[kFrameRow]);
    result.h = conditioning_.undo(fitted);
    if (!isFinite(result.h)) return "the fit is not finite";
    if (!onOneSide(result.h, active_.base)) return "the fit puts tracks beyond the horizon";
    if (std::isnan(rmsOf(result.h, active_))) return "the fit is not finite";
    return {};
  }

  void report() {
    ++done_;
    if (progress_) progress_(done_, result_.frames.size());
  }

  const Tracks& tracks_;
  const Progress& progress_;
  ShotResult result_;
  Conditioning conditioning_;
  std::vector<int> sceneIndex_;    // per track; -1 when absent from the base frame
  std::vector<Observation> base_;  // per track of the scene, its observation in the base frame
  MMatchmove scene_;               // row 0 is the base frame, row 1 the frame at hand
  Active active_;
  std::size_t done_ = 0;
};

}  // namespace

const char* nameOf(Units units) { return units == Units::Fit ? "fit" : "raw"; }

const char* nameOf(Status status) {
  if (status == Status::Base) return "base";
  return status == Status::Solved ? "solved" : "held";
}

int chooseBaseFrame(const Tracks& tracks) {
  std::vector<std::int64_t> lengths(tracks.names.size());
  for (const Observation& o : tracks.observations) {
    if (o.weight > 0.0f) ++lengths[static_cast<std::size_t>(o.track)];
  }
  std::int64_t best = -1;
  std::int64_t sum = 0;
  int bestFrame = tracks.firstFrame();
  const auto& rows = tracks.observations;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].weight > 0.0f) sum += lengths[static_cast<std::size_t>(rows[i].track)];
    if (i + 1 < rows.size() && rows[i + 1].frame == rows[i].frame) continue;
    if (sum > best) {
      best = sum;
      bestFrame = rows[i].frame;
    }
    sum = 0;
  }
  return bestFrame;
}

ShotResult solveShot(const Tracks& tracks, const SolveOptions& options, const Progress& progress) {
  return ShotSolver(tracks, options, progress).solve();
}

}  // namespace cornerpin

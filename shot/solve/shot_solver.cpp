// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_solver.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "cornerpin/cornerpin.h"
#include "shot/fit/general_position.h"
#include "shot/fit/linear_fit.h"
#include "shot/fit/matches.h"
#include "shot/fit/reduced_fit.h"

namespace cornerpin {

namespace {

constexpr std::size_t kFewestTracks = 4;
constexpr std::size_t kFewestAgreeing = 5;  // some transform meets any four
constexpr std::size_t kScalesExpectedFrom = 5;
constexpr double kLowScale = 0.1;  // the share of the scales that are lower yet
constexpr int kBaseRow = 0;        // of the two frames in the scene
constexpr int kFrameRow = 1;
constexpr const char* kOnOneLine = "all its tracks but one, or all of them, lie on one line";

Point place(const Observation& o) { return {o.x, o.y}; }

// The active tracks of a frame, in the file's units.
struct Active {
  std::vector<std::size_t> index;  // in the scene
  std::vector<Point> base;
  std::vector<Point> here;
  std::vector<double> weights;

  std::size_t size() const { return base.size(); }
};

double squaredDistance(const Homography& h, const Active& active, std::size_t i) {
  const Point p = map(h, active.base[i]);
  const double dx = p.x - active.here[i].x;
  const double dy = p.y - active.here[i].y;
  return dx * dx + dy * dy;
}

double rmsOf(const Homography& h, const Active& active) {
  double squares = 0.0;
  for (std::size_t i = 0; i < active.size(); ++i) squares += squaredDistance(h, active, i);
  const double rms = std::sqrt(squares / static_cast<double>(active.size()));
  return std::isfinite(rms) ? rms : std::numeric_limits<double>::quiet_NaN();
}

// What the solver minimises.
double costOf(const Homography& h, const Active& active) {
  double cost = 0.0;
  for (std::size_t i = 0; i < active.size(); ++i) {
    const double w = active.weights[i];
    cost += w * w * squaredDistance(h, active, i);
  }
  return cost;
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

MGenMatrix<float> toFloat(const Homography& h) {
  MGenMatrix<float> m(3, 3, MGenMatrix<float>::ColumnMajor);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      m(i, j) = static_cast<float>(h[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]);
    }
  }
  return m;
}

// h, given in the caller's coordinates, between conditioned ones.
Homography conditioned(const Homography& h, const Conditioning& c) {
  const Conditioning inverse{{-c.scale * c.centre.x, -c.scale * c.centre.y}, 1.0 / c.scale};
  return unconditioned(h, inverse, inverse);
}

// How often a track kept to the surface in a sweep.
struct History {
  int kept = 0;
  int seen = 0;
  double trust() const { return (1.0 + kept) / (2.0 + seen); }
  double odds() const { return (1.0 + kept) / (1.0 + seen - kept); }
};

// How a frame came out.
struct Fit {
  MGenMatrix<float> transform;  // the solver's own
  Homography h{};               // in the file's units
  double cost = 0.0;
  std::string reason;     // why it does not count; empty when it does
  bool supported = true;  // the tracks fix a projective transform
  RobustFit robust;       // unused with Loss::None
};

class ShotSolver {
 public:
  ShotSolver(const Tracks& tracks, const SolveOptions& options, const Progress& progress)
      : tracks_(tracks), progress_(progress), reduces_(options.reduce) {
    result_.units = options.units;
    result_.loss = options.loss;
    result_.seed = options.seed;
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
    std::vector<Point> points;
    for (const Observation& o : base_) points.push_back(place(o));
    points = surfacePoints(points, result_.loss);
    fitting_ = Conditioning::fitting(points);
    result_.baseCentre = fitting_.centre;
    if (result_.units == Units::Fit) conditioning_ = fitting_;
    surface_ = squareAround(points);
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
    chainBroken_ = false;
    history_.assign(base_.size(), {});
    searchedScales_.clear();
    sortedScales_.clear();
    for (int frame = result_.baseFrame; frame != last;) {
      const Homography held = resultOf(frame).h;
      frame += step;
      FrameResult& result = resultOf(frame);
      result.frame = frame;
      const Fit fit = solveFrame(frame, neighbour, held);
      if (fit.reason.empty()) {
        neighbour = fit.transform;
        result.status = Status::Solved;
        result.model = Model::Projective;
        result.h = fit.h;
      } else {
        result.reason = fit.reason;
        result.h = held;
        if (!fit.supported && reduces_) reduce(fit.robust, result);
      }
      result.tracks = static_cast<int>(active_.size());
      result.rms = rmsOf(result.h, active_);
      if (fit.reason.empty()) addFigures(fit.robust, result);
      report();
    }
  }

  // Fits a lower model to the good tracks where they support one; `h` is the neighbour's transform
  // before.
  void reduce(const RobustFit& robust, FrameResult& result) const {
    const Active used = robust.found ? inliersOf(robust) : active_;
    const Model inBase = supportedModel(used.base, surface_, Model::Affine);
    const Model model =
        used.size() > 0 ? supportedModel(used.here, squareAround(used.here), inBase) : Model::Held;
    std::vector<Match> matches;
    for (std::size_t i = 0; i < used.size(); ++i) {
      matches.push_back({used.base[i], used.here[i], used.weights[i]});
    }
    const LadderFit fit = fitLadder(matches, model, result.h);
    if (fit.model == Model::Held) return;
    result.status = Status::Reduced;
    result.model = fit.model;
    result.onTop = fit.onTop;
    result.h = fit.h;
    if (robust.found) {
      result.scale = robust.scale / fitting_.scale;
      result.inliers = static_cast<int>(robust.inliers);
    }
    if (used.size() < kFewestTracks && tracksFor(fit.model) < used.size()) {
      result.reason += ", too close together or too near one line";
    }
  }

  void addFigures(const RobustFit& robust, FrameResult& result) {
    if (result_.loss == Loss::None) {
      result.inliers = result.tracks;
      result.inlierRms = result.rms;
      return;
    }
    result.stage = robust.stage;
    result.why = robust.why;
    result.loss = robust.loss;
    result.width = robust.width / fitting_.scale;
    result.scale = robust.scale / fitting_.scale;
    result.inliers = static_cast<int>(robust.inliers);
    result.inlierRms = rmsOf(result.h, inliersOf(robust));
    for (std::size_t i = 0; i < active_.size(); ++i) {
      History& history = history_[active_.index[i]];
      ++history.seen;
      if (robust.inlier[i]) ++history.kept;
    }
  }

  Active inliersOf(const RobustFit& robust) const {
    Active inliers;
    for (std::size_t i = 0; i < active_.size(); ++i) {
      if (!robust.inlier[i]) continue;
      inliers.base.push_back(active_.base[i]);
      inliers.here.push_back(active_.here[i]);
      inliers.weights.push_back(active_.weights[i]);
    }
    return inliers;
  }

  // Leaves the tracks in the scene only while the frame is being solved.
  Fit solveFrame(int frame, const MGenMatrix<float>& neighbour, const Homography& held) {
    const Tracks::Range observations = tracks_.inFrame(frame);
    active_ = {};
    bool inRange = true;
    for (const Observation& o : observations) {
      const int index = sceneIndex_[static_cast<std::size_t>(o.track)];
      if (index < 0 || !(o.weight > 0.0f)) continue;
      set(index, kFrameRow, o);
      inRange = inRange && isFiniteInScene(index);
      active_.index.push_back(static_cast<std::size_t>(index));
      active_.base.push_back(place(base_[static_cast<std::size_t>(index)]));
      active_.here.push_back(place(o));
      active_.weights.push_back(static_cast<double>(o.weight));
    }
    Fit fit;
    if (!inRange) {
      fit.reason = "a position is too large for single precision";
    } else if (const std::string why = whyUnfit(); !why.empty()) {
      fit.reason = why;
      fit.supported = false;
    } else {
      fit = bestFit(neighbour);
      if (result_.loss != Loss::None) fit = robustFit(fit, held);
    }
    if (!fit.reason.empty()) chainBroken_ = true;
    for (const Observation& o : observations) {
      const int index = sceneIndex_[static_cast<std::size_t>(o.track)];
      if (index >= 0) scene_.tracks[index].weights[kFrameRow] = 0.0f;
    }
    return fit;
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
    // Far-off tracks may make the others look like one place. Those in the base frame are left out
    // where bad ones can be told, and in this frame the good ones are looked at instead.
    const std::vector<Point> base = surfacePoints(active_.base, result_.loss);
    const bool tellsBad = result_.loss != Loss::None && active_.size() >= kFewestForRobust;
    if (!inGeneralPosition(base)) {
      return "all its tracks but one, or all of them, lie on one line in the base frame";
    }
    if (!tellsBad && !inGeneralPosition(active_.here)) return kOnOneLine;
    if (result_.loss != Loss::None && !isSpread(base)) {
      return "its tracks lie too close together or too near one line in the base frame";
    }
    return {};
  }

  // From the neighbour's transform. Once that chain has been broken the neighbour may be far away:
  // then the linear solution is a second start, and the better fit counts.
  Fit bestFit(const MGenMatrix<float>& neighbour) {
    Fit fit = fitFrom(neighbour);
    if (!fit.reason.empty()) chainBroken_ = true;
    if (!chainBroken_) return fit;
    const Fit other = fitFrom(linearStart());
    const bool better = !fit.reason.empty() || other.cost < fit.cost;
    return other.reason.empty() && better ? other : fit;
  }

  // On from the library's fit, where there is one, and from the neighbour's transform.
  Fit robustFit(const Fit& library, const Homography& neighbour) {
    // Without tracks to spare there is nothing to tell a bad one by.
    if (!library.reason.empty() && active_.size() < kFewestForRobust) return library;
    Matches matches;
    std::vector<double> confidence;
    RobustOptions options{result_.loss, result_.seed, expectedScale(), {lowScale(), {}}};
    for (std::size_t i = 0; i < active_.size(); ++i) {
      matches.add(
          {fitting_.apply(active_.base[i]), fitting_.apply(active_.here[i]), active_.weights[i]});
      confidence.push_back(active_.weights[i] * history_[active_.index[i]].trust());
      options.prior.odds.push_back(history_[active_.index[i]].odds());
    }
    std::vector<Start> starts;
    if (library.reason.empty())
      starts.push_back({Stage::Library, conditioned(library.h, fitting_)});
    starts.push_back({Stage::Neighbour, conditioned(neighbour, fitting_)});
    Fit fit;
    fit.robust = fitRobustly(matches, starts, confidence, options);
    fit.reason = whyUnfit(fit.robust);
    if (!fit.reason.empty()) {
      fit.supported = !fit.robust.found || fit.robust.inliers < kFewestTracks;
      if (!fit.robust.found && !library.reason.empty()) fit.reason = library.reason;
      if (!fit.robust.found && !inGeneralPosition(active_.here)) {
        fit.supported = false;
        fit.reason = kOnOneLine;
      }
      return fit;
    }
    fit.h = unconditioned(fit.robust.h, fitting_, fitting_);
    fit.transform = toFloat(conditioned(fit.h, conditioning_));
    if (!isFinite(fit.h)) fit.reason = "the fit is not finite";
    if (fit.robust.searched) remember(fit.robust.scale);
    return fit;
  }

  // The median of the last ones, so that one frame that went wrong does not excuse the next; 0 at
  // first.
  double expectedScale() const {
    const std::size_t count = std::min(searchedScales_.size(), kScalesExpectedFrom);
    if (count == 0) return 0.0;
    std::vector<double> last(searchedScales_.end() - static_cast<std::ptrdiff_t>(count),
                             searchedScales_.end());
    const auto middle = last.begin() + static_cast<std::ptrdiff_t>((count - 1) / 2);
    std::nth_element(last.begin(), middle, last.end());
    return *middle;
  }

  // Of all of them: bad tracks only ever enlarge a scale, and those that creep off do so for long.
  double lowScale() const {
    if (sortedScales_.empty()) return 0.0;
    const auto last = static_cast<double>(sortedScales_.size() - 1);
    return sortedScales_[static_cast<std::size_t>(kLowScale * last)];
  }

  void remember(double scale) {
    searchedScales_.push_back(scale);
    sortedScales_.insert(std::upper_bound(sortedScales_.begin(), sortedScales_.end(), scale),
                         scale);
  }

  // Empty when the good tracks fix the transform.
  std::string whyUnfit(const RobustFit& robust) const {
    if (!robust.found) return "no transform fits enough of its tracks";
    if (robust.inliers < std::min(kFewestAgreeing, active_.size())) {
      return fmt::format("only {} of its {} tracks agree on a transform, any four do",
                         robust.inliers, active_.size());
    }
    const Active inliers = inliersOf(robust);
    if (!inGeneralPosition(inliers.base) || !inGeneralPosition(inliers.here)) {
      return "all its good tracks but one, or all of them, lie on one line";
    }
    if (!isSpread(inliers.base)) {
      return "its good tracks lie too close together or too near one line in the base frame";
    }
    return {};
  }

  // Whether a full fit to these of the base frame's places keeps noise within bounds.
  bool isSpread(const std::vector<Point>& points) const {
    return noiseGain(Model::Projective, points, surface_) <= kLargestGain;
  }

  MGenMatrix<float> linearStart() const {
    std::vector<Point> from;
    std::vector<Point> to;
    for (std::size_t i = 0; i < active_.size(); ++i) {
      from.push_back(conditioning_.apply(active_.base[i]));
      to.push_back(conditioning_.apply(active_.here[i]));
    }
    return toFloat(linearFit(from, to));
  }

  Fit fitFrom(const MGenMatrix<float>& start) {
    Fit fit;
    scene_.outputs[kFrameRow] = start.copy(MGenMatrix<float>::ColumnMajor);
    try {
      scene_.solveFrame(kFrameRow);
    } catch (const LvException& error) {
      fit.reason = fmt::format("the fit failed: {}", error.message.c_str());
      return fit;
    }
    fit.transform = scene_.outputs[kFrameRow];
    fit.h = unconditioned(toDouble(fit.transform), conditioning_, conditioning_);
    fit.cost = costOf(fit.h, active_);
    if (!isFinite(fit.h) || !std::isfinite(fit.cost) || std::isnan(rmsOf(fit.h, active_))) {
      fit.reason = "the fit is not finite";
    } else if (!onOneSide(fit.h, active_.base)) {
      fit.reason = "the fit puts tracks on both sides of the horizon";
    }
    return fit;
  }

  void report() {
    ++done_;
    if (progress_) progress_(done_, result_.frames.size());
  }

  const Tracks& tracks_;
  const Progress& progress_;
  const bool reduces_;
  ShotResult result_;
  Conditioning fitting_;           // of the base frame's tracks
  Quad surface_{};                 // the square around them
  Conditioning conditioning_;      // of what the library gets
  std::vector<History> history_;   // per track of the scene, of the sweep
  std::vector<int> sceneIndex_;    // per track; -1 when absent from the base frame
  std::vector<Observation> base_;  // per track of the scene, its observation in the base frame
  MMatchmove scene_;               // row 0 is the base frame, row 1 the frame at hand
  Active active_;
  std::vector<double> searchedScales_;  // of the sweep's frames in which the core was searched
  std::vector<double> sortedScales_;    // the same, the lowest first
  bool chainBroken_ = false;            // some frame of the sweep was not fitted from its neighbour
  std::size_t done_ = 0;
};

}  // namespace

const char* nameOf(Units units) { return units == Units::Fit ? "fit" : "raw"; }

const char* nameOf(Loss loss) {
  if (loss == Loss::None) return "none";
  if (loss == Loss::Huber) return "huber";
  return loss == Loss::Cauchy ? "cauchy" : "tukey";
}

const char* nameOf(Status status) {
  if (status == Status::Base) return "base";
  if (status == Status::Reduced) return "reduced";
  return status == Status::Solved ? "solved" : "held";
}

std::vector<Point> surfacePoints(const std::vector<Point>& places, Loss loss) {
  return loss != Loss::None && places.size() >= kFewestForRobust ? withoutFarOff(places) : places;
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

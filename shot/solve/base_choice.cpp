// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/base_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"
#include "shot/plane/median.h"
#include "shot/robust/mixture_search.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/verdict.h"
#include "shot/solve/wording.h"
#include "shot/trust/uncertainty.h"

namespace cornerpin {

namespace {

constexpr double kNowhere = std::numeric_limits<double>::infinity();
constexpr double kMostFrames = 0.95;
constexpr double kHalf = 0.5;

// The pilot's base stays up to this times the least figure where no other is as good and nearer the
// middle: it has been solved from.
constexpr double kStays = 1.1;

// What all pairs of frames say of the noise counts in each as so many errors of its own. A pair of
// twenty tracks, or one whose good tracks were told otherwise than its neighbours', says little.
constexpr double kPooled = 40.0;
// Noise below this part of the quad's extent is rounding.
constexpr double kLeastNoise = 1e-6;

// From one frame to another: how far it is, and where the corners are measured, their covariances
// in the coordinates of the pilot's base, in which those of a chain add up.
struct Link {
  double cost = kNowhere;
  std::array<Symmetric2, 4> corners{};
};

// a u + b v.
Symmetric2 sum(double a, const Symmetric2& u, double b, const Symmetric2& v) {
  return {a * u.xx + b * v.xx, a * u.xy + b * v.xy, a * u.yy + b * v.yy};
}

Link joined(const Link& first, const Link& second) {
  Link link = {first.cost + second.cost, {}};
  for (std::size_t c = 0; c < 4; ++c) {
    link.corners[c] = sum(1.0, first.corners[c], 1.0, second.corners[c]);
  }
  return link;
}

// The links from each of some frames to each.
class Links {
 public:
  explicit Links(std::size_t count) : count_(count), links_(count * count) {
    for (std::size_t a = 0; a < count; ++a) links_[a * count + a].cost = 0.0;
  }

  std::size_t count() const { return count_; }
  const Link& between(std::size_t from, std::size_t to) const { return links_[from * count_ + to]; }
  void set(std::size_t from, std::size_t to, const Link& link) {
    links_[from * count_ + to] = link;
  }

  // Each link becomes the shortest chain of links.
  void chain() {
    for (std::size_t k = 0; k < count_; ++k) {
      for (std::size_t a = 0; a < count_; ++a) {
        for (std::size_t b = 0; b < count_; ++b) {
          const Link& first = between(a, k);
          const Link& second = between(k, b);
          if (first.cost + second.cost < between(a, b).cost) set(a, b, joined(first, second));
        }
      }
    }
  }

 private:
  std::size_t count_;
  std::vector<Link> links_;
};

// How far a frame lies from the middle of the shot, in half frames.
int offMiddle(const Tracks& tracks, int frame) {
  return std::abs(2 * frame - tracks.firstFrame() - tracks.lastFrame());
}

std::size_t nearestMiddle(const Tracks& tracks, const std::vector<int>& frames) {
  const auto nearer = [&](int a, int b) { return offMiddle(tracks, a) < offMiddle(tracks, b); };
  return static_cast<std::size_t>(std::min_element(frames.begin(), frames.end(), nearer) -
                                  frames.begin());
}

// Of the frames whose figure is as good as the least, the one nearest the middle.
int bestOf(const Tracks& tracks, const std::vector<int>& frames,
           const std::vector<double>& figures) {
  const double most = kAsGood * *std::min_element(figures.begin(), figures.end());
  std::vector<int> good;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    if (figures[i] <= most) good.push_back(frames[i]);
  }
  return good[nearestMiddle(tracks, good)];
}

// An even choice of the frames, among them the one nearest the middle.
std::vector<int> evenly(const Tracks& tracks, const std::vector<int>& frames) {
  if (frames.size() <= kMostCompared) return frames;
  std::vector<int> chosen = {frames[nearestMiddle(tracks, frames)]};
  for (std::size_t i = 0; i < kMostCompared; ++i) {
    chosen.push_back(frames[(2 * i + 1) * frames.size() / (2 * kMostCompared)]);
  }
  std::sort(chosen.begin(), chosen.end());
  chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
  return chosen;
}

// The number that a share of the others is not above.
double quantile(const std::vector<double>& numbers, double share) {
  const double rank = std::ceil(share * static_cast<double>(numbers.size())) - 1.0;
  return ranked(numbers, static_cast<std::size_t>(rank));
}

// What bases compare by: of the errors in all frames the 95th percentile and the median. Infinite
// where too many frames are out of reach.
double figureOf(const std::vector<double>& errors) {
  const double most = quantile(errors, kMostFrames);
  return most < kNowhere ? std::sqrt(most * quantile(errors, kHalf)) : kNowhere;
}

// Calls `use` with the two observations of each track that is seen in both frames.
template <class Use>
void forShared(const Tracks& tracks, int a, int b, const Use& use) {
  const Tracks::Range there = tracks.inFrame(b);
  const Observation* q = there.begin();
  for (const Observation& p : tracks.inFrame(a)) {
    while (q != there.end() && q->track < p.track) ++q;
    if (q == there.end()) return;
    if (q->track == p.track && p.weight > 0.0f && q->weight > 0.0f) use(p, *q);
  }
}

// The frames with at least one track.
std::vector<int> framesSeen(const Tracks& tracks) {
  std::vector<int> frames;
  for (const Observation& o : tracks.observations) {
    if (o.weight > 0.0f && (frames.empty() || frames.back() != o.frame)) frames.push_back(o.frame);
  }
  return frames;
}

// How far apart frames are that share so many tracks. Fewer than four fix no full transform: that
// counts ten for each that is missing. Beyond `kMany` noise is no longer what matters.
double costOf(int shared) {
  constexpr int kMany = 30;
  if (shared == 0) return kNowhere;
  return shared > 3 ? 1.0 / (std::min(shared, kMany) - 3.0) : 10.0 * (4.0 - shared);
}

// D V D'.
Symmetric2 carriedBy(const Derivative& d, const Symmetric2& v) {
  const double Xx = d.Xx * v.xx + d.Xy * v.xy;
  const double Xy = d.Xx * v.xy + d.Xy * v.yy;
  const double Yx = d.Yx * v.xx + d.Yy * v.xy;
  const double Yy = d.Yx * v.xy + d.Yy * v.yy;
  return {Xx * d.Xx + Xy * d.Xy, Xx * d.Yx + Xy * d.Yy, Yx * d.Yx + Yy * d.Yy};
}

// A frame that the pilot solved.
struct SolvedFrame {
  int frame;
  Homography h;
  Homography inverse;
  double variance;  // of one coordinate of a good track; NaN for all tracks being good
  Quad corners;     // here
  std::array<Derivative, 4> toHere;  // how the corners move with those of the pilot's base
  std::array<Derivative, 4> back;
};

// The tracks that two frames share, measured against the pilot's transforms.
struct Pair {
  std::size_t a, b;
  std::array<Symmetric2, 4> corners;  // for noise of 1 pixel
  double variance;                    // of the noise, and how many errors tell it
  double freedoms;
};

// The expected errors from each base in each frame.
//
// The noise of the base and that of the frame show in full in the transform between them. Where
// they share their tracks a pair of frames has both (`Uncertainty`). Along a chain the noise of the
// frames between would add to them, but it averages out where all frames hand over: of the chain's
// covariance a part is taken, and the rest is that of the base and of the frame by themselves.
class Comparison {
 public:
  // \param ofChains  that part; 1: there are no chains, pairs of frames alone count
  // \param measured  counts frames
  Comparison(const Tracks& tracks, const std::vector<SolvedFrame>& frames, double leastNoise,
             double ofChains, bool handsOver, PhaseCount& measured)
      : tracks_(tracks),
        frames_(frames),
        leastVariance_(leastNoise * leastNoise),
        ofChains_(ofChains),
        nearest_(frames.size()),
        links_(frames.size()) {
    for (std::size_t a = 0; a < frames.size(); ++a) {
      for (std::size_t b = 0; b < frames.size(); ++b) {
        if (a != b) measure(a, b);
      }
      measured.add();
    }
    setNoise();
    if (handsOver) links_.chain();
    for (std::size_t f = 0; f < frames.size(); ++f) own_.push_back(ownOf(f));
  }

  // The expected error of the worst corner in each frame.
  std::vector<double> errorsFrom(std::size_t base) const {
    std::vector<double> errors;
    for (std::size_t f = 0; f < frames_.size(); ++f) {
      const bool reached = links_.between(base, f).cost < kNowhere;
      double worst = reached ? 0.0 : kNowhere;
      for (std::size_t c = 0; c < 4 && reached && f != base; ++c) {
        worst = std::max(worst, carriedBy(frames_[f].toHere[c], covariance(base, f, c)).trace());
      }
      errors.push_back(std::sqrt(worst));
    }
    return errors;
  }

 private:
  // The frame with which another shares most tracks, and how many.
  struct Nearest {
    std::size_t frame = 0;
    std::size_t shared = 0;
  };

  // Within kGoodWithin sigmas, those of both frames together.
  static bool isGood(const Match& match, const Homography& h, double from, double to) {
    const auto [Xx, Xy, Yx, Yy] = derivative(h, match.base);
    const double stretch = 0.5 * (Xx * Xx + Xy * Xy + Yx * Yx + Yy * Yy);
    return !(squaredResidual(match, h) > kGoodWithin * kGoodWithin * (to + stretch * from));
  }

  Matches goodOf(const SolvedFrame& from, const SolvedFrame& to, const Homography& h) const {
    Matches matches;
    forShared(tracks_, from.frame, to.frame, [&](const Observation& p, const Observation& q) {
      const Match match = {{p.x, p.y}, {q.x, q.y}, static_cast<double>(q.weight), p.track};
      if (isGood(match, h, from.variance, to.variance)) matches.add(match);
    });
    return matches;
  }

  static Homography between(const SolvedFrame& from, const SolvedFrame& to) {
    return withLastOne(product(to.h, from.inverse));
  }

  void measure(std::size_t a, std::size_t b) {
    const SolvedFrame& from = frames_[a];
    const SolvedFrame& to = frames_[b];
    FittedFrame fitted;
    fitted.h = between(from, to);
    const Matches matches = goodOf(from, to, fitted.h);
    if (matches.size() < kFewestTracks) return;
    fitted.weights = matches.weights();
    const Uncertainty uncertainty(matches, fitted);
    if (!uncertainty.isDetermined()) return;
    Pair pair = {a, b, {}, 0.0, 0.0};
    if (std::isfinite(uncertainty.noise())) {
      pair.variance = std::max(uncertainty.noise() * uncertainty.noise(), leastVariance_);
      pair.freedoms = 2.0 * static_cast<double>(matches.size() - kFewestTracks);
    }
    for (std::size_t c = 0; c < 4; ++c) {
      pair.corners[c] = carriedBy(to.back[c], uncertainty.unitCovarianceAt(from.corners[c]));
    }
    pairs_.push_back(pair);
    if (matches.size() > nearest_[b].shared) nearest_[b] = {a, matches.size()};
  }

  // What noise of 1 pixel in a frame alone does to the corners.
  std::array<Symmetric2, 4> ownOf(std::size_t f) const {
    std::array<Symmetric2, 4> own{};
    if (nearest_[f].shared == 0) return own;
    const SolvedFrame& from = frames_[nearest_[f].frame];
    const SolvedFrame& to = frames_[f];
    FittedFrame fitted;
    fitted.h = between(from, to);
    const Matches matches = goodOf(from, to, fitted.h);
    fitted.weights.assign(matches.size(), 1.0);
    const LinearisedFit fit(matches, fitted);
    for (std::size_t c = 0; c < 4; ++c) {
      own[c] = carriedBy(to.back[c], fit.responseAt(from.corners[c]));
    }
    return own;
  }

  double pooledVariance() const {
    double sum = 0.0;
    double freedoms = 0.0;
    for (const Pair& pair : pairs_) {
      sum += pair.freedoms * pair.variance;
      freedoms += pair.freedoms;
    }
    return freedoms > 0.0 ? sum / freedoms : 1.0;
  }

  void setNoise() {
    const double pooled = pooledVariance();
    variances_.assign(frames_.size() * frames_.size(), pooled);
    for (const Pair& pair : pairs_) {
      const double variance =
          (pair.freedoms * pair.variance + kPooled * pooled) / (pair.freedoms + kPooled);
      variances_[pair.a * frames_.size() + pair.b] = variance;
      Link link = {0.0, {}};
      for (std::size_t c = 0; c < 4; ++c) {
        link.corners[c] = sum(variance, pair.corners[c], 0.0, {});
        link.cost += link.corners[c].trace();
      }
      links_.set(pair.a, pair.b, link);
    }
  }

  Symmetric2 covariance(std::size_t base, std::size_t f, std::size_t corner) const {
    const double noise = variances_[base * frames_.size() + f];
    const Symmetric2 ends = sum(noise, own_[base][corner], noise, own_[f][corner]);
    return sum(ofChains_, links_.between(base, f).corners[corner], 1.0 - ofChains_, ends);
  }

  const Tracks& tracks_;
  const std::vector<SolvedFrame>& frames_;
  double leastVariance_;
  double ofChains_;
  std::vector<Pair> pairs_;
  std::vector<Nearest> nearest_;
  std::vector<std::array<Symmetric2, 4>> own_;
  std::vector<double> variances_;  // of the noise, from each frame to each
  Links links_;
};

double median(const std::vector<PilotFrame>& pilot) {
  std::vector<double> sigmas;
  for (const PilotFrame& p : pilot) {
    if (p.solved && std::isfinite(p.sigma)) sigmas.push_back(p.sigma);
  }
  return lowerMedian(sigmas);
}

// A pilot's frames, by their numbers.
class Pilot {
 public:
  Pilot(const Tracks& tracks, int base, const std::vector<PilotFrame>& frames)
      : tracks_(tracks), base_(base), frames_(frames), usualSigma_(median(frames)) {
    Points seen;
    for (const Observation& o : tracks.inFrame(base)) {
      if (o.weight > 0.0f) seen.add({o.x, o.y});
    }
    centre_ = Similarity::fitting(seen).centre;
  }

  // Those to look at.
  std::vector<int> solved() const {
    std::vector<int> frames;
    for (int f = tracks_.firstFrame(); f <= tracks_.lastFrame(); ++f) {
      if (of(f).solved) frames.push_back(f);
    }
    std::vector<int> chosen = evenly(tracks_, frames);
    if (!std::binary_search(chosen.begin(), chosen.end(), base_)) {
      chosen.insert(std::lower_bound(chosen.begin(), chosen.end(), base_), base_);
    }
    return chosen;
  }

  // Those of the frames in which all corners are in front of the horizon.
  std::vector<SolvedFrame> withCorners(const std::vector<int>& frames, const Quad& corners) const {
    std::vector<SolvedFrame> seen;
    for (int f : frames) {
      const PilotFrame& p = of(f);
      const double sigma = std::isfinite(p.sigma) ? p.sigma : usualSigma_;
      SolvedFrame frame = {f, p.h, inverse(p.h), sigma * sigma, {}, {}, {}};
      bool visible = true;
      for (std::size_t c = 0; c < 4; ++c) {
        visible = visible && onSameSide(p.h, corners[c], centre_);
        frame.corners[c] = map(p.h, corners[c]);
        frame.toHere[c] = derivative(p.h, corners[c]);
        frame.back[c] = derivative(frame.inverse, frame.corners[c]);
      }
      if (visible) seen.push_back(frame);
    }
    return seen;
  }

  // The box around the tracks' places: of each the median of those that its positions in the
  // frames have in the base.
  Quad boxOfTracks(const std::vector<int>& frames) const {
    std::vector<std::pair<std::vector<double>, std::vector<double>>> places(tracks_.names.size());
    for (int f : frames) {
      const Homography back = inverse(of(f).h);
      for (const Observation& o : tracks_.inFrame(f)) {
        const Point p = map(back, {o.x, o.y});
        if (!(o.weight > 0.0f) || !onSameSide(of(f).h, p, centre_)) continue;
        places[static_cast<std::size_t>(o.track)].first.push_back(p.x);
        places[static_cast<std::size_t>(o.track)].second.push_back(p.y);
      }
    }
    Points all;
    for (const auto& [x, y] : places) {
      if (!x.empty()) all.add({upperMedian(x), upperMedian(y)});
    }
    return cornersOf(boxAround(withoutFarOff(all)));
  }

 private:
  const PilotFrame& of(int frame) const {
    return frames_[static_cast<std::size_t>(frame - tracks_.firstFrame())];
  }

  const Tracks& tracks_;
  int base_;
  const std::vector<PilotFrame>& frames_;
  double usualSigma_;
  Point centre_;  // of the tracks in the base: in front of the horizon in every frame
};

std::string whyOf(const BaseChoice& choice, int pilotBase) {
  if (!std::isfinite(choice.expected)) {
    return fmt::format("frame {}: too many frames share too few tracks to compare bases",
                       choice.frame);
  }
  const std::string here = fmt::format("frame {}: corners expected within {} in 95 % of the frames",
                                       choice.frame, pixels(choice.expected));
  if (choice.frame == pilotBase) return here + "; no other base is expected to be clearly better";
  return here + fmt::format("; from frame {} within {}", pilotBase, pixels(choice.pilot));
}

// How much of a chain's covariance is left where every frame hands over, not only those compared:
// what one track takes over from another is the mean of the frames that see both, half a track's
// length of them.
double partOfChains(const Tracks& tracks) {
  std::vector<bool> known(tracks.names.size());
  double seen = 0.0;
  for (const Observation& o : tracks.observations) {
    if (!(o.weight > 0.0f)) continue;
    known[static_cast<std::size_t>(o.track)] = true;
    ++seen;
  }
  const auto count = static_cast<double>(std::count(known.begin(), known.end(), true));
  return std::min(2.0 * count / seen, 1.0);
}

double extentOf(const Quad& quad) {
  const Box box = boxAround({quad[0], quad[1], quad[2], quad[3]});
  return std::max(box.high.x - box.low.x, box.high.y - box.low.y);
}

}  // namespace

int guessBaseFrame(const Tracks& tracks, bool handsOver) {
  const std::vector<int> frames = evenly(tracks, framesSeen(tracks));
  Links links(frames.size());
  for (std::size_t a = 0; a < frames.size(); ++a) {
    for (std::size_t b = 0; b < frames.size(); ++b) {
      int shared = 0;
      forShared(tracks, frames[a], frames[b],
                [&](const Observation&, const Observation&) { ++shared; });
      if (a != b) links.set(a, b, {costOf(shared), {}});
    }
  }
  if (handsOver) links.chain();
  std::vector<double> figures;
  for (std::size_t a = 0; a < frames.size(); ++a) {
    std::vector<double> costs;
    for (std::size_t b = 0; b < frames.size(); ++b) costs.push_back(links.between(a, b).cost);
    figures.push_back(figureOf(costs));
  }
  const bool reached = *std::min_element(figures.begin(), figures.end()) < kNowhere;
  return reached || handsOver ? bestOf(tracks, frames, figures) : chooseBaseFrame(tracks);
}

BaseChoice chooseBase(const Tracks& tracks, int pilotBase, const std::vector<PilotFrame>& frames,
                      const std::optional<Quad>& quad, bool handsOver, const Progress& progress) {
  const Pilot pilot(tracks, pilotBase, frames);
  const std::vector<int> solved = pilot.solved();
  const Quad corners = quad ? *quad : pilot.boxOfTracks(solved);
  const std::vector<SolvedFrame> seen = pilot.withCorners(solved, corners);
  PhaseCount measured(progress, Phase::ChoosingBase, seen.size());
  const Comparison comparison(tracks, seen, kLeastNoise * extentOf(corners),
                              handsOver ? partOfChains(tracks) : 1.0, handsOver, measured);
  std::vector<int> bases;
  std::vector<double> expected, figures;
  for (std::size_t b = 0; b < seen.size(); ++b) {
    const std::vector<double> errors = comparison.errorsFrom(b);
    bases.push_back(seen[b].frame);
    expected.push_back(quantile(errors, kMostFrames));
    figures.push_back(figureOf(errors));
  }
  const double least = *std::min_element(figures.begin(), figures.end());
  const auto at = [&](int frame) {
    return static_cast<std::size_t>(std::find(bases.begin(), bases.end(), frame) - bases.begin());
  };
  BaseChoice choice;
  choice.frame = bestOf(tracks, bases, figures);
  const bool farther = offMiddle(tracks, choice.frame) >= offMiddle(tracks, pilotBase);
  if (!(least < kNowhere) || (farther && figures[at(pilotBase)] <= kStays * least)) {
    choice.frame = pilotBase;
  }
  choice.expected = expected[at(choice.frame)];
  choice.pilot = expected[at(pilotBase)];
  choice.why = whyOf(choice, pilotBase);
  return choice;
}

}  // namespace cornerpin

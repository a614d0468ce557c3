// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/robust_fit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>

#include "shot/robust/mixture_fit.h"
#include "shot/robust/quad_samples.h"

namespace cornerpin {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kParameters = 8.0;

// Of a frame without a sign of a bad track.
constexpr double kChance = 1e-3;     // that one of its normal errors lies as far as none may
constexpr double kMostSpread = 2.0;  // of the scale, in standard errors or so

constexpr double kForHeavyTails = 2.0;  // that they must be better by, in units of the score
constexpr double kLargeScale = 0.01;    // explains too much to end the drawing of samples
constexpr double kFarthest = 4.0;       // square of the distance from where on all are as bad
constexpr double kLeastWidth = 2.0;     // of half the surface, in sigmas
constexpr double kSameCore = 0.05;      // in sigmas
constexpr std::ptrdiff_t kRefinedSamples = 4;

// In sigmas of the core: where the loss bends.
double bendOf(Loss loss) {
  if (loss == Loss::Tukey) return 7.0;
  return loss == Loss::Cauchy ? 3.0 : 1.7;
}

std::vector<bool> inliersOf(const Matches& matches, const Homography& h, double scale) {
  const double bound = kInlierScales * kInlierScales * scale * scale;
  std::vector<double> squares;
  squaredResiduals(matches, h, squares);
  std::vector<bool> inlier(squares.size());
  for (std::size_t i = 0; i < squares.size(); ++i) inlier[i] = squares[i] <= bound;
  return inlier;
}

std::size_t countOf(const std::vector<bool>& flags) {
  return static_cast<std::size_t>(std::count(flags.begin(), flags.end(), true));
}

// The standard deviation of normal errors of which this share lies within the share's quantile.
double sigmaOf(std::vector<double> squares, double share) {
  const auto place = static_cast<std::ptrdiff_t>(share * static_cast<double>(squares.size()));
  std::nth_element(squares.begin(), squares.begin() + place, squares.end());
  const double square = squares[static_cast<std::size_t>(place)];
  if (!std::isfinite(square)) return 1.0;
  return std::max(std::sqrt(square / (-2.0 * std::log1p(-share))), kScaleFloor);
}

// Of a positive number, within 0.09: its exponent, and its mantissa as if the logarithm were
// straight in between.
double roughLog2(double value) {
  std::int64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return static_cast<double>(bits) * 0x1p-52;
}

bool alike(const CoreFit& a, const CoreFit& b) {
  const double most = kSameCore * b.errors.sigma;
  for (std::size_t i = 0; i < 9; ++i) {
    if (!(std::fabs(a.h[i / 3][i % 3] - b.h[i / 3][i % 3]) <= most)) return false;
  }
  return a.errors.freedom == b.errors.freedom && std::fabs(a.errors.sigma - b.errors.sigma) <= most;
}

// The least length that a small step of length 1 at p becomes, or down to 0.7 of it.
double leastGrowth(const Homography& h, Point p) {
  const Point q = map(h, p);
  const double ux = h[0][0] - q.x * h[2][0], uy = h[0][1] - q.x * h[2][1];
  const double vx = h[1][0] - q.y * h[2][0], vy = h[1][1] - q.y * h[2][1];
  return std::fabs(ux * vy - uy * vx) / std::sqrt(ux * ux + uy * uy + vx * vx + vy * vy) /
         denominator(h, p);
}

// Whether the core flattens the surface around most of its good matches to hardly more than their
// errors. Matches that stand at one place or on one line, as stuck tracks do, are met so whatever
// they show.
bool isFlattened(const Matches& matches, const CoreFit& core) {
  const double least = kLeastWidth * core.errors.sigma;
  const std::vector<bool> inlier = inliersOf(matches, core.h, core.errors.scale());
  std::size_t flat = 0;
  for (std::size_t i = 0; i < inlier.size(); ++i) {
    if (inlier[i] && !(leastGrowth(core.h, matches.from(i)) > least)) ++flat;
  }
  return 2 * flat > countOf(inlier);
}

// Looks from each start for the core that explains the matches best.
class Search {
 public:
  Search(const Matches& matches, const RobustOptions& options)
      : matches_(matches), options_(options), votes_(votesOf(matches)), area_(strayArea(matches)) {}

  // A start near the answer may still have all matches off by the motion of a frame.
  void from(const Start& start) {
    squaredResiduals(matches_, start.h, squares_);
    walk(start, {1, 2, 4, 16}, sigmaOf(squares_, 0.25));
    walk(start, {16, 4, 2, 1}, sigmaOf(squares_, 0.5));
  }

  // Draws until a sample of good matches alone has been missed with a chance of 1 in 1,000, and
  // goes on from the best.
  void fromSamples(const std::vector<double>& confidence) {
    QuadSamples samples(matches_, confidence, options_.seed);
    std::vector<Sample> best;
    Sample sample;
    std::size_t needed = QuadSamples::kMost;
    for (std::size_t drawn = 0; drawn < needed; ++drawn) {
      if (!samples.draw(sample.h)) continue;
      squaredResiduals(matches_, sample.h, squares_);
      sample.score = roughScore();
      const auto place =
          std::upper_bound(best.begin(), best.end(), sample.score,
                           [](double score, const Sample& other) { return score < other.score; });
      if (place - best.begin() == kRefinedSamples) continue;
      if (place == best.begin()) {
        const CoreFit core =
            fitCore(matches_, sample.h, {1, 2.0 * likelyScale(), 0.1, area_}, options_.prior);
        if (!core.found || isFlattened(matches_, core)) continue;
        // A coarse fit of many does not end the search for a close one of few.
        if (core.errors.scale() <= kLargeScale)
          needed = QuadSamples::needed(inliersOf(core), matches_.size());
      }
      best.insert(place, sample);
      if (best.end() - best.begin() > kRefinedSamples) best.pop_back();
    }
    for (const Sample& one : best)
      walk({Stage::Sampled, one.h}, {1, 2, 4, 16}, 2.0 * likelyScale());
  }

  bool found() const { return best_.found; }
  Stage stage() const { return stage_; }
  const CoreFit& core() const { return best_; }
  std::size_t inliers() const { return inliersOf(best_); }

 private:
  struct Sample {
    double score = 0.0;
    Homography h{};
  };

  // Through the degrees of freedom, each fit from the one before; ends where a walk has been.
  void walk(const Start& start, std::initializer_list<int> freedoms, double sigma) {
    CoreFit core;
    core.h = start.h;
    core.errors.sigma = sigma;
    core.errors.area = area_;
    for (int freedom : freedoms) {
      core.errors.freedom = freedom;
      core = fitCore(matches_, core.h, core.errors, options_.prior);
      if (!core.found) return;
      for (const CoreFit& other : seen_) {
        if (alike(core, other)) return;
      }
      seen_.push_back(core);
      consider(core, start.stage);
    }
  }

  void consider(const CoreFit& core, Stage stage) {
    double score = core.score;
    if (core.errors.freedom < 16) score += kForHeavyTails;
    if (score >= bestScore_ || isFlattened(matches_, core)) return;
    bestScore_ = score;
    best_ = core;
    stage_ = stage;
  }

  // The logarithms of the errors: follows the many matches that are close rather than the few that
  // are not.
  double roughScore() const {
    const double least = likelyScale() * likelyScale();
    double sum = 0.0;
    for (std::size_t i = 0; i < squares_.size(); ++i)
      sum += votes_[i] * roughLog2(std::min(squares_[i], kFarthest) + least);
    return sum;
  }

  double likelyScale() const {
    return options_.expected > 0.0 ? std::min(options_.expected, kLikelyScale) : kLikelyScale;
  }

  std::size_t inliersOf(const CoreFit& core) const {
    return countOf(cornerpin::inliersOf(matches_, core.h, core.errors.scale()));
  }

  const Matches& matches_;
  const RobustOptions& options_;
  std::vector<double> votes_;
  double area_;
  std::vector<CoreFit> seen_;
  CoreFit best_;
  double bestScore_ = kInfinity;
  Stage stage_ = Stage::Library;
  std::vector<double> squares_;
};

std::string share(std::size_t part, std::size_t whole) {
  return fmt::format("{} of {} tracks", part, whole);
}

Matches inFront(const Matches& matches, const Homography& h) {
  Matches result;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    if (denominator(h, matches.from(i)) > kHorizon) result.add(matches[i]);
  }
  return result;
}

// The engine's fit with the loss at the core's scale. A match behind the core's horizon is a bad
// one, for which only Tukey's loss has a finite cost.
RobustFit finished(const Matches& matches, const Search& search, Loss loss) {
  RobustFit fit;
  fit.searched = true;
  fit.stage = search.stage();
  fit.loss = loss;
  if (!search.found()) return fit;
  fit.scale = search.core().errors.scale();
  fit.width = bendOf(loss) * search.core().errors.sigma;
  FitOptions options;
  options.loss = loss;
  options.width = fit.width;
  const HomographyFit engine =
      fitHomography(inFront(matches, search.core().h), search.core().h, options);
  fit.found = std::isfinite(engine.cost) && isFinite(engine.h);
  fit.h = engine.h;
  fit.inlier = inliersOf(matches, fit.h, fit.scale);
  fit.inliers = countOf(fit.inlier);
  return fit;
}

// The best of the plain fits from the starts. Its cost gives the scale of normal errors.
RobustFit plainFit(const Matches& matches, const std::vector<Start>& starts) {
  RobustFit best;
  double cost = kInfinity;
  for (const Start& start : starts) {
    const HomographyFit fit = fitHomography(matches, start.h);
    if (!(fit.cost < cost) || !isFinite(fit.h)) continue;
    cost = fit.cost;
    best.h = fit.h;
    best.stage = start.stage;
    best.found = true;
  }
  best.why = "no sign of a bad track";
  best.inlier.assign(matches.size(), true);
  best.inliers = matches.size();
  const double count = static_cast<double>(matches.size());
  const double left = std::max(2.0 * count - kParameters, 0.5 * count);
  double weights = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) weights += matches.w2()[i];
  if (best.found) best.scale = std::max(std::sqrt(cost / weights * count / left), kScaleFloor);
  return best;
}

// Whether a plain fit shows no sign of a bad match.
bool isClean(const RobustFit& fit, const Matches& matches, double expected) {
  if (!fit.found) return false;
  const double count = static_cast<double>(matches.size());
  const double farthest = -2.0 * std::log(kChance / count) * fit.scale * fit.scale;
  std::vector<double> squares;
  squaredResiduals(matches, fit.h, squares);
  return fit.scale <= (1.0 + kMostSpread / std::sqrt(2.0 * count - kParameters)) * expected &&
         *std::max_element(squares.begin(), squares.end()) <= farthest;
}

}  // namespace

const char* nameOf(Stage stage) {
  if (stage == Stage::Library) return "library";
  return stage == Stage::Neighbour ? "neighbour" : "sampled";
}

double lossWeight(Loss loss, double residual, double width) {
  const double part = residual / width;
  const double rest = 1.0 - part * part;
  if (loss == Loss::Tukey) return part < 1.0 ? rest * rest : 0.0;
  if (loss == Loss::Cauchy) return 1.0 / (1.0 + part * part);
  return loss == Loss::Huber && part > 1.0 ? 1.0 / part : 1.0;
}

namespace {

// Nothing tells a bad one among so few.
RobustFit fewFit(const Matches& matches, const std::vector<Start>& starts) {
  RobustFit fit = plainFit(matches, starts);
  fit.why = "too few tracks to tell a bad one";
  return fit;
}

RobustFit searchedFit(const Matches& matches, const std::vector<Start>& starts,
                      const std::vector<double>& confidence, const RobustOptions& options) {
  Search search(matches, options);
  for (const Start& start : starts) search.from(start);
  std::string why = "nothing to start from";
  if (search.found()) {
    why =
        fmt::format("the {} fits {}",
                    search.stage() == Stage::Library ? "library's solve" : "neighbour's transform",
                    share(search.inliers(), matches.size()));
  }
  search.fromSamples(confidence);
  RobustFit fit = finished(matches, search, options.loss);
  if (fit.stage == Stage::Sampled)
    why += fmt::format(", this one {}", share(fit.inliers, matches.size()));
  fit.why = why;
  return fit;
}

}  // namespace

RobustFit fitRobustly(const Matches& matches, const std::vector<Start>& starts,
                      const std::vector<double>& confidence, const RobustOptions& options) {
  if (matches.size() < kFewestForRobust) return fewFit(matches, starts);
  if (options.expected > 0.0 && !starts.empty()) {
    RobustFit plain = plainFit(matches, {starts.front()});
    if (isClean(plain, matches, options.expected)) return plain;
  }
  return searchedFit(matches, starts, confidence, options);
}

}  // namespace cornerpin

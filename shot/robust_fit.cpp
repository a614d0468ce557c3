// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust_fit.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

#include "shot/quad_samples.h"

namespace cornerpin {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kMedianOfLengths = 1.1774100225154747;  // sqrt(2 ln 2)
constexpr double kParameters = 8.0;
constexpr double kEnoughInliers = 0.75;
constexpr double kLargeScale = 0.01;
constexpr int kScaleRounds = 10;
constexpr double kSameScale = 0.02;
constexpr double kLoose = 1e-6;
constexpr double kTight = 1e-12;
constexpr std::size_t kRefinedSamples = 4;

// In scales: where the loss bends.
double bendOf(Loss loss) {
  if (loss == Loss::Tukey) return 9.0;
  return loss == Loss::Cauchy ? 3.0 : 1.7;
}

// Infinite on and behind the horizon.
std::vector<double> squaredResiduals(const Matches& matches, const Homography& h) {
  std::vector<double> squares(matches.size());
  const double* x = matches.x();
  const double* y = matches.y();
  const double* u = matches.u();
  const double* v = matches.v();
  for (std::size_t i = 0; i < squares.size(); ++i) {
    const double s = h[2][0] * x[i] + h[2][1] * y[i] + h[2][2];
    const double t = 1.0 / s;
    const double dx = (h[0][0] * x[i] + h[0][1] * y[i] + h[0][2]) * t - u[i];
    const double dy = (h[1][0] * x[i] + h[1][1] * y[i] + h[1][2]) * t - v[i];
    const double square = dx * dx + dy * dy;
    squares[i] = kInfinity;
    if (s > kHorizon) squares[i] = square;
  }
  return squares;
}

struct Refined {
  Homography h{};
  double scale = 0.0;
  std::vector<bool> inlier;
  std::size_t inliers = 0;
  bool found = false;
};

std::vector<bool> inliersOf(const Matches& matches, const Homography& h, double scale) {
  const double bound = kInlierScales * kInlierScales * scale * scale;
  const std::vector<double> squares = squaredResiduals(matches, h);
  std::vector<bool> inlier(squares.size());
  for (std::size_t i = 0; i < squares.size(); ++i) inlier[i] = squares[i] <= bound;
  return inlier;
}

std::size_t countOf(const std::vector<bool>& flags) {
  return static_cast<std::size_t>(std::count(flags.begin(), flags.end(), true));
}

// With `judged` the matches that count for the scale are those that `judge` finds; else all.
Refined refine(const Matches& matches, const Homography& start, Loss loss, bool judged) {
  Refined refined;
  refined.h = start;
  const auto scaleHere = [&] {
    const double limit = judged ? judge(matches, refined.h).distance : kInfinity;
    return scaleOf(matches, refined.h, limit);
  };
  refined.scale = scaleHere();
  bool settled = false;  // the scale is, so the fit is worth its last digits
  for (int round = 0; round < kScaleRounds; ++round) {
    FitOptions options;
    options.loss = loss;
    options.width = bendOf(loss) * refined.scale;
    options.tolerance = settled ? kTight : kLoose;
    const HomographyFit fit = fitHomography(matches, refined.h, options);
    if (!std::isfinite(fit.cost) || !isFinite(fit.h)) return refined;
    refined.h = fit.h;
    refined.found = true;
    const double scale = scaleHere();
    const bool same = std::fabs(scale - refined.scale) <= kSameScale * refined.scale;
    refined.scale = scale;
    if (same && settled) break;
    settled = same || round > 0;
  }
  refined.inlier = inliersOf(matches, refined.h, refined.scale);
  refined.inliers = countOf(refined.inlier);
  return refined;
}

bool explainsEnough(const Refined& refined, std::size_t count) {
  return refined.found && refined.scale <= kLargeScale &&
         static_cast<double>(refined.inliers) >= kEnoughInliers * static_cast<double>(count);
}

// A refined start and how it is judged.
struct Candidate {
  Stage stage = Stage::Library;
  Refined refined;
  double score = kInfinity;
};

Candidate tried(const Matches& matches, const Start& start, Loss loss) {
  Candidate candidate{start.stage, refine(matches, start.h, loss, true), kInfinity};
  if (candidate.refined.found) candidate.score = judge(matches, candidate.refined.h).score;
  return candidate;
}

// Draws until a sample of good matches alone has been missed with a chance of 1 in 1,000.
std::vector<Start> bestSamples(const Matches& matches, const std::vector<double>& confidence,
                               std::uint64_t seed) {
  struct Scored {
    double score;
    Homography h;
  };
  std::vector<Scored> best;
  QuadSamples samples(matches, confidence, seed);
  Homography h;
  std::size_t needed = QuadSamples::kMost;
  for (std::size_t drawn = 0; drawn < needed; ++drawn) {
    if (!samples.draw(h)) continue;
    const Judgement judgement = judge(matches, h);
    if (best.size() == kRefinedSamples && judgement.score >= best.back().score) continue;
    const auto place =
        std::upper_bound(best.begin(), best.end(), judgement.score,
                         [](double score, const Scored& scored) { return score < scored.score; });
    // A coarse fit of many does not end the search for a close one of few.
    if (place == best.begin() && judgement.distance <= kTrimScales * kLargeScale)
      needed = QuadSamples::needed(judgement.count, matches.size());
    best.insert(place, {judgement.score, h});
    best.resize(std::min(best.size(), kRefinedSamples));
  }
  std::vector<Start> starts;
  starts.reserve(best.size());
  for (const Scored& scored : best) starts.push_back({Stage::Sampled, scored.h});
  return starts;
}

std::string share(std::size_t part, std::size_t whole) {
  return fmt::format("{} of {} tracks", part, whole);
}

RobustFit finished(Stage stage, const Refined& refined, std::string why) {
  RobustFit fit;
  fit.found = refined.found;
  fit.stage = stage;
  fit.h = refined.h;
  fit.scale = refined.scale;
  fit.why = std::move(why);
  fit.inlier = refined.inlier;
  fit.inliers = refined.inliers;
  return fit;
}

RobustFit fitPlainly(const Matches& matches, const std::vector<Start>& starts) {
  HomographyFit best;
  best.cost = kInfinity;
  Stage stage = Stage::Library;
  for (const Start& start : starts) {
    const HomographyFit fit = fitHomography(matches, start.h);
    if (!(fit.cost < best.cost) || !isFinite(fit.h)) continue;
    best = fit;
    stage = start.stage;
  }
  Refined refined;
  refined.found = std::isfinite(best.cost);
  refined.h = best.h;
  if (refined.found) refined.scale = std::max(scaleOf(matches, best.h, kInfinity), kScaleFloor);
  RobustFit fit = finished(stage, refined, "too few tracks to tell a bad one");
  fit.inlier.assign(matches.size(), true);
  fit.inliers = matches.size();
  return fit;
}

}  // namespace

const char* nameOf(Stage stage) {
  if (stage == Stage::Library) return "library";
  return stage == Stage::Neighbour ? "neighbour" : "sampled";
}

double lossWeight(Loss loss, double residual, double scale) {
  const double part = residual / (bendOf(loss) * scale);
  if (loss == Loss::Tukey) return part < 1.0 ? std::pow(1.0 - part * part, 2) : 0.0;
  if (loss == Loss::Cauchy) return 1.0 / (1.0 + part * part);
  return loss == Loss::Huber && part > 1.0 ? 1.0 / part : 1.0;
}

namespace {

// Of the factorials, for the counts that shots have.
double logFactorial(std::size_t n) {
  constexpr std::size_t kKnown = 4096;
  static const std::vector<double> known = [] {
    std::vector<double> logs(kKnown, 0.0);
    for (std::size_t i = 2; i < kKnown; ++i)
      logs[i] = logs[i - 1] + std::log(static_cast<double>(i));
    return logs;
  }();
  if (n < kKnown) return known[n];
  const double x = static_cast<double>(n);
  return x * std::log(x) - x + 0.5 * std::log(6.283185307179586 * x) + 1.0 / (12.0 * x);
}

double logChoose(std::size_t n, std::size_t k) {
  return logFactorial(n) - logFactorial(k) - logFactorial(n - k);
}

// The binary exponent of a positive number; far below any bin for 0 and tiny ones.
int exponentOf(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return static_cast<int>(bits >> 52) - 1023;
}

}  // namespace

Judgement judge(const Matches& matches, const Homography& h) {
  // Counts by the squared residual's power of two, from that of three floors up.
  constexpr int kLowest = -22;
  constexpr int kBins = 28;
  const std::vector<double> squares = squaredResiduals(matches, h);
  std::array<std::size_t, kBins + 1> counts{};
  Point low = matches.to(0);
  Point high = low;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const int power = exponentOf(squares[i]) + 1;
    ++counts[static_cast<std::size_t>(std::clamp(power - kLowest, 0, kBins))];
    const Point p = matches.to(i);
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
  }
  const double area = std::max((high.x - low.x) * (high.y - low.y), 1e-6);
  const std::size_t n = matches.size();
  const double choices = std::log(std::max(static_cast<double>(n) - 4.0, 1.0));
  Judgement best{kInfinity, 0.0, 0};
  std::size_t within = 0;
  for (int bin = 0; bin < kBins; ++bin) {
    const std::size_t more = counts[static_cast<std::size_t>(bin)];
    within += more;
    if (more == 0 || within < 5) continue;
    const double square = std::ldexp(1.0, bin + kLowest);
    const double chance = std::min(3.14159265358979323846 * square / area, 1.0);
    const double score = choices + logChoose(n, within) + logChoose(within, 4) +
                         static_cast<double>(within - 4) * std::log(chance);
    if (score < best.score) best = {score, std::sqrt(square), within};
  }
  if (best.count == 0) best.distance = kInfinity;
  return best;
}

double scaleOf(const Matches& matches, const Homography& h, double limit) {
  std::vector<double> squares = squaredResiduals(matches, h);
  auto end = squares.end();
  double scale = 0.0;
  double bound = limit * limit;
  for (int round = 0; round < kScaleRounds; ++round) {
    const auto was = end;
    end = std::partition(squares.begin(), end, [&](double s) { return s <= bound; });
    if (end == squares.begin() || (round > 0 && end == was)) break;
    const auto count = end - squares.begin();
    const auto middle = squares.begin() + (count - 1) / 2;
    std::nth_element(squares.begin(), middle, end);
    const double values = 2.0 * static_cast<double>(count);
    const double spent = values > kParameters ? values / (values - kParameters) : 1.0;
    scale = std::sqrt(*middle * spent) / kMedianOfLengths;
    scale = std::max(scale, kScaleFloor);
    bound = kTrimScales * kTrimScales * scale * scale;
  }
  if (!std::isfinite(scale)) return kInfinity;
  return std::max(scale, kScaleFloor);
}

RobustFit fitRobustly(const Matches& matches, const std::vector<Start>& starts,
                      const std::vector<double>& confidence, const RobustOptions& options) {
  const std::size_t count = matches.size();
  if (count < kFewestForRobust) return fitPlainly(matches, starts);
  const Start* best = nullptr;
  double bestScore = kInfinity;
  for (const Start& start : starts) {
    const double score = judge(matches, start.h).score;
    if (best && !(score < bestScore)) continue;
    best = &start;
    bestScore = score;
  }
  std::string failed = "nothing to start from";
  if (best) {
    const Refined refined = refine(matches, best->h, options.loss, false);
    const std::string explained =
        fmt::format("the {} fits {}",
                    best->stage == Stage::Library ? "library's solve" : "neighbour's transform",
                    share(refined.inliers, count));
    if (explainsEnough(refined, count)) return finished(best->stage, refined, explained);
    failed = explained;
  }
  std::vector<Start> all = starts;
  for (const Start& sample : bestSamples(matches, confidence, options.seed)) all.push_back(sample);
  Candidate winner;
  for (const Start& start : all) {
    const Candidate candidate = tried(matches, start, options.loss);
    if (candidate.score < winner.score) winner = candidate;
  }
  return finished(winner.stage, winner.refined,
                  fmt::format("{}, this one {}", failed, share(winner.refined.inliers, count)));
}

}  // namespace cornerpin

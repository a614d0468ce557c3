// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_solver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "shot/solve/base_frame.h"
#include "tests/shot/known_shots.h"
#include "tests/shot/solve/small_shots.h"
#include "tests/support/allocations.h"

using namespace cornerpin;
using namespace small_shots;

TEST(SolveShot, FindsTheMotionInBothDirections) {
  const ShotResult result = solveShot(movingShot(21), based(10));
  ASSERT_EQ(result.frames.size(), 21u);
  for (const FrameResult& frame : result.frames) {
    EXPECT_EQ(frame.verdict.status, frame.frame == 10 ? Status::Base : Status::Solved);
    EXPECT_EQ(frame.tracks, 5);
    EXPECT_LT(frame.rms, 1e-3);  // single precision of some 500 px
  }
  EXPECT_EQ(result.frames[10].h, kIdentity);
  EXPECT_EQ(result.frames[10].rms, 0.0);
}

TEST(SolveShot, ListsGapsBetweenFramesAsHeld) {
  Tracks tracks;
  seeAll(tracks, -2);
  seeAll(tracks, 1);
  const ShotResult result = solveShot(tracks, based(-2));
  ASSERT_EQ(result.frames.size(), 4u);
  EXPECT_EQ(result.frames[0].frame, -2);
  for (std::size_t i : {1u, 2u}) {
    EXPECT_EQ(result.frames[i].verdict.status, Status::Held);
    EXPECT_EQ(reasonOf(result.frames[i].verdict), "no tracks");
    EXPECT_EQ(result.frames[i].tracks, 0);
    EXPECT_TRUE(std::isnan(result.frames[i].rms));
    EXPECT_EQ(result.frames[i].h, kIdentity);
  }
  EXPECT_EQ(result.frames[3].verdict.status, Status::Solved);
}

TEST(SolveShot, HoldsTheNeighbourNearerToTheBaseInTheBackwardSweep) {
  Tracks tracks;
  seeAll(tracks, 0);
  see(tracks, 0, 1, {0, 0}, 0.0f);
  for (int f : {2, 3}) seeAll(tracks, f);
  const ShotResult result = solveShot(tracks, based(3));
  EXPECT_EQ(result.frames[1].verdict.status, Status::Held);
  EXPECT_EQ(result.frames[1].h, result.frames[2].h);
  EXPECT_EQ(result.frames[0].verdict.status, Status::Solved);
}

namespace {

std::size_t peakOf(int frames, Loss loss) {
  const Tracks tracks = movingShot(frames);
  SolveOptions options = based(0);
  options.loss = loss;
  return allocations::peakBytesOf([&] { solveShot(tracks, options); });
}

}  // namespace

// Results of 552 bytes, what the sweeps know of a frame, its errors and its five greatest tracks;
// no second list of results.
TEST(SolveShot, TakesLittleMoreForAFrameThanItsResult) {
  for (Loss loss : {Loss::None, Loss::Tukey}) {
    const double each = static_cast<double>(peakOf(4096, loss) - peakOf(1024, loss)) / 3072.0;
    EXPECT_LT(each, 1600.0);
    EXPECT_GT(each, static_cast<double>(sizeof(FrameResult)));
  }
}

TEST(SolveShot, ReportsEveryFrame) {
  std::vector<std::size_t> calls;
  solveShot(movingShot(5), based(2), [&](Phase phase, std::size_t done, std::size_t total) {
    if (phase != Phase::Solving) return;
    EXPECT_EQ(total, 4u);
    calls.push_back(done);
  });
  EXPECT_EQ(calls, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

// Frame 6 is blurred; in the others one track of eight is 15 px off.
TEST(SolveShot, TellsABadTrackBehindAFrameThatIsBlurred) {
  std::mt19937 random(7);
  const auto noise = [&] { return static_cast<double>(random()) / 2147483648.0 - 1.0; };
  Tracks tracks;
  for (int f = 0; f < 8; ++f) {
    for (int t = 0; t < 8; ++t) {
      const int row = t / 4;
      const Point p = map(motion(f), {60.0 + 140 * (t % 4), 80.0 + 300 * row + 25 * (t % 3)});
      const double size = f == 0 ? 0.0 : f == 6 ? 30.0 : 0.5;
      see(tracks, t, f, {p.x + size * noise() + (f > 0 && t == 3 ? 15 : 0), p.y + size * noise()});
    }
  }
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  const FrameResult frame = solveShot(tracks, options).frames[7];
  EXPECT_EQ(frame.good, 7);
  EXPECT_LT(errorAtCorners(frame), 3.0);
}

namespace {

// Twelve tracks with normal noise, half a pixel unless told otherwise, in places by the seed. Those
// that are bad are off by `fault` in the frames behind the base.
template <class Fault>
Tracks noisyShot(int frames, unsigned seed, Fault fault, double noise = 0.5) {
  std::mt19937 random(seed);
  const auto uniform = [&] { return (static_cast<double>(random()) + 0.5) / 4294967296.0; };
  Tracks tracks;
  std::vector<Point> base;
  for (int t = 0; t < 12; ++t) base.push_back({1000.0 * uniform(), 600.0 * uniform()});
  for (int f = 0; f < frames; ++f) {
    for (int t = 0; t < 12; ++t) {
      Point p = map(motion(f), base[static_cast<std::size_t>(t)]);
      const double length = noise * std::sqrt(-2.0 * std::log(uniform()));
      const double angle = 6.283185307179586 * uniform();
      const Point off = fault(t, f);
      if (f > 0)
        p = {p.x + length * std::cos(angle) + off.x, p.y + length * std::sin(angle) + off.y};
      see(tracks, t, f, p);
    }
  }
  return tracks;
}

// The median over 20 shots of the error at the corners, from frame `first` on.
template <class Fault>
double medianError(int first, int frames, Fault fault, double noise = 0.5) {
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  std::vector<double> errors;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const ShotResult result = solveShot(noisyShot(frames, seed, fault, noise), options);
    for (int f = first; f < frames; ++f)
      errors.push_back(errorAtCorners(result.frames[static_cast<std::size_t>(f)]));
  }
  const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
  std::nth_element(errors.begin(), middle, errors.end());
  return *middle;
}

}  // namespace

// A frame by itself may as well have a larger scale.
TEST(SolveShot, FollowsSevenOfTwelveTracksWhileTheOthersWanderOff) {
  const auto clean = [](int, int) -> Point { return {}; };
  const auto wander = [](int t, int f) -> Point {
    return t < 5 ? Point{0.3 * t * f, 0.3 * f} : Point{};
  };
  // Seven tracks instead of twelve, and some frames in which a track is off by what noise is.
  EXPECT_LT(medianError(1, 50, wander), 3.0 * medianError(1, 50, clean));
}

// The scales of later frames are those of the tracks that crept off as well.
TEST(SolveShot, FollowsSevenOfTwelveTracksWhileTheOthersCreepOff) {
  const auto clean = [](int, int) -> Point { return {}; };
  const auto creep = [](int t, int f) -> Point {
    return t < 5 ? Point{(t % 2 ? 0.05 : -0.05) * f, 0.025 * (t % 3 - 1) * f} : Point{};
  };
  EXPECT_LT(medianError(1, 60, creep, 0.05), 6.0 * medianError(1, 60, clean, 0.05));
}

TEST(SolveShot, ASweepKnowsNothingOfTheOther) {
  // Before the base frame as after it, but noisier, and with other tracks that wander off.
  const auto wanderAfter = [](int t, int f) -> Point {
    return t > 8 ? Point{0, 3.0 * f} : Point{};
  };
  const auto wanderBefore = [](int t, int f) -> Point {
    return t < 3 ? Point{0.7 * f, 0} : Point{};
  };
  const Tracks after = noisyShot(20, 1, wanderAfter, 0.05);
  Tracks before = noisyShot(20, 1, wanderBefore, 1.0);
  for (Observation& o : before.observations) o.frame = -o.frame;
  std::stable_sort(before.observations.begin(), before.observations.end(),
                   [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
  Tracks both = before;
  for (const Observation& o : after.observations) {
    if (o.frame > 0) both.observations.push_back(o);
  }
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  options.reduce = false;  // how far models miss is told by both
  const std::vector<FrameResult> alone = solveShot(before, options).frames;
  const std::vector<FrameResult> whole = solveShot(both, options).frames;
  ASSERT_EQ(alone.size(), 20u);
  for (std::size_t f = 0; f < alone.size(); ++f) {
    EXPECT_EQ(std::memcmp(&alone[f].h, &whole[f].h, sizeof alone[f].h), 0) << alone[f].frame;
  }
}

TEST(SolveShot, KnowsTheTracksThatKeptToTheSurface) {
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  int frames = 0, mistaken = 0;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const auto fault = [](int t, int) -> Point { return t == 0 ? Point{20, 0} : Point{}; };
    for (const FrameResult& frame : solveShot(noisyShot(40, seed, fault), options).frames) {
      if (frame.verdict.status == Status::Base) continue;
      ++frames;
      if (frame.good != 11) ++mistaken;
    }
  }
  EXPECT_EQ(frames, 780);
  EXPECT_LE(mistaken, frames / 50);
}

// The frame behind the base frame has no tracks; those before the base frame know nothing of it.
TEST(SolveShot, ABrokenChainIsThatOfItsOwnSweep) {
  std::mt19937 random(5);
  Tracks before;
  for (int f = -30; f <= 0; ++f) {
    for (int t = 0; t < 5; ++t) {
      const Point p = map(motion(f), kCorners[static_cast<std::size_t>(t)]);
      const double off = f < 0 ? 4.0 * static_cast<double>(random()) / 4294967296.0 : 0.0;
      see(before, t, f, {p.x + off, p.y});
    }
  }
  Tracks both = before;
  seeAll(both, 2);
  const std::vector<FrameResult> alone = solveShot(before, based(0)).frames;
  const std::vector<FrameResult> whole = solveShot(both, based(0)).frames;
  ASSERT_EQ(whole[31].verdict.status, Status::Held);
  for (std::size_t f = 0; f < alone.size(); ++f) EXPECT_EQ(alone[f].h, whole[f].h) << f;
}

TEST(SolveShot, LooksOnlyAtTracksWithAWeightInTheBaseFrame) {
  Tracks with;
  for (int f : {0, 1}) {
    seeAll(with, f);
    see(with, 5, f, {7777, -7777}, f == 0 ? 0.0f : 1.0f);
  }
  Tracks without;
  for (int f : {0, 1}) seeAll(without, f);
  for (Loss loss : {Loss::None, Loss::Tukey}) {
    SolveOptions options = based(0);
    options.loss = loss;
    const ShotResult a = solveShot(with, options);
    const ShotResult b = solveShot(without, options);
    EXPECT_EQ(a.baseTracks, 5);
    EXPECT_EQ(a.leftOut, 1);
    EXPECT_EQ(a.unused->front().why, loss == Loss::None ? Unused::AbsentInBase : Unused::NoPlace);
    EXPECT_EQ(a.frames[1].tracks, 5);
    EXPECT_EQ(a.frames[1].h, b.frames[1].h);
    EXPECT_EQ(a.quads[0].corners[2].x, 500.0);
    EXPECT_EQ(a.baseCentre.x, 295.0);  // between 90 and 500
    EXPECT_EQ(a.baseCentre.y, 260.0);  // between 100 and 420
  }
}

TEST(SolveShot, SaysWhatItWasAskedFor) {
  SolveOptions options = based(1, Units::Raw);
  options.loss = Loss::Huber;
  options.seed = 77;
  const ShotResult result = solveShot(movingShot(3), options);
  EXPECT_EQ(result.baseFrame, 1);
  EXPECT_EQ(result.units, Units::Raw);
  EXPECT_EQ(result.loss, Loss::Huber);
  EXPECT_EQ(result.seed, 77u);
}

TEST(SolveShot, ChoosesABaseFrameWhereNoneIsGiven) {
  Tracks tracks;
  seeAll(tracks, 0, 4);
  for (int f : {1, 2}) seeAll(tracks, f);
  EXPECT_EQ(solveShot(tracks).baseFrame, 1);
}

namespace {

Tracks relayShot() {
  made::Relay relay;
  relay.frames = 60;
  relay.life = 20;
  return made::relay(relay, 1).tracks;
}

// From "corners expected within ..." up to its unit.
std::string expectedError(const ShotResult& result) {
  const std::size_t first = result.whyBase.find("corners expected");
  return result.whyBase.substr(first, result.whyBase.find(" px") - first);
}

}  // namespace

// No frame shares tracks with all others: with a hand-over a frame near the middle is best.
TEST(SolveShot, ChoosesAmongChainsOnlyWhereItHandsOver) {
  const Tracks tracks = relayShot();
  SolveOptions with;
  SolveOptions without;
  without.handOver = false;
  EXPECT_NE(solveShot(tracks, with).baseFrame, solveShot(tracks, without).baseFrame);
  with.loss = without.loss = Loss::None;
  EXPECT_EQ(solveShot(tracks, with).baseFrame, solveShot(tracks, without).baseFrame);
}

TEST(SolveShot, ChoosesTheSameBaseWhateverTheFirstFramesNumber) {
  Tracks tracks = relayShot();
  SolveOptions options;
  options.reference = 15;
  options.quads = {{"door", {{{100, 100}, {400, 100}, {400, 300}, {100, 300}}}}};
  const ShotResult result = solveShot(tracks, options);
  for (Observation& o : tracks.observations) o.frame += 20;
  options.reference = 35;
  const ShotResult later = solveShot(tracks, options);
  EXPECT_EQ(later.baseFrame, result.baseFrame + 20);
  EXPECT_EQ(expectedError(later), expectedError(result));
  EXPECT_NE(expectedError(result), "");
}

// All frames are alike, so the first guess, in the middle, stays; another choice would have cost a
// second pass.
TEST(SolveShot, ReportsAtMostThePassFromTheFirstGuessAndTheOneFromTheChoice) {
  std::size_t calls = 0;
  const auto progress = [&](Phase phase, std::size_t done, std::size_t total) {
    if (phase != Phase::Solving) return;
    EXPECT_EQ(done, calls++);
    EXPECT_EQ(total, 40u + 40u);
  };
  const ShotResult result = solveShot(movingShot(41), {}, progress);
  EXPECT_EQ(calls, 1u + 40u);
  EXPECT_EQ(result.baseFrame, 20);
}

TEST(SolveShot, TakesEveryTrackForAGoodOneWithoutALoss) {
  Tracks tracks = movingShot(2);
  tracks.observations.back().x += 40;
  const FrameResult frame = solveShot(tracks, based(0)).frames[1];
  EXPECT_EQ(frame.good, 5);
  EXPECT_GT(frame.rms, 0.1);
  EXPECT_EQ(frame.goodRms, frame.rms);
  EXPECT_TRUE(std::isnan(frame.sigma));
  EXPECT_EQ(frame.loss, Loss::None);
}

TEST(SolveShot, MeasuresTheGoodTracksApart) {
  const auto fault = [](int t, int) -> Point { return t == 4 ? Point{30, 40} : Point{}; };
  const Tracks tracks = noisyShot(2, 3, fault);
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  const FrameResult frame = solveShot(tracks, options).frames[1];
  ASSERT_EQ(frame.good, 11);
  double all = 0.0;
  double good = 0.0;
  for (std::size_t t = 0; t < 12; ++t) {
    const Observation& base = tracks.observations[t];
    const Observation& o = tracks.observations[12 + t];
    const Point p = map(frame.h, {base.x, base.y});
    const double square = (o.x - p.x) * (o.x - p.x) + (o.y - p.y) * (o.y - p.y);
    all += square;
    if (t != 4) good += square;
  }
  EXPECT_NEAR(frame.rms, std::sqrt(all / 12), 1e-9);
  EXPECT_NEAR(frame.goodRms, std::sqrt(good / 11), 1e-9);
}

// Of each loss at a fixed number of sigmas of the errors' core, whose tails are one of four: from
// there to the sigma of normal errors is a step of their medians.
TEST(SolveShot, SaysWhereItsLossBends) {
  const auto fault = [](int t, int) -> Point { return t == 4 ? Point{30, 40} : Point{}; };
  const std::pair<Loss, double> bends[] = {
      {Loss::Tukey, 7.0}, {Loss::Cauchy, 3.0}, {Loss::Huber, 1.7}};
  for (const auto& [loss, bend] : bends) {
    SolveOptions options = based(0);
    options.loss = loss;
    const FrameResult frame = solveShot(noisyShot(2, 3, fault), options).frames[1];
    EXPECT_EQ(frame.loss, loss);
    double nearest = HUGE_VAL;
    for (double freedom : {1.0, 2.0, 4.0, 16.0}) {
      const double medians = freedom * (std::pow(2.0, 2.0 / freedom) - 1.0) / (2 * std::log(2.0));
      nearest = std::min(nearest, std::fabs(frame.width / frame.sigma * std::sqrt(medians) - bend));
    }
    EXPECT_LT(nearest, 1e-9) << nameOf(loss);
  }
}

// By two: no number is rounded in another place.
TEST(SolveShot, MeasuresInTheFilesUnit) {
  const auto fault = [](int t, int) -> Point { return t == 4 ? Point{30, 40} : Point{}; };
  Tracks tracks = noisyShot(2, 3, fault);
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  const FrameResult once = solveShot(tracks, options).frames[1];
  for (Observation& o : tracks.observations) {
    o.x *= 2;
    o.y *= 2;
  }
  const FrameResult twice = solveShot(tracks, options).frames[1];
  EXPECT_EQ(twice.sigma, 2 * once.sigma);
  EXPECT_EQ(twice.width, 2 * once.width);
  EXPECT_EQ(twice.rms, 2 * once.rms);
  EXPECT_EQ(twice.goodRms, 2 * once.goodRms);
  EXPECT_DOUBLE_EQ(twice.figures.noise, 2 * once.figures.noise);
  EXPECT_DOUBLE_EQ(twice.figures.deviations()[0], 2 * once.figures.deviations()[0]);
}

// The guess is the middle frame, the only one that sees all tracks; it is blurred, so another base
// is taken, which lacks one, and is swept once more for that.
TEST(SolveShot, NeverReportsMoreFramesThanItAnnounces) {
  std::mt19937 random(4);
  std::normal_distribution<double> normal(0.0, 1.0);
  Tracks tracks;
  for (int f = 0; f <= 20; ++f) {
    for (int t = 0; t < 10; ++t) {
      if (f != 10 && t == f % 10) continue;
      const double noise = f == 10 ? 6.0 : 0.2;
      const double dx = noise * normal(random);
      const double dy = noise * normal(random);
      see(tracks, t, f, {40.0 * (t * 3 % 11) + dx, 35.0 * (t * 5 % 13) + dy});
    }
  }
  std::size_t calls = 0;
  const auto progress = [&](Phase phase, std::size_t done, std::size_t total) {
    if (phase != Phase::Solving) return;
    EXPECT_EQ(done, calls++);
    EXPECT_LE(done, total);
  };
  const ShotResult result = solveShot(tracks, {}, progress);
  EXPECT_NE(result.baseFrame, 10);
  EXPECT_EQ(result.handedOver, 1);
  EXPECT_EQ(calls, 1u + 3 * 20);
}

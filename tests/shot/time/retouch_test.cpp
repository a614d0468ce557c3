// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/retouch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "shot/solve/rebase.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/known_shots.h"

using namespace cornerpin;

namespace {

// Twelve tracks with noise of half a pixel; one is left in frames 30 to 36.
const Tracks& tracks() {
  static const Tracks all = [] {
    made::Late what;
    what.later = 0;
    what.frames = 60;
    Tracks t = made::late(what, 5).tracks;
    for (Observation& o : t.observations) {
      if (o.frame >= 30 && o.frame <= 36 && o.track >= 1) o.weight = 0.0f;
    }
    return t;
  }();
  return all;
}

ShotResult solved(std::optional<int> reference = {}) {
  SolveOptions options;
  options.base = 10;
  options.reference = reference;
  return solveShot(tracks(), options);
}

ShotResult retouched(const RetouchOptions& options, std::optional<int> reference = {}) {
  ShotResult result = solved(reference);
  retouch(result, options);
  return result;
}

const RetouchOptions kAll = {0.4, true, {12.5}};

double worstDifference(const Homography& a, const Homography& b, const Quad& quad) {
  double worst = 0.0;
  for (Point p : quad) worst = std::max(worst, squaredDistance(map(a, p), map(b, p)));
  return std::sqrt(worst);
}

}  // namespace

TEST(Retouch, DoesNothingUnlessAsked) {
  const ShotResult before = solved();
  const ShotResult after = retouched({});
  EXPECT_FALSE(after.smooth);
  EXPECT_FALSE(after.fill);
  for (std::size_t f = 0; f < 60; ++f) {
    EXPECT_EQ(after.frames[f].h, before.frames[f].h);
    EXPECT_FALSE(after.frames[f].untouched);
  }
}

TEST(Retouch, TellsWhatItIsBusyWith) {
  const auto phasesOf = [](const RetouchOptions& options) {
    std::vector<Phase> phases;
    ShotResult result = solved();
    retouch(result, options, [&](Phase phase, std::size_t done, std::size_t total) {
      EXPECT_EQ(done + total, 0u);
      phases.push_back(phase);
    });
    return phases;
  };
  EXPECT_EQ(phasesOf(kAll), (std::vector<Phase>{Phase::Smoothing, Phase::Filling}));
  EXPECT_EQ(phasesOf({0.4, false, {}}), (std::vector<Phase>{Phase::Smoothing}));
  EXPECT_EQ(phasesOf({{}, true, {}}), (std::vector<Phase>{Phase::Filling}));
  EXPECT_TRUE(phasesOf({}).empty());
}

TEST(Retouch, KeepsWhatTheFitGaveBesideIt) {
  for (std::optional<int> reference : {std::optional<int>(), std::optional<int>(44)}) {
    const ShotResult before = solved(reference);
    const ShotResult after = retouched(kAll, reference);
    EXPECT_EQ(after.smooth, 0.4);
    EXPECT_TRUE(after.fill);
    int touched = 0;
    for (std::size_t f = 0; f < 60; ++f) {
      const FrameResult& frame = after.frames[f];
      touched += frame.untouched != nullptr;
      EXPECT_EQ(frame.filled, f >= 30 && f <= 36);
      EXPECT_EQ(frame.untouched ? frame.untouched->h : frame.h, before.frames[f].h) << f;
      EXPECT_EQ(frame.verdict.status, before.frames[f].verdict.status);
      EXPECT_EQ(frame.rms, before.frames[f].rms);
    }
    EXPECT_EQ(touched, reference ? 58 : 59);
    EXPECT_EQ(after.frames[10].untouched != nullptr, false);
  }
}

// The expected error follows what a filled frame's corners may be off, in every reference frame.
TEST(Retouch, JudgesFilledFramesByTheirNewFigures) {
  for (std::optional<int> reference : {std::optional<int>(), std::optional<int>(44)}) {
    const ShotResult after = retouched({std::nullopt, true, {}}, reference);
    for (std::size_t f = 30; f <= 36; ++f) {
      const FrameResult& frame = after.frames[f];
      const std::array<double, 4> deviations = frame.figures.deviations();
      const double worst = *std::max_element(deviations.begin(), deviations.end());
      ASSERT_TRUE(std::isfinite(worst));
      EXPECT_EQ(frame.expectedError, worst);
      const bool above =
          std::any_of(frame.doubts.begin(), frame.doubts.end(),
                      [](const Doubt& doubt) { return doubt.code == DoubtCode::ExpectedError; });
      EXPECT_EQ(above, worst > after.maxError);
      EXPECT_FALSE(frame.doubts.empty());
    }
  }
}

// Relative to any frame the same corners have moved by the same.
TEST(Retouch, MovesTheSameWhateverTheReferenceFrame) {
  ShotResult inBase = retouched({0.4, false, {}});
  const ShotResult inOther = retouched({0.4, false, {}}, 44);
  for (std::size_t f = 0; f < 60; ++f) {
    if (f == 44) continue;
    EXPECT_NEAR(inOther.frames[f].smoothed, inBase.frames[f].smoothed, 1e-9) << f;
    const FrameResult& frame = inOther.frames[f];
    if (!frame.untouched) continue;
    EXPECT_NEAR(worstDifference(frame.h, frame.untouched->h, inOther.quads[0].corners),
                frame.smoothed, 1e-9);
  }
  EXPECT_GT(inBase.frames[44].smoothed, 0.0);
  EXPECT_EQ(inOther.frames[44].smoothed, 0.0);
  EXPECT_EQ(inOther.frames[44].h, kIdentity);
}

TEST(Retouch, LeavesWhatLiesOnTheSurface) {
  const ShotResult before = solved(44);
  const ShotResult after = retouched(kAll, 44);
  EXPECT_EQ(after.referenceFrame, 44);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(after.quads[0].corners[i].x, before.quads[0].corners[i].x);
    EXPECT_EQ(after.quads[0].corners[i].y, before.quads[0].corners[i].y);
  }
  EXPECT_EQ(after.baseCentre.x, before.baseCentre.x);
  for (std::size_t t = 0; t < before.tracks.size(); ++t) {
    EXPECT_EQ(after.tracks[t].place.x, before.tracks[t].place.x);
  }
}

// Filled frames lie between smooth ones, and times between frames between both.
TEST(Retouch, SmoothsThenFillsThenAddsTimesBetween) {
  const ShotResult filled = retouched({std::nullopt, true, {29.5}});
  const ShotResult both = retouched({0.4, true, {29.5}});
  EXPECT_NE(both.frames[33].h, filled.frames[33].h);
  EXPECT_NE(both.between[0].h, filled.between[0].h);
  EXPECT_LT(worstDifference(both.frames[33].h, filled.frames[33].h, both.quads[0].corners), 1.0);
  EXPECT_THROW(retouched({0.4, true, {60.5}}), std::invalid_argument);
}

// A smoothed frame as the reference: all others are different from the fit then, and say so.
TEST(RebaseOfARetouch, CarriesBothTransforms) {
  ShotResult result = retouched(kAll);
  ShotResult plain = solved();
  const ShotResult before = result;
  ASSERT_GT(result.frames[20].smoothed, 0.0);
  rebase(result, 20);
  rebase(plain, 20);
  const Homography back = inverse(before.frames[20].h);
  for (std::size_t f = 0; f < 60; ++f) {
    const FrameResult& frame = result.frames[f];
    if (f == 20) {
      EXPECT_EQ(frame.h, kIdentity);
      continue;
    }
    EXPECT_EQ(frame.h, withLastOne(product(before.frames[f].h, back))) << f;
    ASSERT_TRUE(frame.untouched) << f;
    EXPECT_EQ(frame.untouched->h, plain.frames[f].h) << f;
    const double fit = plain.frames[f].figures.quads[0][1].xx;
    const double kept = frame.untouched->quads[0][1].xx;
    EXPECT_TRUE(kept == fit || (std::isnan(kept) && std::isnan(fit))) << f;
  }
  EXPECT_EQ(result.between[0].frame, 12.5);
  EXPECT_EQ(result.between[0].h, withLastOne(product(before.between[0].h, back)));
}

TEST(RebaseOfARetouch, LeadsBack) {
  const ShotResult before = retouched(kAll);
  for (int f : {20, 44, 0}) {
    ShotResult result = before;
    rebase(result, f);
    rebase(result, 10);
    const Quad& quad = before.quads[0].corners;
    for (std::size_t i = 0; i < 60; ++i) {
      const FrameResult& a = result.frames[i];
      const FrameResult& b = before.frames[i];
      EXPECT_LT(worstDifference(a.h, b.h, quad), 1e-9);
      const Homography& fitA = a.untouched ? a.untouched->h : a.h;
      const Homography& fitB = b.untouched ? b.untouched->h : b.h;
      EXPECT_LT(worstDifference(fitA, fitB, quad), 1e-9) << i;
      EXPECT_EQ(a.smoothed, b.smoothed);
      EXPECT_EQ(a.filled, b.filled);
    }
  }
}

TEST(RebaseOfARetouch, RefusesATimeWithoutAFiniteTransform) {
  ShotResult result = solved();
  result.between = {{10.5, kIdentity}};
  rebase(result, 20);
  ShotResult endless = solved();
  endless.between = {{10.5, {{{1, 0, 0}, {0, 1, 0}, {std::nan(""), 0, 1}}}}};
  try {
    rebase(endless, 20);
    ADD_FAILURE();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(),
                 "frame 20 cannot be the reference: from it, frame 10.5 has no finite transform: "
                 "take another one");
  }
  EXPECT_EQ(endless.referenceFrame, 10);
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/jumps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "shot/solve/shot_solver.h"

using namespace cornerpin;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Moves = std::vector<Point>;

// A camera in the hand: sways by some pixels, and pans.
Moves smooth(int frames) {
  Moves moves;
  for (int f = 0; f < frames; ++f) {
    moves.push_back({3.0 * f + 12.0 * std::sin(0.2 * f), 9.0 * std::cos(0.13 * f)});
  }
  return moves;
}

// Each frame a translation; every corner has the same deviation.
ShotResult moved(const Moves& moves, double deviation = 0.1) {
  ShotResult result;
  result.maxError = 5.0;
  result.baseCentre = {500, 300};
  result.quads = {{"a", {{{0, 0}, {1000, 0}, {1000, 600}, {0, 600}}}}};
  for (std::size_t f = 0; f < moves.size(); ++f) {
    FrameResult frame;
    frame.frame = static_cast<int>(f);
    frame.verdict.status = f == 0 ? Status::Base : Status::Solved;
    frame.h = {{{1, 0, moves[f].x}, {0, 1, moves[f].y}, {0, 0, 1}}};
    frame.figures.quads.resize(1);
    frame.figures.quads[0].fill({deviation * deviation, 0.0, 0.0});
    result.frames.push_back(frame);
  }
  return result;
}

std::vector<int> jumping(const ShotResult& result) {
  const std::vector<double> jumps = jumpsOf(result);
  std::vector<int> frames;
  for (std::size_t f = 0; f < jumps.size(); ++f) {
    if (jumps[f] > 0.0) frames.push_back(result.frames[f].frame);
  }
  return frames;
}

void addNoise(Moves& moves, double sigma, std::uint32_t seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal(0.0, sigma);
  for (Point& p : moves) {
    p.x += normal(random);
    p.y += normal(random);
  }
}

// Thirty tracks on a surface that moves so, with noise of 0.1 px, in one frame of 3 px.
Tracks shotOf(const Moves& moves, std::size_t blurred, std::uint32_t seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> place(0.0, 1.0);
  std::normal_distribution<double> normal(0.0, 1.0);
  Tracks tracks;
  Moves places;
  for (int t = 0; t < 30; ++t) {
    tracks.names.push_back("t" + std::to_string(t));
    const double x = 1000.0 * place(random);
    const double y = 600.0 * place(random);
    places.push_back({x, y});
  }
  for (std::size_t f = 0; f < moves.size(); ++f) {
    for (std::size_t t = 0; t < places.size(); ++t) {
      const double sigma = f == blurred ? 3.0 : 0.1;
      Observation o;
      o.x = places[t].x + moves[f].x;
      o.x += sigma * normal(random);
      o.y = places[t].y + moves[f].y;
      o.y += sigma * normal(random);
      o.weight = 1.0f;
      o.track = static_cast<int>(t);
      o.frame = static_cast<int>(f);
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

}  // namespace

TEST(JumpsOf, FindsTheOneFrameThatIsOff) {
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    Moves moves = smooth(50);
    addNoise(moves, 0.07, seed);
    EXPECT_EQ(jumping(moved(moves)), std::vector<int>{});
    for (int off : {0, 1, 2, 3, 25, 46, 47, 48, 49}) {
      Moves wrong = moves;
      wrong[static_cast<std::size_t>(off)].x += 3.0;
      wrong[static_cast<std::size_t>(off)].y -= 4.0;
      EXPECT_EQ(jumping(moved(wrong)), std::vector<int>{off});
    }
  }
}

// What a jump makes of the frames at the end of the shot is not more than the jump, however far
// outwards they are compared.
TEST(JumpsOf, FindsSmallJumpsNearTheEndsOfTheShot) {
  for (std::uint32_t seed = 0; seed < 50; ++seed) {
    SCOPED_TRACE(seed);
    Moves moves = smooth(50);
    addNoise(moves, 0.02, seed);
    for (int off : {2, 3, 46, 47}) {
      Moves wrong = moves;
      wrong[static_cast<std::size_t>(off)].x += 1.5;
      ShotResult result = moved(wrong, 0.05);
      result.maxError = 1.0;
      EXPECT_EQ(jumping(result), std::vector<int>{off});
    }
  }
}

// By 5 px from frame to frame faster or slower; on a cubic it is off by a tenth of a pixel.
TEST(JumpsOf, KnowsACameraThatSwaysFar) {
  Moves moves;
  for (int f = 0; f < 60; ++f) moves.push_back({120.0 * std::sin(0.2 * f), 0.0});
  EXPECT_EQ(jumping(moved(moves)), std::vector<int>{});
  moves[28].y += 5.0;
  moves[40].y -= 5.0;
  EXPECT_EQ(jumping(moved(moves)), (std::vector<int>{28, 40}));
}

// Straight motion: the frame is off by exactly as much as it was moved.
TEST(JumpsOf, SaysHowFarTheWorstCornerIsOff) {
  Moves moves;
  for (int f = 0; f < 20; ++f) moves.push_back({4.0 * f, -f / 2.0});
  moves[7].x += 3.0;
  moves[7].y -= 4.0;
  ShotResult result = moved(moves);
  EXPECT_NEAR(jumpsOf(result)[7], 5.0, 1e-9);
  result.frames[7].h[0][0] = 1.01;  // the corners at x = 1,000 go 10 further
  EXPECT_NEAR(jumpsOf(result)[7], std::hypot(13.0, 4.0), 1e-9);
}

TEST(JumpsOf, FindsTwoFramesNextToEachOther) {
  Moves moves = smooth(50);
  for (std::size_t f : {25u, 26u}) moves[f].y += 12.0;
  EXPECT_EQ(jumping(moved(moves)), (std::vector<int>{25, 26}));
}

TEST(JumpsOf, TakesACutForACut) {
  Moves moves = smooth(50);
  for (std::size_t f = 20; f < 50; ++f) moves[f].x += 400.0;
  EXPECT_EQ(jumping(moved(moves)), std::vector<int>{});
  // A camera that is pushed goes on at another speed.
  moves = smooth(50);
  for (std::size_t f = 20; f < 50; ++f) moves[f].x += 30.0 * static_cast<double>(f - 20);
  EXPECT_EQ(jumping(moved(moves)), std::vector<int>{});
}

// What stands out in a quiet stretch is ordinary in one that shakes, from its first frame on.
TEST(JumpsOf, GoesByWhatIsUsualThere) {
  Moves moves = smooth(80);
  Moves shaking(moves.begin(), moves.begin() + 40);
  addNoise(shaking, 5.0, 3);
  std::copy(shaking.begin(), shaking.end(), moves.begin());
  EXPECT_EQ(jumping(moved(moves)), std::vector<int>{});
  moves[60].x += 15.0;
  EXPECT_EQ(jumping(moved(moves)), std::vector<int>{60});
}

TEST(JumpsOf, FindsNothingAmongUnrelatedPictures) {
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    Moves moves(13);
    addNoise(moves, 300.0, seed);
    EXPECT_EQ(jumping(moved(moves)), std::vector<int>{}) << seed;
  }
}

// 5 px off, with as large a deviation as that or a quarter of a fifth of it.
TEST(JumpsOf, AllowsForTheDeviations) {
  Moves moves = smooth(50);
  moves[25].x += 5.0;
  EXPECT_EQ(jumping(moved(moves, 0.5)), std::vector<int>{25});
  EXPECT_EQ(jumping(moved(moves, 1.5)), std::vector<int>{});
  // The frame's own counts, and its neighbours' do.
  ShotResult own = moved(moves);
  own.frames[25].figures.quads[0].fill({1.5 * 1.5, 0.0, 0.0});
  EXPECT_EQ(jumping(own), std::vector<int>{});
  ShotResult others = moved(moves);
  for (std::size_t f : {23u, 24u, 26u, 27u}) others.frames[f].figures.quads[0].fill({4, 0, 0});
  EXPECT_EQ(jumping(others), std::vector<int>{});
}

TEST(JumpsOf, LeavesOutWhatIsFarBelowTheLimit) {
  Moves moves(30);
  moves[12].x = 1.0;
  ShotResult result = moved(moves, 0.0);
  EXPECT_EQ(jumping(result), std::vector<int>{});
  result.maxError = 4.9;
  EXPECT_EQ(jumping(result), std::vector<int>{12});
  result.maxError = kNaN;
  EXPECT_EQ(jumping(result), std::vector<int>{});
}

// Frames that say nothing are passed over, up to three in a row.
TEST(JumpsOf, ComparesFramesAcrossAGap) {
  Moves moves = smooth(50);
  moves[25].x += 30.0;
  ShotResult result = moved(moves);
  for (std::size_t f : {22u, 23u}) result.frames[f].verdict.status = Status::Held;
  result.frames[24].verdict.status = Status::Reduced;
  result.frames[26].figures.quads[0].fill({kNaN, kNaN, kNaN});
  EXPECT_EQ(jumping(result), std::vector<int>{25});
  // Nothing is near on the left, and no more than three on the right.
  for (std::size_t f : {20u, 21u}) result.frames[f].verdict.status = Status::Held;
  EXPECT_EQ(jumping(result), std::vector<int>{});
}

TEST(JumpsOf, SaysNothingOfFramesThatAreNotSolvedOrHaveNoFigures) {
  Moves moves = smooth(50);
  moves[25].x += 50.0;
  ShotResult result = moved(moves);
  result.frames[25].verdict.status = Status::Reduced;
  EXPECT_EQ(jumping(result), std::vector<int>{});
  result = moved(moves);
  result.frames[25].figures.quads[0].fill({kNaN, kNaN, kNaN});
  EXPECT_EQ(jumping(result), std::vector<int>{});
}

// Corner 1 has come behind the horizon in frame 25, which says nothing of it; the others jump.
TEST(JumpsOf, GoesByCornersInFrontOfTheHorizon) {
  Moves moves = smooth(50);
  ShotResult result = moved(moves);
  FrameResult& tilted = result.frames[25];
  tilted.h = {{{1, 0, moves[25].x}, {0, 1, moves[25].y}, {-1.0 / 900.0, 0, 1}}};
  for (std::size_t c : {1u, 2u}) tilted.figures.quads[0][c] = {kNaN, kNaN, kNaN};
  result.baseCentre = {10, 300};
  result.quads[0].corners = {{{0, 0}, {1000, 0}, {1000, 600}, {0, 600}}};
  EXPECT_EQ(jumping(result), std::vector<int>{});
  result.quads[0].corners[0].x = 20.0;
  EXPECT_EQ(jumping(result), std::vector<int>{25});
}

TEST(JumpsOf, SaysNothingOfShortShots) {
  for (int frames : {1, 2, 4, 5}) {
    Moves moves = smooth(frames);
    moves.back().x += 100.0;
    EXPECT_EQ(jumping(moved(moves)), std::vector<int>{}) << frames;
  }
  Moves moves = smooth(6);
  moves.back().x += 100.0;
  EXPECT_EQ(jumping(moved(moves)), std::vector<int>{5});
}

// Two frames that are off, and a good one between them.
TEST(JumpsOf, FindsFramesThatAreCloseToEachOther) {
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    Moves moves = smooth(50);
    addNoise(moves, 0.07, seed);
    moves[25].x += 9.0;
    moves[27].x += 6.0;
    EXPECT_EQ(jumping(moved(moves)), (std::vector<int>{25, 27})) << seed;
  }
}

TEST(SolveShot, DoubtsAFrameThatJumpsAndNotItsNeighbours) {
  for (std::uint32_t seed = 1; seed <= 5; ++seed) {
    Moves moves = smooth(40);
    moves[30].x += 3.0;
    moves[30].y += 4.0;
    SolveOptions options;
    options.base = 10;
    const ShotResult result = solveShot(shotOf(moves, 50, seed), options);
    for (const FrameResult& frame : result.frames) {
      ASSERT_EQ(frame.doubts.size(), frame.frame == 30 ? 1u : 0u) << frame.frame;
    }
    EXPECT_EQ(result.frames[30].doubts[0].code, DoubtCode::Jump);
    EXPECT_EQ(result.frames[30].doubts[0].text.rfind("a corner is ", 0), 0u);
  }
}

// Seen from a frame of large errors all frames have these. What jumps does so as before.
TEST(SolveShot, FindsTheSameJumpsFromEveryReferenceFrame) {
  Moves moves = smooth(40);
  moves[30].y += 4.0;
  SolveOptions options;
  options.base = 10;
  options.reference = 20;
  options.maxError = 12.0;
  const ShotResult result = solveShot(shotOf(moves, 20, 1), options);
  EXPECT_GT(result.frames[29].expectedError, 1.0);
  ASSERT_EQ(result.frames[30].doubts.size(), 1u);
  EXPECT_EQ(result.frames[30].doubts[0].code, DoubtCode::Jump);
}

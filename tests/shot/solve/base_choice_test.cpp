// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/base_choice.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>

#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using small_shots::movingShot;
using small_shots::see;

namespace {

const Quad kQuad = {{{100, 60}, {900, 60}, {900, 540}, {100, 540}}};

class Noise {
 public:
  explicit Noise(unsigned seed) : engine_(seed) {}
  Point around(Point p, double deviation) {
    const double x = deviation * normal_(engine_);
    const double y = deviation * normal_(engine_);
    return {p.x + x, p.y + y};
  }

 private:
  std::mt19937_64 engine_;
  std::normal_distribution<double> normal_;
};

// Six columns and four rows of tracks over 1000 x 600, track 0 in the low corner.
constexpr int kTracks = 24;
Point placeOf(int track) { return {50.0 + 180.0 * (track % 6), 30.0 + 180.0 * (track / 6 % 4)}; }

// A shot whose camera stands still, with a pilot that found just that.
struct Shot {
  Tracks tracks;
  std::vector<PilotFrame> pilot;
};

using Seen = std::function<bool(int track, int frame)>;
using Deviation = std::function<double(int track, int frame)>;

bool always(int, int) { return true; }

Shot still(int frames, int count, const Seen& seen, const Deviation& deviation, double sigma) {
  Shot shot;
  Noise noise(20261122);
  for (int f = 0; f < frames; ++f) {
    for (int t = 0; t < count; ++t) {
      const Point p = noise.around(placeOf(t), deviation(t, f));
      if (seen(t, f)) see(shot.tracks, t, f, p);
    }
    shot.pilot.push_back({true, kIdentity, sigma});
  }
  return shot;
}

Deviation alike(double deviation) {
  return [deviation](int, int) { return deviation; };
}

// Five tracks for each three frames: no two frames more than two apart share any.
bool relay(int track, int frame) { return track / 5 <= frame && frame <= track / 5 + 2; }
Point relayPlace(int track) {
  const Point corners[] = {{0, 0}, {400, 20}, {380, 300}, {10, 310}, {210, 120}};
  return corners[track % 5];
}

Shot relayShot(int frames) {
  Shot shot;
  Noise noise(7);
  for (int f = 0; f < frames; ++f) {
    for (int t = 0; t < 5 * frames; ++t) {
      const Point p = noise.around(relayPlace(t), 0.2);
      if (relay(t, f)) see(shot.tracks, t, f, p);
    }
    shot.pilot.push_back({true, kIdentity, 0.3});
  }
  return shot;
}

}  // namespace

TEST(GuessBaseFrame, TakesTheMiddleOfFramesThatSeeTheSame) {
  EXPECT_EQ(guessBaseFrame(movingShot(5)), 2);
  EXPECT_EQ(guessBaseFrame(movingShot(4)), 1);     // the earlier of two
  EXPECT_EQ(guessBaseFrame(movingShot(101)), 50);  // more than are compared
}

TEST(GuessBaseFrame, TakesAFrameThatSharesTracksWithTheOthers) {
  // In the middle half the tracks are away: the others are 1/21 from each other, frame 2 is 1/9
  // from all.
  const Seen seen = [](int t, int f) { return f != 2 || t % 2 == 0; };
  EXPECT_EQ(guessBaseFrame(still(5, kTracks, seen, alike(0), 1).tracks), 1);
}

TEST(GuessBaseFrame, TakesThirtyTracksForAsGoodAsSixty) {
  Tracks tracks;
  for (int f = 0; f < 9; ++f) {
    for (int t = 0; t < (f == 4 ? 30 : 60); ++t) see(tracks, t, f, {});
  }
  EXPECT_EQ(guessBaseFrame(tracks), 4);
}

TEST(GuessBaseFrame, AddsUpTheStepsOfAChain) {
  // Each frame shares tracks with its neighbours alone: up to frame 4 four of them, so that the
  // frames are 1 apart, and 13 from there on, 1/10 apart. From frame 6 half the frames are no more
  // than 0.2 away and the farthest is 4.2; from frame 4 it is 0.4 and 4.
  Tracks tracks;
  for (int f = 0, last = 0; f <= 8; ++f) {
    const int next = last + (f < 4 ? 4 : 13);
    if (f > 0) {
      for (int t = f <= 4 ? last - 4 : last - 13; t < last; ++t) see(tracks, t, f, {});
    }
    for (int t = last; t < next; ++t) see(tracks, t, f, {});
    last = next;
  }
  EXPECT_EQ(guessBaseFrame(tracks), 6);
}

TEST(GuessBaseFrame, OfAShotWithoutChainsTakesTheFrameWhoseTracksAreSeenMost) {
  Tracks tracks;
  for (int f = 0; f < 9; ++f) {
    for (int t = 0; t < 4 && f < 6; ++t) see(tracks, t, f, {});
    for (int t = 4; t < 8 && f >= 6; ++t) see(tracks, t, f, {});
  }
  EXPECT_EQ(guessBaseFrame(tracks, false), 0);  // 24 observations; frame 4 is the middle
}

TEST(GuessBaseFrame, KnowsShotsOfFewTracks) {
  Tracks tracks;
  for (int f = 0; f < 5; ++f) {
    for (int t = 0; t < (f == 2 ? 1 : 3); ++t) see(tracks, t, f, {});
  }
  EXPECT_EQ(guessBaseFrame(tracks), 1);
}

TEST(GuessBaseFrame, DoesNotSeeATrackOfWeightZero) {
  Tracks tracks;
  for (int f = 0; f < 5; ++f) {
    for (int t = 0; t < 8; ++t) see(tracks, t, f, {}, f == 2 && t > 3 ? 0.0f : 1.0f);
  }
  EXPECT_EQ(guessBaseFrame(tracks), 1);
}

// With noise of s in both frames and the identity between them the corner q has the covariance
// 2 s^2 J(q) inv(sum of J'J) J(q)'.
TEST(ChooseBase, ExpectsTheErrorThatTheNoiseMakes) {
  const auto slopes = [](Point p) {
    Eigen::Matrix<double, 2, 8> j;
    const double x = p.x / 500, y = p.y / 500;
    j << x, y, 1, 0, 0, 0, -x * x, -x * y, 0, 0, 0, x, y, 1, -x * y, -y * y;
    return j;
  };
  Eigen::Matrix<double, 8, 8> a = Eigen::Matrix<double, 8, 8>::Zero();
  for (int t = 0; t < kTracks; ++t) a += slopes(placeOf(t)).transpose() * slopes(placeOf(t));
  double worst = 0.0;
  const Quad lopsided = {{{-200, -100}, {600, 60}, {600, 340}, {100, 340}}};
  for (Point q : lopsided) {
    const Eigen::Matrix2d covariance = slopes(q) * a.inverse() * slopes(q).transpose();
    worst = std::max(worst, std::sqrt(2.0 * 0.25 * covariance.trace()));
  }
  const Shot shot = still(9, kTracks, always, alike(0.5), 0.8);
  const BaseChoice choice = chooseBase(shot.tracks, 4, shot.pilot, lopsided);
  EXPECT_EQ(choice.frame, 4);
  EXPECT_EQ(choice.expected, choice.pilot);
  // The noise of a pair of frames is known to 1 / sqrt(2 * 40) = 11 %, less by what all say.
  EXPECT_NEAR(choice.expected / worst, 1.0, 0.15);
}

TEST(ChooseBase, TakesTheFrameNearestTheMiddleOfThoseAsGood) {
  const Shot shot = still(21, kTracks, always, alike(0.5), 0.8);
  EXPECT_LE(std::abs(chooseBase(shot.tracks, 2, shot.pilot, kQuad).frame - 10), 2);
  for (int frames : {20, 21, 201}) {
    const Shot exact = still(frames, kTracks, always, alike(0), 0.8);
    const BaseChoice choice = chooseBase(exact.tracks, 2, exact.pilot, kQuad);
    EXPECT_EQ(choice.frame, (frames - 1) / 2);
    EXPECT_LT(choice.expected, 0.01);
  }
}

// Frame 8 is a little better than the one in the middle: by less than is worth another solve.
TEST(ChooseBase, KeepsThePilotsBaseNearTheMiddleLonger) {
  const auto choiceFor = [](double deviation, int pilotBase) {
    Shot shot = still(21, kTracks, always, alike(0), 0.8);
    for (Observation& o : shot.tracks.observations) {
      const double own = o.frame == 10 ? deviation : 0.5;
      o.x += own * std::cos(1.0 + 7.0 * o.track + 0.7 * o.frame * o.track);
      o.y += own * std::sin(2.0 + 5.0 * o.track + 1.1 * o.frame * o.track);
    }
    return chooseBase(shot.tracks, pilotBase, shot.pilot, kQuad);
  };
  EXPECT_EQ(choiceFor(0.46, 10).frame, 10);
  EXPECT_EQ(choiceFor(0.46, 3).frame, 8);
  EXPECT_EQ(choiceFor(0.62, 10).frame, 8);
}

TEST(ChooseBase, AvoidsABlurredFrame) {
  const Deviation blurred = [](int, int f) { return f >= 9 && f <= 11 ? 3.0 : 0.5; };
  Shot shot = still(21, kTracks, always, blurred, 0.8);
  for (int f : {9, 10, 11}) shot.pilot[static_cast<std::size_t>(f)].sigma = 4.0;
  const BaseChoice choice = chooseBase(shot.tracks, 10, shot.pilot, kQuad);
  EXPECT_TRUE(choice.frame == 8 || choice.frame == 12) << choice.frame;
  EXPECT_LT(choice.expected, choice.pilot);
}

TEST(ChooseBase, TakesTheMiddleWhereTracksCreep) {
  Shot shot = still(31, kTracks, always, alike(0.1), 3.0);
  for (Observation& o : shot.tracks.observations) {
    o.x += 0.1 * std::cos(0.9 * o.track) * o.frame;
    o.y += 0.1 * std::sin(2.3 * o.track) * o.frame;
  }
  const BaseChoice choice = chooseBase(shot.tracks, 0, shot.pilot, kQuad);
  EXPECT_EQ(choice.frame, 15);
  // From the middle the tracks creep half as far as from one end; half of that goes by what all
  // pairs of frames say.
  EXPECT_GT(choice.pilot / choice.expected, 1.25);
  EXPECT_LT(choice.pilot / choice.expected, 2.0);
}

// Frame 13 sees nothing of the left, frame 16 nothing of the right.
TEST(ChooseBase, LooksAtTheQuad) {
  const Seen seen = [](int t, int f) { return t % 6 < 3 ? f != 13 : f != 16; };
  const Shot shot = still(30, kTracks, seen, alike(0.5), 0.8);
  const Quad left = {{{50, 100}, {250, 100}, {250, 500}, {50, 500}}};
  const Quad right = {{{700, 100}, {950, 100}, {950, 500}, {700, 500}}};
  const auto expected = [&](int base, const Quad& quad) {
    return chooseBase(shot.tracks, base, shot.pilot, quad).pilot;
  };
  EXPECT_GT(expected(13, left), 1.5 * expected(16, left));
  EXPECT_GT(expected(16, right), 1.5 * expected(13, right));
}

TEST(ChooseBase, TakesTheBoxOfAllTracksButAFarOffOneForAQuad) {
  const Seen seen = [](int t, int f) { return t % 6 < 5 || f < 5; };
  Shot shot = still(9, kTracks, seen, alike(0), 0.8);
  const Quad box = {{{50, 30}, {950, 30}, {950, 570}, {50, 570}}};
  Noise noise(3);
  for (Observation& o : shot.tracks.observations) {
    const Point p = noise.around({o.x, o.y}, 0.3);
    if (o.track != 6 && o.track != 7) continue;
    o.x = p.x;
    o.y = p.y;
  }
  const BaseChoice byBox = chooseBase(shot.tracks, 4, shot.pilot, box);
  const BaseChoice byTracks = chooseBase(shot.tracks, 4, shot.pilot);
  EXPECT_NEAR(byTracks.expected / byBox.expected, 1.0, 0.02);
  EXPECT_EQ(byTracks.frame, byBox.frame);
  // The same with a track far away, at another place in each frame.
  Tracks more = shot.tracks;
  more.names.push_back("far");
  std::vector<Observation> all;
  for (const Observation& o : shot.tracks.observations) {
    all.push_back(o);
    if (o.track != kTracks - 2) continue;
    all.push_back(o);
    all.back().track = kTracks;
    all.back().x = 2e4 + 1000.0 * o.frame;
  }
  const auto before = [](const Observation& a, const Observation& b) {
    return a.frame != b.frame ? a.frame < b.frame : a.track < b.track;
  };
  std::sort(all.begin(), all.end(), before);
  more.observations = all;
  EXPECT_NEAR(chooseBase(more, 4, shot.pilot).expected / byTracks.expected, 1.0, 1e-3);
}

// A third of the tracks are anywhere. The sigma of the base is not known.
TEST(ChooseBase, LeavesOutBadTracks) {
  Shot shot = still(9, kTracks, always, alike(0.5), 0.8);
  shot.pilot[4].sigma = std::nan("");
  Tracks good;
  for (const Observation& o : shot.tracks.observations) {
    if (o.track % 3) see(good, o.track, o.frame, {o.x, o.y});
  }
  for (Observation& o : shot.tracks.observations) {
    if (o.track % 3 == 0) o.x += 50.0 + 20.0 * o.frame + o.track;
  }
  EXPECT_EQ(chooseBase(shot.tracks, 4, shot.pilot, kQuad).expected,
            chooseBase(good, 4, shot.pilot, kQuad).expected);
}

TEST(ChooseBase, LeavesOutFramesThatThePilotDidNotSolve) {
  Shot shot = still(21, kTracks, always, alike(0), 0.8);
  for (int f = 9; f <= 12; ++f) shot.pilot[static_cast<std::size_t>(f)].solved = false;
  EXPECT_EQ(chooseBase(shot.tracks, 0, shot.pilot, kQuad).frame, 8);
}

TEST(ChooseBase, LeavesOutFramesWithACornerBehindTheHorizon) {
  Shot shot = still(9, kTracks, always, alike(0), 0.8);
  // The line x = 1100 is the horizon; all tracks are in front of it, a corner is not.
  const Homography tilted = {{{1, 0, 0}, {0, 1, 0}, {-1.0 / 1100, 0, 1}}};
  shot.pilot[4].h = tilted;
  for (Observation& o : shot.tracks.observations) {
    if (o.frame != 4) continue;
    const Point p = map(tilted, {o.x, o.y});
    o.x = p.x;
    o.y = p.y;
  }
  const Quad wide = {{{100, 60}, {1200, 60}, {1200, 540}, {100, 540}}};
  EXPECT_EQ(chooseBase(shot.tracks, 0, shot.pilot, kQuad).frame, 4);
  EXPECT_EQ(chooseBase(shot.tracks, 0, shot.pilot, wide).frame, 3);
}

TEST(ChooseBase, CountsOnTracksBetweenToHandOver) {
  const Shot shot = relayShot(13);
  const BaseChoice choice = chooseBase(shot.tracks, 1, shot.pilot, {});
  EXPECT_NEAR(choice.frame, 6, 1);
  // Six hops or so instead of eleven.
  EXPECT_NEAR(std::pow(choice.pilot / choice.expected, 2), 11.0 / 6.0, 0.7);
}

// Tracks of 20 frames, one after the other at each place. The base and the frame are as noisy as
// where each place has one track; three to six takings over add a little, not as much each time.
TEST(ChooseBase, ExpectsTheFramesBetweenToAverageTheirNoise) {
  const Seen seen = [](int t, int f) {
    const int start = 20 * (t / kTracks) - 7 * (t % kTracks) % 20;
    return f >= start && f < start + 20;
  };
  const Shot renamed = still(60, 4 * kTracks, seen, alike(0.5), 0.8);
  const Shot whole = still(60, kTracks, always, alike(0.5), 0.8);
  const double least = chooseBase(whole.tracks, 29, whole.pilot, kQuad).pilot;
  const double more = chooseBase(renamed.tracks, 29, renamed.pilot, kQuad).pilot;
  EXPECT_GT(more, 1.05 * least);
  EXPECT_LT(more, 1.5 * least);
}

TEST(ChooseBase, KeepsThePilotsBaseWhereFewFramesShareTracksAndNoneHandOver) {
  const Shot shot = relayShot(13);
  const BaseChoice choice = chooseBase(shot.tracks, 1, shot.pilot, {}, false);
  EXPECT_EQ(choice.frame, 1);
  EXPECT_TRUE(std::isinf(choice.expected));
  EXPECT_EQ(choice.why, "frame 1: too many frames share too few tracks to compare bases");
}

// Pixels of a frame that shows the surface twice as large count twice: with the base there, the
// noise is carried to the others at half its size.
TEST(ChooseBase, PrefersALargePicture) {
  Shot shot = still(20, kTracks, always, alike(0.2), 0.2);
  const Homography large = {{{4, 0, 0}, {0, 4, 0}, {0, 0, 1}}};
  Noise noise(11);
  for (Observation& o : shot.tracks.observations) {
    if (o.frame >= 5) continue;
    const Point p = noise.around({4 * placeOf(o.track).x, 4 * placeOf(o.track).y}, 0.2);
    o.x = p.x;
    o.y = p.y;
  }
  for (std::size_t f = 0; f < 5; ++f) shot.pilot[f].h = large;
  const double alone = chooseBase(shot.tracks, 10, shot.pilot, kQuad, false).expected;
  for (bool handsOver : {false, true}) {
    const BaseChoice choice = chooseBase(shot.tracks, 10, shot.pilot, kQuad, handsOver);
    EXPECT_LT(choice.frame, 5);
    // sqrt(1 + 1) from a large picture to another, sqrt(1 + 16) from a small one.
    EXPECT_NEAR(choice.pilot / choice.expected, std::sqrt(17.0 / 2.0), 0.5);
    EXPECT_NEAR(choice.expected / alone, 1.0, 0.1);  // all frames share all tracks
  }
}

// Numbers without noise are known to their last digits alone, which say nothing.
TEST(ChooseBase, TakesRoundingForNoNoise) {
  std::vector<PilotFrame> pilot;
  for (int f = 0; f < 9; ++f) pilot.push_back({true, small_shots::motion(f), 0.1});
  const BaseChoice choice = chooseBase(movingShot(9), 0, pilot);
  EXPECT_GT(choice.expected, 1e-5);
  EXPECT_LT(choice.expected, 1e-2);
}

TEST(ChooseBase, ComparesThePilotsBaseHoweverLongTheShot) {
  const Shot shot = still(201, kTracks, always, alike(0.5), 0.8);
  for (int base : {0, 1, 2, 200}) {
    const BaseChoice choice = chooseBase(shot.tracks, base, shot.pilot, kQuad);
    EXPECT_NEAR(choice.pilot / choice.expected, 1.1, 0.2) << base;
  }
}

TEST(ChooseBase, SaysWhy) {
  const Deviation one = [](int, int f) { return f == 10 ? 3.0 : 0.0; };
  Shot shot = still(21, kTracks, always, one, 12.0);
  const BaseChoice other = chooseBase(shot.tracks, 10, shot.pilot, kQuad);
  EXPECT_EQ(other.frame, 9);
  EXPECT_EQ(other.why.substr(0, 33), "frame 9: corners expected within ");
  const std::string tail = " px in 95 % of the frames; from frame 10 within ";
  EXPECT_NE(other.why.find(tail), std::string::npos) << other.why;
  const BaseChoice same = chooseBase(shot.tracks, 9, shot.pilot, kQuad);
  EXPECT_NE(same.why.find(" px in 95 % of the frames; no other base is expected to be clearly "
                          "better"),
            std::string::npos)
      << same.why;
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/trust.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace cornerpin;

namespace {

const Quad kCorners = {{{80, 80}, {560, 90}, {540, 430}, {70, 410}}};

Homography motion(int frame) {
  const double f = frame;
  return {{{1 + 0.05 * f, 0.06 * f, 12 * f},
           {-0.04 * f, 1 + 0.02 * f, -9 * f},
           {1e-4 * f, -6e-5 * f, 1}}};
}

// `count` tracks, the first of them on the corners, over three frames with normal noise everywhere,
// the base frame included.
Tracks noisyShot(int count, double noise, unsigned seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal(0, noise);
  Tracks tracks;
  for (int f = 0; f < 3; ++f) {
    for (int t = 0; t < count; ++t) {
      if (f == 0) tracks.names.push_back("t" + std::to_string(t));
      const double x = 90.0 + 460.0 * (t * 37 % 101) / 100;
      const double y = 90.0 + 320.0 * (t * 61 % 97) / 96;
      const Point p = t < 4 ? kCorners[static_cast<std::size_t>(t)] : Point{x, y};
      const Point q = map(motion(f), p);
      Observation o;
      o.track = t;
      o.frame = f;
      o.x = q.x + normal(random);
      o.y = q.y + normal(random);
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

SolveOptions fromTheFirstFrame() {
  SolveOptions options;
  options.base = 0;
  options.loss = Loss::Tukey;
  options.reduce = true;
  return options;
}

}  // namespace

TEST(Assess, GivesTheSpreadOfTheCornersOverAThousandNoisyCopiesOfAShot) {
  constexpr int kCopies = 1000;
  double figure[3][4] = {};
  double seen[3][4] = {};
  for (unsigned copy = 0; copy < kCopies; ++copy) {
    const Tracks tracks = noisyShot(24, 0.5, copy);
    const ShotResult result = solveShot(tracks, fromTheFirstFrame());
    const ShotTrust trust = assess(tracks, result, kCorners);
    for (std::size_t f = 1; f < 3; ++f) {
      for (std::size_t c = 0; c < 4; ++c) {
        const Point p = map(result.frames[f].h, kCorners[c]);
        const Point q = map(motion(static_cast<int>(f)), kCorners[c]);
        seen[f][c] += (std::pow(p.x - q.x, 2) + std::pow(p.y - q.y, 2)) / kCopies;
        figure[f][c] += std::pow(trust.frames[f].deviations[c], 2) / kCopies;
      }
    }
  }
  for (std::size_t f = 1; f < 3; ++f) {
    for (std::size_t c = 0; c < 4; ++c) {
      std::printf("frame %zu corner %zu: figure %.4f px, spread %.4f px\n", f, c,
                  std::sqrt(figure[f][c]), std::sqrt(seen[f][c]));
      EXPECT_NEAR(std::sqrt(figure[f][c] / seen[f][c]), 1.0, 0.1);
    }
  }
}

// Every sixth track is somewhere else in every frame but the base; the figure is about the rest.
TEST(Assess, GivesTheSpreadOfTheCornersWithBadTracksAmongTheGood) {
  constexpr int kCopies = 300;
  double figure[4] = {};
  double seen[4] = {};
  for (unsigned copy = 0; copy < kCopies; ++copy) {
    Tracks tracks = noisyShot(36, 0.5, copy);
    for (Observation& o : tracks.observations) {
      if (o.track % 6 == 5 && o.frame > 0) o.x += 25 + o.track;
    }
    const ShotResult result = solveShot(tracks, fromTheFirstFrame());
    const ShotTrust trust = assess(tracks, result, kCorners);
    for (std::size_t c = 0; c < 4; ++c) {
      const Point p = map(result.frames[2].h, kCorners[c]);
      const Point q = map(motion(2), kCorners[c]);
      seen[c] += (std::pow(p.x - q.x, 2) + std::pow(p.y - q.y, 2)) / kCopies;
      figure[c] += std::pow(trust.frames[2].deviations[c], 2) / kCopies;
    }
  }
  for (std::size_t c = 0; c < 4; ++c) {
    std::printf("corner %zu: figure %.4f px, spread %.4f px\n", c, std::sqrt(figure[c]),
                std::sqrt(seen[c]));
    EXPECT_NEAR(std::sqrt(figure[c] / seen[c]), 1.0, 0.15);
  }
}

TEST(Assess, GivesBadTracksNoWeightAndNoInfluence) {
  Tracks tracks = noisyShot(24, 0.5, 1);
  for (Observation& o : tracks.observations) {
    if (o.track == 7 && o.frame > 0) o.x += 40;
  }
  const ShotResult result = solveShot(tracks, fromTheFirstFrame());
  int bad = 0;
  assess(tracks, result, kCorners, [&](int track, int, const TrackInfluence& influence) {
    EXPECT_EQ(influence.weight == 0.0, track == 7);
    if (track != 7) return;
    ++bad;
    EXPECT_EQ(influence.influence, 0.0);
    EXPECT_EQ(influence.leverage, 0.0);
    EXPECT_NEAR(influence.residual, 40.0, 5.0);
  });
  EXPECT_EQ(bad, 2);
}

TEST(Assess, IsAboutTheBoxAroundTheBaseFramesTracksUnlessToldOtherwise) {
  const Tracks tracks = noisyShot(3, 0.0, 1);
  const ShotResult result = solveShot(tracks, fromTheFirstFrame());
  const Quad box = assess(tracks, result).corners;
  const auto& rows = tracks.observations;
  EXPECT_EQ(box[0].x, std::min({rows[0].x, rows[1].x, rows[2].x}));
  EXPECT_EQ(box[0].y, std::min({rows[0].y, rows[1].y, rows[2].y}));
  EXPECT_EQ(box[2].x, std::max({rows[0].x, rows[1].x, rows[2].x}));
  EXPECT_EQ(box[2].y, std::max({rows[0].y, rows[1].y, rows[2].y}));
  EXPECT_EQ(box[1].x, box[2].x);
  EXPECT_EQ(box[1].y, box[0].y);
  EXPECT_EQ(assess(tracks, result, kCorners).corners[3].x, kCorners[3].x);
}

TEST(Assess, GivesATrackBehindTheHorizonNoWeightWhereverItIsSeen) {
  const Homography h = {
      {{1, 0.02, 3}, {-0.03, 1, 5}, {-0.002, 0, 1}}};  // the horizon is at x = 500
  Tracks tracks;
  for (int f = 0; f < 2; ++f) {
    for (int t = 0; t < 10; ++t) {
      if (f == 0) tracks.names.push_back("t" + std::to_string(t));
      const Point p = {t == 9 ? 600.0 : 60.0 + 30.0 * t, 80.0 + 50.0 * (t * 3 % 7)};
      const Point q = f == 0 ? p : map(h, p);
      Observation o;
      o.track = t;
      o.frame = f;
      o.x = q.x;
      o.y = q.y;
      tracks.observations.push_back(o);
    }
  }
  const ShotResult result = solveShot(tracks, fromTheFirstFrame());
  ASSERT_EQ(result.frames[1].status, Status::Solved);
  ASSERT_LT(denominator(result.frames[1].h, {600, 80}), 0.0);
  ASSERT_EQ(result.frames[1].inliers, 9);
  int seen = 0;
  assess(tracks, result, kCorners, [&](int track, int, const TrackInfluence& influence) {
    EXPECT_EQ(influence.leverage > 0.0, track != 9);
    ++seen;
  });
  EXPECT_EQ(seen, 10);
}

TEST(Assess, LeavesATrackThatIsFarAwayOutOfTheBox) {
  Tracks tracks = noisyShot(8, 0.0, 1);
  tracks.observations[5].x = 1e5;
  EXPECT_LT(assess(tracks, solveShot(tracks, fromTheFirstFrame())).corners[2].x, 1e4);
  SolveOptions plain = fromTheFirstFrame();
  plain.loss = Loss::None;
  EXPECT_EQ(assess(tracks, solveShot(tracks, plain)).corners[2].x, 1e5);
}

TEST(Assess, SaysNothingOfWhatItCannotKnow) {
  const Tracks tracks = noisyShot(4, 0.1, 1);
  const ShotTrust trust = assess(tracks, solveShot(tracks, fromTheFirstFrame()), kCorners);
  EXPECT_TRUE(std::isnan(trust.frames[0].noise));
  EXPECT_EQ(trust.frames[0].deviations, (std::array<double, 4>{}));
  EXPECT_TRUE(std::isnan(trust.frames[1].noise));
  EXPECT_TRUE(std::isnan(trust.frames[1].deviations[0]));
  EXPECT_TRUE(trust.worst.empty());
}

TEST(Assess, HasNoFigureForACornerBehindTheHorizon) {
  const Tracks tracks = noisyShot(12, 0.5, 1);
  const Quad far = {{{100, 100}, {500, 100}, {500, 400}, {-2e4, 400}}};
  const ShotTrust trust = assess(tracks, solveShot(tracks, fromTheFirstFrame()), far);
  EXPECT_GT(trust.frames[2].deviations[0], 0.0);
  EXPECT_TRUE(std::isnan(trust.frames[2].deviations[3]));
}

TEST(Assess, HandsEveryTrackOfEveryOtherFrameOver) {
  Tracks tracks = noisyShot(6, 0.5, 1);
  tracks.observations[8].weight = 0.0f;  // t2 in frame 1
  std::string seen;
  assess(tracks, solveShot(tracks, fromTheFirstFrame()), {},
         [&](int track, int frame, const TrackInfluence&) {
           seen += std::to_string(track) + "@" + std::to_string(frame) + " ";
         });
  EXPECT_EQ(seen, "0@1 1@1 3@1 4@1 5@1 0@2 1@2 2@2 3@2 4@2 5@2 ");
}

TEST(Assess, JudgesAReducedFrameBehindTheNeighbourThatItKeeps) {
  Tracks tracks = noisyShot(12, 0.0, 1);
  for (Observation& o : tracks.observations) {
    if (o.frame == 2 && o.track > 2) o.weight = 0.0f;
  }
  const ShotResult result = solveShot(tracks, fromTheFirstFrame());
  ASSERT_EQ(result.frames[2].model, Model::Affine);
  ASSERT_TRUE(result.frames[2].onTop);
  std::vector<int> ids;
  const FittedFrame fitted = fittedFrame(tracks, result, 2, ids);
  EXPECT_EQ(ids, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(fitted.kept, result.frames[1].h);
  EXPECT_EQ(fitted.h, result.frames[2].h);
}

TEST(Assess, NamesABadTrackAndNoGoodOne) {
  SolveOptions plain = fromTheFirstFrame();
  plain.loss = Loss::None;
  for (unsigned seed = 1; seed < 101; ++seed) {
    Tracks tracks = noisyShot(24, 0.5, seed);
    for (const WorstTrack& track : assess(tracks, solveShot(tracks, plain), kCorners).worst) {
      EXPECT_FALSE(track.stretch.standsOut) << track.name << " seed " << seed;
    }
    for (Observation& o : tracks.observations) {
      if (o.track == 7 && o.frame > 0) o.x += 40;
    }
    const ShotTrust trust = assess(tracks, solveShot(tracks, plain), kCorners);
    EXPECT_EQ(trust.worst[0].name, "t7") << "seed " << seed;
    EXPECT_TRUE(trust.worst[0].stretch.standsOut) << "seed " << seed;
  }
}

TEST(Describe, SpeaksOfOneFrameOrOfSeveral) {
  EXPECT_EQ(describe({"t042", {0, 60, 81, 70, 9.31}}),
            "t042, frames 60-81: without it the worst corner moves 9.3 px");
  EXPECT_EQ(describe({"b", {0, 5, 5, 5, 120.4}}),
            "b, frame 5: without it the worst corner moves 120 px");
}

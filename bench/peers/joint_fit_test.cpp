// SPDX-License-Identifier: BSD-3-Clause
#include "bench/peers/joint_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/shot/key_frames.h"
#include "tests/shot/known_shots.h"

using namespace cornerpin;

namespace {

constexpr int kBase = 30;

made::Relay relayOf(double noise) {
  made::Relay what;
  what.frames = 60;
  what.life = 20;
  what.noise = noise;
  return what;
}

std::vector<Homography> truthOf(const made::KnownShot& shot) {
  std::vector<Homography> all;
  all.reserve(shot.motion.size());
  for (int f = 0; f < static_cast<int>(shot.motion.size()); ++f)
    all.push_back(shot.truth(kBase, f));
  return all;
}

double worstCorner(const made::KnownShot& shot, const std::vector<Homography>& all) {
  double worst = 0.0;
  for (std::size_t f = 0; f < all.size(); ++f) {
    for (double error : cornerErrors(shot, all[f], kBase, static_cast<int>(f)))
      worst = std::max(worst, error);
  }
  return worst;
}

}  // namespace

TEST(JointFit, GivesTheTruthWithoutNoiseFromAStartThatIsPixelsOff) {
  const made::KnownShot shot = relay(relayOf(0.0), 1);
  std::vector<Homography> start = truthOf(shot);
  for (std::size_t f = 0; f < start.size(); ++f) {
    if (f != kBase) start[f][0][2] += f % 2 == 0 ? 5.0 : -5.0;
  }
  ASSERT_GT(worstCorner(shot, start), 4.0);
  EXPECT_LT(worstCorner(shot, bench::jointFit(shot.tracks, kBase, start)), 1e-4);
}

TEST(JointFit, FindsTheSameOptimumFromTheTruthAndFromAChain) {
  const made::KnownShot shot = relay(relayOf(0.5), 1);
  const auto chain = chained(shot.tracks, kBase, made::plainPairFit, made::kFrameToFrame);
  const auto a = bench::jointFit(shot.tracks, kBase, truthOf(shot));
  const auto b = bench::jointFit(shot.tracks, kBase, chain);
  for (std::size_t f = 0; f < a.size(); ++f) {
    for (const Point& p : {Point{0, 0}, Point{1000, 0}, Point{1000, 600}, Point{0, 600}}) {
      const Point base = map(shot.truth(0, kBase), p);
      EXPECT_LT(squaredDistance(map(a[f], base), map(b[f], base)), 1e-8) << f;
    }
  }
  EXPECT_EQ(a[kBase], kIdentity);
  EXPECT_LT(worstCorner(shot, a), worstCorner(shot, chain));
}

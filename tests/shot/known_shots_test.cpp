// SPDX-License-Identifier: BSD-3-Clause
#include "tests/shot/known_shots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

using namespace cornerpin;

namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kExact = 1000.0 * 100.0 * kEps;  // a hundred roundings of a picture's width

const Homography& motionOf(const made::KnownShot& shot, const Observation& o) {
  return shot.motion[static_cast<std::size_t>(o.frame)];
}

// How far an observation is from the image of its track's place.
Point offset(const made::KnownShot& shot, const Observation& o) {
  const Point p = map(motionOf(shot, o), shot.places[static_cast<std::size_t>(o.track)]);
  return {o.x - p.x, o.y - p.y};
}

double length(Point p) { return std::hypot(p.x, p.y); }

using Path = std::vector<Observation>;  // one track, frame by frame

std::vector<Path> pathsOf(const Tracks& tracks) {
  std::vector<Path> paths(tracks.names.size());
  for (const Observation& o : tracks.observations) {
    paths[static_cast<std::size_t>(o.track)].push_back(o);
  }
  return paths;
}

int countIn(const Tracks& tracks, int frame) {
  const Tracks::Range range = tracks.inFrame(frame);
  return static_cast<int>(range.last - range.first);
}

void expectNoiseOf(const made::KnownShot& shot, double noise) {
  double squares = 0.0;
  double worst = 0.0;
  for (const Observation& o : shot.tracks.observations) {
    const Point d = offset(shot, o);
    squares += d.x * d.x + d.y * d.y;
    worst = std::max({worst, std::fabs(d.x), std::fabs(d.y)});
  }
  const double count = 2.0 * static_cast<double>(shot.tracks.observations.size());
  // The spread of a variance from so many draws is sqrt(2 / count) of it; five times that.
  EXPECT_NEAR(squares / count, noise * noise, 5.0 * std::sqrt(2.0 / count) * noise * noise);
  EXPECT_LE(worst, 6.0 * noise);
}

// A shot whose tracks live for 30 frames each but at its ends, half of them with a fault.
made::KnownShot faulty(made::Fault fault) {
  made::Relay what;
  what.frames = 120;
  what.life = 30;
  what.noise = 0.0;
  what.faults = {fault, 0.5};
  return relay(what, 5);
}

// The distances from a track's place, for tracks of full life that are off somewhere.
std::vector<std::vector<double>> waysOff(const made::KnownShot& shot) {
  std::vector<std::vector<double>> ways;
  for (const Path& path : pathsOf(shot.tracks)) {
    std::vector<double> way;
    for (const Observation& o : path) way.push_back(length(offset(shot, o)));
    if (path.size() == 30 && *std::max_element(way.begin(), way.end()) > kExact)
      ways.push_back(way);
  }
  return ways;
}

}  // namespace

TEST(KnownShot, TruthLeadsFromAnyFrameToAnyOther) {
  const made::KnownShot shot = made::pan({}, 1);
  const Point place = {2000, 300};
  for (int from : {60, 100, 140}) {
    for (int to : {70, 100, 150}) {
      const Point p =
          map(shot.truth(from, to), map(shot.motion[static_cast<std::size_t>(from)], place));
      const Point q = map(shot.motion[static_cast<std::size_t>(to)], place);
      EXPECT_LE(length({p.x - q.x, p.y - q.y}), kExact) << from << " to " << to;
    }
  }
}

TEST(KnownShot, FrameZeroShowsTheSurfaceAsItIs) {
  for (const Homography& h : {made::relay({}, 1).motion[0], made::pan({}, 1).motion[0]}) {
    const Point p = map(h, {123, 456});
    EXPECT_LE(length({p.x - 123, p.y - 456}), kExact);
  }
}

// Without the lens the first two columns are those of a rotation but for one factor: they are at
// right angles and of one length.
TEST(KnownShot, IsSeenByACameraThatTurnsAndMoves) {
  const Homography withoutLens = {{{0.001, 0, -0.5}, {0, 0.001, -0.3}, {0, 0, 1}}};
  for (const made::KnownShot& shot : {made::relay({}, 1), made::pan({}, 1)}) {
    double turned = 0.0;
    for (const Homography& motion : shot.motion) {
      const Homography m = product(withoutLens, motion);
      double across = 0.0, first = 0.0, second = 0.0;
      for (const auto& row : m) {
        across += row[0] * row[1];
        first += row[0] * row[0];
        second += row[1] * row[1];
      }
      EXPECT_LE(std::fabs(across), 1000 * kEps * first);
      EXPECT_NEAR(second, first, 1000 * kEps * first);
      turned = std::max(turned, std::fabs(m[2][0]) / std::sqrt(first));  // the sine of the yaw
    }
    EXPECT_NEAR(turned, 0.06, 0.006);
  }
}

TEST(CornerErrors, AreTheDistancesFromWhereTheCornersBelong) {
  const made::KnownShot shot = made::relay({}, 1);
  const Homography aside = {{{1, 0, 3}, {0, 1, 4}, {0, 0, 1}}};
  for (double error : cornerErrors(shot, shot.truth(20, 70), 20, 70)) EXPECT_LE(error, kExact);
  for (double error : cornerErrors(shot, product(aside, shot.truth(20, 70)), 20, 70))
    EXPECT_NEAR(error, 5.0, kExact);
}

TEST(CornerErrors, AreInfiniteWhereATransformLeadsNowhere) {
  const made::KnownShot shot = made::relay({}, 1);
  for (double error : cornerErrors(shot, Homography{}, 0, 7))
    EXPECT_EQ(error, std::numeric_limits<double>::infinity());
}

TEST(RelayShot, HasTheSameNumberOfTracksInEveryFrameAndEvenBirths) {
  made::Relay what;
  what.atATime = 17;
  const made::KnownShot shot = relay(what, 3);
  std::vector<int> births(static_cast<std::size_t>(what.frames), 0);
  for (const Path& path : pathsOf(shot.tracks)) {
    ASSERT_FALSE(path.empty());
    ++births[static_cast<std::size_t>(path.front().frame)];
    const bool atAnEnd = path.front().frame == 0 || path.back().frame == what.frames - 1;
    if (!atAnEnd) {
      EXPECT_EQ(path.size(), 40u);
    }
    EXPECT_LE(path.size(), 40u);
    EXPECT_EQ(path.back().frame - path.front().frame + 1, static_cast<int>(path.size()));
  }
  for (int f = 0; f < what.frames; ++f) EXPECT_EQ(countIn(shot.tracks, f), 17) << f;
  for (std::size_t f = 1; f + 40 <= births.size(); ++f) {
    int sum = 0;
    for (std::size_t i = f; i < f + 40; ++i) sum += births[i];
    EXPECT_EQ(sum, 17) << f;
  }
}

TEST(RelayShot, SeesItsTracksWhereTheTruthHasThemButForNoise) {
  expectNoiseOf(made::relay({}, 1), 0.5);
}

TEST(PanShot, SeesItsTracksWhereTheTruthHasThemButForNoise) {
  expectNoiseOf(made::pan({}, 1), 0.5);
}

TEST(LateShot, SeesItsTracksWhereTheTruthHasThemButForNoise) {
  expectNoiseOf(made::late({}, 1), 0.5);
}

TEST(PanShot, SeesATrackWheneverItsPlaceIsInThePicture) {
  made::Pan what;
  what.noise = 0.0;
  const made::KnownShot shot = pan(what, 2);
  std::vector<std::vector<bool>> there(shot.motion.size(),
                                       std::vector<bool>(shot.tracks.names.size(), false));
  for (const Observation& o : shot.tracks.observations)
    there[static_cast<std::size_t>(o.frame)][static_cast<std::size_t>(o.track)] = true;
  for (std::size_t f = 0; f < shot.motion.size(); ++f) {
    for (std::size_t t = 0; t < shot.places.size(); ++t) {
      const Point p = map(shot.motion[f], shot.places[t]);
      const bool inPicture = denominator(shot.motion[f], shot.places[t]) > 0.0 && p.x >= 0 &&
                             p.x <= 1000 && p.y >= 0 && p.y <= 600;
      EXPECT_EQ(there[f][t], inPicture) << f << " " << t;
    }
    EXPECT_GE(countIn(shot.tracks, static_cast<int>(f)), 30);
    EXPECT_LE(countIn(shot.tracks, static_cast<int>(f)), 120);
  }
}

TEST(PanShot, EndsSoManyWidthsFurtherOrAtItsBeginning) {
  for (bool thereAndBack : {false, true}) {
    made::Pan what;
    what.thereAndBack = thereAndBack;
    const made::KnownShot shot = pan(what, 2);
    int inBoth = 0;
    for (const Path& path : pathsOf(shot.tracks)) {
      inBoth += !path.empty() && path.front().frame == 0 && path.back().frame == 199;
    }
    const Point middle = map(shot.truth(199, 0), {500, 300});
    if (thereAndBack) {
      EXPECT_GT(2 * inBoth, countIn(shot.tracks, 0));
      EXPECT_NEAR(middle.x, 500, 200);
      EXPECT_NEAR(map(shot.truth(100, 0), {500, 300}).x, 3500, 500);
    } else {
      EXPECT_EQ(inBoth, 0);
      EXPECT_NEAR(middle.x, 3500, 500);
    }
  }
}

TEST(LateShot, HasFewTracksThroughoutAndManyThatComeLater) {
  const made::KnownShot shot = made::late({}, 1);
  const std::vector<Path> paths = pathsOf(shot.tracks);
  ASSERT_EQ(paths.size(), 92u);
  EXPECT_EQ(countIn(shot.tracks, 0), 12);
  for (std::size_t t = 0; t < 12; ++t) EXPECT_EQ(paths[t].size(), 120u);
  for (std::size_t t = 12; t < 92; ++t) {
    EXPECT_GE(paths[t].front().frame, 1);
    EXPECT_GE(paths[t].size(), 30u);
    EXPECT_LE(paths[t].size(), 60u);
  }
  EXPECT_GT(countIn(shot.tracks, 60), 50);
}

TEST(Faults, BefallTheirShareOfTheTracks) {
  made::Relay what;
  what.noise = 0.0;
  what.atATime = 100;
  what.faults = {made::Fault::Outlier, 0.2};
  const made::KnownShot shot = relay(what, 1);
  int off = 0;
  for (const Observation& o : shot.tracks.observations) off += length(offset(shot, o)) > kExact;
  EXPECT_NEAR(off / 20000.0, 0.2, 0.05);
}

TEST(LateShot, HasFaultsInNoTrackFromTheStart) {
  made::Late what;
  what.noise = 0.0;
  what.faults = {made::Fault::Outlier, 1.0};
  const made::KnownShot shot = late(what, 1);
  for (const Observation& o : shot.tracks.observations)
    EXPECT_EQ(length(offset(shot, o)) > kExact, o.track >= 12) << o.track << " " << o.frame;
}

TEST(Faults, OutliersAreAnywhereInEveryFrame) {
  const auto ways = waysOff(faulty(made::Fault::Outlier));
  ASSERT_GT(ways.size(), 10u);
  for (const std::vector<double>& way : ways) {
    for (double distance : way) EXPECT_GT(distance, kExact);
    EXPECT_GT(*std::max_element(way.begin(), way.end()), 100.0);
  }
}

TEST(Faults, ASlideFromBirthIsOverAfterAThirdOfTheLife) {
  const auto ways = waysOff(faulty(made::Fault::SlideFromBirth));
  ASSERT_GT(ways.size(), 10u);
  for (const std::vector<double>& way : ways) {
    for (std::size_t i = 0; i < 30; ++i)
      EXPECT_NEAR(way[i], i < 10 ? static_cast<double>(i) : 0.0, kExact);
  }
}

TEST(Faults, ASlideGoesOnForAThirdOfTheLifeAndEndsAtThePlaceOrStays) {
  for (const bool stays : {false, true}) {
    const auto ways = waysOff(faulty(stays ? made::Fault::SlideAndStay : made::Fault::Slide));
    ASSERT_GT(ways.size(), 10u);
    std::vector<std::size_t> begins;
    for (const std::vector<double>& way : ways) {
      std::size_t begin = 0;  // the last frame on the place before it slides
      while (way[begin + 1] <= kExact) ++begin;
      begins.push_back(begin);
      for (std::size_t i = begin; i < 30; ++i) {
        const double after = stays ? 9.0 : 0.0;
        EXPECT_NEAR(way[i], i < begin + 10 ? static_cast<double>(i - begin) : after, kExact);
      }
    }
    EXPECT_LT(*std::min_element(begins.begin(), begins.end()), 5u);
    EXPECT_GT(*std::max_element(begins.begin(), begins.end()), 15u);
  }
}

TEST(Faults, AJumpEndsAtAnotherPlaceOfTheSurface) {
  const made::KnownShot shot = faulty(made::Fault::Jump);
  int jumped = 0;
  for (const Path& path : pathsOf(shot.tracks)) {
    const Observation& last = path.back();
    if (length(offset(shot, last)) <= kExact) continue;
    ++jumped;
    const Point landing = map(shot.truth(last.frame, 0), {last.x, last.y});
    bool landed = false;
    for (const Observation& o : path) {
      landed = landed || length(offset(shot, o)) > kExact;
      if (!landed) continue;
      const Point p = map(shot.truth(o.frame, 0), {o.x, o.y});
      EXPECT_LE(length({p.x - landing.x, p.y - landing.y}), kExact);
    }
    EXPECT_LE(length(offset(shot, path.front())), kExact);
  }
  EXPECT_GT(jumped, 10);
}

TEST(Renamed, GivesATrackNewNamesThatOverlap) {
  const made::KnownShot after = renamed(made::late({}, 1), 40, 10);
  std::map<std::string, Path> lives;
  for (const Observation& o : after.tracks.observations)
    lives[after.tracks.names[static_cast<std::size_t>(o.track)]].push_back(o);
  const int expected[3][2] = {{0, 49}, {40, 89}, {80, 119}};
  for (int n = 0; n < 3; ++n) {
    const Path& path = lives["t0/" + std::to_string(n)];
    ASSERT_FALSE(path.empty());
    EXPECT_EQ(path.front().frame, expected[n][0]);
    EXPECT_EQ(path.back().frame, expected[n][1]);
    EXPECT_EQ(static_cast<int>(path.size()), expected[n][1] - expected[n][0] + 1);
  }
  expectNoiseOf(after, 0.5);
  EXPECT_TRUE(std::is_sorted(after.tracks.observations.begin(), after.tracks.observations.end(),
                             [](const Observation& a, const Observation& b) {
                               return a.frame != b.frame ? a.frame < b.frame : a.track < b.track;
                             }));
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/compare/track_difference.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <utility>

#include "tests/shot/compare/disturbed_tracks.h"

using namespace cornerpin;
using made::changed;
using made::wanderers;
using made::without;

namespace {

Picture pictureOf(std::optional<YAxis> y, std::optional<double> centre, bool sized) {
  Picture picture;
  picture.y = y;
  picture.pixelCentre = centre;
  if (sized) {
    picture.width = 1920;
    picture.height = 1080;
  }
  return picture;
}

// What is done to a file: x' = xTimes x + xPlus, and so on.
struct Disturbance {
  double xTimes = 1.0;
  double xPlus = 0.0;
  double yTimes = 1.0;
  double yPlus = 0.0;
  int frames = 0;
  std::vector<int> names;  // which track each is called as; empty: as they are
};

Tracks disturbed(const Tracks& tracks, const Disturbance& d) {
  return changed(tracks, [&](Observation& o) {
    o.x = d.xTimes * o.x + d.xPlus;
    o.y = d.yTimes * o.y + d.yPlus;
    o.frame += d.frames;
    if (!d.names.empty()) o.track = d.names[static_cast<std::size_t>(o.track)];
  });
}

// One of the simple things at random, put into what has been done so far; which one it is.
int addOne(Disturbance& d, int tracks, made::Random& random, int but = -1) {
  int which = but;
  while (which == but) which = static_cast<int>(random.real(0.0, 6.0));
  const double a = random.real(0.0, 1.0);
  const double b = random.real(0.0, 1.0);
  switch (which) {
    case 0:
      d.yTimes *= -1.0;
      d.yPlus = (a < 0.5 ? 1080.0 : 1079.0) - d.yPlus;
      break;
    case 1:
      d.xPlus += a < 0.5 ? 0.5 : -0.5;
      d.yPlus += b < 0.5 ? 0.5 : -0.5;
      break;
    case 2:
      d.xPlus += std::round(100.0 * a) + 1.0;
      d.yPlus -= std::round(100.0 * b) + 1.0;
      break;
    case 3: {
      const double scale = a < 0.5 ? 0.5 : 2.0;
      d.xTimes *= scale;
      d.xPlus *= scale;
      d.yTimes *= scale;
      d.yPlus *= scale;
      break;
    }
    case 4:
      d.frames = static_cast<int>(a * 6.0) - 3;
      if (d.frames == 0) d.frames = 1000;
      break;
    default:
      for (int t = 0; t < tracks; ++t)
        d.names.push_back((t + 1 + static_cast<int>(a * 3.0)) % tracks);
  }
  return which;
}

void expectExplained(const TrackDifference& found, const Disturbance& d, const std::string& what) {
  ASSERT_TRUE(found.explanation) << what;
  const Explanation& e = *found.explanation;
  EXPECT_NEAR(e.x.times, d.xTimes, 1e-12) << what;
  EXPECT_NEAR(e.x.plus, d.xPlus, 1e-9) << what;
  EXPECT_NEAR(e.y.times, d.yTimes, 1e-12) << what;
  EXPECT_NEAR(e.y.plus, d.yPlus, 1e-9) << what;
  EXPECT_EQ(e.frames, d.frames) << what;
  EXPECT_EQ(e.renamed.size(), d.names.size()) << what;
  EXPECT_FALSE(found.isNear) << what;
}

double largestOff(const TrackDifference& d) { return d.rest.worst.distance(); }

}  // namespace

TEST(TrackDifference, FindsNothingInTheSameFile) {
  const Tracks tracks = wanderers(8, 30, 3);
  const TrackDifference d = differenceOf(tracks, tracks);
  EXPECT_FALSE(d.any());
  EXPECT_FALSE(d.explanation);
  EXPECT_EQ(d.plain.positions, 240U);
  EXPECT_EQ(largestOff(d), 0.0);
}

TEST(TrackDifference, FindsWhatWasDoneOneThingOrTwoAtRandom) {
  made::Random random(11);
  for (std::uint32_t seed = 0; seed < 300; ++seed) {
    const int count = seed % 3 == 0 ? 4 : 9;
    const Tracks tracks = wanderers(count, 40, seed);
    Disturbance d;
    const int one = addOne(d, count, random);
    const int other = seed % 2 == 1 ? addOne(d, count, random, one) : one;
    const TrackDifference found = differenceOf(tracks, disturbed(tracks, d));
    const std::string what = "seed " + std::to_string(seed) + ", " + std::to_string(one) + " and " +
                             std::to_string(other);
    expectExplained(found, d, what);
    EXPECT_EQ(found.rest.apart, 0U) << what;
    EXPECT_TRUE(found.rest.isWhole()) << what;
    EXPECT_LE(largestOff(found), 2e-9) << what;
  }
}

TEST(TrackDifference, FindsItBehindBadPositionsAndTellsThese) {
  made::Random random(5);
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    const Tracks tracks = wanderers(7, 30, seed);
    Disturbance d;
    addOne(d, 7, random);
    std::size_t bad = 0;
    const double share = seed % 2 == 0 ? 0.01 : 0.1;
    const Tracks other = changed(disturbed(tracks, d), [&](Observation& o) {
      const bool isBad = random.chance(share);
      const double off = random.real(5.0, 300.0);
      if (!isBad) return;
      o.x += off;
      ++bad;
    });
    const TrackDifference found = differenceOf(tracks, other);
    expectExplained(found, d, "seed " + std::to_string(seed));
    EXPECT_EQ(found.rest.apart, bad) << seed;
    if (bad == 0) continue;
    EXPECT_GE(largestOff(found), 5.0 - 1e-9);
    EXPECT_LE(largestOff(found), 300.0 + 1e-9);
  }
}

TEST(TrackDifference, ClaimsNothingOfUnrelatedFiles) {
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    const int count = 4 + static_cast<int>(seed % 5);
    const Tracks tracks = wanderers(count, 20, seed);
    const TrackDifference d = differenceOf(tracks, wanderers(count, 20, 1000 + seed));
    EXPECT_FALSE(d.explanation) << seed;
    EXPECT_TRUE(d.any()) << seed;
    EXPECT_EQ(d.plain.apart, d.plain.positions) << seed;
  }
}

TEST(TrackDifference, ClaimsNothingThatHoldsForLessThanThreeQuarters) {
  const Tracks tracks = wanderers(10, 30, 21);
  const auto flipUpTo = [&](int frame) {
    return changed(tracks, [&](Observation& o) {
      o.y = o.frame <= frame ? 1080.0 - o.y : 1000.0 + 3.7 * o.y;
    });
  };
  EXPECT_FALSE(differenceOf(tracks, flipUpTo(22)).explanation);
  const TrackDifference d = differenceOf(tracks, flipUpTo(23));
  ASSERT_TRUE(d.explanation);
  EXPECT_EQ(d.explanation->y.plus, 1080.0);
  EXPECT_EQ(d.rest.apart, 70U);
}

TEST(TrackDifference, TellsFlipsApartThatAreNearlyTheSame) {
  const Tracks tracks = wanderers(5, 30, 7);
  for (const double about : {1079.0, 1079.5, 1080.0, 1080.001, 1080.5, 0.0, -1.0}) {
    const TrackDifference d =
        differenceOf(tracks, changed(tracks, [&](Observation& o) { o.y = about - o.y; }));
    ASSERT_TRUE(d.explanation) << about;
    EXPECT_NEAR(d.explanation->y.plus, about, 1e-9) << about;
    EXPECT_EQ(d.explanation->y.times, -1.0) << about;
    EXPECT_EQ(d.rest.apart, 0U) << about;
  }
}

// One that stands still, flipped, is one that was moved: 200 to 880 is by 680.
TEST(TrackDifference, SaysTheSimplerThingOfTracksThatStandStill) {
  const Tracks still = changed(wanderers(1, 10, 1), [](Observation& o) {
    o.x = 300.0;
    o.y = 200.0;
  });
  const TrackDifference d =
      differenceOf(still, changed(still, [](Observation& o) { o.y = 1080.0 - o.y; }));
  ASSERT_TRUE(d.explanation);
  EXPECT_EQ(d.explanation->y.times, 1.0);
  EXPECT_EQ(d.explanation->y.plus, 680.0);
  const Tracks two = changed(wanderers(2, 10, 1), [](Observation& o) {
    o.x = 300.0;
    o.y = 200.0 + 100.0 * o.track;
  });
  const TrackDifference flipped =
      differenceOf(two, changed(two, [](Observation& o) { o.y = 1080.0 - o.y; }));
  ASSERT_TRUE(flipped.explanation);
  EXPECT_EQ(flipped.explanation->y.times, -1.0);
}

// Two rectangles that stand still: all middles share their x with another one.
TEST(TrackDifference, FindsTheOrderOfCornersThatStandStill) {
  constexpr std::array<Point, 4> kCorners = {{{10, 20}, {500, 20}, {500, 300}, {10, 300}}};
  const auto place = [&](Observation& o) {
    const Point p = kCorners[static_cast<std::size_t>(o.track)];
    o.x = p.x;
    o.y = p.y;
  };
  const Tracks corners = changed(wanderers(4, 5, 1), place);
  const Tracks turned = changed(corners, [](Observation& o) { o.track = (o.track + 1) % 4; });
  const TrackDifference d = differenceOf(corners, turned);
  ASSERT_TRUE(d.explanation);
  ASSERT_EQ(d.explanation->renamed.size(), 4U);
  EXPECT_EQ(d.explanation->renamed[0],
            (std::pair<std::string, std::string>("track_00", "track_01")));
  EXPECT_EQ(d.explanation->parts(), 1);
  EXPECT_EQ(d.rest.apart, 0U);
}

TEST(TrackDifference, FindsNamesAgainWhereOneTrackIsMissing) {
  const Tracks tracks = wanderers(6, 20, 9);
  Tracks other = without(tracks, [](const Observation& o) { return o.track == 5; });
  other.names = {"a", "b", "c", "d", "e"};
  const TrackDifference d = differenceOf(tracks, other);
  ASSERT_TRUE(d.explanation);
  EXPECT_EQ(d.explanation->renamed.size(), 5U);
  EXPECT_EQ(d.rest.tracks.first, std::vector<std::string>{"track_05"});
  EXPECT_EQ(d.rest.apart, 0U);
}

TEST(TrackDifference, FindsFramesOfAPartThatIsCutOutAtBothEnds) {
  const Tracks tracks = wanderers(5, 100, 13);
  const Tracks part =
      changed(without(tracks, [](const Observation& o) { return o.frame < 31 || o.frame > 60; }),
              [](Observation& o) { o.frame += 977; });
  const TrackDifference d = differenceOf(tracks, part);
  ASSERT_TRUE(d.explanation);
  EXPECT_EQ(d.explanation->frames, 977);
  EXPECT_TRUE(d.explanation->x.isNone());
  EXPECT_EQ(d.rest.frames.first.size(), 70U);
  EXPECT_TRUE(d.rest.frames.second.empty());
}

TEST(TrackDifference, IsNotMisledByPositionsThatOnlyOneHas) {
  const Tracks tracks = wanderers(5, 30, 13);
  const Tracks fewer = without(tracks, [](const Observation& o) { return o.frame < 5; });
  const TrackDifference d = differenceOf(tracks, fewer);
  EXPECT_FALSE(d.explanation);
  EXPECT_EQ(d.plain.apart, 0U);
  EXPECT_EQ(d.plain.frames.first, (std::vector<int>{1, 2, 3, 4}));
  EXPECT_TRUE(d.any());
}

TEST(TrackDifference, TakesPositionsWithoutAWeightForAbsent) {
  const Tracks tracks = wanderers(5, 30, 13);
  const Tracks off = changed(tracks, [](Observation& o) {
    if (o.track == 2 && o.frame == 8) o.weight = 0.0f;
  });
  const Tracks gone =
      without(tracks, [](const Observation& o) { return o.track == 2 && o.frame == 8; });
  EXPECT_TRUE(differenceOf(off, gone).plain.isWhole());
  EXPECT_EQ(differenceOf(tracks, gone).plain.onlyInFirst, 1U);
  EXPECT_EQ(differenceOf(gone, tracks).plain.onlyInSecond, 1U);
}

// From y down with centres at 0 to y up with centres at 0.5: y' = 1079.5 - y.
TEST(TrackDifference, ConvertsWhatBothTell) {
  Tracks down = wanderers(5, 30, 17);
  down.picture = pictureOf(YAxis::Down, 0.0, true);
  down.picture.firstFrame = 1;
  Tracks up = changed(down, [](Observation& o) {
    o.x += 0.5;
    o.y = 1080.0 - (o.y + 0.5);
    o.frame += 100;
  });
  up.picture = pictureOf(YAxis::Up, 0.5, false);
  up.picture.firstFrame = 101;
  const TrackDifference d = differenceOf(down, up);
  EXPECT_FALSE(d.any());
  EXPECT_EQ(d.picture.pixelCentre, 0.0);
  EXPECT_EQ(d.plain.positions, 150U);
  EXPECT_LE(largestOff(d), 1e-9);
  up.picture.pixelCentre = 0.0;
  const TrackDifference half = differenceOf(down, up);
  ASSERT_TRUE(half.explanation);
  EXPECT_EQ(half.explanation->x.plus, 0.5);
  EXPECT_EQ(half.explanation->y.plus, -0.5);  // 1079 - (1079.5 - y)
  up.picture = pictureOf(std::nullopt, std::nullopt, false);
  const TrackDifference unknown = differenceOf(down, up);
  ASSERT_TRUE(unknown.explanation);
  EXPECT_EQ(unknown.explanation->y.plus, 1079.5);
  EXPECT_EQ(unknown.explanation->frames, 100);
}

TEST(TrackDifference, ComparesInPixelsWhereTheSizeIsKnown) {
  Tracks pixels = wanderers(5, 30, 19, 6);
  pixels.picture = pictureOf(YAxis::Up, 0.5, true);
  Tracks shares = changed(pixels, [](Observation& o) {
    o.x /= 1920.0;
    o.y /= 1080.0;
    if (o.track == 3 && o.frame == 4) o.x += 0.001;
  });
  shares.picture = pictureOf(YAxis::Up, 0.5, false);
  shares.picture.scale = Scale::Picture;
  for (const TrackDifference& d : {differenceOf(pixels, shares), differenceOf(shares, pixels)}) {
    EXPECT_EQ(d.plain.apart, 1U);
    EXPECT_NEAR(d.plain.worst.distance(), 1.92, 1e-9);
    EXPECT_EQ(d.picture.scale, Scale::Pixels);
  }
  pixels.picture = pictureOf(YAxis::Up, 0.5, false);
  const TrackDifference unsized = differenceOf(shares, pixels);
  ASSERT_TRUE(unsized.explanation);
  EXPECT_NEAR(unsized.explanation->x.times, 1920.0, 1e-9);
  EXPECT_NEAR(unsized.explanation->y.times, 1080.0, 1e-9);
  EXPECT_EQ(unsized.rest.apart, 1U);
}

TEST(TrackDifference, AllowsHalfOfTheLastDigitOfEach) {
  const Tracks exact = wanderers(6, 40, 23, 9);
  const auto withDigits = [&](double power) {
    return changed(exact, [&](Observation& o) {
      o.x = std::round(o.x * power) / power;
      o.y = std::round(o.y * power) / power;
    });
  };
  const Tracks coarse = withDigits(1e3);
  EXPECT_FALSE(differenceOf(exact, coarse).any());
  const Tracks lastDigit = changed(coarse, [](Observation& o) {
    if (o.track == 1 && o.frame == 3) o.x = std::round(o.x * 1e3 + 1.0) / 1e3;
  });
  EXPECT_EQ(differenceOf(coarse, lastDigit).plain.apart, 1U);
  const Tracks whole = withDigits(1.0);
  EXPECT_GT(differenceOf(exact, whole).plain.apart, 200U);
  const Tracks hundredth = changed(whole, [](Observation& o) {
    if (o.track == 1 && o.frame == 3) o.x += 0.01;
  });
  EXPECT_EQ(differenceOf(whole, hundredth).plain.apart, 1U);
}

TEST(TrackDifference, ExplainsWhatComesNearOnly) {
  const Tracks tracks = wanderers(6, 60, 29);
  made::Random random(4);
  const Tracks noisy = changed(tracks, [&](Observation& o) {
    const double x = random.real(-0.05, 0.05);
    const double y = random.real(-0.05, 0.05);
    o.x += x;
    o.y = 1080.0 - o.y + y;
  });
  const TrackDifference d = differenceOf(tracks, noisy);
  ASSERT_TRUE(d.explanation);
  EXPECT_TRUE(d.isNear);
  EXPECT_EQ(d.explanation->y.times, -1.0);
  EXPECT_NEAR(d.explanation->y.plus, 1080.0, 0.02);
  EXPECT_GT(d.rest.apart, 300U);
  EXPECT_LE(largestOff(d), 0.08);
  const Tracks jitter = changed(tracks, [&](Observation& o) { o.x += random.real(-0.05, 0.05); });
  EXPECT_FALSE(differenceOf(tracks, jitter).explanation);
}

// Moved by 0.1 on the whole, which is no twentieth of what is left.
TEST(TrackDifference, ClaimsNothingThatBringsThemLittleNearer) {
  const Tracks tracks = wanderers(6, 60, 29);
  made::Random random(4);
  const Tracks off = changed(tracks, [&](Observation& o) { o.x += random.real(0.05, 0.15); });
  EXPECT_FALSE(differenceOf(tracks, off).explanation);
}

// Two names are swapped in 12 of 20 frames: to swap them leaves 16 positions of 24.
TEST(TrackDifference, ClaimsNothingThatLeavesMoreThanHalf) {
  const Tracks tracks = wanderers(10, 20, 37);
  const auto swappedUpTo = [&](int frame) {
    return changed(tracks, [&](Observation& o) {
      if (o.frame <= frame && o.track < 2) o.track = 1 - o.track;
    });
  };
  const TrackDifference d = differenceOf(tracks, swappedUpTo(12));
  EXPECT_FALSE(d.explanation);
  EXPECT_EQ(d.plain.apart, 24U);
  const TrackDifference mostly = differenceOf(tracks, swappedUpTo(14));
  ASSERT_TRUE(mostly.explanation);
  EXPECT_EQ(mostly.rest.apart, 12U);
}

TEST(TrackDifference, TakesFilesWithoutPositions) {
  const Tracks tracks = wanderers(3, 4, 1);
  Tracks none;
  none.names = {"a"};
  EXPECT_TRUE(differenceOf(tracks, none).any());
  EXPECT_TRUE(differenceOf(none, tracks).any());
  EXPECT_FALSE(differenceOf(none, none).any());
}

TEST(TrackDifference, TakesFramesAtTheEndsOfTheirRange) {
  const Tracks tracks = wanderers(3, 4, 1);
  const Tracks last = changed(tracks, [](Observation& o) { o.frame += 2147483647 - 4; });
  const Tracks first = changed(tracks, [](Observation& o) { o.frame = o.frame - 2 - 2147483647; });
  EXPECT_TRUE(differenceOf(first, last).any());
  EXPECT_TRUE(differenceOf(last, first).any());
  ASSERT_TRUE(differenceOf(tracks, last).explanation);
  EXPECT_EQ(differenceOf(tracks, last).explanation->frames, 2147483647 - 4);
}

// A position more would be no news for a median, and a second one for nobody.
TEST(TrackDifference, FindsOneInMany) {
  const Tracks tracks = wanderers(2000, 100, 31);
  const Tracks other = changed(tracks, [](Observation& o) {
    o.y = 1080.0 - o.y;
    if (o.track == 1500 && o.frame == 77) o.y += 3.0;
  });
  const TrackDifference d = differenceOf(tracks, other);
  ASSERT_TRUE(d.explanation);
  EXPECT_EQ(d.rest.positions, 200000U);
  EXPECT_EQ(d.rest.apart, 1U);
  EXPECT_EQ(d.rest.worst.frame, 77);
  EXPECT_EQ(d.rest.worst.track, "track_1500");
  EXPECT_NEAR(d.rest.worst.y, 3.0, 1e-9);
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_difference_text.h"

#include <gtest/gtest.h>

#include "tests/shot/compare/disturbed_tracks.h"

using namespace cornerpin;
using made::changed;
using made::wanderers;
using made::without;

namespace {

const Tracks& shot() {
  static const Tracks tracks = wanderers(6, 20, 1);
  return tracks;
}

std::string said(const Tracks& first, const Tracks& second) {
  return explanationText(differenceOf(first, second));
}

std::string told(const Tracks& first, const Tracks& second,
                 std::optional<double> most = std::nullopt) {
  return differenceText(differenceOf(first, second), {"a.csv", "b.nk"}, most);
}

std::string saidOf(const std::function<void(Observation&)>& change) {
  return said(shot(), changed(shot(), change));
}

}  // namespace

TEST(TrackDifferenceText, NamesAFlip) {
  EXPECT_EQ(saidOf([](Observation& o) { o.y = 1080.0 - o.y; }), "y flipped about 1080");
  EXPECT_EQ(saidOf([](Observation& o) { o.y = 1079.0 - o.y; }), "y flipped about 1079");
  EXPECT_EQ(saidOf([](Observation& o) { o.x = 1920.0 - o.x; }), "x flipped about 1920");
}

TEST(TrackDifferenceText, NamesHalfAPixel) {
  EXPECT_EQ(saidOf([](Observation& o) { o.x += 0.5; }), "half a pixel (+0.5 in x)");
  EXPECT_EQ(saidOf([](Observation& o) { o.y -= 0.5; }), "half a pixel (-0.5 in y)");
  EXPECT_EQ(saidOf([](Observation& o) {
              o.x -= 0.5;
              o.y -= 0.5;
            }),
            "half a pixel (-0.5 in x and y)");
  EXPECT_EQ(saidOf([](Observation& o) {
              o.x -= 0.5;
              o.y += 0.5;
            }),
            "half a pixel (-0.5 in x, +0.5 in y)");
}

// y up from the edge, 0.5 in the first pixel's middle, against y down from the first pixel's
// middle: 1080 - y is from the edge above, and half a pixel less from the first middle.
TEST(TrackDifferenceText, NamesAFlipAndHalfAPixel) {
  EXPECT_EQ(saidOf([](Observation& o) {
              o.x -= 0.5;
              o.y = (1080.0 - o.y) - 0.5;
            }),
            "y flipped about 1080, half a pixel");
  EXPECT_EQ(saidOf([](Observation& o) {
              o.x += 0.5;
              o.y = 1080.0 - (o.y + 0.5);
            }),
            "y flipped about 1080, half a pixel");
}

TEST(TrackDifferenceText, NamesMovesScalesFramesAndNames) {
  EXPECT_EQ(saidOf([](Observation& o) { o.x += 1.0; }), "moved by +1 px in x");
  EXPECT_EQ(saidOf([](Observation& o) {
              o.x -= 3.25;
              o.y += 2.0;
            }),
            "moved by -3.25 px in x and +2 px in y");
  EXPECT_EQ(saidOf([](Observation& o) {
              o.x *= 0.5;
              o.y *= 0.5;
            }),
            "scaled by 0.5");
  EXPECT_EQ(saidOf([](Observation& o) {
              o.x *= 0.5;
              o.y *= 2.0;
            }),
            "x scaled by 0.5, y by 2");
  EXPECT_EQ(saidOf([](Observation& o) { o.y *= 1.5; }), "y scaled by 1.5");
  EXPECT_EQ(saidOf([](Observation& o) { o.frame += 1; }), "frame +1");
  EXPECT_EQ(saidOf([](Observation& o) { o.frame -= 1000; }), "frame -1000");
  EXPECT_EQ(saidOf([](Observation& o) {
              if (o.track < 2) o.track = 1 - o.track;
            }),
            "2 names swapped");
  Tracks renamed = shot();
  for (std::string& name : renamed.names) name.insert(0, "Tracker");
  EXPECT_EQ(said(shot(), renamed), "6 tracks renamed");
}

TEST(TrackDifferenceText, NamesCornerOrder) {
  const Tracks corners = wanderers(4, 20, 2);
  EXPECT_EQ(said(corners, changed(corners, [](Observation& o) { o.track = (o.track + 1) % 4; })),
            "corner order");
  EXPECT_EQ(said(corners, changed(corners,
                                  [](Observation& o) {
                                    o.track = 3 - o.track;
                                    o.y = 1080.0 - o.y;
                                  })),
            "y flipped about 1080, corner order");
}

TEST(TrackDifferenceText, TellsTheWhole) {
  const Tracks bad = changed(shot(), [](Observation& o) {
    o.y = 1080.0 - o.y;
    if (o.track == 2 && o.frame == 7) o.x += 12.0;
  });
  Tracks named = shot();
  double worst = 0.0;
  std::string where;
  for (const Observation& o : named.observations) {
    const double off = std::fabs(1080.0 - 2.0 * o.y);
    if (off <= worst) continue;
    worst = off;
    where = "track \"" + named.names[static_cast<std::size_t>(o.track)] + "\" in frame " +
            std::to_string(o.frame);
  }
  const std::string text = told(shot(), bad);
  EXPECT_NE(text.find("120 of 120 positions differ, at most by"), std::string::npos) << text;
  EXPECT_NE(text.find("in y, " + where), std::string::npos) << text << where;
  EXPECT_NE(text.find("y' = 1080 - y  (b.nk)"), std::string::npos) << text;
  EXPECT_NE(text.find("a picture 1080 high where pixels' centres are at 0.5, 1081 where at 0"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("1 of 120 positions differs, at most by 12 px in x, track \"track_02\" in "
                      "frame 7\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n\nDifferent: y flipped about 1080, but for 1 of 120 positions.\n"),
            std::string::npos)
      << text;
}

TEST(TrackDifferenceText, TellsWhatOnlyOneHas) {
  const Tracks less = without(shot(), [](const Observation& o) {
    return o.track == 5 || o.frame > 18 || (o.track == 1 && o.frame == 4);
  });
  const std::string text = told(shot(), less);
  EXPECT_NE(text.find("1 only in a.csv: track_05\n"), std::string::npos) << text;
  EXPECT_NE(text.find("2 only in a.csv: 19-20\n"), std::string::npos) << text;
  EXPECT_NE(text.find("1 position only in a.csv, in tracks and frames of both\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n\nDifferent: positions are in one only.\n"), std::string::npos) << text;
  EXPECT_TRUE(isDifferent(differenceOf(shot(), less), 5.0));
}

TEST(TrackDifferenceText, TellsWeightsWhereBothHaveThem) {
  const Tracks half = changed(shot(), [](Observation& o) { o.weight = 0.5f; });
  const Tracks third = changed(half, [](Observation& o) {
    if (o.track == 3 && o.frame == 9) o.weight = 0.25f;
  });
  const std::string text = told(half, third);
  EXPECT_NE(text.find("differ in 1 position, first track \"track_03\" in frame 9\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n\nDifferent: weights.\n"), std::string::npos) << text;
  EXPECT_FALSE(isDifferent(differenceOf(half, third), 0.0));
  EXPECT_EQ(told(shot(), half), "Same: nothing differs.\n");
}

TEST(TrackDifferenceText, CountsWhatIsBeyondTheLimit) {
  const Tracks off = changed(shot(), [](Observation& o) {
    if (o.track == 3 && o.frame == 9) o.x += 0.25;
  });
  EXPECT_TRUE(isDifferent(differenceOf(shot(), off), std::nullopt));
  EXPECT_TRUE(isDifferent(differenceOf(shot(), off), 0.24));
  EXPECT_FALSE(isDifferent(differenceOf(shot(), off), 0.26));
  EXPECT_NE(told(shot(), off, 0.26).find("\n\nSame: no coordinate differs by more than 0.26 px.\n"),
            std::string::npos);
  EXPECT_NE(told(shot(), off)
                .find("\n\nDifferent: 1 of 120 positions differs, at most by 0.25 px "
                      "in x, track \"track_03\" in frame 9.\n"),
            std::string::npos)
      << told(shot(), off);
  EXPECT_EQ(told(shot(), shot()), "Same: nothing differs.\n");
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/keyframes_section.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace cornerpin;
using Kind = KeyframesSection::Kind;

TEST(KeyframesSection, TellsCornersByMatchAndDisplayNames) {
  const std::map<std::string, Corner> headings = {
      {"Effects\tADBE Corner Pin #1\tADBE Corner Pin-0001", kTopLeft},
      {"Effects\tADBE Corner Pin #1\tADBE Corner Pin-0002", kTopRight},
      {"Effects\tADBE Corner Pin #1\tADBE Corner Pin-0003", kBottomLeft},
      {"Effects\tADBE Corner Pin #1\tADBE Corner Pin-0004", kBottomRight},
      {"Effets\tPin de coins #1\tADBE Corner Pin-0003\t\t", kBottomLeft},
      {"Effects\tCC Power Pin #1\tCC Power Pin-0002", kTopLeft},
      {"Effects\tCC Power Pin #1\tCC Power Pin-0003", kTopRight},
      {"Effects\tCC Power Pin #1\tCC Power Pin-0004", kBottomLeft},
      {"Effects\tCC Power Pin #1\tCC Power Pin-0005", kBottomRight},
      {"Effects\tCorner Pin #1\tUpper Left #2", kTopLeft},
      {"Effects\tCorner Pin #1\tUpper Right #3 ", kTopRight},
      {"Effects\tCorner Pin #1\tLower Left #4\t", kBottomLeft},
      {"Effects\tCorner Pin #1\tLower Right #5", kBottomRight},
      {"Effects\tCorner Pin\tLower Right", kBottomRight},
      {"Effects\tCC Power Pin #2\tTop Left #2", kTopLeft},
      {"Effects\tCC Power Pin #2\tTop Right #3", kTopRight},
      {"Effects\tCC Power Pin #2\tBottom Left #4", kBottomLeft},
      {"Effects\tCC Power Pin #2\tBottom Right #5", kBottomRight},
  };
  for (const auto& [heading, corner] : headings) {
    const KeyframesSection section = sectionOf(heading);
    EXPECT_EQ(section.kind, Kind::Corner) << heading;
    EXPECT_EQ(section.corner, corner) << heading;
  }
  EXPECT_EQ(sectionOf("Effects\tCorner Pin #2\tUpper Left #2").owner, "Corner Pin #2");
}

TEST(KeyframesSection, TellsPointsWithTheirTracker) {
  for (const auto& [heading, kind] : std::map<std::string, Kind>{
           {"Motion Trackers\tTracker #1\tsign tl\tFeature Center", Kind::FeatureCenter},
           {"Motion Trackers\tTracker #1\tsign tl\tAttach Point\t", Kind::AttachPoint},
           {"ADBE MTrackers\tTracker #1\tsign tl\tADBE MTracker Pt Feature Center",
            Kind::FeatureCenter},
           {"ADBE MTrackers\tTracker #1\tsign tl\tADBE MTracker Pt Attach Pt",
            Kind::AttachPoint}}) {
    const KeyframesSection section = sectionOf(heading);
    EXPECT_EQ(section.kind, kind) << heading;
    EXPECT_EQ(section.owner, "Tracker #1");
    EXPECT_EQ(section.point, "sign tl");
  }
}

TEST(KeyframesSection, TellsWhereTheLayerIs) {
  for (const auto& [heading, kind] :
       std::map<std::string, Kind>{{"Position", Kind::Position},
                                   {"Transform\tPosition", Kind::Position},
                                   {"Transform\tADBE Position", Kind::Position},
                                   {"Transform\tAnchor Point\t", Kind::Anchor},
                                   {"Anchor Point", Kind::Anchor},
                                   {"Transform\tScale", Kind::Scale},
                                   {"Transform\tRotation", Kind::Rotation},
                                   {"Transform\tADBE Rotate Z", Kind::Rotation},
                                   {"Layer", Kind::Layer},
                                   {"Layer\tsign", Kind::Layer},
                                   {"End of Keyframe Data\t", Kind::End}}) {
    EXPECT_EQ(sectionOf(heading).kind, kind) << heading;
  }
}

TEST(KeyframesSection, KnowsNothingElse) {
  for (const char* heading :
       {"", "\t", "Transform\tOpacity", "Effects\tCC Power Pin #1\tCC Power Pin-0001",
        "Effects\tCC Power Pin #1\tCC Power Pin-0006",
        "Effects\tADBE Corner Pin #1\tADBE Corner Pin-0005",
        "Effects\tFour Colors #1\tUpper Left #2", "Effects\tMotion Tile #1\tPosition #2",
        "Effects\tCorner Pin #1\tPosition", "Motion Trackers\tTracker #1\tFeature Center",
        "Feature Center", "Motion Trackers\tTracker #1\tTrack Point #1\tConfidence",
        "Motion Trackers\tTracker #1\tTrack Point #1\tAttach Point Offset"}) {
    EXPECT_EQ(sectionOf(heading).kind, Kind::Other) << heading;
  }
}

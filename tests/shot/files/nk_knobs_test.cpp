// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/nk_knobs.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(NkKnobs, NodesHaveVersionsBehindTheirNames) {
  for (const char* word : {"Tracker", "Tracker3", "Tracker4", "Tracker4_1"})
    EXPECT_EQ(classOf(word), NkClass::Tracker) << word;
  EXPECT_EQ(classOf("PlanarTracker"), NkClass::Planar);
  EXPECT_EQ(classOf("PlanarTracker1_0"), NkClass::Planar);
  EXPECT_EQ(classOf("CornerPin2D"), NkClass::Pin);
  EXPECT_EQ(classOf("Root"), NkClass::Root);
  for (const char* word : {"Transform", "TransformMasked", "Reconcile3D"})
    EXPECT_EQ(classOf(word), NkClass::Skipped) << word;
  for (const char* word : {"", "Track", "TrackerX", "CameraTracker", "Roots", "CornerPin", "Blur"})
    EXPECT_EQ(classOf(word), NkClass::Other) << word;
}

TEST(NkKnobs, TracksAndCornersHaveDigits) {
  EXPECT_EQ(numberedPlace("to", "to1", 4), 0u);
  EXPECT_EQ(numberedPlace("to", "to4", 4), 3u);
  for (const char* knob : {"to", "to0", "to5", "to11", "tp1", "t1", "toa", ""})
    EXPECT_EQ(numberedPlace("to", knob, 4), kNoPlace) << knob;
  EXPECT_EQ(trackPlace(NkClass::Tracker, "track9"), 8u);
  EXPECT_EQ(trackPlace(NkClass::Tracker, "outputTopLeft"), kNoPlace);
  EXPECT_EQ(trackPlace(NkClass::Planar, "outputBottomLeft"), 0u);
  EXPECT_EQ(trackPlace(NkClass::Planar, "outputTopLeft"), 3u);
  EXPECT_EQ(trackPlace(NkClass::Planar, "track1"), kNoPlace);
  EXPECT_EQ(trackPlace(NkClass::Other, "track1"), kNoPlace);
}

TEST(NkKnobs, ColumnsHaveNames) {
  EXPECT_EQ(columnOf("enable"), NkColumn::Enable);
  EXPECT_EQ(columnOf("name"), NkColumn::Name);
  EXPECT_EQ(columnOf("track_x"), NkColumn::X);
  EXPECT_EQ(columnOf("track_y"), NkColumn::Y);
  EXPECT_EQ(columnOf("key_track_x"), NkColumn::Other);
}

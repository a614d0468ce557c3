// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/selection.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

using namespace cornerpin;

namespace {

// Tracks a, b and "c:1" in the frames -2 .. 2.
Tracks smallShot() {
  Tracks tracks;
  tracks.names = {"a", "b", "c:1"};
  for (int f = -2; f <= 2; ++f) {
    for (int t = 0; t < 3; ++t) {
      Observation o;
      o.track = t;
      o.frame = f;
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

// What counts, "a-2 b-2 ...".
std::string selected(const std::string& keep, const std::string& drop) {
  Tracks tracks = smallShot();
  const auto parsed = [&](const std::string& text) {
    return text.empty() ? std::vector<Selected>() : parseSelection(text, tracks);
  };
  select(tracks, parsed(keep), parsed(drop));
  std::string left;
  for (const Observation& o : tracks.observations) {
    if (!(o.weight > 0.0f)) continue;
    left += tracks.names[static_cast<std::size_t>(o.track)] + std::to_string(o.frame) + " ";
  }
  EXPECT_EQ(tracks.observations.size(), 15u);
  return left;
}

}  // namespace

TEST(Select, DropsTracksAndStretches) {
  EXPECT_EQ(selected("", "a,c:1:-2-1"), "b-2 b-1 b0 b1 b2 c:12 ");
  EXPECT_EQ(selected("", "a,b,c:1:-2--1,c:1:1"), "c:10 c:12 ");
}

TEST(Select, KeepsNothingElse) {
  EXPECT_EQ(selected("b:0-2,a:-1", ""), "a-1 b0 b1 b2 ");
  EXPECT_EQ(selected("c:1", ""), "c:1-2 c:1-1 c:10 c:11 c:12 ");
}

TEST(Select, DropsFromWhatIsKept) { EXPECT_EQ(selected("b", "b:0-9"), "b-2 b-1 "); }

TEST(Select, LeavesAllWithoutASelection) {
  const std::string all = "a-2 b-2 c:1-2 a-1 b-1 c:1-1 a0 b0 c:10 a1 b1 c:11 a2 b2 c:12 ";
  EXPECT_EQ(selected("", ""), all);
}

TEST(Select, RefusesToLeaveNothing) {
  for (const auto& [keep, drop] : {std::pair("a", "a"), std::pair("a:1-6", "a:0-2")}) {
    try {
      selected(keep, drop);
      ADD_FAILURE() << keep;
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), "the selection leaves no track");
    }
  }
}

TEST(ParseSelection, NamesTheItemItRefuses) {
  const Tracks tracks = smallShot();
  const std::pair<const char*, const char*> cases[] = {
      {"", "\"\" names no track of this shot"},
      {"a,", "\"\" names no track of this shot"},
      {"a,x:1-2", "\"x:1-2\" names no track of this shot"},
      {":1", "\":1\" names no track of this shot"},
      {"a:", "\"a:\" needs frames like 60 or 60-81 behind the colon"},
      {"a:x", "\"a:x\" needs frames like 60 or 60-81 behind the colon"},
      {"a:1-", "\"a:1-\" needs frames like 60 or 60-81 behind the colon"},
      {"a:2-1", "\"a:2-1\" needs frames like 60 or 60-81 behind the colon"},
      {"a:1-2x", "\"a:1-2x\" needs frames like 60 or 60-81 behind the colon"},
      {"a:99999999999", "\"a:99999999999\" needs frames like 60 or 60-81 behind the colon"},
      {"a:1.5", "\"a:1.5\" needs frames like 60 or 60-81 behind the colon"},
      {"a:3", "\"a:3\" names no frame of this shot"},
      {"b:2-9,a:-9--3", "\"a:-9--3\" names no frame of this shot"}};
  for (const auto& [text, message] : cases) {
    try {
      parseSelection(text, tracks);
      ADD_FAILURE() << text;
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), message);
    }
  }
}

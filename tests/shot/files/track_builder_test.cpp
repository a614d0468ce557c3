// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_builder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace cornerpin;

namespace {

Observation row(std::int32_t track, std::int32_t frame, double x, std::uint32_t line,
                float weight = 1.0f) {
  Observation observation;
  observation.track = track;
  observation.frame = frame;
  observation.x = x;
  observation.line = line;
  observation.weight = weight;
  return observation;
}

std::string refusalBy(TrackBuilder& builder,
                      TrackBuilder::Repeats repeats = TrackBuilder::Repeats::Refused) {
  try {
    builder.finish(repeats);
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

}  // namespace

TEST(TrackBuilder, NumbersNamesAsTheyComeAndSortsThemAtTheEnd) {
  TrackBuilder builder("f", {});
  const std::int32_t b = builder.track("b");
  const std::int32_t a = builder.track("a");
  EXPECT_EQ(builder.track("b"), b);
  EXPECT_EQ(builder.track("a"), a);
  EXPECT_TRUE(builder.has("a"));
  EXPECT_FALSE(builder.has("c"));
  EXPECT_EQ(builder.names(), 2u);
  builder.add(row(b, 2, 1.0, 1));
  builder.add(row(a, 2, 2.0, 2));
  builder.add(row(b, 1, 3.0, 3));
  EXPECT_EQ(builder.rows(), 3u);
  const Tracks tracks = builder.finish();
  EXPECT_EQ(tracks.names, (std::vector<std::string>{"a", "b"}));
  ASSERT_EQ(tracks.observations.size(), 3u);
  EXPECT_EQ(tracks.observations[0].x, 3.0);
  EXPECT_EQ(tracks.observations[1].x, 2.0);
  EXPECT_EQ(tracks.observations[2].x, 1.0);
}

TEST(TrackBuilder, RefusesAZeroInAName) {
  TrackBuilder builder("f", {});
  const std::string name("a\0b", 3);
  EXPECT_THROW(builder.track(name), InputError);
  const std::int32_t a = builder.track("a");
  EXPECT_THROW(builder.rename(a, name), InputError);
  builder.add(row(a, 1, 0.0, 1));
  EXPECT_EQ(builder.finish().names, std::vector<std::string>{"a"});
}

TEST(TrackBuilder, RenamesATrack) {
  TrackBuilder builder("f", {});
  const std::int32_t a = builder.track("a");
  builder.rename(a, "b");
  EXPECT_FALSE(builder.has("a"));
  EXPECT_EQ(builder.track("b"), a);
  EXPECT_NE(builder.track("a"), a);
}

TEST(TrackBuilder, RefusesWhatHoldsNoTrack) {
  TrackBuilder empty("f", {});
  EXPECT_EQ(refusalBy(empty), "f: no track is in it");
  TrackBuilder absent("f", {});
  absent.add(row(absent.track("a"), 1, 0.0, 1, 0.0f));
  EXPECT_EQ(refusalBy(absent), "f: no track has a weight above 0");
}

TEST(TrackBuilder, RefusesFramesThatAreTooFarFromNought) {
  TrackBuilder builder("f", {});
  builder.add(row(builder.track("a"), 1000000000, 0.0, 1));
  builder.add(row(builder.track("a"), 1000000001, 0.0, 2));
  EXPECT_EQ(refusalBy(builder), "f:2: frame is too large: \"1000000001\"");
}

TEST(TrackBuilder, TakesARepeatedRowOnceWhereThatIsAsked) {
  const auto fill = [](TrackBuilder& builder, double second) {
    const std::int32_t a = builder.track("a");
    builder.add(row(a, 1, 5.0, 3));
    builder.add(row(a, 1, second, 4));
  };
  TrackBuilder refused("f", {});
  fill(refused, 5.0);
  const std::string twice = "f:4: track \"a\" is given twice in frame 1, first on line 3";
  EXPECT_EQ(refusalBy(refused), twice);
  TrackBuilder one("f", {});
  fill(one, 5.0);
  EXPECT_EQ(one.finish(TrackBuilder::Repeats::One).observations.size(), 1u);
  TrackBuilder other("f", {});
  fill(other, 6.0);
  EXPECT_EQ(refusalBy(other, TrackBuilder::Repeats::One), twice);
}

TEST(TrackBuilder, NamesRefusedRowsBeforeAllElse) {
  TrackBuilder builder("f", {});
  builder.refuse({"f", 7, "bad"});
  builder.refuseLast({"f", 9, "worse"});
  EXPECT_EQ(refusalBy(builder), "f:7: bad\nf:9: worse");
  EXPECT_THROW(builder.raise(), InputError);
}

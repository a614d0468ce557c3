// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/files.h"
#include "tests/support/refusal.h"

using namespace cornerpin::shot;

namespace {

std::string refusalOf(const TrackArrays& arrays) {
  return refusal([&] { tracksFromArrays(arrays); });
}

std::string refusalOfRows(const std::vector<Observation>& rows,
                          const std::vector<std::string>& names = {}) {
  return refusal([&] { tracksFromRows(rows, names); });
}

// Two tracks in two frames.
struct TwoByTwo {
  std::vector<double> positions = {1, 2, 3, 4, 5, 6, 7, 8};
  std::vector<double> weights = {1, 1, 1, 1};
  TrackArrays given() const {
    TrackArrays arrays;
    arrays.positions = {positions.data(), {2, 2, 2}};
    arrays.weights = {weights.data(), {2, 2}};
    return arrays;
  }
};

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST(ReadTracks, TakesADigestUnlessItIsNotToBe) {
  const auto tellsIt = [](bool digest) {
    ReadOptions how;
    how.digest = digest;
    const std::string json = solve(readTracks(CORNERPIN_DATA "/facade.csv", how)).toJson();
    return json.find("\"sha256\":null") == std::string::npos;
  };
  EXPECT_TRUE(tellsIt(true));
  EXPECT_FALSE(tellsIt(false));
}

TEST(TracksFromArrays, KeepsPlacesFramesAndWeights) {
  TwoByTwo shot;
  shot.weights = {1, 0.5, 2, 1};
  TrackArrays arrays = shot.given();
  arrays.firstFrame = 101;
  arrays.names = {"a", "b"};
  const Tracks tracks = tracksFromArrays(arrays);
  EXPECT_EQ(tracks.names(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(tracks.firstFrame(), 101);
  EXPECT_EQ(tracks.lastFrame(), 102);
  EXPECT_EQ(tracks.positions(), shot.positions);
  EXPECT_EQ(tracks.weights(), shot.weights);
  EXPECT_TRUE(tracks.notes().empty());
  const std::vector<Observation> rows = tracks.observations();
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[1].track, 1u);
  EXPECT_EQ(rows[1].frame, 101);
  EXPECT_EQ(rows[1].x, 3.0);
  EXPECT_EQ(rows[1].y, 4.0);
  EXPECT_EQ(rows[1].weight, 0.5);
}

TEST(TracksFromArrays, NumbersUnnamedTracksWithZerosInFront) {
  const plain::Arrays ten = plain::pan(2, 10);
  EXPECT_EQ(tracksFromArrays(ten.given()).names().back(), "t9");
  const plain::Arrays eleven = plain::pan(2, 11);
  const std::vector<std::string> names = tracksFromArrays(eleven.given()).names();
  EXPECT_EQ(names.front(), "t00");
  EXPECT_EQ(names.back(), "t10");
}

TEST(TracksFromArrays, PutsNamesInOrderAndPlacesWithThem) {
  const TwoByTwo shot;
  TrackArrays arrays = shot.given();
  arrays.names = {"b", "a"};
  const Tracks tracks = tracksFromArrays(arrays);
  EXPECT_EQ(tracks.names(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(tracks.positions(), (std::vector<double>{3, 4, 1, 2, 7, 8, 5, 6}));
}

TEST(TracksFromArrays, GoesByStridesInBothPrecisions) {
  // x and y lie apart, tracks run backwards, and there is room between frames.
  const std::vector<float> numbers = {3, 1, -1, 4, 2, -1, 7, 5, -1, 8, 6, -1};
  TrackArrays arrays;
  arrays.positions = {numbers.data() + 1, {2, 2, 2}, {6, -1, 3}};
  EXPECT_EQ(tracksFromArrays(arrays).positions(), TwoByTwo().positions);
  const std::vector<double> doubles(numbers.begin(), numbers.end());
  arrays.positions = {doubles.data() + 1, {2, 2, 2}, {6, -1, 3}};
  EXPECT_EQ(tracksFromArrays(arrays).positions(), TwoByTwo().positions);
}

TEST(TracksFromArrays, TakesNanInBothCoordinatesAndWeightZeroForAbsent) {
  TwoByTwo shot;
  shot.positions[0] = shot.positions[1] = plain::kNan;
  shot.positions[6] = plain::kNan;  // beside a weight of 0 it does not matter
  shot.positions[7] = std::numeric_limits<double>::infinity();
  shot.weights[3] = 0.0;
  const Tracks tracks = tracksFromArrays(shot.given());
  EXPECT_EQ(tracks.weights(), (std::vector<double>{0, 1, 1, 0}));
  EXPECT_EQ(tracks.observations().size(), 2u);
  const std::vector<double> places = tracks.positions();
  EXPECT_TRUE(std::isnan(places[0]) && std::isnan(places[1]));
  EXPECT_EQ(places[2], 3.0);
  EXPECT_EQ(places[4], 5.0);
  EXPECT_TRUE(std::isnan(places[6]) && std::isnan(places[7]));
}

TEST(TracksFromArrays, KeepsFramesAndTracksInWhichNothingIsSeen) {
  plain::Arrays shot = plain::pan(5, 3);
  for (std::size_t t = 0; t < 3; ++t) shot.weight(0, t) = shot.weight(4, t) = 0.0;
  for (std::size_t f = 0; f < 5; ++f) shot.x(f, 2) = shot.y(f, 2) = plain::kNan;
  const Tracks tracks = tracksFromArrays(shot.given());
  EXPECT_EQ(tracks.names().size(), 3u);
  EXPECT_EQ(tracks.firstFrame(), 0);
  EXPECT_EQ(tracks.lastFrame(), 4);
  EXPECT_EQ(tracks.weights(), (std::vector<double>{0, 0, 0, 1, 1, 0, 1, 1, 0, 1, 1, 0, 0, 0, 0}));
}

TEST(TracksFromArrays, RefusesWrongShapes) {
  const TwoByTwo shot;
  TrackArrays arrays;
  EXPECT_EQ(refusalOf(arrays),
            "positions: an array of frames x tracks x 2 is wanted, not one of nothing");
  arrays.positions = {shot.positions.data(), {2, 4}};
  EXPECT_EQ(refusalOf(arrays),
            "positions: an array of frames x tracks x 2 is wanted, not one of 2 x 4");
  arrays.positions = {shot.positions.data(), {2, 1, 3}};
  EXPECT_TRUE(contains(refusalOf(arrays), "2 x 1 x 3"));
  arrays.positions = {shot.positions.data(), {0, 2, 2}};
  EXPECT_TRUE(contains(refusalOf(arrays), "0 x 2 x 2"));
  arrays = shot.given();
  arrays.weights = {shot.weights.data(), {4}};
  EXPECT_EQ(refusalOf(arrays),
            "weights: an array of 2 x 2 is wanted, as the positions have it, not one of 4");
  EXPECT_EQ(refusal([&] {
              Array(shot.positions.data(), {2, 2, 2}, {4, 2});
            }),
            "strides: 2 are given for 3 dimensions");
}

TEST(TracksFromArrays, RefusesNumbersThatAreNone) {
  TwoByTwo shot;
  shot.positions[2] = plain::kNan;
  EXPECT_EQ(refusalOf(shot.given()),
            "positions: two numbers in single precision are wanted, or two NaN where the track is "
            "absent, not nan and 4 of track 1 in frame 0");
  shot.positions[2] = 1e39;
  EXPECT_TRUE(contains(refusalOf(shot.given()), "not 1e+39 and 4 of track 1"));
  shot.positions[2] = 3;
  shot.weights[2] = -1;
  EXPECT_EQ(refusalOf(shot.given()),
            "weights: a number from 0 on in single precision is wanted, not -1 of track 0 in frame "
            "1");
  shot.weights[2] = plain::kNan;
  EXPECT_TRUE(contains(refusalOf(shot.given()), "not nan of track 0"));
  shot.weights[2] = 1e39;
  EXPECT_TRUE(contains(refusalOf(shot.given()), "not 1e+39 of track 0"));
}

TEST(TracksFromArrays, RefusesTracksThatNobodySees) {
  TwoByTwo shot;
  shot.weights.assign(4, 0.0);
  EXPECT_EQ(refusalOf(shot.given()),
            "positions: no track is seen in any frame with a weight above 0");
}

TEST(TracksFromArrays, RefusesNames) {
  const TwoByTwo shot;
  TrackArrays arrays = shot.given();
  arrays.names = {"a"};
  EXPECT_EQ(refusalOf(arrays), "names: 2 are wanted, one for each track, not 1");
  arrays.names = {"a", ""};
  EXPECT_EQ(refusalOf(arrays), "names: that of track 1 is empty");
  arrays.names = {"a", std::string("b\0", 2)};
  EXPECT_EQ(refusalOf(arrays), "names: that of track 1 has a zero byte in it");
  arrays.names = {"a", "a"};
  EXPECT_EQ(refusalOf(arrays), "names: \"a\" is there twice, and of each track another is wanted");
}

TEST(TracksFromArrays, RefusesFramesThatAreTooMany) {
  const TwoByTwo shot;
  TrackArrays arrays = shot.given();
  arrays.firstFrame = 1'000'000'000;
  EXPECT_EQ(refusalOf(arrays),
            "frames: 1000000000 to 1000000001 are given: at most 1000000000 from 0 are wanted");
  // A stride of 0 makes one place all of them.
  arrays.positions = {shot.positions.data(), {2'000'001, 1, 2}, {0, 0, 1}};
  arrays.weights = {};
  EXPECT_TRUE(contains(refusalOf(arrays), "2000001 frames"));
}

TEST(TracksFromArrays, RefusesPictures) {
  const TwoByTwo shot;
  TrackArrays arrays = shot.given();
  arrays.picture.width = 0;
  EXPECT_EQ(refusalOf(arrays), "width: a number of pixels above 0 is wanted, not 0");
  arrays.picture = {};
  arrays.picture.height = -5;
  EXPECT_EQ(refusalOf(arrays), "height: a number of pixels above 0 is wanted, not -5");
  arrays.picture = {};
  arrays.picture.y = "left";
  EXPECT_EQ(refusalOf(arrays), "y: \"left\" is none of up, down");
  arrays.picture = {};
  arrays.picture.pixelCentre = 0.25;
  EXPECT_EQ(refusalOf(arrays), "pixel_centre: 0 or 0.5 is wanted, not 0.25");
  arrays.picture = {};
  arrays.picture.firstFrame = 1'000'000'001;
  EXPECT_EQ(refusalOf(arrays), "first_frame: 1000000001 is further than 1000000000 from 0");
}

TEST(TracksFromArrays, KeepsThePicture) {
  const TwoByTwo shot;
  TrackArrays arrays = shot.given();
  arrays.picture = {1920, 1080, "down", 0.5, 1001};
  const Picture picture = tracksFromArrays(arrays).picture();
  EXPECT_EQ(picture.width, 1920);
  EXPECT_EQ(picture.height, 1080);
  EXPECT_EQ(picture.y, "down");
  EXPECT_EQ(picture.pixelCentre, 0.5);
  EXPECT_EQ(picture.firstFrame, 1001);
  EXPECT_EQ(tracksFromArrays(arrays).firstFrame(), 0);
}

TEST(TracksFromRows, TakesThemInAnyOrder) {
  const Tracks tracks = tracksFromRows({{1, 7, 7, 8}, {0, 6, 1, 2}, {0, 7, 5, 6}, {1, 6, 3, 4}});
  EXPECT_EQ(tracks.names(), (std::vector<std::string>{"t0", "t1"}));
  EXPECT_EQ(tracks.firstFrame(), 6);
  EXPECT_EQ(tracks.positions(), TwoByTwo().positions);
}

TEST(TracksFromRows, KeepsTracksWithoutRowsAndRowsWithoutWeight) {
  const Tracks tracks = tracksFromRows({{1, 7, 7, 8}, {1, 9, 1, 2, 0.0}}, {"a", "b", "c"});
  EXPECT_EQ(tracks.names().size(), 3u);
  EXPECT_EQ(tracks.lastFrame(), 9);
  EXPECT_EQ(tracks.weights(), (std::vector<double>{0, 1, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(TracksFromRows, RefusesWhatMakesNoSense) {
  EXPECT_EQ(refusalOfRows({}), "positions: no track is seen in any frame with a weight above 0");
  EXPECT_EQ(refusalOfRows({{2, 0, 1, 2}}, {"a", "b"}), "rows: track 2 is given, and names has 2");
  EXPECT_EQ(refusalOfRows({{0, 4, 1, 2}, {0, 4, 3, 4}}, {"a"}),
            "rows: track \"a\" is given twice in frame 4");
  EXPECT_TRUE(contains(refusalOfRows({{0, 4, plain::kNan, 2}}, {"a"}),
                       "not nan and 2 of track \"a\" in frame 4"));
  EXPECT_EQ(refusalOfRows({{0, 0, 1, 2}, {0, 2'000'000, 1, 2}}),
            "frames: 0 to 2000000 are given, which is more than 2000000");
}

TEST(ReadTracks, TakesAFile) {
  const TemporaryFolder folder;
  writeFile(folder / "a.csv", "track,frame,x,y,weight\nb,2,3,4,1\na,2,1,2,0.5\n");
  ReadOptions options;
  options.picture.width = 640;
  options.picture.height = 480;
  const Tracks tracks = readTracks(folder / "a.csv", options);
  EXPECT_EQ(tracks.names(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(tracks.positions(), (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(tracks.weights(), (std::vector<double>{0.5, 1}));
  EXPECT_EQ(tracks.picture().width, 640);
}

TEST(ReadTracks, TellsFileAndLineOfWhatItRefuses) {
  const TemporaryFolder folder;
  const std::string path = folder / "a.csv";
  writeFile(path, "track,frame,x,y\na,2,1,2\nb,two,3,4\n");
  try {
    readTracks(path);
    FAIL() << "not refused";
  } catch (const InputError& error) {
    EXPECT_EQ(error.file, path);
    EXPECT_EQ(error.line, 3u);
    EXPECT_TRUE(contains(error.what(), path + ":3: ")) << error.what();
  }
  try {
    readTracks(folder / "none.csv");
    FAIL() << "not refused";
  } catch (const InputError& error) {
    EXPECT_EQ(error.line, 0u);
  }
}

TEST(ReadTracks, RefusesOptionsThatMakeNoSense) {
  const TemporaryFolder folder;
  writeFile(folder / "a.csv", "track,frame,x,y\na,2,1,2\n");
  const auto refusalWith = [&](const ReadOptions& options) {
    return refusal([&] { readTracks(folder / "a.csv", options); });
  };
  ReadOptions options;
  options.from = "doc";
  EXPECT_TRUE(contains(refusalWith(options), "from: \"doc\" is none of csv, json, "));
  options = {};
  options.frames = "9-1";
  EXPECT_TRUE(contains(refusalWith(options), "frames: \"9-1\" "));
  options = {};
  options.picture.y = "left";
  EXPECT_EQ(refusalWith(options), "y: \"left\" is none of up, down");
}

TEST(ReadTracks, ReadsOnlyTheFramesThatAreAskedForWhereOneIsFarOff) {
  const TemporaryFolder folder;
  writeFile(folder / "a.csv", "track,frame,x,y\na,2,1,2\na,3,1,2\na,90000,1,2\n");
  EXPECT_THROW(readTracks(folder / "a.csv"), InputError);
  ReadOptions options;
  options.frames = "1-10";
  EXPECT_EQ(readTracks(folder / "a.csv", options).lastFrame(), 3);
}

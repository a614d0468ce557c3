// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/tracks_of_result.h"

#include <gtest/gtest.h>

#include "shot/files/input_error.h"
#include "shot/files/sha256.h"
#include "tests/shot/report/small_result.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

std::string csvOf(const Tracks& tracks) {
  std::string csv = "track,frame,x,y\n";
  for (const Observation& row : tracks.observations) {
    csv += tracks.names[static_cast<std::size_t>(row.track)] + "," + std::to_string(row.frame) +
           "," + std::to_string(row.x) + "," + std::to_string(row.y) + "\n";
  }
  return csv;
}

std::string digestOf(const std::string& text) {
  Sha256 digest;
  digest.add(text.data(), text.size());
  return digest.hex();
}

Tracks read(const std::string& path, const ShotResult& result) {
  std::vector<std::string> notes;
  return tracksOfResult(path, result, {}, notes);
}

std::string refusalOf(const std::string& path, const ShotResult& result) {
  try {
    read(path, result);
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

// Six tracks in five frames, and the file that they are from.
class TracksOfResult : public testing::Test {
 protected:
  TracksOfResult() : path_(folder_ / "in.csv"), result_(small::result(6, 5)) {
    writeFile(path_, csvOf(small::tracks(6, 5)));
    result_.provenance.input = InputFile{"shot.csv", "", "csv", 30};
  }

  TemporaryFolder folder_;
  std::string path_;
  ShotResult result_;
};

}  // namespace

TEST_F(TracksOfResult, AreThoseOfTheFileWithItsDigest) {
  result_.provenance.input->sha256 = digestOf(readFile(path_));
  const Tracks tracks = read(path_, result_);
  EXPECT_EQ(tracks.names.size(), 6u);
  EXPECT_EQ(tracks.observations.size(), 30u);
}

TEST_F(TracksOfResult, AreNotThoseOfAnotherFile) {
  const std::string digest = digestOf("other");
  result_.provenance.input->sha256 = digest;
  EXPECT_EQ(refusalOf(path_, result_),
            path_ + ": the result was made from another file, \"shot.csv\" with the SHA-256 " +
                digest + ", and this one has " + digestOf(readFile(path_)) +
                ": give that file, or solve again");
}

// The result names them in another order, and one that is seen nowhere.
TEST_F(TracksOfResult, ComeInTheOrderOfTheResultWithoutADigest) {
  std::swap(result_.tracks[0], result_.tracks[3]);
  TrackResult nowhere;
  nowhere.name = "nowhere";
  nowhere.runs = {{0, 4, TrackUse::Absent}};
  result_.tracks.insert(result_.tracks.begin(), nowhere);
  const Tracks tracks = read(path_, result_);
  EXPECT_EQ(tracks.names,
            (std::vector<std::string>{"nowhere", "t3", "t1", "t2", "t0", "t4", "t5"}));
  ASSERT_EQ(tracks.observations.size(), 30u);
  for (const Observation& row : tracks.observations) {
    const int number = std::stoi(tracks.names[static_cast<std::size_t>(row.track)].substr(1));
    EXPECT_EQ(row.x, small::placeOf(number).x + 2 * row.frame);
  }
}

TEST_F(TracksOfResult, HaveTheResultsTracks) {
  result_.tracks[2].name = "other";
  EXPECT_EQ(refusalOf(path_, result_),
            path_ +
                ": it has no track \"other\", which the result has: give the file that the "
                "result was made from");
}

// Track t4 stands in line 2 + 6 * 2 + 4 of the file in frame 2.
TEST_F(TracksOfResult, AreSeenWhereTheResultSaysSo) {
  result_.tracks[4].runs = {
      {0, 1, TrackUse::Good}, {2, 2, TrackUse::Absent}, {3, 4, TrackUse::Ignored}};
  EXPECT_EQ(refusalOf(path_, result_),
            path_ +
                ":18: track \"t4\" is seen in frame 2 here, and not in the result: give the "
                "file that the result was made from");
}

TEST_F(TracksOfResult, AreSelectedAsTheSolveDidIt) {
  GivenOptions options;
  options.frames = {1, 3};
  options.drop = {"t2,t4:2"};
  result_.provenance.options = options;
  result_.provenance.input->sha256 = digestOf(readFile(path_));
  const Tracks tracks = read(path_, result_);
  EXPECT_EQ(tracks.firstFrame(), 1);
  EXPECT_EQ(tracks.lastFrame(), 3);
  std::size_t counted = 0;
  for (const Observation& row : tracks.observations) counted += row.weight > 0.0f ? 1 : 0;
  EXPECT_EQ(counted, 3u * 6u - 3u - 1u);
}

// The result is in the numbers of a picture with y up, as the solve was told.
TEST_F(TracksOfResult, HaveThePictureOfTheResult) {
  result_.provenance.picture.y = YAxis::Up;
  result_.provenance.picture.width = 200;
  result_.provenance.picture.height = 100;
  const Tracks tracks = read(path_, result_);
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(tracks.picture.height, 100);
}

TEST_F(TracksOfResult, WantAResultThatTellsOfTracks) {
  result_.tracks.clear();
  EXPECT_EQ(refusalOf(path_, result_),
            path_ +
                ": the result does not tell of its tracks, as an older program wrote it: solve "
                "again");
}

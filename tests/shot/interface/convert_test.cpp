// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <system_error>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

using namespace cornerpin::shot;

namespace {

const Picture kPicture = {1920, 1080, "down", 0.5, {}};

ReadOptions told() {
  ReadOptions how;
  how.picture = kPicture;
  return how;
}

}  // namespace

TEST(Convert, WritesTracksInAnotherFormat) {
  const TemporaryFolder folder;
  const Tracks tracks = tracksFromArrays(plain::pan().given());
  writeFile(folder / "a.csv", plain::csv(tracks));
  const Converted made = convert(folder / "a.csv", folder / "a.json");
  EXPECT_EQ(made.written.readBack, "read back: largest difference 0 px");
  EXPECT_TRUE(made.notes.empty());
  const Tracks read = readTracks(folder / "a.json");
  EXPECT_EQ(read.names(), tracks.names());
  EXPECT_EQ(read.positions(), tracks.positions());
}

TEST(Convert, WritesAPinOfAResultAsTheResultDoes) {
  const TemporaryFolder folder;
  const plain::Arrays shot = plain::pan();
  TrackArrays arrays = shot.given();
  arrays.picture = kPicture;
  const Result result = solve(tracksFromArrays(arrays));
  result.write(folder / "a.json");
  result.write(folder / "own.nk");
  convert(folder / "a.json", folder / "made.nk");
  EXPECT_GT(readFile(folder / "own.nk").size(), 100u);
  EXPECT_TRUE(readFile(folder / "made.nk") == readFile(folder / "own.nk"));
  WriteOptions options;
  options.as = "stabilise";
  result.write(folder / "own.nk", options);
  convert(folder / "a.json", folder / "made.nk", {}, options);
  EXPECT_TRUE(readFile(folder / "made.nk") == readFile(folder / "own.nk"));
}

TEST(Convert, TellsOfAResultInCsvWhatItLacks) {
  const TemporaryFolder folder;
  solve(tracksFromArrays(plain::pan().given())).write(folder / "a.csv");
  const Converted made = convert(folder / "a.csv", folder / "a.nk", told());
  ASSERT_EQ(made.notes.size(), 1u);
  EXPECT_EQ(made.notes[0].rfind(folder / "a.csv" + ": the pin is that of the whole picture", 0), 0u)
      << made.notes[0];
  EXPECT_EQ(made.written.size, "1920x1080");
}

TEST(Convert, TakesAPinAsAPinOrAsTracks) {
  const TemporaryFolder folder;
  solve(tracksFromArrays(plain::pan().given())).write(folder / "a.json");
  convert(folder / "a.json", folder / "a.nk", told());
  ReadOptions how;
  how.picture.width = 1920;
  how.picture.height = 1080;
  convert(folder / "a.nk", folder / "a.usda", how);
  EXPECT_NE(readFile(folder / "a.usda").find("#usda"), std::string::npos);
  WriteOptions options;
  options.as = "tracks";
  convert(folder / "a.nk", folder / "corners.csv", how, options);
  EXPECT_EQ(readTracks(folder / "corners.csv").names(),
            (std::vector<std::string>{"bottom_left", "bottom_right", "top_left", "top_right"}));
}

TEST(Convert, RefusesWhatMakesNoSenseAndWritesNothing) {
  const TemporaryFolder folder;
  const Tracks tracks = tracksFromArrays(plain::pan().given());
  writeFile(folder / "a.csv", plain::csv(tracks));
  const auto refusal = [&](const char* output, const ReadOptions& read, const WriteOptions& write) {
    try {
      convert(folder / "a.csv", folder / output, read, write);
    } catch (const std::invalid_argument& error) {
      return std::string(error.what());
    }
    return std::string("not refused");
  };
  WriteOptions asPin;
  asPin.as = "pin";
  EXPECT_EQ(refusal("a.nk", told(), asPin),
            "--as pin: \"" + folder / "a.csv" + "\" holds tracks: leave the option out");
  EXPECT_EQ(refusal("a", {}, {}),
            "to: the name \"" + folder / "a" + "\" tells no format: give one");
  EXPECT_NE(refusal("a.nk", {}, {}).find("does not say"), std::string::npos);
  EXPECT_THROW(convert(folder / "none.csv", folder / "b.json"), InputError);
  EXPECT_THROW(convert(folder / "a.csv", folder / "none/b.json"), std::system_error);
  EXPECT_EQ(folder.entryCount(), 1u);
}

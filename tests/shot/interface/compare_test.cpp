// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

using namespace cornerpin::shot;

namespace {

Result pan(double extraInFrame5 = 0.0) {
  plain::Arrays shot = plain::pan();
  for (std::size_t t = 0; t < shot.tracks; ++t) shot.x(5, t) += extraInFrame5;
  Options options;
  options.base = 0;
  return solve(tracksFromArrays(shot.given()), options);
}

}  // namespace

TEST(Compare, FindsNothingInTheSame) {
  const ResultDifference difference = compare(pan(), pan());
  EXPECT_FALSE(difference.isDifferent);
  EXPECT_EQ(difference.frames.size(), 8u);
  for (const FrameDifference& frame : difference.frames) {
    EXPECT_EQ(frame.distance, 0.0);
    EXPECT_FALSE(frame.transform || frame.status || frame.verdict) << frame.frame;
  }
  EXPECT_NE(difference.text.find("Same: "), std::string::npos) << difference.text;
}

TEST(Compare, SaysHowFarCornersAreApart) {
  const ResultDifference difference = compare(pan(), pan(0.5));
  EXPECT_TRUE(difference.isDifferent);
  for (const FrameDifference& frame : difference.frames) {
    EXPECT_NEAR(frame.distance, frame.frame == 5 ? 0.5 : 0.0, 1e-6) << frame.frame;
    if (frame.frame <= 5) {
      EXPECT_EQ(frame.transform, frame.frame == 5) << frame.frame;
    }
  }
  EXPECT_NE(difference.text.find("Different: "), std::string::npos) << difference.text;
  EXPECT_TRUE(compare(pan(), pan(0.5), 0.49).isDifferent);
  EXPECT_FALSE(compare(pan(), pan(0.5), 0.51).isDifferent);
}

TEST(Compare, SaysWhatElseDiffers) {
  const Result whole = pan();
  Options options;
  options.base = 0;
  options.frames = "0-5";
  const Result part = solve(tracksFromArrays(plain::pan().given()), options);
  const ResultDifference difference = compare(whole, part);
  EXPECT_TRUE(difference.options);
  EXPECT_FALSE(difference.input);
  EXPECT_EQ(difference.onlyFirst, (std::vector<int>{6, 7}));
  EXPECT_TRUE(difference.onlySecond.empty());
  EXPECT_EQ(difference.why, "");
  EXPECT_EQ(compare(part, whole).onlySecond, (std::vector<int>{6, 7}));
  const ResultDifference none = compare(whole, whole);
  EXPECT_FALSE(none.options || none.input || none.onlyProgram);
}

TEST(Compare, KnowsResultsThatOnlyOtherProgramsHaveMade) {
  const TemporaryFolder folder;
  const Result now = solve(readTracks(CORNERPIN_DATA "/screen4.csv"));
  std::string text = now.toJson();
  const auto replace = [&text](const std::string& old, const std::string& by) {
    const std::size_t at = text.find(old);
    ASSERT_NE(at, std::string::npos) << old;
    text.replace(at, old.size(), by);
  };
  replace("\"version\":\"" + version().version, "\"version\":\"0.0.1");
  writeFile(folder / "a.json", text);
  const ResultDifference older = compare(now, readResult(folder / "a.json"));
  EXPECT_TRUE(older.isDifferent);
  EXPECT_TRUE(older.onlyProgram);
  replace(now.input()->sha256, std::string(64, '0'));
  writeFile(folder / "a.json", text);
  const ResultDifference others = compare(now, readResult(folder / "a.json"));
  EXPECT_FALSE(others.onlyProgram);
  EXPECT_TRUE(others.input);
}

TEST(Compare, SaysWhyNothingCanBeCompared) {
  Options late;
  late.base = 10;
  const plain::Arrays shot = plain::pan(3);
  TrackArrays given = shot.given();
  given.firstFrame = 10;
  const ResultDifference apart = compare(pan(), solve(tracksFromArrays(given), late));
  EXPECT_TRUE(apart.frames.empty());
  EXPECT_NE(apart.why, "");
}

TEST(Compare, PutsItAsTheCommandDoes) {
  const TemporaryFolder folder;
  const std::string a = folder / "a.json";
  const std::string b = folder / "b.json";
  pan().write(a);
  pan(0.5).rebase(3).write(b);
  EXPECT_EQ(compare(readResult(a), readResult(b), 0.1).text,
            runProgram({CORNERPIN_PROGRAM, "diff", a, b, "--max", "0.1"}).out);
}

TEST(CompareFiles, NamesWhatExplainsTheDifference) {
  const TemporaryFolder folder;
  plain::Arrays shot = plain::pan();
  writeFile(folder / "a.csv", plain::csv(tracksFromArrays(shot.given())));
  for (std::size_t f = 0; f < shot.frames; ++f) {
    for (std::size_t t = 0; t < shot.tracks; ++t) shot.y(f, t) = 1080.0 - shot.y(f, t);
  }
  writeFile(folder / "b.csv", plain::csv(tracksFromArrays(shot.given())));
  const FileDifference same = compareFiles(folder / "a.csv", folder / "a.csv");
  EXPECT_FALSE(same.isDifferent);
  EXPECT_EQ(same.positions, 96u);
  EXPECT_EQ(same.apart, 0u);
  EXPECT_EQ(same.explanation, "");
  const FileDifference flipped = compareFiles(folder / "a.csv", folder / "b.csv");
  EXPECT_TRUE(flipped.isDifferent);
  EXPECT_EQ(flipped.explanation, "y flipped about 1080");
  EXPECT_EQ(flipped.text,
            runProgram({CORNERPIN_PROGRAM, "check", folder / "a.csv", folder / "b.csv"}).out);
  CompareOptions options;
  options.most = 2000.0;
  EXPECT_FALSE(compareFiles(folder / "a.csv", folder / "b.csv", options).isDifferent);
}

TEST(CompareFiles, TakesTheCornersOfResults) {
  const TemporaryFolder folder;
  pan().write(folder / "a.json");
  pan().write(folder / "a.csv");
  EXPECT_FALSE(compareFiles(folder / "a.json", folder / "a.csv").isDifferent);
  pan(2.0).write(folder / "b.json");
  const FileDifference difference = compareFiles(folder / "a.json", folder / "b.json");
  EXPECT_TRUE(difference.isDifferent);
  EXPECT_EQ(difference.apart, 4u);  // one frame's corners
  EXPECT_EQ(difference.positions, 32u);
}

TEST(CompareFiles, RefusesWhatCannotBeCompared) {
  const TemporaryFolder folder;
  pan().write(folder / "a.json");
  writeFile(folder / "a.csv", plain::csv(tracksFromArrays(plain::pan().given())));
  EXPECT_THROW(compareFiles(folder / "a.json", folder / "a.csv"), std::invalid_argument);
  EXPECT_THROW(compareFiles(folder / "a.csv", folder / "none.csv"), InputError);
  CompareOptions options;
  options.fromFirst = "doc";
  try {
    compareFiles(folder / "a.csv", folder / "a.csv", options);
    FAIL() << "not refused";
  } catch (const std::invalid_argument& error) {
    EXPECT_EQ(std::string(error.what()).rfind("from_first: \"doc\" is none of csv", 0), 0u);
  }
}

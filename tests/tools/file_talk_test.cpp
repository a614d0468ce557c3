// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/file_talk.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace cornerpin;

namespace {

std::string toldBy(const FileTalk& talk) {
  testing::internal::CaptureStderr();
  talk.tellNotes();
  return testing::internal::GetCapturedStderr();
}

}  // namespace

TEST(FileTalk, TellsTheFirstTwentyNotes) {
  FileTalk talk;
  EXPECT_EQ(toldBy(talk), "");
  talk.add(std::vector<std::string>{"f:3: left out"});
  EXPECT_EQ(toldBy(talk), "cornerpin: note: f:3: left out\n");
  FileTalk hostile;
  hostile.add(std::vector<std::string>{"\x1b[2Jf"});
  EXPECT_EQ(toldBy(hostile), "cornerpin: note: ?[2Jf\n");
  talk.add(std::vector<std::string>(20, "more"));
  const std::string all = toldBy(talk);
  EXPECT_NE(all.find("\ncornerpin: note: and 1 more note\n"), std::string::npos) << all;
}

TEST(FileTalk, SaysHowFilesCompareThatAreReadAgain) {
  FileTalk talk;
  talk.add("a.csv", {{"no colour"}, "read back: largest difference 0.25 px", ""});
  talk.add("\x1b[2Jb.nk", {{}, "read back: largest difference 0 px", ""});
  EXPECT_EQ(talk.readBackRows(),
            "written       a.csv  read back: largest difference 0.25 px\n"
            "              ?[2Jb.nk  read back: largest difference 0 px\n");
  EXPECT_EQ(toldBy(talk), "cornerpin: note: a.csv: no colour\n");
}

TEST(FileTalk, TellsASizeOnce) {
  FileTalk talk;
  for (int i = 0; i < 2; ++i) talk.addSize("a.csv", {{}, "", "1920x1080"});
  talk.addSize("a.csv", {});
  EXPECT_EQ(toldBy(talk), "cornerpin: note: a.csv: the picture is 1920x1080, as it says\n");
}

TEST(FileTalk, SaysNothingOfWhatWasNotReadAgain) {
  FileTalk talk;
  talk.add("-", {{}, "", ""});
  EXPECT_EQ(talk.readBackRows(), "");
}

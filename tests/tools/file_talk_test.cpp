// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/file_talk.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

std::string toldBy(const FileTalk& talk) {
  testing::internal::CaptureStderr();
  talk.tellNotes();
  return testing::internal::GetCapturedStderr();
}

Written oneTrack() {
  Written written;
  written.tracks.emplace();
  written.tracks->names = {"a"};
  written.tracks->observations.resize(1);
  written.tracks->observations[0].x = 3.0;
  written.tracks->arrange();
  return written;
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
  const TemporaryFolder folder;
  const std::string path = folder / "a.csv";
  writeFile(path, "track,frame,x,y\na,0,3.25,0\n");
  Export what;
  what.path = path;
  what.format = Format::Csv;
  FileTalk talk;
  Written written = oneTrack();
  written.notes = {"no colour"};
  talk.add(what, written);
  EXPECT_EQ(talk.readBackRows(),
            "written       " + path + "  read back: largest difference 0.25 px\n");
  EXPECT_EQ(toldBy(talk), "cornerpin: note: " + path + ": no colour\n");
}

TEST(FileTalk, SaysNothingOfStandardOutput) {
  FileTalk talk;
  Export what;
  what.path = "-";
  talk.add(what, oneTrack());
  EXPECT_EQ(talk.readBackRows(), "");
}

// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "shot/files/track_writers.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

TEST(WriteCsvTracks, WritesWhatItReads) {
  const std::string text =
      "track,frame,x,y,weight\n"
      "\" b,\"\"1\"\"\",-3,0.1,-2e-07,0.5\n"
      "a,-3,1,2,1\n"
      "a,7,1e+30,3,0\n";
  const TemporaryFolder folder;
  OutputFile out(folder / "out.csv");
  EXPECT_TRUE(writeCsvTracks(tracksIn(text), out).empty());
  out.commit();
  EXPECT_EQ(readFile(folder / "out.csv"), text);
}

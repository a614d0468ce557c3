// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_info.h"

#include <gtest/gtest.h>

#include "shot/advice/closing_words.h"
#include "tests/shot/files/two_frames.h"

using namespace cornerpin;

namespace {

const FileLook kLook = {"a.json", "a.json", 2048, false, true};

}  // namespace

TEST(ResultInfo, SaysWhatMadeItOfWhatAndWhatItComesTo) {
  ShotResult result = twoFrames();
  result.loss = Loss::Tukey;
  result.referenceFrame = 6;
  result.unused = {{{"x", Unused::Dropped}, {"y", Unused::Dropped}}};
  result.quads.push_back({"sign", result.quads[0].corners});
  result.provenance.program = {{"cornerpin", "0.1.0", "abc"}};
  result.provenance.input = {{"shot.csv", "0123", "csv", 12}};
  result.provenance.options.emplace().hold = true;
  EXPECT_EQ(resultInfo(result, kLook, false),
            "file          a.json\n"
            "              the result of a solve in JSON, 2.05 kB\n"
            "made by       cornerpin 0.1.0, commit abc\n"
            "made from     shot.csv, 12 rows\n"
            "SHA-256       0123\n"
            "options       --hold\n"
            "frames        5-6  (2 frames)\n"
            "base frame    5\n"
            "reference     6\n"
            "tracks        2, 2 of them left out (2 dropped)\n"
            "quads         \"tracks\", \"sign\"\n\n" +
                closingWords(result, false));
}

TEST(ResultInfo, LeavesOutWhatOlderResultsDoNotSay) {
  ShotResult result = twoFrames();
  result.tracks.clear();
  EXPECT_EQ(resultInfo(result, kLook, true),
            "file          a.json\n"
            "              the result of a solve in JSON, 2.05 kB\n"
            "options       --loss none, others not known\n"
            "frames        5-6  (2 frames)\n"
            "base frame    5\n"
            "quads         \"tracks\"\n\n" +
                closingWords(result, true));
  result.loss = Loss::Tukey;
  EXPECT_NE(resultInfo(result, kLook, false).find("\noptions       not known\n"),
            std::string::npos);
}

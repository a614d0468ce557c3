// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/file_kind.h"

#include <gtest/gtest.h>

#include <string>

using cornerpin::otherThanJson;
using cornerpin::otherThanText;

TEST(OtherThanText, SaysNothingOfText) {
  EXPECT_EQ(otherThanText(""), "");
  EXPECT_EQ(otherThanText("track,frame,x,y\n"), "");
  EXPECT_EQ(otherThanText("\xC3\xBC,\"{\"\n\x1a\t"), "");
  EXPECT_EQ(otherThanText("P,K\n"), "");
}

TEST(OtherThanText, NamesArchives) {
  const auto unpack = [](const std::string& name) {
    return "this is a " + name + " file: unpack it first, or pack it with gzip";
  };
  EXPECT_EQ(otherThanText("PK\x03\x04\x14"), unpack("zip"));
  EXPECT_EQ(otherThanText("\xFD"
                          "7zXZ"),
            unpack("xz"));
  EXPECT_EQ(otherThanText("BZh91AY"), unpack("bzip2"));
  EXPECT_EQ(otherThanText("\x28\xB5\x2F\xFD$"), unpack("zstd"));
  EXPECT_EQ(otherThanText("7z\xBC\xAF\x27\x1C"), unpack("7z"));
}

TEST(OtherThanText, KnowsTextOfSixteenBits) {
  EXPECT_EQ(otherThanText("\xFF\xFEt"), "this is UTF-16 text: save it as UTF-8");
  EXPECT_EQ(otherThanText("\xFE\xFFt"), "this is UTF-16 text: save it as UTF-8");
}

TEST(OtherThanText, KnowsBinaryFilesByAZeroNearTheFront) {
  const std::string zero(1, '\0');
  const std::string binary = "this is a binary file, not text: tracks are wanted";
  EXPECT_EQ(otherThanText("\x89PNG" + zero), binary);
  EXPECT_EQ(otherThanText(std::string(8191, 'a') + zero), binary);
  EXPECT_EQ(otherThanText(std::string(8192, 'a') + zero), "");
}

TEST(OtherThanJson, SaysNothingOfJsonAndOtherText) {
  EXPECT_EQ(otherThanJson(""), "");
  EXPECT_EQ(otherThanJson("{\"track\": "), "");
  EXPECT_EQ(otherThanJson("[\"h00\","), "");
  EXPECT_EQ(otherThanJson("Dear all,\ntrack,frame"), "");
}

TEST(OtherThanJson, KnowsCsvByItsHeader) {
  const std::string tracks =
      "these are tracks, not a result: give what cornerpin solve -o shot.json writes";
  EXPECT_EQ(otherThanJson("track,frame,x,y\n"), tracks);
  EXPECT_EQ(otherThanJson("frame;x;y;track\r\n"), tracks);
  EXPECT_EQ(otherThanJson("frame,h00,h01,rms,tracks\n"),
            "this is a result in CSV, and JSON is wanted: solve again with -o shot.json");
}

TEST(OtherThanJson, KnowsWhatIsNoText) {
  EXPECT_EQ(otherThanJson("PK\x03\x04\x14"),
            "this is a zip file: unpack it first, or pack it with gzip");
  EXPECT_EQ(otherThanJson("\xFF\xFE{"), "this is UTF-16 text: save it as UTF-8");
  EXPECT_EQ(otherThanJson(std::string("a\0", 2)),
            "this is a binary file, not text: a JSON file is wanted");
}

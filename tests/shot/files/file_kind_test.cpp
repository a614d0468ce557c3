// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/file_kind.h"

#include <gtest/gtest.h>

#include <string>

using cornerpin::otherThanRecords;

TEST(OtherThanRecords, SaysNothingOfText) {
  EXPECT_EQ(otherThanRecords(""), "");
  EXPECT_EQ(otherThanRecords("track,frame,x,y\n"), "");
  EXPECT_EQ(otherThanRecords("\xC3\xBC,\"{\"\n\x1a\t"), "");
  EXPECT_EQ(otherThanRecords("P,K\n"), "");
}

TEST(OtherThanRecords, NamesArchives) {
  const auto unpack = [](const std::string& name) {
    return "this is a " + name + " file: unpack it first, or pack it with gzip";
  };
  EXPECT_EQ(otherThanRecords("PK\x03\x04\x14"), unpack("zip"));
  EXPECT_EQ(otherThanRecords("\xFD"
                             "7zXZ"),
            unpack("xz"));
  EXPECT_EQ(otherThanRecords("BZh91AY"), unpack("bzip2"));
  EXPECT_EQ(otherThanRecords("\x28\xB5\x2F\xFD$"), unpack("zstd"));
  EXPECT_EQ(otherThanRecords("7z\xBC\xAF\x27\x1C"), unpack("7z"));
}

TEST(OtherThanRecords, KnowsTextOfSixteenBits) {
  EXPECT_EQ(otherThanRecords("\xFF\xFEt"), "this is UTF-16 text: save it as UTF-8");
  EXPECT_EQ(otherThanRecords("\xFE\xFFt"), "this is UTF-16 text: save it as UTF-8");
}

TEST(OtherThanRecords, TellsResultsFromOtherJson) {
  const std::string result =
      "this is a result, not tracks: give the CSV file that it was solved from";
  const std::string other = "this is JSON, such as --quads takes, not tracks: a CSV file is wanted";
  EXPECT_EQ(otherThanRecords("{\"cornerpin\":2,"), result);
  EXPECT_EQ(otherThanRecords("\n {\n  \"cornerpin\": 2"), result);
  EXPECT_EQ(otherThanRecords("{\"sign\": [[0,0]"), other);
  EXPECT_EQ(otherThanRecords("{"), other);
}

TEST(OtherThanRecords, KnowsBinaryFilesByAZeroNearTheFront) {
  const std::string zero(1, '\0');
  const std::string binary = "this is a binary file, not text: a CSV file is wanted";
  EXPECT_EQ(otherThanRecords("\x89PNG" + zero), binary);
  EXPECT_EQ(otherThanRecords(std::string(8191, 'a') + zero), binary);
  EXPECT_EQ(otherThanRecords(std::string(8192, 'a') + zero), "");
}

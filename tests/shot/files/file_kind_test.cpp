// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/file_kind.h"

#include <gtest/gtest.h>

#include <string>

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

// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/fuzz/round_trip.h"
#include "tests/shot/files/tracks_in.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  return paths;
}

constexpr std::size_t kSmall = 4000;  // bytes

class FuzzCorpus : public ::testing::TestWithParam<FuzzedReader> {};

}  // namespace

// Files whose name begins with "refused" are refused, all others are read.
TEST_P(FuzzCorpus, IsStillTheSameWhereItIsWrittenAndReadAgain) {
  const std::filesystem::path corpus = CORNERPIN_FUZZ_CORPUS;
  std::size_t read = 0;
  for (const auto& path : filesIn(corpus / GetParam().word)) {
    SCOPED_TRACE(path.filename().string());
    const RoundTrip result = roundTrip(GetParam(), readFile(path.string()));
    EXPECT_EQ(result.flaw, "");
    EXPECT_EQ(result.isRead, path.filename().string().rfind("refused", 0) != 0);
    read += result.isRead ? 1 : 0;
  }
  EXPECT_GT(read, 0u);
}

// A reader that is given a file of another format refuses it, or reads something that it can keep.
TEST_P(FuzzCorpus, OfOtherFormatsBreaksNothing) {
  for (const auto& folder : filesIn(CORNERPIN_FUZZ_CORPUS)) {
    for (const auto& path : filesIn(folder))
      EXPECT_EQ(roundTrip(GetParam(), readFile(path.string())).flaw, "") << path;
  }
}

// Of small files. Writing takes its time: what is left is written where it ends at every 25th byte.
TEST_P(FuzzCorpus, MayBeCutOffAnywhere) {
  const std::filesystem::path corpus = CORNERPIN_FUZZ_CORPUS;
  for (const auto& path : filesIn(corpus / GetParam().word)) {
    const std::string text = readFile(path.string());
    if (text.size() > kSmall) continue;
    for (std::size_t length = 0; length < text.size(); ++length) {
      const std::string part = text.substr(0, length);
      ReadTrace trace;
      trace.format = GetParam().format;
      if (!GetParam().isOfResults) {
        EXPECT_NO_THROW(refusalOf(part, &trace)) << path << ", " << length << " bytes of it";
      }
      if (length % 25 != 0 && !GetParam().isOfResults) continue;
      EXPECT_EQ(roundTrip(GetParam(), part).flaw, "") << path << ", " << length;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Readers, FuzzCorpus, ::testing::ValuesIn(fuzzedReaders()),
                         [](const auto& info) { return std::string(info.param.word); });

TEST(FuzzSamples, AreStillTheSameWhereTheyAreWrittenAndReadAgain) {
  for (const auto& path : filesIn(CORNERPIN_TEST_SAMPLES)) {
    if (path.extension() == ".md") continue;
    const std::string text = readFile(path.string());
    const RoundTrip result = roundTrip(formatIn(text), text);
    EXPECT_TRUE(result.isRead) << path;
    EXPECT_EQ(result.flaw, "") << path;
  }
}

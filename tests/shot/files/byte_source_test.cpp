// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/byte_source.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <thread>

#include "shot/files/input_error.h"
#include "tests/shot/files/gzipped.h"
#include "tests/shot/random.h"
#include "tests/support/allocations.h"
#include "tests/support/files.h"

using cornerpin::ByteSource;
using cornerpin::InputError;

namespace {

std::string allOf(ByteSource& source, std::size_t block) {
  std::string text;
  std::string piece(block, '\0');
  while (const std::size_t count = source.read(piece.data(), block)) {
    EXPECT_LE(count, block);
    text.append(piece, 0, count);
  }
  EXPECT_EQ(source.read(piece.data(), block), 0u);
  return text;
}

std::string readBack(const std::string& bytes, std::size_t block = 1000) {
  const TemporaryFolder folder;
  writeFile(folder / "in", bytes);
  ByteSource source(folder / "in");
  return allOf(source, block);
}

// What is said about the file, behind its name.
std::string refusal(const std::string& bytes) {
  const TemporaryFolder folder;
  writeFile(folder / "in", bytes);
  try {
    ByteSource source(folder / "in");
    std::string piece(65536, '\0');
    while (source.read(piece.data(), piece.size()) > 0) {
    }
  } catch (const InputError& error) {
    return std::string(error.what()).substr((folder / "in").size());
  }
  return "accepted";
}

// Random letters: they pack badly.
std::string letters(std::size_t count) {
  made::Random random(3);
  std::string text;
  while (text.size() < count) text += static_cast<char>('a' + static_cast<int>(random.real(0, 26)));
  return text;
}

}  // namespace

TEST(ByteSource, ReadsAFileAsItIs) {
  for (const std::string text : {"", "\x1f", "a", "ab", "\x1f\x8a", "plain text"}) {
    for (std::size_t block : {1u, 2u, 3u, 100u}) EXPECT_EQ(readBack(text, block), text);
  }
}

TEST(ByteSource, InflatesGzip) {
  const std::string text = letters(300000);
  for (std::size_t block : {2u, 1000u, 500000u}) EXPECT_EQ(readBack(gzipped(text), block), text);
  EXPECT_EQ(readBack(gzipped("")), "");
}

TEST(ByteSource, JoinsTheMembersOfAGzipFile) {
  const std::string text = letters(100000);
  EXPECT_EQ(readBack(gzipped("one ") + gzipped("") + gzipped(text) + gzipped(" two")),
            "one " + text + " two");
}

// A block of packed bytes ends everywhere in the head of the second member.
TEST(ByteSource, JoinsMembersWhereverABlockEnds) {
  for (std::size_t length = 0; length < 40; ++length) {
    const std::string first = letters(100000 + length);
    ASSERT_EQ(readBack(gzipped(first) + gzipped("end"), 65536), first + "end");
  }
}

TEST(ByteSource, InflatesAPipeThatGivesOneByteFirst) {
  const std::string packed = gzipped("from a pipe");
  int ends[2] = {-1, -1};
  ASSERT_EQ(::pipe(ends), 0);
  ASSERT_EQ(::write(ends[1], packed.data(), 1), 1);
  ByteSource source("/dev/fd/" + std::to_string(ends[0]));
  std::thread writer([&] {
    ::usleep(20000);
    EXPECT_EQ(::write(ends[1], packed.data() + 1, packed.size() - 1),
              static_cast<ssize_t>(packed.size() - 1));
    ::close(ends[1]);
  });
  EXPECT_EQ(allOf(source, 100), "from a pipe");
  writer.join();
  ::close(ends[0]);
  EXPECT_EQ(source.position().total, 0u);
}

TEST(ByteSource, SaysThatGzipDataIsBroken) {
  std::string packed = gzipped(letters(1000));
  packed[packed.size() - 8] ^= 1;
  EXPECT_EQ(refusal(packed), ": the gzip data is broken (incorrect data check)");
  EXPECT_EQ(refusal(gzipped("a") + "more"), ": the gzip data is broken (incorrect header check)");
  EXPECT_EQ(refusal("\x1f\x8b\x07 and more"),
            ": the gzip data is broken (unknown compression method)");
}

TEST(ByteSource, SaysThatGzipDataIsCutOff) {
  const std::string packed = gzipped(letters(1000));
  for (std::size_t length :
       {std::size_t{2}, std::size_t{9}, packed.size() / 2, packed.size() - 1}) {
    EXPECT_EQ(refusal(packed.substr(0, length)),
              ": the gzip data is cut off: the file is incomplete")
        << length;
  }
}

TEST(ByteSource, TakesNoMoreThanAHundredTimesTheSize) {
  const std::string limit =
      ": the gzip data inflates to more than 100 times its size: unpack the file if that is right";
  std::string zeros;
  zeros.resize(20'000'000, 'a');
  EXPECT_EQ(refusal(gzipped(zeros)), limit);
  // Short ones pass whatever they are, and long ones with enough beside the zeros.
  EXPECT_EQ(refusal(gzipped(zeros.substr(0, ByteSource::kAlwaysInflated))), "accepted");
  EXPECT_EQ(refusal(gzipped(letters(300'000) + zeros)), "accepted");
}

TEST(ByteSource, InflatesInLittleMemory) {
  const TemporaryFolder folder;
  writeFile(folder / "in", gzippedOf(20'000'000, 'a'));
  std::string piece(65536, '\0');
  const std::size_t peak = allocations::peakBytesOf([&] {
    ByteSource source(folder / "in");
    EXPECT_THROW(while (source.read(piece.data(), piece.size()) > 0){}, InputError);
  });
  EXPECT_LT(peak, 150'000u);  // zlib's own, 40 kB, come on top
}

TEST(ByteSource, TellsSizeAndPositionOfAPlainFile) {
  const TemporaryFolder folder;
  writeFile(folder / "in", "0123456789");
  ByteSource source(folder / "in");
  EXPECT_EQ(source.size(), 10u);
  char piece[4];
  EXPECT_EQ(source.readAt(7, piece, 4), 3u);
  EXPECT_EQ(std::string(piece, 3), "789");
  EXPECT_EQ(source.readAt(10, piece, 4), 0u);
  EXPECT_EQ(source.read(piece, 4), 4u);
  EXPECT_EQ(std::string(piece, 4), "0123");
  EXPECT_EQ(source.position().done, 4u);
  EXPECT_EQ(source.position().total, 10u);
}

TEST(ByteSource, TellsPositionsInTheFileForPackedBytes) {
  const TemporaryFolder folder;
  const std::string packed = gzipped(letters(500000));
  writeFile(folder / "in", packed);
  ByteSource source(folder / "in");
  std::string piece(65536, '\0');
  ASSERT_GT(source.read(piece.data(), piece.size()), 0u);
  EXPECT_EQ(source.size(), 0u);
  EXPECT_EQ(source.readAt(0, piece.data(), 4), 0u);
  EXPECT_GE(source.position().done, 65536u);
  EXPECT_LT(source.position().done, packed.size());
  EXPECT_EQ(source.position().total, packed.size());
}

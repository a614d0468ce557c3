// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/output_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/files.h"

namespace fs = std::filesystem;
using cornerpin::OutputFile;

namespace {

void put(const std::string& path, const std::string& text) {
  OutputFile out(path);
  out.write(text);
  out.commit();
}

mode_t modeOf(const std::string& path) {
  struct stat info {};
  EXPECT_EQ(::stat(path.c_str(), &info), 0);
  return info.st_mode & 07777;
}

std::string failureOf(const std::string& path, const std::string& text = "new") {
  try {
    put(path, text);
  } catch (const std::system_error& error) {
    return error.what();
  }
  return "none";
}

}  // namespace

TEST(OutputFile, AppearsOnCommitOnly) {
  const TemporaryFolder folder;
  OutputFile out(folder / "a");
  out.write("text");
  EXPECT_FALSE(fs::exists(folder / "a"));
  out.commit();
  EXPECT_EQ(readFile(folder / "a"), "text");
  EXPECT_EQ(folder.entryCount(), 1u);
}

TEST(OutputFile, LeavesTheOldFileAndNothingElseWithoutCommit) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "old");
  {
    OutputFile out(folder / "a");
    out.write(std::string(1 << 20, 'x'));
  }
  EXPECT_EQ(readFile(folder / "a"), "old");
  EXPECT_EQ(folder.entryCount(), 1u);
}

TEST(OutputFile, HasItsTemporaryFileRemovedWhereTheProcessEnds) {
  const TemporaryFolder folder;
  OutputFile first(folder / "a");
  OutputFile second(folder / "b");
  put(folder / "c", "text");
  EXPECT_EQ(folder.entryCount(), 3u);
  cornerpin::removeTemporaryFiles();
  EXPECT_EQ(folder.entryCount(), 1u);
  EXPECT_EQ(readFile(folder / "c"), "text");
}

TEST(OutputFile, KeepsTheModeOfTheOldFile) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "old");
  fs::permissions(folder / "a", fs::perms(0640));
  put(folder / "a", "new");
  EXPECT_EQ(readFile(folder / "a"), "new");
  EXPECT_EQ(modeOf(folder / "a"), 0640u);
}

TEST(OutputFile, GivesANewFileTheUsualMode) {
  const TemporaryFolder folder;
  const mode_t old = ::umask(027);
  put(folder / "a", "new");
  ::umask(old);
  EXPECT_EQ(modeOf(folder / "a"), 0640u);
}

TEST(OutputFile, FollowsLinksToTheirTarget) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "d");
  writeFile(folder / "d/real", "old");
  fs::create_symlink("real", folder / "d/link");
  fs::create_symlink("d/link", folder / "a");
  put(folder / "a", "new");
  EXPECT_TRUE(fs::is_symlink(folder / "a"));
  EXPECT_TRUE(fs::is_symlink(folder / "d/link"));
  EXPECT_EQ(readFile(folder / "d/real"), "new");
}

TEST(OutputFile, MakesTheFileThatADanglingLinkNames) {
  const TemporaryFolder folder;
  fs::create_symlink("real", folder / "a");
  put(folder / "a", "new");
  EXPECT_TRUE(fs::is_symlink(folder / "a"));
  EXPECT_EQ(readFile(folder / "real"), "new");
}

TEST(OutputFile, RefusesALinkToItself) {
  const TemporaryFolder folder;
  fs::create_symlink("a", folder / "a");
  EXPECT_EQ(failureOf(folder / "a"), folder / "a" + ": Too many levels of symbolic links");
  EXPECT_TRUE(fs::is_symlink(folder / "a"));
}

// As many as the system follows.
TEST(OutputFile, FollowsFortyLinksAndNoMore) {
  const TemporaryFolder folder;
  writeFile(folder / "0", "old");
  for (int i = 1; i <= 41; ++i)
    fs::create_symlink(std::to_string(i - 1), folder / std::to_string(i));
  EXPECT_EQ(failureOf(folder / "40"), "none");
  EXPECT_EQ(readFile(folder / "0"), "new");
  EXPECT_EQ(failureOf(folder / "41"), folder / "41" + ": Too many levels of symbolic links");
}

TEST(OutputFile, HoldsALongTextInTheOrderOfItsPieces) {
  const TemporaryFolder folder;
  OutputFile out(folder / "a");
  std::string whole;
  for (int i = 0; i < 100000; ++i) {
    const std::string piece = std::to_string(i) + ",";
    out.write(piece);
    whole += piece;
  }
  out.commit();
  EXPECT_EQ(readFile(folder / "a"), whole);
}

TEST(OutputFile, HasTheTemporaryFilesOfSixteenRemoved) {
  const TemporaryFolder folder;
  std::vector<std::unique_ptr<OutputFile>> files;
  for (int i = 0; i < 17; ++i) {
    files.push_back(std::make_unique<OutputFile>(folder / std::to_string(i)));
  }
  EXPECT_EQ(folder.entryCount(), 17u);
  cornerpin::removeTemporaryFiles();
  EXPECT_EQ(folder.entryCount(), 1u);
}

TEST(OutputFile, SaysThatADeviceIsFull) {
  EXPECT_EQ(failureOf("/dev/full"), "/dev/full: No space left on device");
}

TEST(OutputFile, WritesDevicesDirectly) {
  put("/dev/null", "text");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

// As a shell's -o >(command) hands it over.
TEST(OutputFile, WritesAPipeThatHasNoNameButItsDescriptor) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  put("/dev/fd/" + std::to_string(ends[1]), "text");
  ::close(ends[1]);
  char block[16];
  EXPECT_EQ(std::string(block, static_cast<std::size_t>(::read(ends[0], block, 16))), "text");
  ::close(ends[0]);
}

// A file size limit fails in the middle of writing, as a full disk does.
TEST(OutputFile, LeavesTheOldFileWhenTheDiskIsFull) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "old");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit small = before;
  small.rlim_cur = 4096;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::string failure = failureOf(folder / "a", std::string(1 << 20, 'x'));
  ::setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(failure, folder / "a" + ": File too large");
  EXPECT_EQ(readFile(folder / "a"), "old");
  EXPECT_EQ(folder.entryCount(), 1u);
}

TEST(OutputFile, NamesAFolderThatIsMissingOrNoFolder) {
  const TemporaryFolder folder;
  EXPECT_EQ(failureOf(folder / "none/a"), folder / "none/a" + ": No such file or directory");
  writeFile(folder / "file", "");
  EXPECT_EQ(failureOf(folder / "file/a"), folder / "file/a" + ": Not a directory");
  EXPECT_NE(failureOf("/proc/a.json"), "none");
}

// The superuser writes anywhere: step down where we are one.
TEST(OutputFile, RefusesAFolderWithoutPermission) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "locked");
  fs::permissions(folder.path(), fs::perms(0755));
  fs::permissions(folder / "locked", fs::perms(0555));
  const bool superuser = ::geteuid() == 0;
  if (superuser) {
    ASSERT_EQ(::seteuid(65534), 0);
  }
  const std::string failure = failureOf(folder / "locked/a");
  if (superuser) {
    ASSERT_EQ(::seteuid(0), 0);
  }
  EXPECT_EQ(failure, folder / "locked/a" + ": Permission denied");
}

TEST(OutputFile, RefusesAFolderAsTarget) {
  const TemporaryFolder folder;
  EXPECT_EQ(failureOf(folder.path().string()), folder.path().string() + ": Is a directory");
}

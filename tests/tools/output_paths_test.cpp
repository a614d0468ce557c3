// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/output_paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "tests/support/child.h"
#include "tests/support/files.h"

using namespace cornerpin;

TEST(IsStandardOutput, KnowsBothNames) {
  EXPECT_TRUE(isStandardOutput("-"));
  EXPECT_TRUE(isStandardOutput("/dev/stdout"));
  EXPECT_FALSE(isStandardOutput(""));
  EXPECT_FALSE(isStandardOutput("stdout"));
}

TEST(RefuseInput, KnowsTheInputUnderEveryName) {
  const TemporaryFolder folder;
  const std::string in = folder / "in.csv";
  writeFile(in, "tracks");
  std::filesystem::create_symlink("in.csv", folder / "soft.csv");
  std::filesystem::create_hard_link(in, folder / "hard.csv");
  for (const char* name : {"in.csv", "./in.csv", "soft.csv", "hard.csv"}) {
    const std::string out = folder / name;
    try {
      refuseInput(in, out);
      ADD_FAILURE() << name;
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(),
                "\"" + out + "\" is the file that is read: not replaced; name another");
    }
  }
}

TEST(RefuseInput, AllowsOtherFilesNoneAndDevices) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "tracks");
  writeFile(folder / "out.csv", "tracks");
  for (const std::string& out : {folder / "out.csv", folder / "new.csv", std::string()}) {
    EXPECT_NO_THROW(refuseInput(folder / "in.csv", out)) << out;
  }
  EXPECT_NO_THROW(refuseInput("/dev/null", "/dev/null"));
}

TEST(RefuseSame, NamesTheOptionsThatWantOneFile) {
  const TemporaryFolder folder;
  for (bool exists : {false, true}) {
    if (exists) writeFile(folder / "a", "");
    try {
      refuseSame("-o", folder / "a", "--explain", folder / "./a");
      ADD_FAILURE() << exists;
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(),
                "-o and --explain both want \"" + folder / "./a" + "\": name two files");
    }
  }
}

TEST(RefuseSame, AllowsOtherFilesNoneAndDevices) {
  const TemporaryFolder folder;
  EXPECT_NO_THROW(refuseSame("-o", folder / "a", "--explain", folder / "b"));
  EXPECT_NO_THROW(refuseSame("-o", "", "--explain", ""));
  EXPECT_NO_THROW(refuseSame("-o", "/dev/null", "--explain", "/dev/null"));
}

namespace {

std::string refusalOf(const std::string& path) {
  try {
    requireWritable(path);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "none";
}

}  // namespace

TEST(RequireWritable, SaysWhatIsWrongWithThePathAndWhatToDo) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "text");
  EXPECT_EQ(refusalOf(folder / "none/a"),
            "cannot write \"" + folder / "none/a" +
                "\": its folder does not exist: make it, or name another");
  EXPECT_EQ(refusalOf(folder / "file/a"),
            "cannot write \"" + folder / "file/a" +
                "\": a part of the path is a file, not a folder: name another");
  EXPECT_EQ(refusalOf(folder.path().string()),
            "cannot write \"" + folder.path().string() + "\": it is a folder: name a file in it");
  EXPECT_EQ(refusalOf("/proc/a.json").rfind("cannot write \"/proc/a.json\": ", 0), 0u);
  EXPECT_EQ(readFile(folder / "file"), "text");
  EXPECT_EQ(folder.entryCount(), 1u);
}

// The superuser writes anywhere: step down where we are one.
TEST(RequireWritable, LooksAtTheRightsOfTheFolderAndTheFile) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "locked");
  writeFile(folder / "mine", "text");
  using std::filesystem::perms;
  std::filesystem::permissions(folder.path(), perms(0777));
  std::filesystem::permissions(folder / "locked", perms(0555));
  std::filesystem::permissions(folder / "mine", perms(0444));
  const bool superuser = ::geteuid() == 0;
  if (superuser) {
    ASSERT_EQ(::seteuid(65534), 0);
  }
  const std::string inside = refusalOf(folder / "locked/a");
  const std::string existing = refusalOf(folder / "mine");
  if (superuser) {
    ASSERT_EQ(::seteuid(0), 0);
  }
  const std::string rest =
      "\": Permission denied: name another file or folder, or change its rights";
  EXPECT_EQ(inside, "cannot write \"" + folder / "locked/a" + rest);
  EXPECT_EQ(existing, "cannot write \"" + folder / "mine" + rest);
}

TEST(RequireWritable, AllowsNewFilesOldOnesAndDevicesAndLeavesThemAsTheyAre) {
  const TemporaryFolder folder;
  writeFile(folder / "old", "text");
  for (const std::string& path :
       {folder / "new", folder / "old", std::string(), std::string("-"), std::string("/dev/null")})
    EXPECT_EQ(refusalOf(path), "none") << path;
  EXPECT_EQ(readFile(folder / "old"), "text");
  EXPECT_EQ(folder.entryCount(), 1u);
}

TEST(TextOf, SaysWhatToDoWhereTheDiskOrAFileIsFull) {
  const auto text = [](std::errc code) {
    return textOf(std::system_error(std::make_error_code(code), "out.json"));
  };
  EXPECT_EQ(text(std::errc::no_space_on_device),
            "out.json: No space left on device: make room, or write to another place");
  EXPECT_EQ(text(std::errc::file_too_large),
            "out.json: File too large: raise the limit (ulimit -f), or write to another place");
  EXPECT_EQ(text(std::errc::io_error), "out.json: Input/output error");
}

// To open it would wait for a reader.
TEST(RequireWritable, DoesNotOpenAPipe) {
  const TemporaryFolder folder;
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(refusalOf(folder / "pipe"), "none");
}

TEST(Print, WritesOnStandardOutput) {
  const ChildRun run = runInChild([] { print("two\nlines\n"); });
  EXPECT_EQ(run.out, "two\nlines\n");
  EXPECT_EQ(run.err, "");
}

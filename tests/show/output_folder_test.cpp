// SPDX-License-Identifier: BSD-3-Clause
#include "show/output_folder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <system_error>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/files.h"

using namespace cornerpin;
namespace fs = std::filesystem;

TEST(OutputFolder, IsMadeAndLeavesNothingHidden) {
  const TemporaryFolder folder;
  {
    const OutputFolder out(folder / "a/b");
    EXPECT_TRUE(fs::is_directory(out.hidden()));
    EXPECT_EQ(out / "x", folder / "a/b/x");
  }
  EXPECT_TRUE(fs::is_empty(folder / "a/b"));
}

TEST(OutputFolder, TakesFilesFromWhereTheyAreMade) {
  const TemporaryFolder folder;
  OutputFolder out(folder.path().string());
  writeFile(folder / "b", "old");
  const std::string work = out.beginWork("sh010");
  writeFile(work + "/a", "1");
  writeFile(work + "/b", "2");
  writeFile(work + "/c", "3");
  out.place(work, {"a", "b"});
  out.endWork("sh010");
  EXPECT_FALSE(fs::exists(work));
  EXPECT_EQ(readFile(folder / "a") + readFile(folder / "b"), "12");
  EXPECT_FALSE(fs::exists(folder / "c"));
}

TEST(OutputFolder, EmptiesWhatIsWorkedInAgain) {
  const TemporaryFolder folder;
  OutputFolder out(folder.path().string());
  writeFile(out.beginWork("a") + "/half", "1");
  EXPECT_TRUE(fs::is_empty(out.beginWork("a")));
}

TEST(OutputFolder, WritesAFileThatIsCalledLikeWhatIsWorkedIn) {
  const TemporaryFolder folder;
  OutputFolder out(folder.path().string());
  const std::string work = out.beginWork("a");
  writeFile(work + "/b", "1");
  out.write("a", "text");
  out.writeQuickly("a", "other");
  EXPECT_EQ(readFile(folder / "a"), "other");
  EXPECT_EQ(readFile(work + "/b"), "1");
}

TEST(OutputFolder, WritesAndRemovesFiles) {
  const TemporaryFolder folder;
  OutputFolder out(folder.path().string());
  out.write("a", "text");
  EXPECT_EQ(readFile(folder / "a"), "text");
  out.writeQuickly("a", "other");
  EXPECT_EQ(readFile(folder / "a"), "other");
  out.remove({"a", "b"});
  EXPECT_FALSE(fs::exists(folder / "a"));
}

TEST(OutputFolder, KeepsAFileThatCannotBeReplaced) {
  const TemporaryFolder folder;
  OutputFolder out(folder.path().string());
  writeFile(folder / "a", "old");
  fs::remove_all(out.hidden());
  EXPECT_THROW(out.write("a", "new"), std::system_error);
  EXPECT_THROW(out.writeQuickly("a", "new"), std::system_error);
  EXPECT_EQ(readFile(folder / "a"), "old");
}

TEST(OutputFolder, RemovesWhatAKilledProcessHasLeftAndNothingElse) {
  const TemporaryFolder folder;
  const pid_t killed = startChild([&] {
    OutputFolder out(folder.path().string());
    out.write("ready", out.beginWork("sh010"));
    for (;;) ::pause();
  });
  for (int wait = 0; wait < 20000 && !fs::exists(folder / "ready"); ++wait) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const std::string work = readFile(folder / "ready");
  const auto other = std::make_unique<OutputFolder>(folder.path().string());
  EXPECT_TRUE(fs::exists(work));  // in use by a process that lives
  ::kill(killed, SIGKILL);
  EXPECT_FALSE(endsWell(killed));
  const OutputFolder third(folder.path().string());
  EXPECT_FALSE(fs::exists(work));
  EXPECT_TRUE(fs::exists(other->hidden()));
  EXPECT_EQ(folder.entryCount(), 3u);
}

TEST(OutputFolder, FailsWhereItCannotBeMade) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "");
  EXPECT_THROW(OutputFolder(folder / "a/b"), std::system_error);
}

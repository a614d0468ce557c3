// SPDX-License-Identifier: BSD-3-Clause
#include "show/farm.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

#include "show/children.h"
#include "tests/support/files.h"

using namespace cornerpin;
namespace fs = std::filesystem;

namespace {

const std::string kStart = "cornerpin batch m";
const std::vector<Piece> kPieces = {{"k0", 2, "a b --only=0-1"}, {"k1", 1, "a b --only=3-3"}};

// A program called python3 that is a shell script, first in the path while this lives.
class FakePython {
 public:
  explicit FakePython(const std::string& script) : before_(::getenv("PATH")) {
    writeFile(folder_ / "python3", "#!/bin/sh\n" + script + "\n");
    fs::permissions(folder_ / "python3", fs::perms::owner_all);
    ::setenv("PATH", (folder_.path().string() + ":" + before_).c_str(), 1);
  }
  ~FakePython() { ::setenv("PATH", before_.c_str(), 1); }

  std::string operator/(const std::string& name) const { return folder_ / name; }

  // What a run says.
  std::string run(const shot::Progress& progress = {}) const {
    OutputFolder out(folder_ / "out");
    return runOnFarm("tcp://host:1", kPieces, out, progress);
  }

  std::string failure() const {
    try {
      run();
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "no failure";
  }

 private:
  TemporaryFolder folder_;
  std::string before_;
};

}  // namespace

TEST(PiecesOf, HoldShotsSideBySide) {
  const std::vector<Piece> pieces =
      piecesOf({{0, "a"}, {1, "b"}, {2, "c"}, {5, "d"}, {6, "e"}, {8, "f"}}, 2, kStart);
  std::string commands;
  for (const Piece& piece : pieces) {
    commands += std::to_string(piece.shots) + ": " + piece.command + "\n";
  }
  EXPECT_EQ(commands,
            "2: cornerpin batch m --only=0-1\n"
            "1: cornerpin batch m --only=2-2\n"
            "2: cornerpin batch m --only=5-6\n"
            "1: cornerpin batch m --only=8-8\n");
  EXPECT_TRUE(piecesOf({}, 2, kStart).empty());
}

TEST(PiecesOf, HaveADigestOfKeysAndCommand) {
  // printf 'aabbcornerpin batch m --only=0-1' | sha256sum
  EXPECT_EQ(piecesOf({{0, "aa"}, {1, "bb"}}, 10, kStart)[0].key,
            "295a5c395df1eee8fe7295f38a834b1cba48fe5391068753dcd7d965bf5b12f8");
  EXPECT_NE(piecesOf({{0, "aa"}, {1, "bc"}}, 10, kStart)[0].key,
            "295a5c395df1eee8fe7295f38a834b1cba48fe5391068753dcd7d965bf5b12f8");
  EXPECT_NE(piecesOf({{0, "aa"}, {1, "bb"}}, 10, kStart + "n")[0].key,
            "295a5c395df1eee8fe7295f38a834b1cba48fe5391068753dcd7d965bf5b12f8");
}

TEST(RunOnFarm, GivesPythonAProgramAndThePieces) {
  const FakePython python(
      "printf '%s\\n' \"$1\" \"$3\" > \"${0%/*}/words\"; cp \"$4\" \"${0%/*}/pieces\"");
  EXPECT_EQ(python.run(), "");
  EXPECT_EQ(readFile(python / "words"), "-c\ntcp://host:1\n");
  EXPECT_EQ(readFile(python / "pieces"), "k0 2 a b --only=0-1\nk1 1 a b --only=3-3\n");
}

TEST(RunOnFarm, ReportsHowManyShotsAreDone) {
  const FakePython python("echo 2 > \"$5\"; sleep 0.5");
  std::string told;
  python.run([&](const char* phase, std::size_t done, std::size_t total) {
    EXPECT_STREQ(phase, "solving shots");
    const std::string text = std::to_string(done) + "/" + std::to_string(total) + " ";
    if (told.size() < text.size() || told.substr(told.size() - text.size()) != text) told += text;
    return true;
  });
  EXPECT_EQ(told, "2/3 ");
}

TEST(RunOnFarm, EndsWhereItsProgressSaysSo) {
  const FakePython python("echo 2 > \"$5\"; exec sleep 60");
  EXPECT_THROW(python.run([](const char*, std::size_t, std::size_t) { return false; }),
               shot::Cancelled);
}

TEST(RunOnFarm, ReturnsWhatIsSaidOfCommandsThatFailed) {
  EXPECT_EQ(FakePython("echo one >&2; echo two >&2").run(), "one\ntwo");
}

TEST(RunOnFarm, FailsWithWhatIsSaidOfTheScheduler) {
  EXPECT_EQ(FakePython("echo tcp://host:1: no answer >&2; exit 1").failure(),
            "tcp://host:1: no answer");
  EXPECT_EQ(FakePython("exit 3").failure(), "tcp://host:1: python3 ended in 3");
  EXPECT_EQ(FakePython("kill -9 $$").failure(),
            "tcp://host:1: python3, which asks the scheduler, was ended by signal 9 (Killed)");
}

TEST(RunOnFarm, TellsThatThereIsNoPython) {
  const FakePython python("");
  const std::string path = ::getenv("PATH");
  ::setenv("PATH", (python / "nothing").c_str(), 1);
  const std::string failure = python.failure();
  EXPECT_EQ(failure.rfind("--scheduler needs python3: env: ", 0), 0u) << failure;
  ::setenv("PATH", path.c_str(), 1);
}

TEST(RunOnFarm, EndsPythonWhereThisProcessIsInterrupted) {
  const FakePython python("echo $$ > \"${0%/*}/pid\"; kill -TERM " + std::to_string(::getpid()) +
                          "; exec sleep 1000");
  EXPECT_THROW(python.run(), Interrupted);
  EXPECT_NE(::kill(std::stoi(readFile(python / "pid")), 0), 0);
}

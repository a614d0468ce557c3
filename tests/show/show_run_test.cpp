// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_run.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>

#include "show/task_record.h"
#include "tests/support/files.h"
#include "tests/support/small_shot.h"

using namespace cornerpin;
namespace fs = std::filesystem;

namespace {

// A folder of shots, and one for what they come to.
struct Made {
  TemporaryFolder in;
  TemporaryFolder out;
  Show show;
  RunOptions options;

  explicit Made(int shots) {
    for (int i = 0; i < shots; ++i) add("sh" + std::to_string(i), smallShot(i));
    options.program = CORNERPIN_PROGRAM;
    options.version = {"cornerpin", "1", ""};
    options.workers = 2;
  }

  void add(const std::string& name, const std::string& text) {
    writeFile(in / (name + ".csv"), text);
    show.shots.push_back({name, in.path().string(), name + ".csv", {}, ""});
  }

  RunCounts run() {
    OutputFolder folder(out.path().string());
    return runShow(show, options, folder);
  }

  TaskRecord record(const std::string& name) const {
    return readRecord(out / (name + ".task.json"));
  }
};

using Counts = std::pair<std::size_t, std::size_t>;

Counts doneAndKept(Made& made) {
  const RunCounts counts = made.run();
  return {counts.done, counts.kept};
}

// A program that is a shell script.
std::string script(const TemporaryFolder& folder, const std::string& text) {
  writeFile(folder / "script", "#!/bin/sh\n" + text + "\n");
  fs::permissions(folder / "script", fs::perms::owner_all);
  return folder / "script";
}

}  // namespace

TEST(ShowRun, DoesEveryShotOnce) {
  Made made(5);
  EXPECT_EQ(doneAndKept(made), Counts(5, 0));
  for (int i = 0; i < 5; ++i) {
    const std::string name = "sh" + std::to_string(i);
    EXPECT_EQ(made.record(name).state, ShotState::Solved) << made.record(name).message;
    EXPECT_EQ(made.record(name).figures->frames, 3u);
    EXPECT_TRUE(fs::exists(made.out / (name + ".json")));
  }
  EXPECT_EQ(made.out.entryCount(), 10u);
  EXPECT_EQ(doneAndKept(made), Counts(0, 5));
}

TEST(ShowRun, DoesAgainWhatChangedOrIsMissing) {
  Made made(4);
  made.run();
  writeFile(made.in / "sh0.csv", smallShot(9));
  fs::remove(made.out / "sh1.json");
  fs::remove(made.out / "sh2.task.json");
  EXPECT_EQ(doneAndKept(made), Counts(3, 1));
  EXPECT_EQ(doneAndKept(made), Counts(0, 4));
  writeFile(made.out / "sh3.task.json", "{");
  EXPECT_EQ(doneAndKept(made), Counts(1, 3));
  made.options.version.version = "2";
  EXPECT_EQ(doneAndKept(made), Counts(4, 0));
}

TEST(ShowRun, RemovesFilesThatAreNoMoreWanted) {
  Made made(1);
  made.show.shots[0].options["size"] = {"100x100"};
  made.show.exports = {{"csv", ""}};
  made.run();
  EXPECT_TRUE(fs::exists(made.out / "sh0.csv")) << made.record("sh0").message;
  made.show.exports.clear();
  made.run();
  EXPECT_FALSE(fs::exists(made.out / "sh0.csv"));
  EXPECT_TRUE(fs::exists(made.out / "sh0.json"));
}

TEST(ShowRun, KeepsNoFilesOfAShotThatFails) {
  Made made(1);
  made.run();
  writeFile(made.in / "sh0.csv", "track,frame,x,y\na,1,b,2\n");
  made.run();
  EXPECT_EQ(made.record("sh0").state, ShotState::Failed);
  EXPECT_EQ(made.record("sh0").message, "sh0.csv:2: x must be a number, not \"b\"");
  EXPECT_EQ(made.out.entryCount(), 1u);
}

TEST(ShowRun, LeavesAFailedShotFilesThatNoRecordTellsOf) {
  Made made(0);
  made.add("a", "track,frame,x,y\n");
  made.show.exports = {{"csv", ""}};
  writeFile(made.out / "a.json", "somebody's");
  writeFile(made.out / "a.csv", "somebody's");
  made.run();
  EXPECT_EQ(made.record("a").state, ShotState::Failed);
  EXPECT_EQ(readFile(made.out / "a.json"), "somebody's");
  EXPECT_EQ(readFile(made.out / "a.csv"), "somebody's");
}

TEST(ShowRun, RemovesNoFilesOfOthersThatARecordNames) {
  Made made(0);
  made.add("a.b", smallShot(1));
  made.add("a", smallShot(2));
  made.options.workers = 1;
  made.run();
  std::string text = readFile(made.out / "a.task.json");
  const std::string own = "\"a.json\"";
  text.replace(text.find(own), own.size(),
               "\"a.json\",\"a.old\",\"a.b.json\",\"a.task.json\",\"a.b.task.json\",\"x.json\",\"a."
               "/../x.json\"");
  writeFile(made.out / "a.task.json", text);
  writeFile(made.out / "a.old", "");
  writeFile(made.out / "x.json", "somebody's");
  for (const char* input : {"", "broken\n"}) {
    writeFile(made.in / "a.csv", smallShot(3) + input);
    made.run();
    EXPECT_FALSE(fs::exists(made.out / "a.old"));
    EXPECT_TRUE(fs::exists(made.out / "a.b.json"));
    EXPECT_EQ(made.record("a.b").state, ShotState::Solved);
    EXPECT_TRUE(fs::exists(made.out / "x.json"));
  }
  EXPECT_EQ(made.record("a").state, ShotState::Failed);
  EXPECT_FALSE(fs::exists(made.out / "a.json"));
}

// While a shot is solved again what was there stays, and its record.
TEST(ShowRun, KeepsARecordUntilItsFilesAreReplaced) {
  Made made(1);
  made.run();
  writeFile(made.in / "sh0.csv", smallShot(9));
  const TemporaryFolder folder;
  const std::string seen = folder / "seen";
  made.options.program =
      script(folder, "ls '" + made.out.path().string() + "' > '" + seen + "'; exit 3");
  made.run();
  EXPECT_EQ(readFile(seen), "sh0.json\nsh0.task.json\n");
  EXPECT_EQ(made.record("sh0").state, ShotState::Failed);
}

TEST(ShowRun, LeavesNoRecordOfFilesThatWereNotPlaced) {
  Made made(1);
  made.run();
  writeFile(made.in / "sh0.csv", smallShot(9));
  fs::remove(made.out / "sh0.json");
  fs::create_directories(made.out / "sh0.json/x");
  EXPECT_THROW(made.run(), fs::filesystem_error);
  EXPECT_FALSE(fs::exists(made.out / "sh0.task.json"));
}

TEST(ShowRun, DoesAgainWhatHasTheRecordOfAnother) {
  Made made(2);
  made.run();
  std::string text = readFile(made.out / "sh1.task.json");
  const std::string name = "\"name\":\"sh1\"";
  text.replace(text.find(name), name.size(), "\"name\":\"sh0\"");
  writeFile(made.out / "sh1.task.json", text);
  EXPECT_EQ(doneAndKept(made), Counts(1, 1));
  text = readFile(made.out / "sh1.task.json");
  const std::size_t figures = text.find("\"figures\":") + 10;
  writeFile(made.out / "sh1.task.json", text.substr(0, figures) + "null}\n");
  EXPECT_EQ(doneAndKept(made), Counts(1, 1));
}

TEST(ShowRun, DoesAFailedShotAgainWhenAskedToOrWhenItsKeyDiffers) {
  Made made(1);
  fs::remove(made.in / "sh0.csv");
  EXPECT_EQ(doneAndKept(made), Counts(1, 0));
  EXPECT_EQ(made.record("sh0").message,
            "sh0.csv: there is no such file: check its name and folder");
  EXPECT_EQ(doneAndKept(made), Counts(0, 1));
  made.options.retry = true;
  EXPECT_EQ(doneAndKept(made), Counts(1, 0));
  made.options.retry = false;
  writeFile(made.in / "sh0.csv", smallShot(1));
  EXPECT_EQ(doneAndKept(made), Counts(1, 0));
  EXPECT_EQ(made.record("sh0").state, ShotState::Solved);
  made.options.retry = true;
  EXPECT_EQ(doneAndKept(made), Counts(0, 1));
}

TEST(ShowRun, DoesARangeOfShots) {
  Made made(5);
  made.options.first = 1;
  made.options.last = 2;
  EXPECT_EQ(doneAndKept(made), Counts(2, 0));
  EXPECT_TRUE(fs::exists(made.out / "sh2.json"));
  EXPECT_FALSE(fs::exists(made.out / "sh0.json"));
}

TEST(ShowRun, GivesUpAShotWhoseProcessIsEndedThreeTimes) {
  const TemporaryFolder folder;
  Made made(2);
  made.options.program = script(folder, "echo x >> " + (folder / "log") + "; kill -9 $$");
  made.run();
  EXPECT_EQ(made.record("sh1").message, "ended by signal 9 (Killed), 3 times");
  EXPECT_EQ(readFile(folder / "log"), "x\nx\nx\nx\nx\nx\n");
  made.options.program = script(folder, "kill -STOP $$");
  made.options.retry = true;
  made.run();
  EXPECT_EQ(made.record("sh1").message, "stopped by signal 19 (Stopped (signal)), 3 times");
}

TEST(ShowRun, FailsAShotThatTakesTooLongAtOnce) {
  const TemporaryFolder folder;
  Made made(1);
  made.options.program = script(folder, "echo x >> " + (folder / "log") + "; while :; do :; done");
  made.options.timeLimit = 1;
  made.run();
  EXPECT_EQ(made.record("sh0").message, "took more than 1 s of the processor (--time-limit)");
  EXPECT_EQ(readFile(folder / "log"), "x\n");
}

TEST(OpenShots, AreThoseThatARunWouldDo) {
  Made made(4);
  writeFile(made.in / "sh3.csv", "track,frame,x,y\na,1,b,2\n");
  const auto open = [&] {
    std::vector<std::size_t> indices;
    OutputFolder folder(made.out.path().string());
    for (const OpenShot& shot : openShots(made.show, made.options, folder)) {
      const ShowShot& which = made.show.shots[shot.index];
      EXPECT_EQ(shot.key, taskOf(made.show, which, made.options.version).key);
      indices.push_back(shot.index);
    }
    return indices;
  };
  EXPECT_EQ(open(), (std::vector<std::size_t>{0, 1, 2, 3}));
  made.run();
  EXPECT_TRUE(open().empty());
  fs::remove(made.out / "sh1.json");
  EXPECT_EQ(open(), (std::vector<std::size_t>{1}));
  made.options.retry = true;
  EXPECT_EQ(open(), (std::vector<std::size_t>{1, 3}));
  made.options.last = 2;
  EXPECT_EQ(open(), (std::vector<std::size_t>{1}));
}

TEST(ShowRun, TellsAShotThatEndsWithoutItsFiles) {
  const TemporaryFolder folder;
  Made made(1);
  made.options.program = script(folder, "exit 0");
  made.run();
  EXPECT_EQ(made.record("sh0").state, ShotState::Failed);
  EXPECT_EQ(made.record("sh0").message.rfind("the process ended without its files: sh0.json", 0),
            0u)
      << made.record("sh0").message;
  made.options.retry = true;
  made.options.program = script(folder, "exit 9");
  made.run();
  EXPECT_EQ(made.record("sh0").message, "ended in 9 without a message");
  made.options.program = folder / "nothing";
  made.run();
  EXPECT_EQ(made.record("sh0").message, "the process cannot be started: " + (folder / "nothing"));
}

TEST(ShowRun, TellsAnInputThatChangedMeanwhile) {
  const TemporaryFolder folder;
  Made made(1);
  made.options.program =
      script(folder, "echo t9,0,50,20 >> \"$2\"; exec " CORNERPIN_PROGRAM " \"$@\"");
  made.run();
  EXPECT_EQ(made.record("sh0").message, "sh0.csv: the file was changed meanwhile: run it again");
}

TEST(ShowRun, StartsNothingThatWouldReadForEver) {
  Made made(1);
  fs::remove(made.in / "sh0.csv");
  ASSERT_EQ(::mkfifo((made.in / "sh0.csv").c_str(), 0600), 0);
  made.run();
  EXPECT_EQ(made.record("sh0").message,
            "sh0.csv: this is no plain file: shots of a batch are read from files");
}

TEST(ShowRun, ReportsShotsThatAreDoneOfThoseThatAreToBeDone) {
  Made made(3);
  made.options.last = 0;
  made.run();
  made.options.last = 99;
  std::string told;
  OutputFolder folder(made.out.path().string());
  runShow(made.show, made.options, folder,
          [&](const char* phase, std::size_t done, std::size_t total) {
            EXPECT_STREQ(phase, "solving shots");
            told += std::to_string(done) + "/" + std::to_string(total) + " ";
            return true;
          });
  EXPECT_EQ(told, "0/3 0/2 1/2 2/2 ");
}

TEST(ShowRun, EndsWhereItsProgressSaysSo) {
  Made made(3);
  made.options.workers = 1;
  OutputFolder folder(made.out.path().string());
  const auto once = [](const char*, std::size_t done, std::size_t) { return done == 0; };
  EXPECT_THROW(runShow(made.show, made.options, folder, once), shot::Cancelled);
  made.options.last = 0;
  EXPECT_EQ(runShow(made.show, made.options, folder).kept, 1u);
}

// SPDX-License-Identifier: BSD-3-Clause
#include "show/task_record.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

TaskRecord solved() {
  TaskRecord record;
  record.task = {"sh", "a.csv", "0123", {"--fill"}, {"sh.json", "sh.nk"}, "4567"};
  record.program = {"cornerpin", "1.2.3", ""};
  record.state = ShotState::Degraded;
  record.figures.emplace();
  record.figures->frames = 7;
  record.figures->line = {0.0, 1.5};
  return record;
}

TaskRecord failed() {
  TaskRecord record = solved();
  record.state = ShotState::Failed;
  record.message = "a.csv:3: \"x\"\nand more";
  record.figures.reset();
  return record;
}

}  // namespace

TEST(TaskRecord, IsReadAsItWasWritten) {
  const TemporaryFolder folder;
  for (const TaskRecord& record : {solved(), failed()}) {
    const std::string text = recordText(record);
    writeFile(folder / "a", text);
    EXPECT_EQ(recordText(readRecord(folder / "a")), text);
  }
}

TEST(TaskRecord, HasFiguresWhereTheShotDidNotFail) {
  const TemporaryFolder folder;
  TaskRecord record = solved();
  record.figures.reset();
  writeFile(folder / "a", recordText(record));
  EXPECT_THROW(readRecord(folder / "a"), shot::InputError);
}

TEST(RecordedShots, AreThoseWithARecordInTheFolder) {
  const TemporaryFolder folder;
  for (const char* name : {"b.task.json", "a.x.task.json", "a.json", ".task.json", "task.json"})
    writeFile(folder / name, "");
  EXPECT_EQ(recordedShots(folder.path().string()), (std::set<std::string>{"a.x", "b"}));
}

TEST(TaskRecord, HasNoFilesOfAShotThatFailed) {
  const TemporaryFolder folder;
  writeFile(folder / "a", recordText(failed()));
  EXPECT_TRUE(readRecord(folder / "a").task.files.empty());
  EXPECT_EQ(readRecord(folder / "a").message, failed().message);
}

TEST(TaskRecord, IsWholeOrRefused) {
  const TemporaryFolder folder;
  const auto whole = nlohmann::json::parse(recordText(solved()));
  writeFile(folder / "a", "");
  EXPECT_THROW(readRecord(folder / "a"), shot::InputError);
  EXPECT_THROW(readRecord(folder / "b"), shot::InputError);
  for (const auto& member : whole.items()) {
    auto damaged = whole;
    damaged.erase(member.key());
    writeFile(folder / "a", damaged.dump());
    EXPECT_THROW(readRecord(folder / "a"), shot::InputError) << member.key();
    damaged[member.key()] = -5;
    writeFile(folder / "a", damaged.dump());
    EXPECT_THROW(readRecord(folder / "a"), shot::InputError) << member.key();
  }
}

TEST(TaskRecord, IsListedWithoutItsKey) {
  EXPECT_EQ(jsonLine(listedJson(failed())),
            R"({"name":"sh","input":"a.csv","state":"failed","message":"a.csv:3: \"x\"\nand more",)"
            R"("files":["sh.json","sh.nk"],"figures":null})");
}

TEST(JsonLine, ReplacesWhatIsNoText) { EXPECT_EQ(jsonLine("a\xff"), "\"a\xef\xbf\xbd\""); }

// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_table.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

TaskRecord record(const std::string& name, ShotState state, double worst) {
  TaskRecord made;
  made.task.name = name;
  made.state = state;
  if (state == ShotState::Failed) {
    made.message = "no such file\nsecond line";
  } else {
    made.figures.emplace();
    made.figures->frames = 142;
    made.figures->worst = worst;
  }
  return made;
}

ShowTable table() {
  ShowTable made;
  made.records = {record("a", ShotState::Solved, 0.5), record("b", ShotState::Degraded, 27.8),
                  record("c", ShotState::Failed, 0.0),
                  record("d", ShotState::Solved, std::numeric_limits<double>::quiet_NaN()),
                  record("e", ShotState::Solved, 27.8)};
  made.records[1].figures->doubtful = 15;
  return made;
}

}  // namespace

TEST(ShowTable, PutsTheWorstFirst) {
  const ShowTable shots = table();
  std::string names;
  for (const TaskRecord* shot : worstFirst(shots)) names += shot->task.name;
  EXPECT_EQ(names, "cdbea");
}

TEST(ShowTable, SaysInAFewWordsWhatAShotCameTo) {
  const ShowTable shots = table();
  EXPECT_EQ(shortText(shots.records[0]), "0.5 px");
  EXPECT_EQ(shortText(shots.records[1]), "27.8 px, 15 of 142 frames doubtful");
  EXPECT_EQ(shortText(shots.records[2]), "failed: no such file");
  EXPECT_EQ(shortText(shots.records[3]), "nothing is known");
  TaskRecord wordy = shots.records[2];
  wordy.message = std::string(101, 'x');
  EXPECT_EQ(shortText(wordy), "failed: " + std::string(100, 'x') + "...");
}

TEST(ShowTable, CountsAndNamesTheWorst) {
  EXPECT_EQ(summaryOf(table()),
            "solved        3 shots, 1 degraded, 1 failed of 5\n"
            "worst         c  failed: no such file\n"
            "              d  nothing is known\n"
            "              b  27.8 px, 15 of 142 frames doubtful\n"
            "              e  27.8 px\n"
            "              a  0.5 px\n");
}

TEST(ShowTable, HasEveryShotOnALineInTheirOrder) {
  const auto json = nlohmann::json::parse(showText(table(), {"cornerpin", "1", ""}));
  EXPECT_EQ(json["cornerpin_show"], 1);
  EXPECT_EQ(json["counts"].dump(), R"({"degraded":1,"failed":1,"shots":5,"solved":3})");
  ASSERT_EQ(json["shots"].size(), 5u);
  EXPECT_EQ(json["shots"][1]["name"], "b");
  EXPECT_EQ(json["shots"][1]["figures"]["worst"], 27.8);
  EXPECT_TRUE(json["shots"][3]["figures"]["worst"].is_null());
}

TEST(ShowTable, IsReadFromTheRecordsOfARange) {
  const TemporaryFolder folder;
  OutputFolder out(folder.path().string());
  Show show;
  for (const TaskRecord& shot : table().records) {
    show.shots.push_back({shot.task.name, "/", "x", {}, ""});
    out.write(recordNameOf(shot.task.name), recordText(shot));
  }
  EXPECT_EQ(readTable(show, out, 1, 2).records.size(), 2u);
  EXPECT_EQ(readTable(show, out, 3, 99).records[0].task.name, "d");
  out.remove({"b.task.json"});
  EXPECT_THROW(readTable(show, out, 0, 4), shot::InputError);
}

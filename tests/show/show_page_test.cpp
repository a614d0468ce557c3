// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_page.h"

#include <gtest/gtest.h>

#include <limits>

using namespace cornerpin;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TaskRecord solved(const std::string& name, double worst) {
  TaskRecord record;
  record.task.name = name;
  record.state = ShotState::Solved;
  record.figures.emplace();
  record.figures->frames = 142;
  record.figures->doubtful = 15;
  record.figures->worst = worst;
  record.figures->rms = 0.128;
  record.figures->line = {0.0, worst};
  return record;
}

}  // namespace

TEST(SparkPath, IsALineFromTheBottomToTheLargestValueAtTheTop) {
  EXPECT_EQ(sparkPath({0.0, 2.0, 1.0}), "M10.0 16.0h0L30.0 0.0L50.0 8.0");
  EXPECT_EQ(sparkPath({0.0, 0.0}), "M15.0 16.0h0L45.0 16.0");
  EXPECT_EQ(sparkPath({}), "");
}

TEST(SparkPath, HasGapsWhereNothingIsKnown) {
  EXPECT_EQ(sparkPath({1.0, kNan, 1.0}), "M10.0 0.0h0M50.0 0.0h0");
  EXPECT_EQ(sparkPath({kNan}), "");
}

TEST(ShowPage, HasTheWorstShotFirst) {
  ShowTable table;
  table.records = {solved("good", 0.5), solved("bad", 27.8)};
  const std::string page = showPageText(table);
  EXPECT_LT(page.find(">bad<"), page.find(">good<"));
  EXPECT_TRUE(contains(page,
                       "<td data-value=\"27.8\">27.8<td data-value=\"15\">15"
                       "<td data-value=\"142\">142<td data-value=\"0.128\">0.128"));
  EXPECT_TRUE(contains(page, "<p>2 solved, 0 degraded, 0 failed</p>"));
}

TEST(ShowPage, TakesTextsForTexts) {
  ShowTable table;
  table.records = {solved("a <b>&\"'", 1.0)};
  TaskRecord failed;
  failed.task.name = "f";
  failed.message = "</script><script>alert(1)</script>";
  table.records.push_back(failed);
  const std::string page = showPageText(table);
  EXPECT_TRUE(contains(page, ">a &lt;b&gt;&amp;"));
  EXPECT_FALSE(contains(page, "<b>"));
  EXPECT_FALSE(contains(page, "alert(1)</script>"));
}

TEST(ShowPage, LinksPagesThatAreThereByTheirAddress) {
  ShowTable table;
  table.records = {solved("sh 1#?%:", 1.0), solved("other", 1.0)};
  table.records[0].task.files = {"sh 1#?%:.json", "sh 1#?%:.html"};
  const std::string page = showPageText(table);
  EXPECT_TRUE(contains(page, "<a href=\"./sh%201%23%3F%25%3A.html\">sh 1#?%:</a>"));
  EXPECT_TRUE(contains(page, "<th scope=\"row\">other<"));
}

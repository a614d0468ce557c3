// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/tools/program.h"

using nlohmann::json;

namespace {

// Ten tracks that sway, with some jitter. In frames 20 to 24 none of them is left, in the last
// three one.
std::string swayingShot() {
  std::string csv = "track,frame,x,y\n";
  for (int f = 0; f < 40; ++f) {
    for (int t = 0; t < 10; ++t) {
      if ((f >= 20 && f <= 24) || (f >= 37 && t >= 1)) continue;
      const double jitter = 0.6 * std::sin(f * (7.3 + 1.7 * t) + 11.0 * t);
      const double x = 100.0 + 80.0 * t + 30.0 * std::sin(f / 9.0) + jitter;
      const double y = 100.0 + (t * 7 % 10) * 45.0 + 2.0 * f - jitter;
      csv += fmt::format("t{},{},{},{}\n", t, f, x, y);
    }
  }
  return csv;
}

class Shot {
 public:
  Shot() { writeFile(path(), swayingShot()); }
  std::string path() const { return folder_ / "in.csv"; }
  std::string operator/(const std::string& name) const { return folder_ / name; }

  json solved(std::vector<std::string> options, int code = 4) const {
    options.insert(options.begin(), {"solve", path(), "--base", "5", "--json"});
    const Outcome run = cornerpin(options);
    EXPECT_EQ(run.code, code) << run.err;
    return json::parse(run.out);
  }

 private:
  TemporaryFolder folder_;
};

// The largest distance between the corners of two places in a result.
double moved(const json& a, const json& b) {
  double most = 0.0;
  for (std::size_t i = 0; i < 4; ++i) {
    const json& p = a["quads"]["tracks"]["corners"][i];
    const json& q = b["quads"]["tracks"]["corners"][i];
    most = std::max(most, std::hypot(p[0].get<double>() - q[0].get<double>(),
                                     p[1].get<double>() - q[1].get<double>()));
  }
  return most;
}

}  // namespace

TEST(SolveCommandRetouch, SmoothsWithinTheBudgetAndKeepsTheFit) {
  const Shot shot;
  const json plain = shot.solved({});
  const json smooth = shot.solved({"--smooth", "0.125"});
  EXPECT_TRUE(plain["smooth"].is_null());
  EXPECT_EQ(smooth["smooth"], 0.125);
  double most = 0.0;
  for (std::size_t f = 0; f < 40; ++f) {
    const json& frame = smooth["frames"][f];
    const double by = moved(frame, plain["frames"][f]);
    EXPECT_NEAR(frame["smoothed"].get<double>(), by, 1e-9) << f;
    EXPECT_LE(by, 0.125 + 1e-9);
    EXPECT_EQ(frame.contains("untouched"), by > 0.0);
    EXPECT_EQ((by > 0.0 ? frame["untouched"] : frame)["h"], plain["frames"][f]["h"]);
    most = std::max(most, by);
  }
  EXPECT_GT(most, 0.124);
}

TEST(SolveCommandRetouch, FillsWhatHasGoodFramesOnBothSides) {
  const Shot shot;
  const json plain = shot.solved({});
  const json filled = shot.solved({"--fill"});
  for (std::size_t f = 0; f < 40; ++f) {
    const json& frame = filled["frames"][f];
    const bool gap = f >= 20 && f <= 24;
    EXPECT_EQ(frame["filled"], gap) << f;
    EXPECT_EQ(frame["status"], plain["frames"][f]["status"]);
    EXPECT_EQ((gap ? frame["untouched"] : frame)["h"], plain["frames"][f]["h"]);
    EXPECT_TRUE(!gap || frame["quads"]["tracks"]["deviation"][0].get<double>() > 0.1) << f;
  }
  const Outcome table = cornerpin({"solve", shot.path(), "--base", "5", "--fill"});
  EXPECT_EQ(table.code, 4);
  EXPECT_TRUE(contains(table.out,
                       "\nfilled in     5 of 8 reduced or held frames, the others are "
                       "surer as they are, lack good frames on both sides or contradict them\n"))
      << table.out;
}

TEST(SolveCommandRetouch, WritesTransformsBetweenFrames) {
  const Shot shot;
  const json j = shot.solved({"--at", "10.5,7", "--at", "39"});
  ASSERT_EQ(j["between"].size(), 3u);
  EXPECT_EQ(j["between"][0]["frame"], 7);
  EXPECT_EQ(j["between"][0]["h"], j["frames"][7]["h"]);
  EXPECT_EQ(j["between"][1]["frame"], 10.5);
  EXPECT_EQ(j["between"][2]["frame"], 39);
  const json& middle = j["between"][1]["quads"]["tracks"]["corners"];
  for (std::size_t i = 0; i < 4; ++i) {
    double expected = 0.0;  // the cubic in the middle of four
    for (int k = 0; k < 4; ++k) {
      const double share = k == 0 || k == 3 ? -1.0 / 16.0 : 9.0 / 16.0;
      const json& corners =
          j["frames"][static_cast<std::size_t>(9 + k)]["quads"]["tracks"]["corners"];
      expected += share * corners[i][0].get<double>();
    }
    EXPECT_NEAR(middle[i][0].get<double>(), expected, 1e-9);
  }
  const Outcome csv =
      cornerpin({"solve", shot.path(), "--base", "5", "--at", "10.5", "-o", shot / "out.csv"});
  EXPECT_EQ(csv.code, 4);
  EXPECT_TRUE(contains(csv.out, "\nbetween       1 more transform\n"));
  const std::string text = readFile(shot / "out.csv");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 42);
  EXPECT_LT(text.find("\n10,"), text.find("\n10.5,"));
  EXPECT_LT(text.find("\n10.5,"), text.find("\n11,"));
}

TEST(SolveCommandRetouch, CanBeRebasedWithTheFit) {
  const Shot shot;
  cornerpin({"solve", shot.path(), "--base", "5", "--smooth", "0.5", "--fill", "--at", "10.5", "-o",
             shot / "in.json"});
  cornerpin({"solve", shot.path(), "--base", "5", "--reference", "12", "-o", shot / "fit.json"});
  const Outcome run =
      cornerpin({"rebase", shot / "in.json", "--reference", "12", "-o", "-", "--format", "json"});
  ASSERT_EQ(run.code, 0) << run.err;
  const json j = json::parse(run.out);
  const json fit = json::parse(readFile(shot / "fit.json"));
  for (std::size_t f = 0; f < 40; ++f) {
    if (f == 12) continue;
    EXPECT_EQ(j["frames"][f]["untouched"]["h"], fit["frames"][f]["h"]) << f;
    EXPECT_NE(j["frames"][f]["h"], fit["frames"][f]["h"]) << f;
  }
  EXPECT_EQ(j["between"].size(), 1u);
}

TEST(SolveCommandRetouch, NamesWhatIsRefused) {
  const Shot shot;
  const auto refusal = [&](const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"solve", shot.path(), "--base", "5"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome run = cornerpin(arguments);
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.out, "");
    return run.err;
  };
  EXPECT_EQ(refusal({"--smooth", "0"}),
            "cornerpin: --smooth takes a number of pixels above 0, not \"0\"\n");
  EXPECT_EQ(refusal({"--at", "3.5"}),
            "cornerpin: --at: the table has no transforms: add -o FILE or --json\n");
  EXPECT_EQ(refusal({"--at", "3.5,", "--json"}),
            "cornerpin: --at takes frames such as 10.5,11.25, not \"\"\n");
  EXPECT_EQ(refusal({"--at", "3.5,39.25", "--json"}),
            "cornerpin: --at: 39.25 is not in the shot: take times from 0 to 39\n");
}

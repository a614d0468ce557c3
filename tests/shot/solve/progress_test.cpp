// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/progress.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "shot/files/explanation_csv.h"
#include "shot/files/result_file.h"
#include "shot/files/track_reader.h"
#include "shot/solve/base_choice.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/known_shots.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

struct Report {
  Phase phase;
  std::size_t done, total;
};

// All that is reported, and what holds of every report.
class Reports {
 public:
  Progress progress() {
    return [this](Phase phase, std::size_t done, std::size_t total) {
      EXPECT_TRUE(total == 0 || done <= total) << done;
      all.push_back({phase, done, total});
    };
  }

  // Each phase once for as long as it goes on.
  std::vector<Phase> phases() const {
    std::vector<Phase> phases;
    for (const Report& report : all) {
      if (phases.empty() || phases.back() != report.phase) phases.push_back(report.phase);
    }
    return phases;
  }

  Report lastOf(Phase phase) const {
    Report last{phase, 0, 0};
    for (const Report& report : all) {
      if (report.phase == phase) last = report;
    }
    return last;
  }

  std::vector<Report> all;
};

made::KnownShot shotThatHandsOver() {
  made::Relay what;
  what.frames = 60;
  return relay(what, 1);
}

}  // namespace

TEST(PhaseCount, TellsWhatIsDoneFromOneThreadAtATime) {
  Reports reports;
  const Progress progress = reports.progress();
  {
    PhaseCount count(progress, Phase::Figures, 200000);
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
      threads.emplace_back([&] {
        for (int i = 0; i < 100000; ++i) count.add();
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  ASSERT_EQ(reports.all.size(), 200001u);
  for (std::size_t i = 0; i < reports.all.size(); ++i) {
    EXPECT_EQ(reports.all[i].phase, Phase::Figures);
    EXPECT_EQ(reports.all[i].done, i);
    EXPECT_EQ(reports.all[i].total, 200000u);
  }
}

TEST(PhaseCount, IsSilentWhereNobodyAsked) {
  const Progress nobody;
  PhaseCount count(nobody, Phase::Figures, 1);
  count.add();
}

TEST(SolveShot, TellsItsPhasesInOrder) {
  Reports reports;
  const ShotResult result = solveShot(shotThatHandsOver().tracks, {}, reports.progress());
  ASSERT_GT(result.handedOver, 0);
  const std::vector<Phase> expected = {Phase::Solving,     Phase::ChoosingBase, Phase::Solving,
                                       Phase::HandingOver, Phase::Solving,      Phase::Figures};
  std::vector<Phase> phases = reports.phases();
  // The base that was guessed may be the one that is chosen.
  if (phases[2] == Phase::HandingOver) phases.insert(phases.begin() + 2, Phase::Solving);
  EXPECT_EQ(phases, expected);
}

TEST(SolveShot, CountsEveryPhaseToItsEnd) {
  Reports reports;
  SolveOptions options;
  options.base = 30;
  const made::KnownShot shot = shotThatHandsOver();
  ASSERT_GT(solveShot(shot.tracks, options, reports.progress()).handedOver, 0);
  EXPECT_EQ(reports.lastOf(Phase::Solving).done, 2u * 59u);
  EXPECT_EQ(reports.lastOf(Phase::Solving).total, 2u * 59u);
  EXPECT_GT(reports.lastOf(Phase::HandingOver).done, 0u);
  // Every frame has a joint covariance, the base frame has no errors of its own.
  EXPECT_EQ(reports.lastOf(Phase::Figures).total, 3u * 60u);
  EXPECT_EQ(reports.lastOf(Phase::Figures).done, 3u * 60u - 1u);
}

// The frames that bases are compared by: so many, the one nearest the middle and the pilot's base.
TEST(SolveShot, CountsTheFramesThatBasesAreComparedBy) {
  Reports reports;
  solveShot(shotThatHandsOver().tracks, {}, reports.progress());
  const Report last = reports.lastOf(Phase::ChoosingBase);
  EXPECT_GE(last.total, kMostCompared);
  EXPECT_LE(last.total, kMostCompared + 2);
  EXPECT_EQ(last.done, last.total);
}

TEST(ReadTracks, TellsHowMuchOfTheFileIsRead) {
  const TemporaryFolder folder;
  std::string text = "track,frame,x,y\n";
  for (int frame = 0; frame < 200000; ++frame) text += "a," + std::to_string(frame) + ",1,1\n";
  writeFile(folder / "in.csv", text);
  Reports reports;
  readTracks(folder / "in.csv", reports.progress());
  ASSERT_EQ(reports.all.size(), 4u);  // at the beginning, and each 65,536 rows
  std::size_t before = 0;
  for (const Report& report : reports.all) {
    EXPECT_EQ(report.phase, Phase::Reading);
    EXPECT_EQ(report.total, text.size());
    EXPECT_GE(report.done, before);
    before = report.done;
  }
  // A third of the rows each; blocks of the file are read ahead.
  const double part = static_cast<double>(before) / static_cast<double>(text.size());
  EXPECT_GT(part, 0.95);
  const double third = static_cast<double>(reports.all[1].done) / static_cast<double>(text.size());
  EXPECT_GT(third, 0.3);
  EXPECT_LT(third, 0.5);
}

TEST(ReadTracks, KnowsNoLengthOfWhatIsNoPlainFile) {
  Reports reports;
  EXPECT_ANY_THROW(readTracks("/dev/null", reports.progress()));
  EXPECT_TRUE(reports.all.empty());  // refused before
  const TemporaryFolder folder;
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const std::string text = "track,frame,x,y\na,0,1,1\n";
  ASSERT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  ::close(ends[1]);
  readTracks("/dev/fd/" + std::to_string(ends[0]), reports.progress());
  ::close(ends[0]);
  ASSERT_EQ(reports.all.size(), 1u);
  EXPECT_EQ(reports.all[0].done, 0u);
  EXPECT_EQ(reports.all[0].total, 0u);
}

TEST(WriteResult, TellsTheFramesItHasWritten) {
  const made::KnownShot shot = shotThatHandsOver();
  SolveOptions options;
  options.base = 30;
  const ShotResult result = solveShot(shot.tracks, options);
  for (int what = 0; what < 3; ++what) {
    Reports reports;
    OutputFile out("/dev/null");
    if (what < 2)
      writeResult(result, what == 0 ? Format::Json : Format::Csv, out, reports.progress());
    if (what == 2) writeExplanationCsv(result, shot.tracks, out, reports.progress());
    EXPECT_EQ(reports.all.size(), 61u);
    EXPECT_EQ(reports.lastOf(Phase::Writing).done, 60u);
    EXPECT_EQ(reports.lastOf(Phase::Writing).total, 60u);
  }
}

TEST(Phases, HaveNames) {
  const std::vector<std::string> names = {
      "reading",   "solving", "choosing the base frame", "handing over", "figures of trust",
      "smoothing", "filling", "looking for what helps",  "writing"};
  for (int phase = 0; phase <= static_cast<int>(Phase::Writing); ++phase) {
    EXPECT_EQ(nameOf(static_cast<Phase>(phase)), names.at(static_cast<std::size_t>(phase)));
  }
}

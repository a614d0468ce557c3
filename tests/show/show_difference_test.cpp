// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_difference.h"

#include <gtest/gtest.h>

#include "shot/files/input_error.h"
#include "shot/files/result_json.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

// A result of three frames whose second is moved to the right.
ShotResult moved(double by) {
  ShotResult result;
  result.quads = {{"tracks", {{{0, 0}, {10, 0}, {10, 10}, {0, 10}}}}};
  result.baseCentre = {5, 5};
  for (int f = 0; f < 3; ++f) {
    FrameResult frame;
    frame.frame = f;
    frame.h = {{{1, 0, f == 1 ? by : 0.0}, {0, 1, 0}, {0, 0, 1}}};
    frame.verdict.status = f == 0 ? Status::Base : Status::Solved;
    frame.figures.quads.resize(1);
    result.frames.push_back(frame);
  }
  return result;
}

// The folder of a batch.
struct Batch {
  TemporaryFolder folder;
  std::string path = folder.path().string();

  void add(const std::string& name, const ShotResult& result) {
    write(name, ShotState::Solved);
    writeFile(folder / (name + ".json"), resultJson(result));
  }
  void write(const std::string& name, ShotState state) {
    TaskRecord record;
    record.task.name = name;
    record.state = state;
    writeFile(folder / recordNameOf(name), recordText(record));
  }
};

std::string textOf(const Batch& first, const Batch& second, std::optional<double> most = {}) {
  return textOf(differenceOfShows(first.path, second.path, most), "old", "new");
}

}  // namespace

TEST(ShowDifference, HasTheShotsThatMovedFarthestFirst) {
  Batch first;
  Batch second;
  for (const char* name : {"a", "b", "c"}) first.add(name, moved(0.0));
  second.add("a", moved(0.25));
  second.add("b", moved(0.0));
  second.add("c", moved(4.0));
  EXPECT_EQ(textOf(first, second),
            "c  4 px in frame 1; 1 of 3 frames\na  0.25 px in frame 1; 1 of 3 frames\n"
            "Different: 2 of 3 shots in both\n");
  EXPECT_EQ(textOf(first, second, 0.25),
            "c  4 px in frame 1; 1 of 3 frames\nDifferent: 1 of 3 shots in both\n");
  EXPECT_EQ(textOf(first, second, 4.0), "Same: 3 shots\n");
  EXPECT_EQ(textOf(first, first), "Same: 3 shots\n");
}

TEST(ShowDifference, NamesShotsOfOneOnly) {
  Batch first;
  Batch second;
  first.add("a", moved(0.0));
  first.add("b", moved(0.0));
  second.add("b", moved(0.0));
  second.add("c", moved(0.0));
  EXPECT_EQ(textOf(first, second, 100.0),
            "a  only in old\nc  only in new\nDifferent: 0 of 1 shot in both, 2 in one only\n");
}

TEST(ShowDifference, TellsShotsThatFailInOneOnly) {
  Batch first;
  Batch second;
  first.add("a", moved(0.0));
  second.write("a", ShotState::Failed);
  first.write("b", ShotState::Failed);
  second.write("b", ShotState::Failed);
  EXPECT_EQ(textOf(first, second, 100.0),
            "a  solved, now failed\nDifferent: 1 of 2 shots in both\n");
  EXPECT_EQ(textOf(second, first), "a  failed, now solved\nDifferent: 1 of 2 shots in both\n");
}

TEST(ShowDifference, LooksAtNothingButResults) {
  Batch first;
  Batch second;
  ShotResult result = moved(1.0);
  result.provenance.program = {"cornerpin", "1", ""};
  result.provenance.input = {"a.csv", "00", "csv", 3};
  first.add("a", result);
  result.provenance.program->version = "2";
  second.add("a", result);
  EXPECT_EQ(textOf(first, second), "Same: 1 shot\n");
  result.frames.pop_back();
  second.add("a", result);
  EXPECT_EQ(textOf(first, second), "a  1 frame in one only\nDifferent: 1 of 1 shot in both\n");
}

TEST(ShowDifference, NeedsRecordsAndTheirResults) {
  Batch first;
  Batch second;
  EXPECT_THROW(textOf(first, second), InputError);
  first.add("a", moved(0.0));
  EXPECT_THROW(textOf(first, second), InputError);
  second.write("a", ShotState::Solved);
  EXPECT_THROW(textOf(first, second), InputError);
}

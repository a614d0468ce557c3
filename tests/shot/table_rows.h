// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_TABLE_ROWS_H
#define TESTS_SHOT_TABLE_ROWS_H

#include <functional>
#include <string>
#include <vector>

#include "tests/shot/key_frames.h"
#include "tests/shot/known_shots.h"

namespace made {

// Of every row, with the seeds 1, 2, ...
constexpr unsigned kTableShots = 20;

// The base is left for no other key frame: all tracks are there.
constexpr KeyFrames kBaseAlone = {0.0, 0};

// A line of the tables of made shots with known faults. Frame 0 is the base.
struct TableRow {
  std::string name;
  std::function<KnownShot(unsigned seed)> make;
  int first = 1;  // the frames whose errors count
  int last = 0;
  KeyFrames keys = kBaseAlone;  // of those that fit two frames
};

std::vector<TableRow> tableRows();

}  // namespace made

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_TOOLS_PROGRAM_H
#define TESTS_TOOLS_PROGRAM_H

#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/kept_results.h"
#include "tests/support/process.h"

inline const std::string kFacade = CORNERPIN_DATA "/facade.csv";

// Runs the program, and keeps the results that it writes.
inline Outcome cornerpin(std::vector<std::string> arguments, const ChildOptions& options = {}) {
  arguments.insert(arguments.begin(), CORNERPIN_PROGRAM);
  const Outcome run = runProgram(arguments, options);
  keepResult(run.out);
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const bool converted = i == 3 && arguments[1] == "convert";
    const bool named = arguments[i - 1] == "-o" || converted;
    if (named && std::filesystem::is_regular_file(arguments[i]) && run.code != 1 && run.code != 2)
      keepResult(readFile(arguments[i]));
  }
  return run;
}

// 300,001 frames, of which all but a few are gaps.
inline std::string longShot() {
  std::string text = "track,frame,x,y\n";
  for (int frame = 0; frame <= 300000; frame += 10000) {
    text += "a," + std::to_string(frame) + ",1,1\n";
  }
  return text;
}

// A shot that stands still: tracks times frames rows.
inline std::string stillShot(int tracks, int frames) {
  std::string text = "track,frame,x,y\n";
  for (int t = 0; t < tracks; ++t) {
    for (int f = 0; f < frames; ++f) {
      text += "t" + std::to_string(t) + "," + std::to_string(f) + "," +
              std::to_string(t * 37 % 1000) + "." + std::to_string(f % 10) + "," +
              std::to_string(t * t * 13 % 700) + "\n";
    }
  }
  return text;
}

// Waits until a run writes into a temporary file of the folder: an empty one is tried out only.
// Whether one does within a minute.
inline bool waitForWriting(const TemporaryFolder& folder) {
  for (int wait = 0; wait < 60000; ++wait) {
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      std::error_code gone;
      const bool temporary = entry.path().extension() == ".tmp";
      const auto size = temporary ? std::filesystem::file_size(entry.path(), gone) : 0;
      if (!gone && size > 0) return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

#endif

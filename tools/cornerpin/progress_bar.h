// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_PROGRESS_BAR_H
#define TOOLS_CORNERPIN_PROGRESS_BAR_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

#include "shot/solve/progress.h"

namespace cornerpin {

/// A line on standard error, where that is a terminal and the work has taken half a second: the
/// phase, how much of it is done, and how long it takes yet if it goes on as it did. A thread of
/// its own draws it ten times a second, so that it lives where reports are far between. It clears
/// itself away at its end.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  /// From any thread.
  void update(Phase phase, std::size_t done, std::size_t total);

  /// A `Progress` that leads here.
  Progress progress() {
    return [this](Phase phase, std::size_t done, std::size_t total) { update(phase, done, total); };
  }

 private:
  using Clock = std::chrono::steady_clock;

  void drawUntilStopped();
  std::string line() const;
  std::string secondsLeft(Clock::time_point now) const;

  std::mutex mutex_;
  bool begun_ = false;
  Phase phase_ = Phase::Reading;
  std::size_t done_ = 0;
  std::size_t total_ = 0;
  Clock::time_point begin_;  // of the phase, and what of it had been done by then
  std::size_t doneBefore_ = 0;
  Clock::time_point reported_;
  bool stopped_ = false;
  std::condition_variable stop_;
  std::thread drawer_;  // none where nothing is shown
};

}  // namespace cornerpin

#endif

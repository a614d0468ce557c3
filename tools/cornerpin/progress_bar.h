// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_PROGRESS_BAR_H
#define TOOLS_CORNERPIN_PROGRESS_BAR_H

#include <chrono>
#include <cstddef>

namespace cornerpin {

/// A bar on standard error, where that is a terminal and the work has taken half a second. It
/// clears itself away at its end.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  /// Draws at most ten times a second.
  void update(std::size_t done, std::size_t total);

 private:
  using Clock = std::chrono::steady_clock;
  bool shown_;
  bool drawn_ = false;
  Clock::time_point next_;
};

}  // namespace cornerpin

#endif

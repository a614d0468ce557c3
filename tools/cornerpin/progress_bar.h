// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_PROGRESS_BAR_H
#define TOOLS_CORNERPIN_PROGRESS_BAR_H

#include <cornerpin/shot.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace cornerpin {

/// How progress is told: not at all, by a bar for people, or by objects for programs.
enum class ProgressStyle { None, Bar, Json };

/// Tells on standard error what phase the work is in, how much of it is done, and how long it takes
/// yet if it goes on as it did. A thread of its own writes ten times a second, so that the figures
/// live where reports are far between.
///
/// A bar appears once the work has taken half a second, counts down, and clears itself away at its
/// end. As JSON there is an object on a line of its own whenever something has changed:
///
///     {"phase":"solving","done":12,"total":191,"seconds_left":4.5}
///
/// "total" is null where nobody knows it, and "seconds_left" where nothing tells.
class ProgressBar {
 public:
  explicit ProgressBar(ProgressStyle style);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  /// From any thread.
  void update(const char* phase, std::size_t done, std::size_t total);

  /// A `Progress` that leads here; none where nothing is told.
  shot::Progress progress();

 private:
  using Clock = std::chrono::steady_clock;

  void writeUntilStopped();
  std::string barLine() const;
  std::string jsonLine() const;
  std::optional<double> secondsLeft(Clock::time_point now) const;

  ProgressStyle style_;
  std::mutex mutex_;
  bool begun_ = false;
  bool changed_ = false;  // since the line before
  std::string phase_;
  std::size_t done_ = 0;
  std::size_t total_ = 0;
  Clock::time_point begin_;  // of the phase, and what of it had been done by then
  std::size_t doneBefore_ = 0;
  Clock::time_point reported_;
  bool stopped_ = false;
  std::condition_variable stop_;
  std::thread writer_;  // none where nothing is told
};

/// The last object of `ProgressStyle::Json`, for a run that ends with this exit code:
/// {"phase":"finished","exit_code":0}
void writeFinished(int exitCode);

}  // namespace cornerpin

#endif

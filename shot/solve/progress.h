// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_PROGRESS_H
#define SHOT_SOLVE_PROGRESS_H

#include <cstddef>
#include <functional>
#include <mutex>

namespace cornerpin {

/// What a run is busy with. Solving goes on where it was after the phases between the sweeps.
enum class Phase {
  Reading,       ///< in bytes
  Solving,       ///< in frames, of all sweeps together: at most so many
  ChoosingBase,  ///< in frames that are compared
  HandingOver,   ///< in steps of the joint fit: at most so many
  Figures,       ///< of trust; in frames, which are gone through more than once
  Smoothing,     ///< a total of 0
  Filling,       ///< a total of 0
  Advice,        ///< in kinds of tries
  Writing,       ///< in frames
};

/// What people and programs call it: "reading", "choosing the base frame", "figures of trust" ...
const char* nameOf(Phase phase);

/// Called at the beginning of a phase, with nothing done, and again as it goes on; a total of 0 is
/// one that nobody knows. From several threads, but from one at a time.
using Progress = std::function<void(Phase phase, std::size_t done, std::size_t total)>;

/// Counts what is done of a phase for whoever asked.
class PhaseCount {
 public:
  PhaseCount(const Progress& progress, Phase phase, std::size_t total)
      : progress_(progress), phase_(phase), total_(total) {
    report();
  }
  PhaseCount(const PhaseCount&) = delete;
  PhaseCount& operator=(const PhaseCount&) = delete;

  /// One more is done. From any thread.
  void add() {
    const std::lock_guard<std::mutex> alone(mutex_);
    ++done_;
    report();
  }

 private:
  void report() const {
    if (progress_) progress_(phase_, done_, total_);
  }

  const Progress& progress_;
  Phase phase_;
  std::size_t done_ = 0;
  std::size_t total_;
  std::mutex mutex_;
};

}  // namespace cornerpin

#endif

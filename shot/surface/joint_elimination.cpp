// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_elimination.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace cornerpin {

namespace {

std::size_t slotsOf(const JointShot& shot) {
  std::size_t slots = 0;
  for (std::size_t extent : shot.lives.extents) slots = std::max(slots, extent);
  return slots;
}

class Elimination {
 public:
  explicit Elimination(const JointShot& shot) : shot_(shot), front_(slotsOf(shot)) {}

  // Goes through the frames first .. last - 1, and keeps the tracks for each of them on demand.
  void forward(std::size_t first, std::size_t last, bool keep) {
    eliminated_.clear();
    for (std::size_t f = first; f < last; ++f) {
      if (equations_.linearise(shot_, f)) front_.add(equations_);
      for (int track : shot_.lives.ending[f]) {
        const auto t = static_cast<std::size_t>(track);
        const auto slot = static_cast<std::size_t>(shot_.lives.slots[t]);
        EliminatedTrack one = front_.eliminate(t, slot, shot_.lives.extents[f]);
        if (keep) eliminated_.push_back(std::move(one));
      }
    }
  }

  // The frames that `forward` went through last.
  void back(std::size_t first, std::size_t last, WayBack& wayBack) {
    for (std::size_t f = last; f-- > first;) {
      for (std::size_t i = 0; i < shot_.lives.ending[f].size(); ++i) {
        wayBack.restore(eliminated_.back());
        eliminated_.pop_back();
      }
      if (equations_.linearise(shot_, f)) wayBack.visit(f, equations_);
    }
  }

  const Front& front() const { return front_; }
  void restart(const Front& front) { front_ = front; }

 private:
  const JointShot& shot_;
  Front front_;
  FrameEquations equations_;
  std::vector<EliminatedTrack> eliminated_;
};

// With n tracks alive, a state has 2 n^2 numbers and a track 4 n; n / life tracks end in a frame.
// Blocks of b frames so take F / b 2 n^2 + b 4 n^2 / life, least at b^2 = F life / 2.
std::size_t blockLength(const JointShot& shot, std::size_t mostKept) {
  const auto& slots = shot.lives.slots;
  const auto tracks = slots.size() - static_cast<std::size_t>(std::count(slots.begin(), slots.end(),
                                                                         TrackLives::kNoSlot));
  if (tracks * 4 * slotsOf(shot) <= mostKept) return shot.frames.size();
  const double frames = static_cast<double>(shot.frames.size());
  return static_cast<std::size_t>(std::sqrt(frames * shot.lives.meanLength / 2.0)) + 1;
}

}  // namespace

void eliminateAndReturn(const JointShot& shot, WayBack& wayBack, std::size_t mostKept) {
  const std::size_t frames = shot.frames.size();
  const std::size_t block = blockLength(shot, mostKept);
  Elimination elimination(shot);
  std::vector<Front> starts;
  std::size_t first = 0;
  for (; first + block < frames; first += block) {
    starts.push_back(elimination.front());
    elimination.forward(first, first + block, false);
  }
  elimination.forward(first, frames, true);
  elimination.back(first, frames, wayBack);
  for (; !starts.empty(); starts.pop_back()) {
    first -= block;
    elimination.restart(starts.back());
    elimination.forward(first, first + block, true);
    elimination.back(first, first + block, wayBack);
  }
}

}  // namespace cornerpin

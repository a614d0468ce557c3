// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/base_frame.h"

#include <fmt/format.h>

#include <cstdint>
#include <stdexcept>

#include "shot/plane/extent.h"
#include "shot/robust/robust_fit.h"

namespace cornerpin {

int chooseBaseFrame(const Tracks& tracks) {
  // The length of a track is the number of frames that see it; a frame is worth the sum of the
  // lengths of its tracks.
  std::vector<std::int64_t> lengths(tracks.names.size());
  for (const Observation& o : tracks.observations) {
    if (o.weight > 0.0f) ++lengths[static_cast<std::size_t>(o.track)];
  }
  std::int64_t best = -1;
  std::int64_t sum = 0;
  int bestFrame = tracks.firstFrame();
  const auto& rows = tracks.observations;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].weight > 0.0f) sum += lengths[static_cast<std::size_t>(rows[i].track)];
    if (i + 1 < rows.size() && rows[i + 1].frame == rows[i].frame) continue;
    if (sum > best) {
      best = sum;
      bestFrame = rows[i].frame;
    }
    sum = 0;
  }
  return bestFrame;
}

BaseFrame::BaseFrame(const Tracks& tracks, int frame) : frame_(frame), seen_(tracks.names.size()) {
  if (frame < tracks.firstFrame() || frame > tracks.lastFrame()) {
    throw std::invalid_argument(
        fmt::format("base frame {} is not in the shot: take one from {} to {}", frame,
                    tracks.firstFrame(), tracks.lastFrame()));
  }
  for (const Observation& o : tracks.inFrame(frame)) {
    if (!(o.weight > 0.0f)) continue;
    tracks_.push_back(o.track);
    places_.add({o.x, o.y});
    seen_[static_cast<std::size_t>(o.track)] = 1;
  }
  if (places_.empty()) {
    throw std::invalid_argument(fmt::format("base frame {} has no track", frame));
  }
}

Points surfacePlaces(const Points& base, Loss loss) {
  return loss != Loss::None && base.size() >= kFewestForRobust ? withoutFarOff(base) : base;
}

}  // namespace cornerpin

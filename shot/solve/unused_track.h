// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_UNUSED_TRACK_H
#define SHOT_SOLVE_UNUSED_TRACK_H

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace cornerpin {

/// Why a track takes part in no frame. Of the first four, which apply in this order, it is the one
/// that took the last of the track.
enum class Unused : std::uint8_t {
  NoWeight,       ///< its weight is 0 wherever it is seen
  OutsideFrames,  ///< it is seen in none of the frames that are solved
  NotKept,        ///< it is not among those to be kept
  Dropped,
  AbsentInBase,  ///< the base frame lacks it, and only its tracks are to take part
  NoPlace,       ///< the base frame lacks it, and no frames tell where on the surface it is
  NotNeeded,     ///< the base frame lacks it, and its own tracks decide every frame
};

constexpr std::initializer_list<Unused> kReasonsUnused = {
    Unused::NoWeight,     Unused::OutsideFrames, Unused::NotKept,  Unused::Dropped,
    Unused::AbsentInBase, Unused::NoPlace,       Unused::NotNeeded};

/// For programs: "no-weight", "outside-frames" ...
const char* nameOf(Unused why);

struct UnusedTrack {
  std::string name;
  Unused why = Unused::NoWeight;
};

/// How many for each reason, for people: "2 dropped, 1 of weight 0"; empty without any.
std::string describe(const std::vector<UnusedTrack>& tracks);

}  // namespace cornerpin

#endif

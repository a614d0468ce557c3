// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_PLACE_WORTH_H
#define SHOT_SOLVE_PLACE_WORTH_H

#include "shot/fit/loss.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// How well places on the surface fix a transform. What was looked at last is remembered: most
/// frames see, or call good, the tracks that their neighbour does.
class PlaceWorth {
 public:
  enum class FarOff { Counted, LeftOut };  ///< `surfacePlaces`
  explicit PlaceWorth(FarOff farOff) : farOff_(farOff) {}

  /// \param surface  what a transform has to carry well
  void look(const Points& places, const Quad& surface, Loss loss);

  bool inGeneralPosition() const { return inGeneralPosition_; }
  double gain() const { return gain_; }  ///< `noiseGain` of the full transform; only with a loss

 private:
  FarOff farOff_;
  Points places_;
  Quad surface_{};
  bool inGeneralPosition_ = false;
  double gain_ = 0.0;
};

}  // namespace cornerpin

#endif

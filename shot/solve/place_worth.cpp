// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/place_worth.h"

#include "shot/fit/general_position.h"
#include "shot/fit/support.h"
#include "shot/solve/base_frame.h"

namespace cornerpin {

void PlaceWorth::look(const Points& places, const Quad& surface, Loss loss) {
  if (places == places_ && surface == surface_) return;
  places_ = places;
  surface_ = surface;
  const Points counted = farOff_ == FarOff::LeftOut ? surfacePlaces(places, loss) : places;
  inGeneralPosition_ = cornerpin::inGeneralPosition(counted);
  if (loss != Loss::None) gain_ = noiseGain(Model::Projective, counted, surface);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_OPTIONS_H
#define SHOT_SOLVE_OPTIONS_H

#include <cstdint>
#include <optional>
#include <vector>

#include "shot/fit/loss.h"
#include "shot/solve/named_quad.h"
#include "shot/solve/units.h"

namespace cornerpin {

struct SolveOptions {
  std::optional<int> base;  ///< none: `chooseBase`, by a solve from `guessBaseFrame`
  /// The frame that the result is relative to, which has no influence on the fits; none: the base
  /// frame.
  std::optional<int> reference;
  Units units = Units::Fit;
  /// Loss::None: the library's solve alone, to the bit, of every frame that it can fit; how
  /// well the tracks support it (`noiseGain`) is not looked at.
  Loss loss = Loss::Tukey;
  /// Fits frames whose tracks fix no full transform with a lower model instead of holding them, and
  /// with a loss those too for which a lower model is expected to be nearer (`ModelPass`).
  bool reduce = true;
  std::uint64_t seed = 1;  ///< of the samples drawn where a frame has many bad tracks
  /// What the figures of trust are about, in the reference frame; none: one named "tracks", which
  /// is the box around the base frame's tracks (`surfacePlaces`) in that frame. What a track moves
  /// is about the first of them.
  std::vector<NamedQuad> quads;
  /// Tracks that the base frame lacks take part as soon as frames that are solved say where on the
  /// surface they are. Not with Loss::None.
  bool handOver = true;
  /// The expected error above which a frame is doubtful; none: 0.5 % of the surface's extent.
  /// In the file's unit, above 0.
  std::optional<double> maxError;
  /// At most so many threads at once, at least 1. The result has the same bits with any number.
  unsigned threads = 2;
  /// Keeps what every track does to every frame (`FrameResult::influences`): 40 bytes for each.
  bool influences = false;
};

}  // namespace cornerpin

#endif

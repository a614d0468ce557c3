// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_MODEL_H
#define SHOT_FIT_MODEL_H

#include <cstddef>

namespace cornerpin {

/// What a frame's transform was fitted with, from the least freedom to the most.
enum class Model {
  Held,         ///< nothing fitted: the neighbour's transform
  Translation,  ///< 2 parameters, from 1 track on
  Similarity,   ///< 4 (shift, turn, one scale), from 2 tracks on
  Affine,       ///< 6, from 3 tracks on
  Projective,   ///< 8, from 4 tracks on
};

/// "held", "translation", "similarity", "affine", "projective".
const char* nameOf(Model model);

/// The fewest tracks that fix the model: 0 to 4. It has twice as many parameters.
std::size_t tracksFor(Model model);

}  // namespace cornerpin

#endif

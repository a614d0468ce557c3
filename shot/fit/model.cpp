// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/model.h"

namespace cornerpin {

const char* nameOf(Model model) {
  switch (model) {
    case Model::Held:
      return "held";
    case Model::Translation:
      return "translation";
    case Model::Similarity:
      return "similarity";
    case Model::Affine:
      return "affine";
    case Model::Projective:
      return "projective";
  }
  return "";
}

std::size_t tracksFor(Model model) { return static_cast<std::size_t>(model); }

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/matches.h"

namespace cornerpin {

Matches::Matches(std::initializer_list<Match> matches) {
  reserve(matches.size());
  for (const Match& match : matches) add(match);
}

void Matches::add(const Match& match) {
  base_.add(match.base);
  present_.add(match.present);
  squaredWeights_.resize(base_.paddedSize());
  squaredWeights_[size()] = match.weight * match.weight;
  weights_.push_back(match.weight);
  tracks_.push_back(match.track);
}

void Matches::reserve(std::size_t size) {
  base_.reserve(size);
  present_.reserve(size);
  weights_.reserve(size);
  squaredWeights_.reserve((size + 3) / 4 * 4);
  tracks_.reserve(size);
}

Matches Matches::subset(const std::vector<bool>& chosen) const {
  Matches result;
  result.reserve(size());
  for (std::size_t i = 0; i < size(); ++i) {
    if (chosen[i]) result.add((*this)[i]);
  }
  return result;
}

Matches Matches::in(const Similarity& unit) const {
  Matches result;
  result.reserve(size());
  for (std::size_t i = 0; i < size(); ++i) {
    result.add({unit.apply(base_[i]), unit.apply(present_[i]), weights_[i], tracks_[i]});
  }
  return result;
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/matches.h"

#include <algorithm>

namespace cornerpin {

Matches::Matches(std::initializer_list<Match> matches) {
  reserve(matches.size());
  for (const Match& match : matches) add(match);
}

Matches::Matches(std::size_t size)
    : base_(size),
      present_(size),
      weights_(size),
      squaredWeights_(base_.paddedSize()),
      tracks_(size) {}

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
  Matches result(static_cast<std::size_t>(std::count(chosen.begin(), chosen.end(), true)));
  std::size_t next = 0;
  for (std::size_t i = 0; i < size(); ++i) {
    if (chosen[i]) result.set(next++, (*this)[i]);
  }
  return result;
}

Matches Matches::in(const Similarity& unit) const {
  Matches result = *this;
  for (std::size_t i = 0; i < size(); ++i) {
    result.base_.set(i, unit.apply(base_[i]));
    result.present_.set(i, unit.apply(present_[i]));
  }
  return result;
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/matches.h"

namespace cornerpin {

void Matches::add(const Match& match) {
  if (size_ == x_.size()) {
    for (std::vector<double>* array : {&x_, &y_, &u_, &v_, &w_, &w2_}) array->resize(size_ + 4);
  }
  x_[size_] = match.from.x;
  y_[size_] = match.from.y;
  u_[size_] = match.to.x;
  v_[size_] = match.to.y;
  w_[size_] = match.weight;
  w2_[size_] = match.weight * match.weight;
  ++size_;
}

void Matches::reweight(const std::vector<double>& factors) {
  for (std::size_t i = 0; i < size_; ++i) w2_[i] = w_[i] * w_[i] * factors[i];
}

}  // namespace cornerpin

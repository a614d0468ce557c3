// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/layer_motion.h"

#include <algorithm>

namespace cornerpin {

namespace {

constexpr double kPercent = 100.0;

Point between(const KeyedPair::Key& a, const KeyedPair::Key& b, double frame) {
  const double way = (frame - a.frame) / (b.frame - a.frame);
  return {a.value.x + way * (b.value.x - a.value.x), a.value.y + way * (b.value.y - a.value.y)};
}

}  // namespace

const KeyedPair::Key* KeyedPair::arrange() {
  std::stable_sort(keys_.begin(), keys_.end(),
                   [](const Key& a, const Key& b) { return a.frame < b.frame; });
  const auto twice = std::adjacent_find(
      keys_.begin(), keys_.end(), [](const Key& a, const Key& b) { return a.frame == b.frame; });
  return twice == keys_.end() ? nullptr : &*(twice + 1);
}

Point KeyedPair::at(double frame, Point otherwise) const {
  if (keys_.empty()) return constant_.value_or(otherwise);
  const auto next = std::lower_bound(keys_.begin(), keys_.end(), frame,
                                     [](const Key& key, double f) { return key.frame < f; });
  if (next == keys_.end()) return keys_.back().value;
  if (next->frame == frame || next == keys_.begin()) return next->value;
  return between(*(next - 1), *next, frame);
}

Placement LayerMotion::at(double frame) const {
  const Point percent = scale.at(frame, {kPercent, kPercent});
  Placement placement;
  placement.anchor = anchor.at(frame, {});
  placement.position = position.at(frame, {});
  placement.scale = {percent.x / kPercent, percent.y / kPercent};
  placement.degrees = rotation.at(frame, {}).x;
  return placement;
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_LAYER_MOTION_H
#define SHOT_FILES_LAYER_MOTION_H

#include <cstdint>
#include <optional>
#include <vector>

#include "shot/plane/placement.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// A pair of values that has keys, or none but always the same value.
class KeyedPair {
 public:
  struct Key {
    double frame;
    Point value;
    std::uint32_t line;
  };

  void add(const Key& key) { keys_.push_back(key); }
  void set(Point value) { constant_ = value; }
  bool isThere() const { return !keys_.empty() || constant_.has_value(); }

  /// Sorts the keys by frame. The second of two keys in one frame, null for none.
  const Key* arrange();

  /// Arranged: on the straight way between two keys, and that of the nearest key outside of all;
  /// `otherwise` where nothing is there.
  Point at(double frame, Point otherwise) const;

  const std::vector<Key>& keys() const { return keys_; }

 private:
  std::vector<Key> keys_;
  std::optional<Point> constant_;
};

/// Where a layer is, frame by frame: what corners in its own coordinates go through. The rotation
/// is the x of its pair, in degrees; scales are percent.
struct LayerMotion {
  KeyedPair anchor;
  KeyedPair position;
  KeyedPair scale;
  KeyedPair rotation;

  /// Whether it says where the layer is: that takes both ends of the way.
  bool isPlaced() const { return anchor.isThere() && position.isThere(); }
  bool isThere() const {
    return anchor.isThere() || position.isThere() || scale.isThere() || rotation.isThere();
  }
  Placement at(double frame) const;
};

}  // namespace cornerpin

#endif

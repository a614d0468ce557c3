// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_NK_PIN_H
#define SHOT_FILES_NK_PIN_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shot/files/node_curve.h"
#include "shot/plane/points.h"

/// Where the corners go that a corner pin of a node script moves.
namespace cornerpin {

/// A knob with x and y.
struct NodePlace {
  std::uint32_t line = 0;         ///< 0: the node does not have it
  std::optional<Point> constant;  ///< where neither coordinate is a curve
  std::vector<NodeKey> keys;      ///< by rising frame
};

/// The knobs of a corner pin, corners in the order of `Corner`.
struct NkPin {
  std::array<NodePlace, 4> to;
  std::array<NodePlace, 4> from;
  /// By rows, the third row and column of four left out; empty: there is none.
  std::vector<NodeCurve> matrix;
  bool isInverted = false;
};

/// Of each corner, where it is in which frame.
using CornerKeys = std::array<std::vector<NodeKey>, 4>;

/// The corners of a pin: `to1` to `to4`, of which those without keys stand where they are in all
/// frames of the others. Where none of them has keys and there is a matrix other than the
/// identity, `from1` to `from4` through it, without corners on or behind its horizon. A pin that
/// does not move is that of frame 0.
///
/// \param notes  what is left out is added, for people
CornerKeys cornersOf(const NkPin& pin, std::vector<std::string>& notes);

/// Whether any of the corners has keys that differ in their frames from others.
bool isMoving(const CornerKeys& corners);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_NODE_CURVE_H
#define SHOT_FILES_NODE_CURVE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shot/files/node_words.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// An element of a knob of a node: a number, the keys of a curve, an expression, or nothing. Its
/// arrays keep their memory when another one is read into it.
struct NodeCurve {
  std::optional<double> constant;
  std::vector<std::int32_t> frames;  ///< of the keys, as they come
  std::vector<double> values;        ///< one for each
  std::size_t between = 0;           ///< keys between two frames, which are not among those
  std::string expression;            ///< as it stands; empty for none

  bool hasKeys() const { return !frames.empty(); }
  void clear();
};

/// Reads the element whose first part has just been taken off the words, and goes behind it.
///
/// A curve is `{curve KEYS}`. A key is `[x<frame>] value`; letters and the slopes and weights of
/// tangents (`s`, `t`, `u`, `v` with a number) are skipped. A first value without a frame is that
/// of frame 0, the second one's frame is the next, and from then on frames go on by the step of the
/// two last keys. A value that is NaN is no key. Whatever is neither a number nor a curve is an
/// expression.
///
/// Throws nothing but what `words` throws: what is wrong with a key is returned, nullopt for
/// nothing, and the element has been skipped.
std::optional<InputError> readNodeCurve(NodeWords& words, NodeWords::Kind kind,
                                        std::size_t mostKeys, NodeCurve& curve);

/// As many as a shot can have frames.
constexpr auto kMostKeys = static_cast<std::size_t>(kMaxFrames);

/// Puts the keys in the order of their frames. A frame that has two, if one has.
std::optional<std::int32_t> sortKeys(NodeCurve& curve);

/// A place in a frame; its weight is 0 where it is not enabled.
struct NodeKey {
  double x = 0.0;
  double y = 0.0;
  std::int32_t frame = 0;
  float weight = 1.0f;
};

/// Keys without one for the other coordinate in their frame.
struct Unpaired {
  std::size_t x = 0;
  std::size_t y = 0;
  std::int32_t first = 0;  ///< the first frame of them, where there are any
};

/// Appends the places in the frames that both curves have keys in, or one where the other is a
/// constant. Their keys are in order.
Unpaired pairKeys(const NodeCurve& x, const NodeCurve& y, std::vector<NodeKey>& to);

/// Sets the weights to 0 where `enable`, whose keys are in order, is 0: a key holds until the next,
/// the first one before it, too. All are enabled where it tells nothing.
void enableKeys(const NodeCurve& enable, NodeKey* first, NodeKey* last);

}  // namespace cornerpin

#endif

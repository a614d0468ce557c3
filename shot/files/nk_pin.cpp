// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/nk_pin.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "shot/plane/homography.h"

namespace cornerpin {

namespace {

using Frames = std::vector<std::int32_t>;

Frames framesOf(const std::array<NodePlace, 4>& places) {
  Frames frames;
  for (const NodePlace& place : places) {
    Frames own;
    own.reserve(place.keys.size());
    for (const NodeKey& key : place.keys) own.push_back(key.frame);
    Frames all;
    std::set_union(frames.begin(), frames.end(), own.begin(), own.end(), std::back_inserter(all));
    frames = std::move(all);
  }
  return frames;
}

// The place, where it does not move in each of the frames.
std::vector<NodeKey> keysOf(const NodePlace& place, const Frames& frames) {
  if (!place.constant) return place.keys;
  std::vector<NodeKey> keys;
  keys.reserve(frames.size());
  for (const std::int32_t frame : frames)
    keys.push_back({place.constant->x, place.constant->y, frame, 1.0f});
  return keys;
}

std::optional<Quad> constantQuad(const std::array<NodePlace, 4>& places) {
  Quad quad;
  for (std::size_t i = 0; i < quad.size(); ++i) {
    if (!places[i].constant) return std::nullopt;
    quad[i] = *places[i].constant;
  }
  return quad;
}

bool isSame(const Quad& a, const Quad& b) {
  const auto same = [](Point p, Point q) { return p.x == q.x && p.y == q.y; };
  return std::equal(a.begin(), a.end(), b.begin(), same);
}

// An element that has one key has its value in every frame.
bool varies(const NodeCurve& element) { return element.frames.size() > 1; }

std::optional<double> steadyValue(const NodeCurve& element) {
  return element.hasKeys() ? element.values[0] : element.constant;
}

bool isIdentity(const std::vector<NodeCurve>& matrix) {
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    if (varies(matrix[i]) || steadyValue(matrix[i]) != kIdentity[i / 3][i % 3]) return false;
  }
  return true;
}

bool isWhole(const std::vector<NodeCurve>& matrix) {
  return std::all_of(matrix.begin(), matrix.end(), [](const NodeCurve& element) {
    return element.hasKeys() || element.constant.has_value();
  });
}

// The frames in which every element has a value; how many others have one for some only.
Frames framesOf(const std::vector<NodeCurve>& matrix, std::size_t& others) {
  Frames all;
  Frames some;
  bool any = false;
  for (const NodeCurve& element : matrix) {
    if (!varies(element)) continue;
    Frames both;
    Frames either;
    const auto& own = element.frames;
    std::set_intersection(all.begin(), all.end(), own.begin(), own.end(), std::back_inserter(both));
    std::set_union(some.begin(), some.end(), own.begin(), own.end(), std::back_inserter(either));
    if (!any) both = own;
    all = std::move(both);
    some = std::move(either);
    any = true;
  }
  others = some.size() - all.size();
  if (any) return all;
  const auto keyed = std::find_if(matrix.begin(), matrix.end(),
                                  [](const NodeCurve& element) { return element.hasKeys(); });
  return {keyed != matrix.end() ? keyed->frames[0] : 0};
}

double valueAt(const NodeCurve& element, std::int32_t frame) {
  if (!varies(element)) return steadyValue(element).value_or(0.0);
  const auto at = std::lower_bound(element.frames.begin(), element.frames.end(), frame);
  return element.values[static_cast<std::size_t>(at - element.frames.begin())];
}

Homography matrixAt(const std::vector<NodeCurve>& matrix, std::int32_t frame) {
  Homography h;
  for (std::size_t i = 0; i < matrix.size(); ++i) h[i / 3][i % 3] = valueAt(matrix[i], frame);
  return withLastOne(h);
}

CornerKeys carriedCorners(const std::vector<NodeCurve>& matrix, const Quad& quad,
                          std::vector<std::string>& notes) {
  std::size_t others = 0;
  std::size_t behind = 0;
  CornerKeys corners;
  for (const std::int32_t frame : framesOf(matrix, others)) {
    const Homography h = matrixAt(matrix, frame);
    for (std::size_t i = 0; i < quad.size(); ++i) {
      const Point p = map(h, quad[i]);
      if (denominator(h, quad[i]) > 0.0) {
        corners[i].push_back({p.x, p.y, frame, 1.0f});
      } else {
        ++behind;
      }
    }
  }
  if (others > 0) {
    notes.push_back(
        fmt::format("{} of its transform_matrix are left out: some elements have no key there",
                    others == 1 ? "1 frame" : fmt::format("{} frames", others)));
  }
  if (behind > 0)
    notes.push_back(fmt::format("corners on or behind the horizon are left out: {}", behind));
  return corners;
}

CornerKeys throughMatrix(const NkPin& pin, std::vector<std::string>& notes) {
  const std::optional<Quad> from = constantQuad(pin.from);
  const std::optional<Quad> to = constantQuad(pin.to);
  if (!isWhole(pin.matrix)) {
    notes.emplace_back("its transform_matrix has elements that are neither numbers nor curves");
    return {};
  }
  if (!from && !to) {
    notes.emplace_back(
        "it moves by its transform_matrix, and the corners that this moves are not known: "
        "write numbers for from1 to from4");
    return {};
  }
  if (from && to && !isSame(*from, *to))
    notes.emplace_back("from1 to from4 through its transform_matrix: to1 to to4 are left out");
  return carriedCorners(pin.matrix, from ? *from : *to, notes);
}

}  // namespace

CornerKeys cornersOf(const NkPin& pin, std::vector<std::string>& notes) {
  Frames frames = framesOf(pin.to);
  const bool usesMatrix = !isIdentity(pin.matrix);
  if (frames.empty() && usesMatrix) return throughMatrix(pin, notes);
  if (usesMatrix)
    notes.emplace_back("its transform_matrix is left out: only where to1 to to4 are is read");
  if (pin.isInverted) notes.emplace_back("invert is left out: the corners are to1 to to4");
  if (frames.empty()) frames = {0};
  CornerKeys corners;
  for (std::size_t i = 0; i < corners.size(); ++i) corners[i] = keysOf(pin.to[i], frames);
  return corners;
}

bool isMoving(const CornerKeys& corners) {
  return std::any_of(corners.begin(), corners.end(),
                     [](const std::vector<NodeKey>& keys) { return keys.size() > 1; });
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_PIN_SCAN_H
#define SHOT_FILES_PIN_SCAN_H

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "shot/plane/homography.h"

/// What the files of pins have in them, taken out of the lines that their writers write: for
/// comparing them with what was to be written. Nothing else reads these files, and nobody else's.
/// A file that cannot be read throws `InputError`.
namespace cornerpin {

/// Numbers by frame.
using KeyedNumbers = std::map<int, std::vector<double>>;

/// Of the lines that are nothing but a frame and so many other numbers, with brackets, commas and
/// colons between: the keys of scripts, "(1001, (0.5, 2), ...),", and of layers, "1001: ( (1, ...".
KeyedNumbers numbersInLines(const std::string& path, std::size_t count);

/// Of keyframe text, by section ("Position").
std::map<std::string, KeyedNumbers> numbersInSections(const std::string& path);

/// The first `transform_matrix` of a node script, of which each element is a number or a curve.
class ScannedMatrix {
 public:
  explicit ScannedMatrix(const std::string& path);

  /// None where an element has no key, or is not there.
  std::optional<Homography> at(int frame) const;

 private:
  struct Element {
    std::optional<double> always;
    std::map<int, double> keys;
  };
  static constexpr std::size_t kSize = 16;
  void take(const std::string& text);
  std::vector<Element> elements_;
};

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_COMPARE_AXIS_CHANGE_H
#define SHOT_COMPARE_AXIS_CHANGE_H

#include <cstddef>
#include <vector>

namespace cornerpin {

/// How one coordinate of a file becomes that of another: `times` v + `plus`.
struct AxisChange {
  double times = 1.0;
  double plus = 0.0;

  bool isNone() const { return times == 1.0 && plus == 0.0; }
  bool flips() const { return times < 0.0; }
  bool scales() const { return times != 1.0 && times != -1.0; }
  double operator()(double v) const { return times * v + plus; }
};

/// Coordinates along one axis, those of one file and in the same places those of the other.
struct AxisPairs {
  std::vector<double> first;
  std::vector<double> second;
};

/// How far coordinates may be apart that are the same but for the digits that their files carry.
struct Allowed {
  double first = 0.0;   ///< half of the last digit of the first file's
  double second = 0.0;  ///< and of the second one's
  double least = 0.0;   ///< of both, whatever the digits

  /// Of the second file's coordinates, where the first one's are scaled so.
  double at(double times) const;
};

/// Of how many pairs the change carries the first coordinate to the second.
std::size_t agreeing(const AxisPairs& pairs, const AxisChange& change, const Allowed& allowed);

/// The simplest change that makes coordinates the same, a quarter of which may be anything: none,
/// moved, flipped, scaled, scaled and moved, in this order. One that is less simple has to leave at
/// most half as many pairs apart, so that a single bad coordinate decides nothing; scales want
/// three different coordinates, so that they do not follow from themselves. Numbers are as round as
/// the pairs allow: half of a pixel is 0.5 sharp. None where there are no pairs.
AxisChange axisChange(const AxisPairs& pairs, const Allowed& allowed);

}  // namespace cornerpin

#endif

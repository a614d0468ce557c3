// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_SHOW_DIFFERENCE_H
#define SHOW_SHOW_DIFFERENCE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "show/task_record.h"

namespace cornerpin {

/// How the results of a shot differ in two batches.
struct ShotDifference {
  std::string name;
  std::string text;       ///< for people
  double distance = 0.0;  ///< in pixels; infinite where one of them has no result to compare
};

struct ShowDifference {
  std::size_t both = 0;                   ///< shots that both batches have
  std::vector<ShotDifference> different;  ///< of these, the worst first
  std::vector<std::string> onlyFirst;     ///< names
  std::vector<std::string> onlySecond;
  bool any() const { return !different.empty() || !onlyFirst.empty() || !onlySecond.empty(); }
};

/// Compares what two folders of batches have of each shot, by the records in them.
///
/// \param most  how far corners may be apart in results that count as the same; what else counts is
///              a frame that one lacks, and one batch in which the shot failed. Without it anything
///              in a result counts but the program that made it
///
/// Throws `shot::InputError` for a folder without records and for files that cannot be read. Cost:
/// two results in memory at a time, twice; results of the same bytes are not taken apart.
ShowDifference differenceOfShows(const std::string& first, const std::string& second,
                                 std::optional<double> most);

/// As lines for people, every shot that differs on one. The last line decides: "Same: ...",
/// "Different: ...".
std::string textOf(const ShowDifference& difference, const std::string& first,
                   const std::string& second);

}  // namespace cornerpin

#endif

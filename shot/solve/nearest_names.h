// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_NEAREST_NAMES_H
#define SHOT_SOLVE_NEAREST_NAMES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace cornerpin {

/// How many slips lead from one text to the other: a byte too many, one missing, another one, or
/// two neighbours swapped.
std::size_t slipsBetween(std::string_view a, std::string_view b);

/// The names that may be meant by a text with slips, at most one for three of its bytes and one
/// more: the fewest slips first, then in their order, at most `most`.
std::vector<std::string> nearestNames(std::string_view text, const std::vector<std::string>& names,
                                      std::size_t most = 3);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_DIFFERENCE_TEXT_H
#define SHOT_FILES_DIFFERENCE_TEXT_H

#include <optional>
#include <string>
#include <vector>

#include "shot/compare/result_difference.h"
#include "shot/files/only_rows.h"

namespace cornerpin {

/// How two results are told apart, as lines for people. The last line decides: "Same: ...",
/// "Different: ...".
///
/// \param first  the result whose corners were compared
std::string differenceText(const ResultDifference& difference, const DifferenceNames& names,
                           const ShotResult& first, std::optional<double> most);

/// Whether the results count as different: for a corner that is further off than `most` pixels and
/// for frames that only one has; without `most`, for anything that differs.
bool isDifferent(const ResultDifference& difference, std::optional<double> most);

}  // namespace cornerpin

#endif

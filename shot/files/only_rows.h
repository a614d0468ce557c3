// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_ONLY_ROWS_H
#define SHOT_FILES_ONLY_ROWS_H

#include <string>
#include <vector>

#include "shot/compare/result_difference.h"

namespace cornerpin {

/// What two files that are compared are called.
struct DifferenceNames {
  std::string first;
  std::string second;
};

/// The first few of many: frames, which rise, as stretches.
std::string listed(const std::vector<int>& frames);
std::string listed(const std::vector<std::string>& names);

/// Lines of a table for people (`infoRow`) that list what is in one of two files only: none where
/// both have all.
std::string onlyRows(const char* label, const OnlyIn<int>& frames, const DifferenceNames& names);
std::string onlyRows(const char* label, const OnlyIn<std::string>& items,
                     const DifferenceNames& names);

}  // namespace cornerpin

#endif

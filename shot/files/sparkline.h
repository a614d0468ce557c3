// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_SPARKLINE_H
#define SHOT_FILES_SPARKLINE_H

#include <cstddef>
#include <string>
#include <vector>

namespace cornerpin {

/// The values as a line of blocks in UTF-8, at most `width` of them, each as high as the largest of
/// the values that it stands for: eighths of the largest of all, the lowest for 0. "x" where one is
/// not finite. Empty for no values.
std::string sparkline(const std::vector<double>& values, std::size_t width);

}  // namespace cornerpin

#endif

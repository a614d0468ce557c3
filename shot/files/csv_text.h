// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_CSV_TEXT_H
#define SHOT_FILES_CSV_TEXT_H

#include <string>

namespace cornerpin {

/// A number as CSV files hold it: the shortest that reads back as the same double, in every locale;
/// empty where it is not finite.
std::string csvNumber(double value);

/// A text, quoted where it has to be.
std::string csvText(const std::string& text);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PAGE_H
#define SHOT_REPORT_PAGE_H

#include <cstddef>

#include "shot/files/output_file.h"
#include "shot/report/shown.h"

namespace cornerpin {

/// Writes a page that shows whether a result is good: one file, which asks for no other.
///
/// Of a long shot it shows so much (`shownOf`) that it stays below `kMostBytes`.
void writePage(const PageSubject& subject, OutputFile& out);

/// Of a page without pictures.
constexpr std::size_t kMostBytes = 2'000'000;

}  // namespace cornerpin

#endif

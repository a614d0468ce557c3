// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PAGE_H
#define SHOT_REPORT_PAGE_H

#include <cstddef>
#include <string>
#include <vector>

#include "shot/files/output_file.h"
#include "shot/report/shot_pictures.h"
#include "shot/report/shown.h"
#include "shot/solve/progress.h"

namespace cornerpin {

/// The pictures under what a page draws.
struct PictureUse {
  const ShotPictures& pictures;
  std::string linkedFrom;  ///< the page's path, from which they are asked for; empty: embedded
};

/// Writes a page that shows whether a result is good: one file, which asks for no other, unless
/// pictures are linked.
///
/// Of a long shot it shows so much (`shownOf`) that it stays below `kMostBytes`.
///
/// \param pictures  null: none
///
/// Returns which pictures were left out, as they are broken, with their names.
std::vector<std::string> writePage(const PageSubject& subject, const PictureUse* pictures,
                                   OutputFile& out, const Progress& progress = {});

/// Of a page without pictures.
constexpr std::size_t kMostBytes = 2'000'000;

}  // namespace cornerpin

#endif

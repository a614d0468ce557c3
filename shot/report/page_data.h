// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PAGE_DATA_H
#define SHOT_REPORT_PAGE_DATA_H

#include <optional>
#include <string>

#include "shot/report/shown.h"
#include "shot/report/view.h"

namespace cornerpin {

/// What a page says of its pictures.
struct PictureNote {
  bool linked = false;
  std::size_t frames = 0;  ///< how many have one
  std::string missing;     ///< why others have none; empty where all have one
};

/// What the page is made from, as JSON (report/page.schema.json).
///
/// \param pictures  none: there are none
std::string pageDataJson(const PageSubject& subject, const Shown& shown, const View& view,
                         const std::optional<PictureNote>& pictures);

/// What positions are rounded to: 1, 2 or 5 times a power of ten, at most a 200,000th of the view's
/// width.
double unitFor(const View& view);

}  // namespace cornerpin

#endif

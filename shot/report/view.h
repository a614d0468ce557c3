// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_VIEW_H
#define SHOT_REPORT_VIEW_H

#include <optional>

#include "shot/plane/picture.h"
#include "shot/report/shown.h"

namespace cornerpin {

struct PictureSize {
  int width = 0;
  int height = 0;
};

/// The picture of the tracks as a page draws it: x to the right, y down, whole numbers at the edges
/// of pixels.
struct View {
  double x = 0.0;  ///< left edge
  double y = 0.0;  ///< top edge
  double width = 1.0;
  double height = 1.0;
  bool isPicture = false;  ///< false where the size is not known: the box around all that is drawn
  PictureMap fromTracks;
};

/// The view of a result. Facts of the picture that are not known are taken to be the page's own.
///
/// Without a size the view is around the tracks where they are good, but for far-off ones (where
/// the transforms carry their places, if the tracks are not known), and around the quads, which it
/// leaves behind where they go further than its own size from there.
///
/// \param shown  the frames and tracks that are drawn
/// \param size   of the picture where the result does not tell it
View viewOf(const PageSubject& subject, const Shown& shown,
            const std::optional<PictureSize>& size = std::nullopt);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_SHOT_PICTURES_H
#define SHOT_REPORT_SHOT_PICTURES_H

#include <map>
#include <optional>
#include <string>

#include "shot/report/picture_files.h"
#include "shot/report/shown.h"
#include "shot/report/view.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// The pictures of a shot's frames, all of one size, found and looked at before a page is made.
class ShotPictures {
 public:
  /// \param pattern  what the user gave, for messages
  ///
  /// Throws `std::invalid_argument` where no frame has a picture, they are of several sizes, or
  /// their size does not go with the picture of the tracks; `InputError` for a picture that is
  /// refused (`headOf`).
  ShotPictures(const PictureFiles& files, const std::string& pattern, int firstFrame,
               int lastFrame);

  /// Finds how large the picture of the tracks is.
  /// \param picture  of the tracks; where it tells a size, that has to fit
  /// \param scale    the pictures' width over that of the tracks' picture; none: by the sizes, or 1
  /// \param tracks   these may not lie outside the picture; null: not known
  void fit(const Picture& picture, std::optional<double> scale, const Tracks* tracks);

  /// Refuses to have a page ask for these pictures where a browser would show none of them.
  void refuseLinks() const;

  /// Of the tracks' picture.
  PictureSize size() const { return size_; }

  /// The path of the frame's picture; empty where there is none.
  std::string of(int frame) const;

 private:
  std::string pattern_;
  std::map<int, std::string> paths_;
  std::string tiff_;  // one of them that is a TIFF file; empty without one
  PictureSize own_;   // of each picture
  PictureSize size_;  // of the tracks' picture
};

}  // namespace cornerpin

#endif

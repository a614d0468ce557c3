// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PAGE_PICTURES_H
#define SHOT_REPORT_PAGE_PICTURES_H

#include <string>
#include <vector>

#include "shot/report/page_data.h"
#include "shot/report/shot_pictures.h"
#include "shot/solve/progress.h"

namespace cornerpin {

/// What a page has of a shot's pictures.
struct PagePictures {
  PictureNote note;
  std::vector<std::string> urls;    ///< one for each frame; empty without a picture
  std::vector<std::string> broken;  ///< why pictures that are there are left out, with their names
};

/// The pictures of these frames, as smaller ones in the page itself.
PagePictures embedded(const ShotPictures& pictures, const std::vector<int>& frames,
                      const Progress& progress = {});

/// The same as files that the page asks for: by their way from the page's folder.
PagePictures linked(const ShotPictures& pictures, const std::vector<int>& frames,
                    const std::string& page);

/// The widest picture in a page, in pixels.
constexpr int kWidestPicture = 640;

/// A file's path as a URL relative to the folder of another one.
std::string urlFrom(const std::string& page, const std::string& path);

}  // namespace cornerpin

#endif

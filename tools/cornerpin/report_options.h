// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_REPORT_OPTIONS_H
#define TOOLS_CORNERPIN_REPORT_OPTIONS_H

#include <optional>
#include <string>

#include "shot/report/picture_files.h"
#include "shot/report/shot_pictures.h"
#include "shot/report/shown.h"
#include "shot/solve/progress.h"
#include "tools/cornerpin/file_talk.h"

namespace CLI {
class App;
}

namespace cornerpin {

/// --pictures, --picture-scale and --link: what stands under the tracks of a page. What is refused
/// throws `std::invalid_argument`.
class PagePictureOptions {
 public:
  void addTo(CLI::App& parser);

  /// Refuses options that go with nothing, and looks where the pictures are.
  /// \param page  the path of the page; empty: none is written
  void check(const std::string& page);

  /// Finds the pictures of the frames from the first to the last, and looks whether they fit.
  /// \param tracks  null: not known
  void find(const Picture& picture, int first, int last, const Tracks* tracks);

  /// Writes the page of a result.
  void write(const PageSubject& subject, const std::string& page, FileTalk& talk,
             const Progress& progress = {}) const;

 private:
  std::string pattern_;
  std::string scale_;
  bool link_ = false;

  std::optional<PictureFiles> files_;
  std::optional<ShotPictures> pictures_;
};

/// --plot: a quick look as a picture.
struct PlotOption {
  std::string path;
  void addTo(CLI::App& parser);
  /// Refuses a name that ends neither in .svg nor in .png, and a PNG file that nothing draws here.
  void check() const;
  /// Where it is given.
  void write(const PageSubject& subject) const;
};

/// What a page or a plot is called: the file of the tracks, or of the result.
std::string titleOf(const ShotResult& result, const std::string& path);

}  // namespace cornerpin

#endif

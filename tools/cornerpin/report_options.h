// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_REPORT_OPTIONS_H
#define TOOLS_CORNERPIN_REPORT_OPTIONS_H

#include <cornerpin/shot.h>

#include <string>

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
  void check(const std::string& page) const;

  shot::PageOptions value() const;

 private:
  std::string pattern_;
  std::string scale_;
  bool link_ = false;
};

/// --plot: a quick look as a picture.
struct PlotOption {
  std::string path;
  void addTo(CLI::App& parser);
  /// Refuses a name that ends neither in .svg nor in .png, and a PNG file that nothing draws here.
  void check() const;
};

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/plot_png.h"

#include <gd.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <stdexcept>
#include <string>

#include "shot/report/plot_svg.h"
#include "tests/shot/report/small_result.h"

using namespace cornerpin;

// What finds programs, for as long as this lives.
class SearchPath {
 public:
  explicit SearchPath(const char* path) : before_(::getenv("PATH")) { ::setenv("PATH", path, 1); }
  ~SearchPath() { ::setenv("PATH", before_.c_str(), 1); }

 private:
  std::string before_;
};

TEST(PlotPng, IsAPictureOfThePlot) {
  requirePngRenderer();
  const std::string png = pngOf(plotSvg(small::result(4, 20), "small"));
  EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
  // Its width, 960, and its height, 64 + 3 * 140 + 2 * 44 + 40 = 612.
  EXPECT_EQ(png.substr(16, 8), std::string("\0\0\x03\xc0\0\0\x02\x64", 8));
  std::string bytes = png;
  gdImagePtr image = ::gdImageCreateFromPngPtr(static_cast<int>(bytes.size()), bytes.data());
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(::gdImageGetTrueColorPixel(image, 5, 5) & 0xffffff, 0xffffff);  // on light paper
  ::gdImageDestroy(image);
}

TEST(PlotPng, SaysWhatIsMissing) {
  const SearchPath nowhere("/nonexistent");
  try {
    requirePngRenderer();
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(),
                 "a plot in PNG is drawn by rsvg-convert, which is not there: install the package "
                 "librsvg2-bin, or name a file that ends in .svg");
  }
}

TEST(PlotPng, SaysThatAFileIsNotDrawn) {
  try {
    pngOf("no svg");
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(),
                 "rsvg-convert does not draw the plot: name a file that ends in .svg, and draw "
                 "that");
  }
}

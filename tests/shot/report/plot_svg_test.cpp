// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/plot_svg.h"

#include <gtest/gtest.h>

#include "tests/shot/report/small_result.h"

using namespace cornerpin;

namespace {

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

// Every element that is opened is closed, in order, and no attribute holds a "<".
void expectWellFormed(const std::string& svg) {
  std::vector<std::string> open;
  for (std::size_t at = svg.find("?>") + 2; (at = svg.find('<', at)) != std::string::npos;) {
    const std::size_t end = svg.find('>', at);
    const std::string tag = svg.substr(at + 1, end - at - 1);
    ASSERT_EQ(tag.find('<'), std::string::npos) << tag;
    EXPECT_EQ(countOf(tag, "\"") % 2, 0u) << tag;
    if (tag[0] == '/') {
      ASSERT_FALSE(open.empty());
      EXPECT_EQ(tag.substr(1), open.back());
      open.pop_back();
    } else if (tag.back() != '/') {
      open.push_back(tag.substr(0, tag.find(' ')));
    }
    at = end;
  }
  EXPECT_TRUE(open.empty());
}

}  // namespace

TEST(PlotSvg, HasTheFiguresTheLimitAndWordsForThoseWhoDoNotSee) {
  const std::string svg = plotSvg(small::result(4, 20), "small.csv");
  expectWellFormed(svg);
  for (const char* text :
       {"<title id=\"title\">small.csv</title>", "Good: all 20 frames.", ">Expected corner error<",
        ">RMS of the good tracks<", ">Tracks in use<", ">limit 2 px<", ">frame 0<", ">19<"})
    EXPECT_NE(svg.find(text), std::string::npos) << text;
}

// The panel is 140 high and ends at 2.5 px, 1.25 times the limit: 0.5 px is at 64 + 112.
TEST(PlotSvg, PutsFiguresWhereTheyBelong) {
  const std::string svg = plotSvg(small::result(4, 3), "");
  EXPECT_NE(svg.find("d=\"M80.0 204.0L508.0 176.0L936.0 176.0\""), std::string::npos) << svg;
  EXPECT_NE(svg.find("d=\"M80.0 92.0L936.0 92.0\""), std::string::npos) << svg;
}

TEST(PlotSvg, MarksDoubtfulFramesByShape) {
  ShotResult result = small::result(4, 5);
  EXPECT_EQ(countOf(plotSvg(result, ""), "fill=\"#d55e00\"/>"), 0u);
  small::doubt(result.frames[2], 3.0);
  small::doubt(result.frames[3], kNoFigure);
  const std::string svg = plotSvg(result, "");
  expectWellFormed(svg);
  EXPECT_EQ(countOf(svg, "fill=\"#d55e00\"/>"), 3u);  // triangles in all three plots
  EXPECT_EQ(countOf(svg, "stroke-width=\"2\""), 1u);  // a cross in the first
}

// Each colour of a light ground but the paper's and the text's, which are those of whole elements.
TEST(PlotSvg, HasADarkColourForEachLightOne) {
  ShotResult result = small::result(4, 5);
  small::doubt(result.frames[2], 3.0);
  small::doubt(result.frames[3], kNoFigure);
  const std::string svg = plotSvg(result, "");
  const std::size_t body = svg.find("</style>");
  const std::string style = svg.substr(0, body);
  EXPECT_NE(style.find("@media (prefers-color-scheme: dark)"), std::string::npos);
  for (const std::string attribute : {"stroke=\"#", "fill=\"#"}) {
    for (std::size_t at = body; (at = svg.find(attribute, at)) != std::string::npos; ++at) {
      const std::string colour = svg.substr(at, svg.find('"', at + attribute.size()) + 1 - at);
      if (colour == "fill=\"#ffffff\"") continue;
      EXPECT_NE(style.find("[" + colour + "]"), std::string::npos) << colour;
    }
  }
}

TEST(PlotSvg, KeepsItsScaleWhereAnErrorIsHuge) {
  ShotResult result = small::result(4, 5);
  small::doubt(result.frames[2], 1e9);
  const std::string svg = plotSvg(result, "");
  EXPECT_NE(svg.find(">16 px<"), std::string::npos);
  EXPECT_NE(svg.find("Expected corner error, drawn at the upper edge where it is more"),
            std::string::npos);
}

TEST(PlotSvg, TakesAnyNameAndAnyShot) {
  expectWellFormed(plotSvg(small::result(4, 1), "</title><script>\x01\"&"));
  ShotResult result = small::result(0, 2);
  result.maxError = kNoFigure;
  for (FrameResult& frame : result.frames) frame.rms = frame.goodRms = kNoFigure;
  expectWellFormed(plotSvg(result, ""));
}

// The worst frame of 10,000 is drawn.
TEST(PlotSvg, StaysSmallAndLosesNoDoubtfulFrame) {
  ShotResult result = small::result(4, 10'000);
  small::doubt(result.frames[5003], 3.5);
  const std::string svg = plotSvg(result, "");
  EXPECT_LT(svg.size(), 60'000u);
  EXPECT_EQ(countOf(svg, "fill=\"#d55e00\"/>"), 3u);
  // At the upper edge, 3.5 px: frame 5003 is at 80 + 856 * 5003 / 9999.
  EXPECT_NE(svg.find("M508.3 60.0l"), std::string::npos);
}

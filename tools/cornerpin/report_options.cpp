// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/report_options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "tools/cornerpin/as_typed.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/parse_whole.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

// A scale beyond these is a slip.
constexpr double kSmallestScale = 0.001;
constexpr double kLargestScale = 1000.0;

std::optional<double> scaleOf(const std::string& text) {
  if (text.empty()) return std::nullopt;
  const std::optional<double> scale = parseWhole<double>(text);
  if (!scale || !(*scale >= kSmallestScale) || !(*scale <= kLargestScale)) {
    throw std::invalid_argument(
        fmt::format("--picture-scale takes the width of the pictures over that of the tracks' "
                    "picture, such as 0.5, not \"{}\"",
                    text));
  }
  return scale;
}

}  // namespace

void PagePictureOptions::addTo(CLI::App& parser) {
  takesFile(
      parser.add_option("--pictures", pattern_,
                        "Show these pictures: img_%04d.jpg, img_####.jpg, a folder or a list"))
      ->check(refuseEmpty)
      ->option_text("PATTERN");
  parser
      .add_option("--picture-scale", scale_,
                  "Width of these pictures over that of the tracks' picture")
      ->check(refuseEmpty)
      ->option_text("S");
  parser.add_flag("--link", link_, "Leave the pictures beside the page, which asks for them");
}

void PagePictureOptions::check(const std::string& page) const {
  if (pattern_.empty()) {
    const char* given = !scale_.empty() ? "--picture-scale" : link_ ? "--link" : nullptr;
    if (given == nullptr) return;
    throw std::invalid_argument(fmt::format("{}: no pictures are given: add --pictures", given));
  }
  if (page.empty()) {
    throw std::invalid_argument("--pictures: no page is written: add --report FILE");
  }
  if (link_ && isStandardOutput(page)) {
    throw std::invalid_argument(
        "--link: pictures cannot be beside standard output: name a file for the page");
  }
  asTyped([&] { shot::checkReport(value()); });
}

shot::PageOptions PagePictureOptions::value() const {
  shot::PageOptions options;
  options.pictures = pattern_;
  options.pictureScale = scaleOf(scale_);
  options.link = link_;
  return options;
}

void PlotOption::addTo(CLI::App& parser) {
  takesFile(parser.add_option("--plot", path, "Write a quick look at the frames: .svg or .png"))
      ->check(refuseEmpty)
      ->option_text("FILE");
}

void PlotOption::check() const {
  if (path.empty()) return;
  const std::string ending = std::filesystem::path(path).extension().string();
  if (ending != ".svg" && ending != ".png") {
    throw std::invalid_argument(
        fmt::format("--plot: \"{}\" ends neither in .svg nor in .png: name one that does", path));
  }
  shot::checkPlot(path);
}

}  // namespace cornerpin

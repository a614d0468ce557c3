// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/report_options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "shot/files/output_file.h"
#include "shot/report/page.h"
#include "shot/report/plot_png.h"
#include "shot/report/plot_svg.h"
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

bool isPng(const std::string& path) { return std::filesystem::path(path).extension() == ".png"; }

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

void PagePictureOptions::check(const std::string& page) {
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
  scaleOf(scale_);
  try {
    files_.emplace(pattern_);
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument(std::string("--pictures: ") + error.what());
  }
}

void PagePictureOptions::find(const Picture& picture, int first, int last, const Tracks* tracks) {
  if (!files_) return;
  pictures_.emplace(*files_, pattern_, first, last);
  if (link_) pictures_->refuseLinks();
  pictures_->fit(picture, scaleOf(scale_), tracks);
}

void PagePictureOptions::write(const PageSubject& subject, const std::string& page, FileTalk& talk,
                               const Progress& progress) const {
  OutputFile out(isStandardOutput(page) ? "-" : page);
  if (pictures_) {
    const PictureUse use = {*pictures_, link_ ? page : std::string()};
    talk.add(writePage(subject, &use, out, progress));
  } else {
    writePage(subject, nullptr, out);
  }
  out.commit();
}

void PlotOption::addTo(CLI::App& parser) {
  takesFile(parser.add_option("--plot", path, "Write a quick look at the frames: .svg or .png"))
      ->check(refuseEmpty)
      ->option_text("FILE");
}

void PlotOption::check() const {
  if (path.empty()) return;
  if (!isPng(path) && std::filesystem::path(path).extension() != ".svg") {
    throw std::invalid_argument(
        fmt::format("--plot: \"{}\" ends neither in .svg nor in .png: name one that does", path));
  }
  if (isPng(path)) requirePngRenderer();
}

void PlotOption::write(const PageSubject& subject) const {
  if (path.empty()) return;
  const std::string svg = plotSvg(subject.result, subject.title);
  OutputFile out(path);
  out.write(isPng(path) ? pngOf(svg) : svg);
  out.commit();
}

std::string titleOf(const ShotResult& result, const std::string& path) {
  const std::optional<InputFile>& input = result.provenance.input;
  if (input && !input->name.empty()) return input->name;
  return path == "-" ? "standard input" : std::filesystem::path(path).filename().string();
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/shot_pictures.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <stdexcept>

#include "shot/files/input_error.h"
#include "shot/report/picture_head.h"

namespace cornerpin {

namespace {

std::string textOf(PictureSize size) { return fmt::format("{}x{}", size.width, size.height); }

// Whether a side in one picture is the other's at this scale, as rounding leaves it.
bool goesWith(int side, int of, double scale) { return std::abs(side - of * scale) <= 1.0; }

constexpr double kMostOutside = 0.1;  // of the observations

// How many of the tracks are further out than the picture.
double shareOutside(const Tracks& tracks, PictureSize size) {
  std::size_t outside = 0;
  std::size_t all = 0;
  for (const Observation& row : tracks.observations) {
    if (!(row.weight > 0.0f)) continue;
    ++all;
    if (row.x < -1.0 || row.y < -1.0 || row.x > size.width + 1.0 || row.y > size.height + 1.0)
      ++outside;
  }
  return all == 0 ? 0.0 : static_cast<double>(outside) / static_cast<double>(all);
}

}  // namespace

ShotPictures::ShotPictures(const PictureFiles& files, const std::string& pattern, int firstFrame,
                           int lastFrame)
    : pattern_(pattern) {
  for (std::int64_t frame = firstFrame; frame <= lastFrame; ++frame) {
    const std::string path = files.of(static_cast<int>(frame));
    if (path.empty()) continue;
    const auto [kind, size] = headOf(path);
    if (paths_.empty()) own_ = size;
    if (kind == PictureKind::Tiff) tiff_ = path;
    if (size.width != own_.width || size.height != own_.height) {
      throw std::invalid_argument(
          fmt::format("--pictures: \"{}\" is {} and \"{}\" {}: give pictures of one size",
                      paths_.begin()->second, textOf(own_), path, textOf(size)));
    }
    paths_.emplace(static_cast<int>(frame), path);
  }
  if (paths_.empty()) {
    const std::string name = files.nameOf(firstFrame);
    throw std::invalid_argument(fmt::format(
        "--pictures: \"{}\" has no picture of frames {} to {}{}: the numbers of the pictures are "
        "those of the frames",
        pattern, firstFrame, lastFrame, name.empty() ? "" : ", such as \"" + name + "\""));
  }
}

void ShotPictures::fit(const Picture& picture, std::optional<double> scale, const Tracks* tracks) {
  if (picture.width && picture.height) {
    size_ = {*picture.width, *picture.height};
    const double across = scale.value_or(static_cast<double>(own_.width) / size_.width);
    if (goesWith(own_.width, size_.width, across) && goesWith(own_.height, size_.height, across))
      return;
    throw std::invalid_argument(fmt::format(
        "--pictures: those of \"{}\" are {} and the picture of the tracks {}, which {}: give "
        "pictures of the whole frame",
        pattern_, textOf(own_), textOf(size_),
        scale ? fmt::format("is not so with --picture-scale {}", *scale) : "is of another shape"));
  }
  const double by = scale.value_or(1.0);
  size_ = {static_cast<int>(std::lround(own_.width / by)),
           static_cast<int>(std::lround(own_.height / by))};
  if (scale || tracks == nullptr || shareOutside(*tracks, size_) <= kMostOutside) return;
  throw std::invalid_argument(fmt::format(
      "--pictures: those of \"{}\" are {}, and the tracks go far beyond that: add --picture-scale "
      "with the width of the pictures over that of the tracks' picture, such as 0.5",
      pattern_, textOf(own_)));
}

void ShotPictures::refuseLinks() const {
  if (tiff_.empty()) return;
  throw InputError(tiff_,
                   "is a TIFF file, which browsers do not show: convert it, or do not link it");
}

std::string ShotPictures::of(int frame) const {
  const auto found = paths_.find(frame);
  return found == paths_.end() ? std::string() : found->second;
}

}  // namespace cornerpin

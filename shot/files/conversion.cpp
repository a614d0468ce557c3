// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/conversion.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace cornerpin {

namespace {

// A fact that is told is noted where it is not known, or contradicts.
template <class T>
void note(std::optional<T>& known, const std::optional<T>& told, std::optional<T>& contradicted) {
  if (!told) return;
  if (known && *known != *told) contradicted = told;
  if (!known) known = told;
}

[[noreturn]] void refuse(const char* option, const std::string& file, const std::string& says) {
  throw std::invalid_argument(
      fmt::format("{}: \"{}\" {}: leave the option out", option, file, says));
}

const char* nameOf(YAxis y) { return y == YAxis::Up ? "up" : "down"; }

// What has to be told of a file, and how.
std::string wanted(PictureFact fact) {
  switch (fact) {
    case PictureFact::Size:
      return "how large the picture is: add --size WxH";
    case PictureFact::YAxis:
      return "where y grows to: add --y-up or --y-down";
    default:
      return "where a pixel's centre is: add --pixel-center 0.5 where whole numbers are edges of "
             "pixels, or 0 where they are centres";
  }
}

std::string wanted(const std::vector<PictureFact>& facts) {
  std::string text;
  for (const PictureFact fact : facts) text += (text.empty() ? "" : "; and ") + wanted(fact);
  return text;
}

std::int32_t moved(std::int32_t frame, int shift, const std::string& what) {
  const std::int64_t sum = std::int64_t{frame} + shift;
  if (sum < -kFurthestFrame || sum > kFurthestFrame) {
    throw std::invalid_argument(fmt::format("{}: frame {} has no place in it", what, sum));
  }
  return static_cast<std::int32_t>(sum);
}

void moveFrames(Tracks& tracks, int shift) {
  if (shift == 0) return;
  for (Observation& row : tracks.observations) row.frame = moved(row.frame, shift, "--first-frame");
}

}  // namespace

int tell(Picture& picture, Format format, const Picture& told, Picture& contradicted) {
  if (format == Format::Paths && told.pixelCentre) picture.pixelCentre = told.pixelCentre;
  note(picture.y, told.y, contradicted.y);
  note(picture.pixelCentre, told.pixelCentre, contradicted.pixelCentre);
  note(picture.width, told.width, contradicted.width);
  note(picture.height, told.height, contradicted.height);
  if (!told.firstFrame) return 0;
  const int shift = picture.firstFrame ? *told.firstFrame - *picture.firstFrame : 0;
  picture.firstFrame = told.firstFrame;
  return shift;
}

void refuseContradiction(const Picture& contradicted, const Picture& picture,
                         const std::string& file) {
  if (contradicted.y) {
    const bool up = *contradicted.y == YAxis::Up;
    refuse(up ? "--y-up" : "--y-down", file, fmt::format("has y growing {}", nameOf(*picture.y)));
  }
  if (contradicted.pixelCentre) {
    refuse("--pixel-center", file,
           fmt::format("has the centre of its first pixel at {}", *picture.pixelCentre));
  }
  if (contradicted.width || contradicted.height) {
    refuse("--size", file,
           fmt::format("is from a picture of {}x{}", picture.width.value_or(0),
                       picture.height.value_or(0)));
  }
}

Picture tell(Tracks& tracks, Format format, const Picture& told) {
  Picture contradicted;
  moveFrames(tracks, tell(tracks.picture, format, told, contradicted));
  return contradicted;
}

bool isOpen(Format format) { return format == Format::Csv || format == Format::Json; }

Picture pictureFor(Format format, const Picture& from, const std::string& file, Needs needs) {
  const FormatFacts& facts = factsOf(format);
  Picture to = facts.picture;
  if (isOpen(format) && from.scale != Scale::Pixels) to.pixelCentre = 0.5;
  if (isOpen(format)) to = completed(to, from);
  std::vector<PictureFact> missing = missingBetween(from, to);
  const bool hasSize = from.width && from.height;
  const bool isNamed =
      std::find(missing.begin(), missing.end(), PictureFact::Size) != missing.end();
  if (needs == Needs::Size && !hasSize && !isNamed) missing.push_back(PictureFact::Size);
  if (!missing.empty()) {
    throw std::invalid_argument(fmt::format("{} files need to know, and \"{}\" does not say, {}",
                                            facts.word, file, wanted(missing)));
  }
  return completed(to, from);
}

bool takesSize(Picture from, Picture to) {
  from.width = to.width = std::nullopt;
  const std::vector<PictureFact> missing = missingBetween(from, to);
  return std::find(missing.begin(), missing.end(), PictureFact::Size) != missing.end();
}

Tracks converted(Tracks tracks, const Picture& to) {
  const PictureMap map(tracks.picture, to);
  const int shift = frameShift(tracks.picture, to);
  for (Observation& row : tracks.observations) {
    const Point p = map(Point{row.x, row.y});
    row.x = p.x;
    row.y = p.y;
  }
  moveFrames(tracks, shift);
  tracks.picture = completed(to, tracks.picture);
  return tracks;
}

Tracks asAskedFor(Tracks tracks, const Picture& asked, const std::string& file) {
  const Picture to = completed(asked, tracks.picture);
  if (!missingBetween(tracks.picture, to).empty()) {
    throw std::invalid_argument(
        fmt::format("to convert \"{}\" it must be known, and it does not say, {}", file,
                    wanted(PictureFact::Size)));
  }
  return converted(std::move(tracks), to);
}

Tracks inPixels(Tracks tracks, const std::string& file) {
  if (tracks.picture.scale == Scale::Pixels) return tracks;
  Picture pixels;
  pixels.pixelCentre = 0.5;
  return asAskedFor(std::move(tracks), pixels, file);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <array>
#include <cmath>
#include <stdexcept>
#include <string>

#include "shot/files/pin_text.h"
#include "shot/files/track_writers.h"
#include "shot/plane/placement.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr double kPercent = 100.0;

// Below it, a corner is where the transform has it but for rounding.
constexpr double kNothing = 1e-6;

using KeyedFrames = std::vector<const PinFrame*>;

void writeHeader(const Pin& pin, const PinStyle& style, OutputFile& out) {
  if (!pin.picture.width || !pin.picture.height) {
    throw std::invalid_argument("keyframe text needs the picture's size: give it with --size WxH");
  }
  const std::string aspect = decimal(style.pixelAspect);
  out.write(fmt::format(
      "Adobe After Effects 6.0 Keyframe Data\n\n\tUnits Per Second\t{}\n"
      "\tSource Width\t{}\n\tSource Height\t{}\n\tSource Pixel Aspect Ratio\t{}\n"
      "\tComp Pixel Aspect Ratio\t{}\n\n",
      decimal(style.framesPerSecond), *pin.picture.width, *pin.picture.height, aspect, aspect));
}

/// A section with a key for every frame, whose values `textFor` gives, tabs between.
template <class Frames, class F>
void writeSection(const char* name, const char* columns, const Frames& frames, F textFor,
                  OutputFile& out) {
  out.write(fmt::format("{}\n\tFrame\t{}\n", name, columns));
  for (std::size_t i = 0; i < frames.size(); ++i) {
    out.write(fmt::format("\t{}\t{}\n", frames[i]->frame, textFor(i)));
  }
  out.write("\n");
}

struct PinSection {
  const char* name;
  Corner corner;
};
constexpr std::array<PinSection, 4> kPinSections = {
    {{"Effects\tADBE Corner Pin #1\tADBE Corner Pin-0001", kTopLeft},
     {"Effects\tADBE Corner Pin #1\tADBE Corner Pin-0002", kTopRight},
     {"Effects\tADBE Corner Pin #1\tADBE Corner Pin-0003", kBottomLeft},
     {"Effects\tADBE Corner Pin #1\tADBE Corner Pin-0004", kBottomRight}}};

void writeCorners(const KeyedFrames& frames, OutputFile& out) {
  for (const PinSection& section : kPinSections) {
    writeSection(
        section.name, "X pixels\tY pixels", frames,
        [&](std::size_t i) {
          const Point p = frames[i]->to[section.corner];
          return decimal(p.x) + "\t" + decimal(p.y);
        },
        out);
  }
}

std::vector<Placement> placementsOf(const Quad& from, const KeyedFrames& frames) {
  std::vector<Placement> placements;
  placements.reserve(frames.size());
  double degrees = 0.0;
  for (const PinFrame* frame : frames) {
    placements.push_back(nearestPlacement(from, frame->to, degrees));
    degrees = placements.back().degrees;
  }
  return placements;
}

void noteDistance(const Quad& from, const KeyedFrames& frames,
                  const std::vector<Placement>& placements, WriteNotes& notes) {
  double largest = 0.0;
  int worst = 0;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    for (std::size_t k = 0; k < from.size(); ++k) {
      const double away =
          std::sqrt(squaredDistance(placements[i].apply(from[k]), frames[i]->to[k]));
      if (away <= largest) continue;
      largest = away;
      worst = frames[i]->frame;
    }
  }
  if (largest < kNothing) return;
  notes.push_back(
      fmt::format("position, scale and rotation do not carry all of the transform: a corner is up "
                  "to {} off, farthest in frame {}",
                  pixels(largest), worst));
}

void writePlacements(const KeyedFrames& frames, const std::vector<Placement>& placements,
                     OutputFile& out) {
  const auto place = [](Point p) { return decimal(p.x) + "\t" + decimal(p.y) + "\t0"; };
  const char* const pixelColumns = "X pixels\tY pixels\tZ pixels";
  writeSection(
      "Anchor Point", pixelColumns, frames,
      [&](std::size_t i) { return place(placements[i].anchor); }, out);
  writeSection(
      "Position", pixelColumns, frames,
      [&](std::size_t i) { return place(placements[i].position); }, out);
  writeSection(
      "Scale", "X percent\tY percent\tZ percent", frames,
      [&](std::size_t i) {
        const Point scale = placements[i].scale;
        return decimal(kPercent * scale.x) + "\t" + decimal(kPercent * scale.y) + "\t100";
      },
      out);
  writeSection(
      "Rotation", "Degrees", frames, [&](std::size_t i) { return decimal(placements[i].degrees); },
      out);
}

Quad wholePicture(const Picture& picture) {
  const double width = picture.width.value_or(0);
  const double height = picture.height.value_or(0);
  return {{{0.0, height}, {width, height}, {width, 0.0}, {0.0, 0.0}}};
}

}  // namespace

WriteNotes writeKeyframesPin(const Pin& pin, const PinStyle& style, OutputFile& out) {
  WriteNotes notes;
  const KeyedFrames frames = keyedFrames(pin, notes);
  writeHeader(pin, style, out);
  if (style.keyframes == PinStyle::Keyframes::Pin) {
    noteRectangle(pin, wholePicture(pin.picture), notes);
    writeCorners(frames, out);
  } else {
    const std::vector<Placement> placements = placementsOf(pin.from, frames);
    noteDistance(pin.from, frames, placements, notes);
    writePlacements(frames, placements, out);
  }
  out.write("End of Keyframe Data\n");
  return notes;
}

}  // namespace cornerpin

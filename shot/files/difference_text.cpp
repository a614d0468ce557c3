// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/difference_text.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <cstddef>

#include "shot/files/info_row.h"
#include "shot/files/sparkline.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kWidth = 64;

std::string orNone(const std::string& text) { return text.empty() ? "no other option" : text; }

template <class Origin>
std::string orUnknown(const std::optional<Origin>& origin) {
  return origin ? describe(*origin) : "not known";
}

// What each of the two files has.
std::string twoRows(const char* label, const std::array<std::string, 2>& texts,
                    const DifferenceNames& names) {
  return infoRow(label, texts[0] + "  (" + names.first + ")") +
         infoRow("", texts[1] + "  (" + names.second + ")");
}

std::string originRows(const ResultDifference& d, const DifferenceNames& names) {
  std::string text;
  if (d.program) {
    text += twoRows("program", {orUnknown(d.firstProgram), orUnknown(d.secondProgram)}, names);
  }
  if (d.input) {
    text += twoRows("tracks from", {orUnknown(d.firstInput), orUnknown(d.secondInput)}, names);
  }
  if (!d.otherOptions.empty()) {
    text += twoRows("options",
                    {orNone(textOf(d.otherOptions.first)), orNone(textOf(d.otherOptions.second))},
                    names);
  }
  return text;
}

std::string frameChoiceRows(const ResultDifference& d) {
  std::string text;
  if (d.firstBase != d.secondBase) {
    text = infoRow("base frame", fmt::format("{} and {}", d.firstBase, d.secondBase));
  }
  if (d.firstReference == d.secondReference) return text;
  const std::string end =
      d.comparedIn ? fmt::format("compared relative to {}", *d.comparedIn) : "not compared";
  return text + infoRow("reference", fmt::format("frames {} and {}: {}", d.firstReference,
                                                 d.secondReference, end));
}

std::string distanceText(const FrameDifference& worst, const ShotResult& first) {
  const std::string corner =
      cornerName(first.quads, first.provenance.picture.y, worst.quad, worst.corner);
  if (std::isinf(worst.distance)) {
    return fmt::format("{} in frame {} lies behind the horizon in one only", corner, worst.frame);
  }
  return fmt::format("{} in frame {}, {}", pixels(worst.distance), worst.frame, corner);
}

std::string cornerRows(const ResultDifference& d, const ShotResult& first) {
  const std::vector<int> moved = d.framesBeyond(0.0);
  if (moved.empty()) return "";
  std::vector<double> distances;
  for (const FrameDifference& frame : d.frames) distances.push_back(frame.distance);
  std::string text = infoRow(
      "corners", fmt::format("differ in {} of {}, worst {}", moved.size(),
                             counted(d.frames.size(), "frame"), distanceText(*d.worst(), first)));
  if (distances.size() > 1) text += infoRow("", sparkline(distances, kWidth));
  return text;
}

std::string frameRow(const ResultDifference& d, const char* label, bool FrameDifference::*differs,
                     const char* what) {
  std::vector<int> frames;
  for (const FrameDifference& frame : d.frames) {
    if (frame.*differs) frames.push_back(frame.frame);
  }
  if (frames.empty()) return "";
  return infoRow(
      label, fmt::format("{} in {}: {}", what, counted(frames.size(), "frame"), listed(frames)));
}

std::string closing(const ResultDifference& d, const ShotResult& first,
                    std::optional<double> most) {
  if (!d.comparedIn) {
    return fmt::format(
        "Different: the corners cannot be compared: {}, for both files with cornerpin rebase.\n",
        d.why);
  }
  const std::vector<int> beyond = d.framesBeyond(most.value_or(0.0));
  if (!beyond.empty()) {
    const std::string limit = most.value_or(0.0) > 0.0 ? " by more than " + pixels(*most) : "";
    return fmt::format("Different: corners move{} in {} of {}: {}. Worst: {}.\n", limit,
                       beyond.size(), counted(d.frames.size(), "frame"), listed(beyond),
                       distanceText(*d.worst(), first));
  }
  if (isDifferent(d, most)) {
    return d.frames.empty()         ? "Different: no frame is in both.\n"
           : !d.otherFrames.empty() ? "Different: frames are in one only.\n"
                                    : "Different: no corner moves, but see above.\n";
  }
  if (!d.framesBeyond(0.0).empty()) {
    return fmt::format("Same: no corner moves by more than {}.\n", pixels(*most));
  }
  return d.any() ? "Same: no corner moves.\n" : "Same: nothing differs.\n";
}

}  // namespace

bool isDifferent(const ResultDifference& difference, std::optional<double> most) {
  if (!most) return difference.any();
  return !difference.comparedIn || !difference.otherFrames.empty() ||
         !difference.framesBeyond(*most).empty();
}

std::string differenceText(const ResultDifference& difference, const DifferenceNames& names,
                           const ShotResult& first, std::optional<double> most) {
  const ResultDifference& d = difference;
  std::string text = originRows(d, names) + onlyRows("tracks", d.otherTracks, names) +
                     onlyRows("frames", d.otherFrames, names) + frameChoiceRows(d);
  if (d.quads)
    text += infoRow("quads", "other corners or names: those of " + names.first + " count");
  text += cornerRows(d, first);
  if (d.framesBeyond(0.0).empty()) {
    text += frameRow(d, "transforms", &FrameDifference::transform, "other last digits");
  }
  text +=
      frameRow(d, "status", &FrameDifference::status, "another one") +
      frameRow(d, "verdict", &FrameDifference::verdict, "good in one and doubtful in the other");
  return text + (text.empty() ? "" : "\n") + closing(d, first, most);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_difference_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "shot/files/info_row.h"
#include "shot/files/number_text.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;

std::string gapRows(const Comparison& c, const DifferenceNames& names) {
  std::string text;
  const auto add = [&](std::size_t count, const std::string& file) {
    if (count == 0) return;
    text += infoRow(text.empty() ? "gaps" : "",
                    fmt::format("{} only in {}, in tracks and frames of both",
                                counted(count, "position"), file));
  };
  add(c.onlyInFirst, names.first);
  add(c.onlyInSecond, names.second);
  return text;
}

// Lengths in pixels, or in what the files count.
std::string length(const TrackDifference& d, double distance) {
  if (d.picture.scale == Scale::Pixels) return pixels(distance);
  return fmt::format("{:.3g} in units of the files", distance);
}

std::string worstText(const TrackDifference& d, const Comparison& c) {
  const ApartPosition& worst = c.worst;
  const bool isX = std::fabs(worst.x) > std::fabs(worst.y);
  return fmt::format("{} in {}, track {} in frame {}", length(d, worst.distance()), isX ? "x" : "y",
                     shown(worst.track), worst.frame);
}

std::string positionsText(const TrackDifference& d, const Comparison& c) {
  return fmt::format("{} of {} {}, at most by {}", c.apart, counted(c.positions, "position"),
                     c.apart == 1 ? "differs" : "differ", worstText(d, c));
}

bool isHalf(const AxisChange& change) { return !change.flips() && std::fabs(change.plus) == 0.5; }

bool isMoved(const AxisChange& change) { return !change.flips() && change.plus != 0.0; }

// A flip that leads from edges to centres of pixels or back is half a pixel off the height.
bool isHalfFlip(const AxisChange& change) {
  return change.flips() && !change.scales() && change.plus - std::floor(change.plus) == 0.5;
}

std::string flipped(const char* axis, const AxisChange& change) {
  if (!change.flips()) return "";
  if (change.scales()) return fmt::format("{} flipped", axis);
  return fmt::format("{} flipped about {}", axis,
                     isHalfFlip(change) ? change.plus + 0.5 : change.plus);
}

std::string halvesText(const Explanation& e) {
  if (!isMoved(e.x)) return isMoved(e.y) ? fmt::format("{:+} in y", e.y.plus) : "";
  if (!isMoved(e.y)) return fmt::format("{:+} in x", e.x.plus);
  if (e.x.plus == e.y.plus) return fmt::format("{:+} in x and y", e.x.plus);
  return fmt::format("{:+} in x, {:+} in y", e.x.plus, e.y.plus);
}

std::string moved(const TrackDifference& d, const Explanation& e) {
  const bool halfFlip = isHalfFlip(e.x) || isHalfFlip(e.y);
  const auto isOther = [](const AxisChange& c) { return isMoved(c) && !isHalf(c); };
  if (!isOther(e.x) && !isOther(e.y)) {
    if (halfFlip) return "half a pixel";
    const std::string way = halvesText(e);
    return way.empty() ? "" : fmt::format("half a pixel ({})", way);
  }
  const char* unit = d.picture.scale == Scale::Pixels ? " px" : "";
  std::vector<std::string> parts;
  if (isMoved(e.x)) parts.push_back(fmt::format("{:+}{} in x", e.x.plus, unit));
  if (isMoved(e.y)) parts.push_back(fmt::format("{:+}{} in y", e.y.plus, unit));
  return fmt::format("moved by {}{}", fmt::join(parts, " and "),
                     halfFlip ? ", half a pixel in the flip" : "");
}

std::string scaled(const Explanation& e) {
  const double x = std::fabs(e.x.times);
  const double y = std::fabs(e.y.times);
  if (x == 1.0 && y == 1.0) return "";
  if (x == y) return fmt::format("scaled by {}", x);
  if (y == 1.0) return fmt::format("x scaled by {}", x);
  if (x == 1.0) return fmt::format("y scaled by {}", y);
  return fmt::format("x scaled by {}, y by {}", x, y);
}

// Whether the names are those of four corners, the same in both files.
bool isCornerOrder(const TrackDifference& d) {
  std::vector<std::string> first;
  std::vector<std::string> second;
  for (const auto& [name, other] : d.explanation->renamed) {
    first.push_back(name);
    second.push_back(other);
  }
  std::sort(first.begin(), first.end());
  std::sort(second.begin(), second.end());
  return first == second;
}

std::string renamed(const TrackDifference& d) {
  const auto& pairs = d.explanation->renamed;
  if (pairs.empty()) return "";
  if (!isCornerOrder(d)) return counted(pairs.size(), "track") + " renamed";
  return d.isFourTracks ? "corner order" : counted(pairs.size(), "name") + " swapped";
}

std::string joined(const std::vector<std::string>& texts) {
  std::vector<std::string> parts;
  std::copy_if(texts.begin(), texts.end(), std::back_inserter(parts),
               [](const std::string& text) { return !text.empty(); });
  return fmt::format("{}", fmt::join(parts, ", "));
}

std::string formula(const char* axis, const AxisChange& change) {
  if (change.isNone()) return "";
  const double t = change.times;
  const std::string scale = std::fabs(t) == 1.0 ? "" : fmt::format("{} ", std::fabs(t));
  if (t < 0.0) return fmt::format("{0}' = {1} - {2}{0}", axis, change.plus, scale);
  const std::string plus = change.plus == 0.0 ? ""
                                              : fmt::format(" {} {}", change.plus < 0.0 ? '-' : '+',
                                                            std::fabs(change.plus));
  return fmt::format("{0}' = {2}{0}{1}", axis, plus, scale);
}

// The numbers of the second file from those of the first.
std::string formulaText(const Explanation& e) {
  std::vector<std::string> texts = {formula("x", e.x), formula("y", e.y)};
  if (e.frames != 0)
    texts.push_back(
        fmt::format("frame' = frame {} {}", e.frames < 0 ? '-' : '+', std::abs(e.frames)));
  return joined(texts);
}

std::string renamedText(const Explanation& e) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < std::min(e.renamed.size(), kListed); ++i)
    texts.push_back(e.renamed[i].first + " is " + e.renamed[i].second);
  const std::size_t more = e.renamed.size() - texts.size();
  return joined(texts) + (more > 0 ? fmt::format(" and {} more", more) : "");
}

// A flip about a whole number tells the height only with the place of a pixel's centre.
std::string heightText(const TrackDifference& d) {
  const Explanation& e = *d.explanation;
  const double height = e.y.plus;
  if (!e.y.flips() || e.y.scales() || height != std::floor(height) || height < 2.0) return "";
  if (d.picture.scale != Scale::Pixels || isMoved(e.x)) return "";
  if (d.picture.height) return "";
  return fmt::format("a picture {} high where pixels' centres are at 0.5, {} where at 0", height,
                     height + 1.0);
}

std::string explanationRows(const TrackDifference& d, const DifferenceNames& names) {
  if (!d.explanation) return "";
  const Explanation& e = *d.explanation;
  std::string text = infoRow("explained by", explanationText(d));
  const std::string formulas = formulaText(e);
  if (!formulas.empty()) text += infoRow("", fmt::format("{}  ({})", formulas, names.second));
  if (!e.renamed.empty())
    text += infoRow("", fmt::format("{}  ({})", renamedText(e), names.second));
  if (const std::string height = heightText(d); !height.empty()) text += infoRow("", height);
  return text +
         infoRow("then", d.rest.apart == 0 ? "no position differs" : positionsText(d, d.rest));
}

// What is allowed where nobody says it, along the axis that is allowed more.
double ownLimit(const TrackDifference& d) { return std::max(d.x.at(1.0), d.y.at(1.0)); }

std::string closing(const TrackDifference& d, std::optional<double> most) {
  const Comparison& c = d.plain;
  const double worst = c.positions > 0 ? c.worst.distance() : 0.0;
  if (!isDifferent(d, most)) {
    if (worst == 0.0) return d.any() ? "Same: no position differs.\n" : "Same: nothing differs.\n";
    return fmt::format("Same: no coordinate differs by more than {}.\n",
                       length(d, most ? *most : std::min(worst, ownLimit(d))));
  }
  if (d.explanation) {
    const Comparison& rest = d.rest;
    const std::string but = rest.apart == 0
                                ? ""
                                : fmt::format("{}, but for {} of {}", d.isNear ? ", nearly" : "",
                                              rest.apart, counted(rest.positions, "position"));
    return fmt::format("Different: {}{}.\n", explanationText(d), but);
  }
  if (c.positions == 0) return "Different: no position is in both.\n";
  const bool beyond = most ? worst > *most : c.apart > 0;
  if (!beyond) {
    return c.isWhole() ? "Different: weights.\n" : "Different: positions are in one only.\n";
  }
  return fmt::format("Different: {}.\n", positionsText(d, c));
}

}  // namespace

std::string explanationText(const TrackDifference& difference) {
  if (!difference.explanation) return "";
  const Explanation& e = *difference.explanation;
  const std::string frames = e.frames == 0 ? "" : fmt::format("frame {:+}", e.frames);
  return joined({flipped("x", e.x), flipped("y", e.y), scaled(e), moved(difference, e), frames,
                 renamed(difference)});
}

bool isDifferent(const TrackDifference& difference, std::optional<double> most) {
  const Comparison& c = difference.plain;
  if (!most) return difference.any();
  return !c.isWhole() || (c.positions > 0 && c.worst.distance() > *most);
}

std::string differenceText(const TrackDifference& difference, const DifferenceNames& names,
                           std::optional<double> most) {
  const TrackDifference& d = difference;
  const Comparison& c = d.rest;
  std::string text =
      onlyRows("tracks", c.tracks, names) + onlyRows("frames", c.frames, names) + gapRows(c, names);
  if (c.weights > 0 && d.hasWeights) {
    text += infoRow("weights", fmt::format("differ in {}, first track {} in frame {}",
                                           counted(c.weights, "position"), shown(c.weightTrack),
                                           c.weightFrame));
  }
  const bool isApart = d.plain.positions > 0 && d.plain.worst.distance() > 0.0;
  if (isApart) text += infoRow("positions", positionsText(d, d.plain));
  text += explanationRows(d, names);
  return text + (text.empty() ? "" : "\n") + closing(d, most);
}

}  // namespace cornerpin

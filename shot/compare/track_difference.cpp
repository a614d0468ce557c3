// SPDX-License-Identifier: BSD-3-Clause
#include "shot/compare/track_difference.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "shot/compare/track_pairs.h"
#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr std::size_t kLookedAt = 16384;
constexpr double kCoarsestHalf = 0.005;  // of the last digit, in pixels
constexpr double kRoundingInPixels = 1e-6;
constexpr double kRoundingInPictures = 1e-9;
constexpr double kMuchNearer = 20.0;
constexpr std::size_t kMostByPlace = 10000;
constexpr double kByPlace = 2.0;  // as far apart middle places of the same track may be

// What is allowed along x and y.
struct AllowedXY {
  Allowed x;
  Allowed y;
};

bool isSized(const Picture& picture) { return picture.width && picture.height; }

// As the other tells it, where it is to be known but for the size. A pixel's centre is another
// thing in other scales.
Picture filledUp(Picture picture, const Picture& other) {
  const std::optional<double> centre = picture.pixelCentre;
  picture = completed(picture, other);
  if (picture.scale != other.scale) picture.pixelCentre = centre.value_or(0.5);
  return picture;
}

// In what two files are compared that tell this.
Picture commonPicture(const Picture& first, const Picture& second) {
  Picture common = filledUp(first, second);
  if (first.scale == Scale::Pixels || !isSized(common)) return common;
  common.scale = Scale::Pixels;
  common.pixelCentre = second.scale == Scale::Pixels ? second.pixelCentre.value_or(0.5) : 0.5;
  return common;
}

// Half of the last of at most so many decimals that all numbers need.
class LastDigit {
 public:
  void take(double v) {
    while (decimals_ < kMost && std::rint(v * power_) / power_ != v) {
      ++decimals_;
      power_ *= 10.0;
    }
  }
  double half() const { return 0.5 / power_; }

 private:
  static constexpr int kMost = 12;
  int decimals_ = 0;
  double power_ = 1.0;
};

void movePlaces(Tracks& tracks, const PictureMap& map) {
  for (Observation& row : tracks.observations) {
    const Point p = map(Point{row.x, row.y});
    row.x = p.x;
    row.y = p.y;
  }
}

// Of a pixel in these coordinates, roughly where that is not known.
double pixelOf(const Picture& picture) { return picture.scale == Scale::Pixels ? 1.0 : 1e-3; }

// Both files as they are compared.
struct Common {
  Tracks first;
  Tracks second;
  Picture picture;
  Allowed x;
  Allowed y;
};

// Half of the last digits of x and y, made that of the common coordinates.
struct Halves {
  double x;
  double y;
};
Halves lastHalves(const Tracks& tracks, const PictureMap& map, double coarsest) {
  LastDigit x;
  LastDigit y;
  for (const Observation& row : tracks.observations) {
    x.take(row.x);
    y.take(row.y);
  }
  const Homography scale = map.matrix();
  return {std::min(x.half() * std::fabs(scale[0][0]), coarsest),
          std::min(y.half() * std::fabs(scale[1][1]), coarsest)};
}

// Frames that would not fit stay.
void moveFrames(Tracks& tracks, int frames) {
  const auto fits = [&](int frame) {
    const std::int64_t moved = std::int64_t{frame} + frames;
    return moved == static_cast<std::int32_t>(moved);
  };
  if (frames == 0 || !fits(tracks.firstFrame()) || !fits(tracks.lastFrame())) return;
  for (Observation& row : tracks.observations) row.frame += frames;
}

Common inCommon(Tracks first, Tracks second) {
  Common common;
  common.picture = commonPicture(first.picture, second.picture);
  const Picture from = filledUp(first.picture, second.picture);
  const Picture other = filledUp(second.picture, first.picture);
  PictureMap firstMap;
  PictureMap secondMap;
  if (missingBetween(from, common.picture).empty() &&
      missingBetween(other, common.picture).empty()) {
    firstMap = PictureMap(from, common.picture);
    secondMap = PictureMap(other, common.picture);
  } else {
    common.picture = first.picture;
  }
  const double coarsest = kCoarsestHalf * pixelOf(common.picture);
  const Halves halves = lastHalves(first, firstMap, coarsest);
  const Halves others = lastHalves(second, secondMap, coarsest);
  const double least =
      common.picture.scale == Scale::Pixels ? kRoundingInPixels : kRoundingInPictures;
  common.x = {halves.x, others.x, least};
  common.y = {halves.y, others.y, least};
  movePlaces(first, firstMap);
  movePlaces(second, secondMap);
  moveFrames(second, frameShift(second.picture, first.picture));
  common.first = std::move(first);
  common.second = std::move(second);
  return common;
}

// Something that may have been done to the first file.
struct Candidate {
  TrackMatch match;
  bool renames = false;
  int frames = 0;
  AxisChange x;
  AxisChange y;
  double left = 0.0;  // positions that it does not make the same, of all that might be

  int parts() const {
    const auto moves = [](const AxisChange& c) { return !c.flips() && c.plus != 0.0; };
    return (renames ? 1 : 0) + (frames != 0 ? 1 : 0) + (moves(x) || moves(y) ? 1 : 0) +
           (x.flips() || y.flips() ? 1 : 0) + (x.scales() || y.scales() ? 1 : 0);
  }
};

struct PairsXY {
  AxisPairs x;
  AxisPairs y;
};

PairsXY axesOf(const std::vector<ObservationPair>& pairs) {
  PairsXY axes;
  for (AxisPairs* axis : {&axes.x, &axes.y}) {
    axis->first.reserve(pairs.size());
    axis->second.reserve(pairs.size());
  }
  for (const ObservationPair& pair : pairs) {
    axes.x.first.push_back(pair.first->x);
    axes.x.second.push_back(pair.second->x);
    axes.y.first.push_back(pair.first->y);
    axes.y.second.push_back(pair.second->y);
  }
  return axes;
}

// Where only one axis is scaled and the other moved, the scale may do for both.
void scaleAlike(const AxisChange& scaled, AxisChange& other, const AxisPairs& pairs,
                const Allowed& allowed) {
  if (!scaled.scales() || other.scales() || other.isNone()) return;
  const AxisChange alike = {std::fabs(scaled.times), 0.0};
  if (agreeing(pairs, alike, allowed) >= agreeing(pairs, other, allowed)) other = alike;
}

class Search {
 public:
  Search(const Common& common, const AllowedXY& allowed)
      : first_(common.first),
        second_(common.second),
        allowed_(allowed),
        all_(
            static_cast<double>(std::min(first_.observations.size(), second_.observations.size()))),
        byName_(matchByName(first_, second_)) {}

  // The simplest candidate, of which one with more parts leaves at most half as much.
  Candidate simplest() {
    Candidate plain = plainly();
    if (plain.left == 0.0) return plain;
    candidates_ = {plain};
    tryAll();
    Candidate best = plain;
    std::stable_sort(candidates_.begin(), candidates_.end(),
                     [](const Candidate& a, const Candidate& b) {
                       return std::make_pair(a.parts(), a.left) < std::make_pair(b.parts(), b.left);
                     });
    for (const Candidate& candidate : candidates_) {
      const bool isMore = best.left > 0.0 && candidate.parts() > best.parts();
      if (isMore && 2.0 * candidate.left <= best.left) best = candidate;
    }
    return best;
  }

 private:
  Candidate plainly() const {
    Candidate plain;
    plain.match = byName_;
    plain.left = leftBy(plain, axesOf(sampled(plain)));
    return plain;
  }

  std::vector<ObservationPair> sampled(const Candidate& candidate) const {
    std::vector<ObservationPair> pairs =
        pairsOf(first_, second_, candidate.match, candidate.frames);
    inAll_ = static_cast<double>(pairs.size());
    return someOf(std::move(pairs), kLookedAt);
  }

  double leftBy(const Candidate& candidate, const PairsXY& axes) const {
    const double x = allowed_.x.at(candidate.x.times);
    const double y = allowed_.y.at(candidate.y.times);
    std::size_t count = 0;
    const std::size_t size = axes.x.first.size();
    for (std::size_t i = 0; i < size; ++i) {
      const bool agrees = std::fabs(candidate.x(axes.x.first[i]) - axes.x.second[i]) <= x &&
                          std::fabs(candidate.y(axes.y.first[i]) - axes.y.second[i]) <= y;
      count += agrees ? 1 : 0;
    }
    if (size == 0) return all_;
    return all_ - static_cast<double>(count) * (inAll_ / static_cast<double>(size));
  }

  void tryOne(const TrackMatch& match, int frames) {
    Candidate candidate;
    candidate.match = match;
    candidate.renames = match != byName_;
    candidate.frames = frames;
    const PairsXY axes = axesOf(sampled(candidate));
    candidate.x = axisChange(axes.x, allowed_.x);
    candidate.y = axisChange(axes.y, allowed_.y);
    scaleAlike(candidate.x, candidate.y, axes.y, allowed_.y);
    scaleAlike(candidate.y, candidate.x, axes.x, allowed_.x);
    candidate.left = leftBy(candidate, axes);
    candidates_.push_back(std::move(candidate));
  }

  void tryAll() {
    const std::vector<TrackMatch> others = otherMatches(first_, second_);
    tryShifts(byName_);
    for (const TrackMatch& match : others) tryOne(match, 0);
    tryByPlace({}, {}, 0);
    if (isSolved(2)) return;
    for (const TrackMatch& match : others) {
      tryShifts(match);
      if (isSolved(2)) return;
    }
    const auto best =
        std::min_element(candidates_.begin(), candidates_.end(),
                         [](const Candidate& a, const Candidate& b) { return a.left < b.left; });
    const Candidate copy = *best;
    tryByPlace(copy.x, copy.y, copy.frames);
  }

  void tryShifts(const TrackMatch& match) {
    tryOne(match, 0);
    if (isSolved(1)) return;
    for (int frames : likelyShifts(first_, second_, match, 2.0 * allowed_.x.at(1.0)))
      tryOne(match, frames);
  }

  void tryByPlace(const AxisChange& x, const AxisChange& y, int frames) {
    if (first_.names.size() > kMostByPlace) return;  // too many are near each other
    tryOne(matchByPlace(first_, second_, x, y, kByPlace), frames);
  }

  // Whether something of so few parts leaves nothing.
  bool isSolved(int parts) const {
    return std::any_of(candidates_.begin(), candidates_.end(), [&](const Candidate& candidate) {
      return candidate.left <= 0.0 && candidate.parts() <= parts;
    });
  }

  const Tracks& first_;
  const Tracks& second_;
  AllowedXY allowed_;
  double all_;
  TrackMatch byName_;
  mutable double inAll_ = 0.0;  // pairs that the last sample is from
  std::vector<Candidate> candidates_;
};

bool weigh(const Observation& row) { return row.weight > 0.0f; }

bool differ(float a, float b) {
  constexpr float kDigits = 1e-6f;
  return std::fabs(a - b) > kDigits * std::max(a, b);
}

bool hasWeights(const Tracks& tracks) {
  return std::any_of(tracks.observations.begin(), tracks.observations.end(),
                     [](const Observation& row) { return row.weight != 1.0f; });
}

std::vector<int> framesOf(const Tracks& tracks) {
  std::vector<int> frames;
  for (const Observation& row : tracks.observations) {
    if (frames.empty() || frames.back() != row.frame) frames.push_back(row.frame);
  }
  return frames;
}

bool hasFrame(const Tracks& tracks, std::int64_t frame) {
  if (frame < tracks.firstFrame() || frame > tracks.lastFrame()) return false;
  const Tracks::Range rows = tracks.inFrame(static_cast<int>(frame));
  return rows.first != rows.last;
}

std::vector<int> framesWithout(const Tracks& tracks, const Tracks& other, int shift) {
  std::vector<int> left;
  for (int frame : framesOf(tracks)) {
    if (!hasFrame(other, std::int64_t{frame} + shift)) left.push_back(frame);
  }
  return left;
}

// By track, whether it has a position with a weight.
std::vector<bool> presentIn(const Tracks& tracks) {
  std::vector<bool> present(tracks.names.size(), false);
  for (const Observation& row : tracks.observations) {
    if (weigh(row)) present[static_cast<std::size_t>(row.track)] = true;
  }
  return present;
}

std::vector<std::string> namesWithout(const Tracks& tracks, const std::vector<bool>& present,
                                      const std::vector<bool>& inBoth) {
  std::vector<std::string> names;
  for (std::size_t track = 0; track < present.size(); ++track) {
    if (present[track] && !inBoth[track]) names.push_back(tracks.names[track]);
  }
  return names;
}

// How many positions tracks that both have have in frames that both have.
std::size_t positionsInBoth(const Tracks& tracks, const std::vector<bool>& tracksInBoth,
                            const Tracks& other, int shift) {
  std::size_t positions = 0;
  bool inBoth = false;
  for (std::size_t i = 0; i < tracks.observations.size(); ++i) {
    const Observation& row = tracks.observations[i];
    if (i == 0 || row.frame != tracks.observations[i - 1].frame)
      inBoth = hasFrame(other, std::int64_t{row.frame} + shift);
    if (weigh(row) && inBoth && tracksInBoth[static_cast<std::size_t>(row.track)]) ++positions;
  }
  return positions;
}

void takePair(const ObservationPair& pair, const Candidate& how, const Common& common,
              const AllowedXY& allowed, Comparison& comparison) {
  const std::string& name = common.first.names[static_cast<std::size_t>(pair.first->track)];
  const ApartPosition position = {name, pair.first->frame, pair.second->x - how.x(pair.first->x),
                                  pair.second->y - how.y(pair.first->y)};
  ++comparison.positions;
  const bool agrees = std::fabs(position.x) <= allowed.x.at(how.x.times) &&
                      std::fabs(position.y) <= allowed.y.at(how.y.times);
  if (!agrees) ++comparison.apart;
  const bool isFirst = comparison.positions == 1;
  if (isFirst || position.distance() > comparison.worst.distance()) comparison.worst = position;
  if (!differ(pair.first->weight, pair.second->weight)) return;
  if (comparison.weights++ > 0) return;
  comparison.weightTrack = name;
  comparison.weightFrame = pair.first->frame;
}

Comparison compared(const Common& common, const Candidate& how, const AllowedXY& allowed) {
  Comparison comparison;
  const std::vector<ObservationPair> pairs =
      pairsOf(common.first, common.second, how.match, how.frames);
  for (const ObservationPair& pair : pairs) takePair(pair, how, common, allowed, comparison);
  const std::vector<bool> present = presentIn(common.first);
  const std::vector<bool> otherPresent = presentIn(common.second);
  std::vector<bool> inBoth(present.size(), false);
  std::vector<bool> otherInBoth(otherPresent.size(), false);
  for (std::size_t i = 0; i < inBoth.size(); ++i) {
    if (how.match[i] == kNoTrack) continue;
    const auto other = static_cast<std::size_t>(how.match[i]);
    inBoth[i] = otherInBoth[other] = present[i] && otherPresent[other];
  }
  comparison.tracks = {namesWithout(common.first, present, inBoth),
                       namesWithout(common.second, otherPresent, otherInBoth)};
  std::size_t firstWeigh = 0;
  std::size_t secondWeigh = 0;
  for (const ObservationPair& pair : pairs) {
    if (!inBoth[static_cast<std::size_t>(pair.first->track)]) continue;
    firstWeigh += weigh(*pair.first) ? 1U : 0U;
    secondWeigh += weigh(*pair.second) ? 1U : 0U;
  }
  comparison.onlyInFirst =
      positionsInBoth(common.first, inBoth, common.second, how.frames) - firstWeigh;
  comparison.onlyInSecond =
      positionsInBoth(common.second, otherInBoth, common.first, -how.frames) - secondWeigh;
  comparison.frames = {framesWithout(common.first, common.second, how.frames),
                       framesWithout(common.second, common.first, -how.frames)};
  return comparison;
}

// A file without positions has no first frame.
Comparison withoutPositions(const Tracks& first, const Tracks& second) {
  Comparison comparison;
  comparison.frames = {framesOf(first), framesOf(second)};
  if (!first.observations.empty()) comparison.tracks.first = first.names;
  if (!second.observations.empty()) comparison.tracks.second = second.names;
  return comparison;
}

Explanation explanationOf(const Candidate& candidate, const Common& common) {
  Explanation explanation;
  explanation.x = candidate.x;
  explanation.y = candidate.y;
  explanation.frames = candidate.frames;
  for (std::size_t i = 0; i < candidate.match.size(); ++i) {
    if (candidate.match[i] == kNoTrack) continue;
    const std::string& name = common.second.names[static_cast<std::size_t>(candidate.match[i])];
    if (name != common.first.names[i])
      explanation.renamed.emplace_back(common.first.names[i], name);
  }
  return explanation;
}

double medianDistance(const Common& common) {
  std::vector<double> distances;
  const TrackMatch byName = matchByName(common.first, common.second);
  for (const ObservationPair& pair :
       someOf(pairsOf(common.first, common.second, byName, 0), kLookedAt)) {
    distances.push_back(std::max(std::fabs(pair.first->x - pair.second->x),
                                 std::fabs(pair.first->y - pair.second->y)));
  }
  return distances.empty() ? HUGE_VAL : lowerMedian(std::move(distances));
}

bool isMostOf(const Comparison& comparison) {
  return comparison.positions > 0 && 4 * comparison.apart <= comparison.positions;
}

// The explanation at a level of what is allowed, if there is one.
bool explain(const Common& common, const AllowedXY& allowed, TrackDifference& difference) {
  const Candidate best = Search(common, allowed).simplest();
  if (best.parts() == 0 || !isMostOf(compared(common, best, allowed))) return false;
  difference.explanation = explanationOf(best, common);
  difference.rest = compared(common, best, {common.x, common.y});
  return true;
}

}  // namespace

double ApartPosition::distance() const { return std::max(std::fabs(x), std::fabs(y)); }

bool Comparison::isWhole() const {
  return tracks.empty() && frames.empty() && onlyInFirst == 0 && onlyInSecond == 0;
}

int Explanation::parts() const {
  Candidate candidate;
  candidate.x = x;
  candidate.y = y;
  candidate.frames = frames;
  candidate.renames = !renamed.empty();
  return candidate.parts();
}

bool TrackDifference::any() const {
  return plain.apart > 0 || !plain.isWhole() || (hasWeights && plain.weights > 0);
}

TrackDifference differenceOf(Tracks first, Tracks second) {
  TrackDifference difference;
  difference.hasWeights = hasWeights(first) && hasWeights(second);
  if (first.observations.empty() || second.observations.empty()) {
    difference.picture = first.picture;
    difference.plain = difference.rest = withoutPositions(first, second);
    return difference;
  }
  difference.isFourTracks = first.names.size() == 4 && second.names.size() == 4;
  const Common common = inCommon(std::move(first), std::move(second));
  difference.picture = common.picture;
  difference.x = common.x;
  difference.y = common.y;
  Candidate plain;
  plain.match = matchByName(common.first, common.second);
  difference.plain = compared(common, plain, {common.x, common.y});
  difference.rest = difference.plain;
  if (difference.plain.apart == 0 && difference.plain.isWhole()) return difference;
  if (explain(common, {common.x, common.y}, difference)) return difference;
  const double away = medianDistance(common);
  for (const double least : {0.01, 0.1}) {
    const double level = least * pixelOf(common.picture);
    if (away < kMuchNearer * level) break;
    const Allowed allowed = {0.0, 0.0, level};
    difference.isNear = explain(common, {allowed, allowed}, difference);
    if (difference.isNear) break;
  }
  return difference;
}

}  // namespace cornerpin

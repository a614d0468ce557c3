// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/uv_json.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <string>

#include "shot/files/format.h"
#include "shot/files/owned_tracks.h"
#include "shot/files/track_builder.h"

namespace cornerpin {

namespace {

constexpr const char* kPoints = "points";
constexpr const char* kFrames = "per_frame";
constexpr std::array<const char*, 3> kPositions = {"pos_dist", "pos", "pos_undist"};

// In single precision, in which the library computes.
constexpr double kLargest = static_cast<double>(std::numeric_limits<float>::max());

class UvJsonReader {
 public:
  UvJsonReader(const JsonField& whole, const TrackInput& input)
      : whole_(whole), input_(input), tracks_(input.source.name(), input.frames), owned_(tracks_) {}

  Tracks read() {
    leaveOut(whole_, {kPoints, "version"});
    const JsonField points = whole_.at(kPoints);
    for (std::size_t i = 0; i < points.size(); ++i) readPoint(points.at(i));
    noteLeftOut();
    input_.trace.rows = static_cast<std::int64_t>(tracks_.rows());
    Tracks tracks = tracks_.finish();
    tracks.picture = factsOf(Format::Uv).picture;
    return tracks;
  }

 private:
  void readPoint(const JsonField& point) {
    leaveOut(point, {"name", "set_name", kFrames});
    const std::string name = point.at("name").text();
    if (name.empty()) point.at("name").refuse("a name is needed");
    const std::string owner = point.has("set_name") ? point.at("set_name").text() : "";
    const JsonField frames = point.at(kFrames);
    for (std::size_t i = 0; i < frames.size(); ++i) {
      try {
        readFrame(frames.at(i), name, owner);
      } catch (const InputError& error) {
        tracks_.refuse(error);
      }
    }
  }

  void readFrame(const JsonField& frame, const std::string& name, const std::string& owner) {
    const char* position = positionOf(frame);
    leaveOut(frame, {"frame", "weight", position});
    Observation row;
    row.frame = frame.at("frame").integer();
    const JsonField place = frame.at(position);
    place.list(2);
    row.x = numberOf(place.at(0));
    row.y = numberOf(place.at(1));
    if (frame.has("weight")) row.weight = static_cast<float>(weightOf(frame.at("weight")));
    if (std::isnan(row.x) != std::isnan(row.y)) place.refuse("of a gap both are NaN or null");
    if (std::isnan(row.x)) return;
    row.track = owned_.track(name, owner);
    tracks_.add(row);
  }

  static const char* positionOf(const JsonField& frame) {
    for (const char* name : kPositions) {
      if (frame.has(name)) return name;
    }
    return kPositions[1];
  }

  static double numberOf(const JsonField& field) {
    if (field.isNull()) return std::numeric_limits<double>::quiet_NaN();
    const double number = field.number();
    if (std::fabs(number) > kLargest) field.refuse("the number is too large");
    return number;
  }

  static double weightOf(const JsonField& field) {
    const double weight = field.length();
    if (weight > kLargest) field.refuse("the number is too large");
    return weight;
  }

  // All members but these.
  void leaveOut(const JsonField& field, std::initializer_list<const char*> read) {
    if (!field.isObject()) field.refuse("an object is needed");
    for (auto member = field.json().begin(); member != field.json().end(); ++member) {
      bool isRead = false;
      for (const char* name : read) isRead = isRead || member.key() == name;
      if (!isRead && leftOut_.size() <= kNoted) leftOut_.insert(member.key());
    }
  }

  void noteLeftOut() {
    if (leftOut_.empty()) return;
    std::string names;
    std::size_t count = 0;
    for (const std::string& name : leftOut_) {
      if (count++ == kNoted) break;
      names += (names.empty() ? "" : ", ") + name;
    }
    input_.trace.notes.push_back(fmt::format("{}: left out: {}{}", input_.source.name(), names,
                                             leftOut_.size() > kNoted ? " and more" : ""));
  }

  static constexpr std::size_t kNoted = 10;

  const JsonField& whole_;
  const TrackInput& input_;
  TrackBuilder tracks_;
  OwnedTracks owned_;
  std::set<std::string> leftOut_;
};

}  // namespace

bool isUvJson(const JsonField& whole) {
  if (!whole.isObject() || !whole.has("version") || !whole.has(kPoints)) return false;
  const nlohmann::json& points = whole.json()[kPoints];
  if (!points.is_array()) return false;
  return points.empty() || (points[0].is_object() && points[0].contains(kFrames));
}

Tracks readUvJson(const JsonField& whole, const TrackInput& input) {
  return UvJsonReader(whole, input).read();
}

}  // namespace cornerpin

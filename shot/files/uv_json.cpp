// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/uv_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "shot/files/format.h"
#include "shot/files/json_characters.h"
#include "shot/files/json_field.h"
#include "shot/files/owned_tracks.h"
#include "shot/files/track_builder.h"

namespace cornerpin {

namespace {

constexpr const char* kPoints = "points";
constexpr const char* kFrames = "per_frame";
constexpr std::array<const char*, 3> kPositions = {"pos_dist", "pos", "pos_undist"};
constexpr std::size_t kCoordinates = 2;

// In single precision, in which the library computes.
constexpr double kLargest = static_cast<double>(std::numeric_limits<float>::max());

using Json = nlohmann::json;

bool isPosition(const std::string& name) {
  return std::find(kPositions.begin(), kPositions.end(), name) != kPositions.end();
}

// Takes the tracks from the parser's events, in memory for the rows of one point.
class UvJsonEvents {
 public:
  UvJsonEvents(const TrackInput& input, JsonCharacters& characters)
      : input_(input),
        characters_(characters),
        tracks_(input.source.name(), input.frames),
        owned_(tracks_) {}

  Tracks finish() {
    if (!hasPoints_) refuse(kPoints, "missing");
    noteLeftOut();
    input_.trace.rows = static_cast<std::int64_t>(tracks_.rows());
    Tracks tracks = tracks_.finish();
    tracks.picture = factsOf(Format::Uv).picture;
    return tracks;
  }

  bool null() { return value(Json()); }
  bool boolean(bool flag) { return value(Json(flag)); }
  bool number_integer(Json::number_integer_t number) { return value(Json(number)); }
  bool number_unsigned(Json::number_unsigned_t number) { return value(Json(number)); }
  bool number_float(Json::number_float_t number, const std::string&) { return value(Json(number)); }
  bool string(std::string& text) { return value(Json(text)); }
  bool binary(Json::binary_t&) { return true; }

  bool key(std::string& name) {
    characters_.noteEnd();
    key_ = name;
    if (!isRead()) leaveOut(name);
    return true;
  }

  bool start_object(std::size_t) {
    switch (where()) {
      case Where::Outside:
        return enter(Where::Whole);
      case Where::Points:
        point_ = Json::object();
        hasFrames_ = false;
        return enter(Where::Point);
      case Where::Frames:
        row_ = Json::object();
        return enter(Where::Frame);
      default:
        value(Json::object());
        return enter(Where::Skipped);
    }
  }
  bool end_object() {
    if (where() == Where::Frame) endFrame();
    if (where() == Where::Point) endPoint();
    return leave();
  }

  bool start_array(std::size_t) {
    if (where() == Where::Whole && key_ == kPoints) return enterOnce(hasPoints_, Where::Points);
    if (where() == Where::Point && key_ == kFrames) return enterOnce(hasFrames_, Where::Frames);
    value(Json::array());
    return enter(where() == Where::Frame && isPosition(key_) ? Where::Place : Where::Skipped);
  }
  bool end_array() { return leave(); }

  bool parse_error(std::size_t, const std::string&, const Json::exception& error) {
    throw InputError(characters_.file(), characters_.line(), "not JSON: " + jsonFlaw(error));
  }

 private:
  enum class Where : char { Outside, Whole, Points, Point, Frames, Frame, Place, Skipped };
  static constexpr std::size_t kDeepest = 1000;
  static constexpr std::size_t kReported = 65536;  // rows between two reports

  Where where() const { return path_.empty() ? Where::Outside : path_.back(); }
  bool enter(Where where) {
    characters_.noteEnd();
    if (path_.size() == kDeepest) {
      throw InputError(characters_.file(), characters_.line(),
                       "lists and objects are nested too deep");
    }
    path_.push_back(where);
    return true;
  }
  bool enterOnce(bool& has, Where where) {
    if (has) refuse(memberPlace(), "there twice");
    has = true;
    (where == Where::Points ? points_ : frames_) = 0;
    return enter(where);
  }
  bool leave() {
    characters_.noteEnd();
    path_.pop_back();
    return true;
  }

  std::string pointPlace() const { return fmt::format("{}[{}]", kPoints, points_); }
  std::string framePlace() const {
    return fmt::format("{}.{}[{}]", pointPlace(), kFrames, frames_);
  }
  std::string memberPlace() const {
    return where() == Where::Point ? pointPlace() + "." + key_ : key_;
  }
  [[noreturn]] void refuse(const std::string& place, const char* text) const {
    JsonField(Json(), characters_.file(), place).refuse(text);
  }

  // Whether the member is one that is read.
  bool isRead() const {
    switch (where()) {
      case Where::Whole:
        return key_ == kPoints || key_ == "version";
      case Where::Point:
        return key_ == "name" || key_ == "set_name" || key_ == kFrames;
      case Where::Frame:
        return key_ == "frame" || key_ == "weight" || isPosition(key_);
      default:
        return true;
    }
  }

  // Of lists and objects whether they are empty or not makes no difference.
  bool value(Json value) {
    characters_.noteEnd();
    switch (where()) {
      case Where::Outside:
        refuse("", "an object is needed");
      case Where::Whole:
        if (key_ == kPoints) refuse(kPoints, "a list is needed");
        break;
      case Where::Points:
        refuse(pointPlace(), "an object is needed");
      case Where::Point:
        if (key_ == kFrames) refuse(memberPlace(), "a list is needed");
        if (isRead()) point_[key_] = std::move(value);
        break;
      case Where::Frames:
        row_ = std::move(value);
        endFrame();
        break;
      case Where::Frame:
        if (isRead()) row_[key_] = std::move(value);
        break;
      case Where::Place:
        if (row_[key_].size() <= kCoordinates) row_[key_].push_back(std::move(value));
        break;
      case Where::Skipped:
        break;
    }
    return true;
  }

  void endFrame() {
    try {
      readFrame({row_, characters_.file(), framePlace()});
    } catch (const InputError& error) {
      tracks_.refuse(error);
    }
    ++frames_;
  }

  void endPoint() {
    const JsonField point(point_, characters_.file(), pointPlace());
    const std::string& name = point.at("name").text();
    if (name.empty()) point.at("name").refuse("a name is needed");
    const std::string owner = point.has("set_name") ? point.at("set_name").text() : "";
    if (!hasFrames_) refuse(pointPlace() + "." + kFrames, "missing");
    const std::int32_t track = rows_.empty() ? 0 : owned_.track(name, owner);
    for (Observation& row : rows_) {
      row.track = track;
      tracks_.add(row);
      if (tracks_.rows() % kReported == 0) input_.report();
    }
    rows_.clear();
    ++points_;
  }

  void readFrame(const JsonField& frame) {
    const char* position = positionOf(frame);
    for (const char* other : kPositions) {
      if (other != position && frame.has(other)) leaveOut(other);
    }
    Observation row;
    row.line = characters_.line();
    row.frame = frame.at("frame").integer();
    const JsonField place = frame.at(position);
    place.list(kCoordinates);
    row.x = numberOf(place.at(0));
    row.y = numberOf(place.at(1));
    if (frame.has("weight")) row.weight = static_cast<float>(weightOf(frame.at("weight")));
    if (std::isnan(row.x) != std::isnan(row.y)) place.refuse("of a gap both are NaN or null");
    if (!std::isnan(row.x)) rows_.push_back(row);
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

  void leaveOut(const std::string& name) {
    if (leftOut_.size() <= kNoted) leftOut_.insert(name);
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

  const TrackInput& input_;
  JsonCharacters& characters_;
  TrackBuilder tracks_;
  OwnedTracks owned_;
  std::vector<Where> path_;
  std::string key_;
  bool hasPoints_ = false;
  bool hasFrames_ = false;       // the point
  std::size_t points_ = 0;       // that have ended
  std::size_t frames_ = 0;       // of the point
  Json point_ = Json::object();  // its name and set
  Json row_;                     // what is read of the members of a frame
  std::vector<Observation> rows_;
  std::set<std::string> leftOut_;
};

}  // namespace

Tracks readUvJson(const TrackInput& input) {
  input.report();
  JsonCharacters characters(input.source);
  UvJsonEvents events(input, characters);
  Json::sax_parse(JsonCharacterIterator(&characters), JsonCharacterIterator(nullptr), &events);
  return events.finish();
}

}  // namespace cornerpin

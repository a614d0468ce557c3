// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/json_reader.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "shot/files/input_error.h"
#include "shot/files/json_characters.h"
#include "shot/files/number_text.h"
#include "shot/files/provenance_json.h"
#include "shot/files/track_builder.h"
#include "shot/files/track_input.h"

namespace cornerpin {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kReported = 65536;  // rows between two reports

// Takes the tracks from the parser's events, in memory for one row; the picture is put together as
// a whole.
class TrackEvents {
 public:
  TrackEvents(const TrackInput& input, JsonCharacters& characters)
      : input_(input), characters_(characters), tracks_(input.source.name(), input.frames) {}

  Tracks finish() {
    if (!version_) refuse(fmt::format("\"{}\" is missing", kTracksField));
    if (!hasTracks_) refuse("\"tracks\" is missing");
    tracks_.raise();
    input_.trace.rows = static_cast<std::int64_t>(tracks_.rows());
    Tracks tracks = tracks_.finish();
    tracks.picture = picture_;
    return tracks;
  }

  bool null() { return value(Json()); }
  bool boolean(bool flag) { return value(Json(flag)); }
  bool number_integer(Json::number_integer_t number) {
    return where() == Where::Row ? rowNumber(static_cast<double>(number)) : value(Json(number));
  }
  bool number_unsigned(Json::number_unsigned_t number) {
    return where() == Where::Row ? rowNumber(static_cast<double>(number)) : value(Json(number));
  }
  bool number_float(Json::number_float_t number, const std::string& text) {
    if (where() == Where::Row && !std::isfinite(number)) refuseRow("is out of range: " + text);
    return where() == Where::Row ? rowNumber(number) : value(Json(number));
  }
  bool string(std::string& text) {
    if (where() == Where::Track && key_ == "name") return name(text);
    return value(Json(text));
  }
  bool binary(Json::binary_t&) { return true; }

  bool key(std::string& name) {
    characters_.noteEnd();
    key_ = name;
    return true;
  }

  bool start_object(std::size_t) {
    switch (where()) {
      case Where::Outside:
        return enter(Where::Whole);
      case Where::Whole:
        return enter(key_ == "picture" ? Where::Picture : Where::Skipped);
      case Where::Tracks:
        track_.reset();
        return enter(Where::Track);
      case Where::Positions:
      case Where::Row:
        refuse("a position is a list, [frame,x,y] or [frame,x,y,weight]");
      default:
        return enter(Where::Skipped);
    }
  }
  bool end_object() {
    if (where() == Where::Picture) {
      picture_ = pictureIn(JsonField(pictureFields_, characters_.file(), "picture"));
    }
    return leave();
  }

  bool start_array(std::size_t) {
    switch (where()) {
      case Where::Outside:
        refuse("an object is needed");
      case Where::Whole:
        if (key_ != "tracks") return enter(Where::Skipped);
        hasTracks_ = true;
        return enter(Where::Tracks);
      case Where::Track:
        if (key_ != "positions") return enter(Where::Skipped);
        if (!track_) refuse("\"name\" must stand before \"positions\"");
        return enter(Where::Positions);
      case Where::Positions:
        count_ = 0;
        return enter(Where::Row);
      case Where::Tracks:
        refuse("a track is an object with \"name\" and \"positions\"");
      case Where::Row:
        refuseRow("has a list in it");
      default:
        return enter(Where::Skipped);
    }
  }
  bool end_array() {
    if (where() == Where::Row) endRow();
    return leave();
  }

  bool parse_error(std::size_t, const std::string&, const Json::exception& error) {
    refuse("not JSON: " + jsonFlaw(error));
  }

 private:
  enum class Where { Outside, Whole, Picture, Tracks, Track, Positions, Row, Skipped };
  static constexpr std::size_t kDeepest = 1000;

  Where where() const { return path_.empty() ? Where::Outside : path_.back(); }
  bool enter(Where where) {
    characters_.noteEnd();
    if (path_.size() == kDeepest) refuse("lists and objects are nested too deep");
    path_.push_back(where);
    return true;
  }
  bool leave() {
    characters_.noteEnd();
    path_.pop_back();
    return true;
  }

  [[noreturn]] void refuse(const std::string& text) const {
    throw InputError(characters_.file(), characters_.line(), text);
  }
  [[noreturn]] void refuseRow(const std::string& text) const {
    refuse(fmt::format("a position of track {} {}", shown(*name_), text));
  }

  bool value(const Json& value) {
    characters_.noteEnd();
    if (where() == Where::Picture) pictureField(value);
    if (where() == Where::Row) return rowGap(value);
    if (where() == Where::Positions || where() == Where::Tracks || where() == Where::Outside)
      refuse(fmt::format("{} stands where none belongs", value.dump()));
    if (where() == Where::Whole && key_ == kTracksField) takeVersion(value);
    return true;
  }

  void pictureField(const Json& value) {
    constexpr std::size_t kMost = 100;
    if (pictureFields_.size() == kMost) refuse("the picture has too many members");
    pictureFields_[key_] = value;
  }

  void takeVersion(const Json& value) {
    if (value != 1) refuse(fmt::format("version {} is not known: update cornerpin", value.dump()));
    version_ = 1;
  }

  bool name(const std::string& text) {
    characters_.noteEnd();
    if (text.empty()) refuse("a track needs a name, not \"\"");
    if (tracks_.has(text)) refuse(fmt::format("track {} is there twice", shown(text)));
    track_ = tracks_.track(text);
    name_ = text;
    return true;
  }

  // Null in both coordinates is a gap.
  bool rowGap(const Json& value) {
    if (!value.is_null()) refuseRow(fmt::format("has {} in it, no number", value.dump()));
    return rowNumber(std::numeric_limits<double>::quiet_NaN());
  }

  bool rowNumber(double number) {
    characters_.noteEnd();
    if (count_ == row_.size()) refuseRow("has more than four numbers");
    row_[count_++] = number;
    return true;
  }

  void endRow() {
    if (count_ < 3) refuseRow("needs three numbers or four, [frame,x,y,weight]");
    const double frame = row_[0];
    if (!(std::fabs(frame) <= kFurthestFrame) || frame != std::floor(frame)) {
      refuseRow(fmt::format("has the frame {}, no whole number up to a thousand million", frame));
    }
    if (std::isnan(row_[1]) && std::isnan(row_[2])) return;
    Observation row;
    row.frame = static_cast<std::int32_t>(frame);
    row.x = position("x", row_[1]);
    row.y = position("y", row_[2]);
    if (count_ == row_.size()) row.weight = weight(row_[3]);
    row.track = *track_;
    row.line = characters_.line();
    tracks_.add(row);
    if (tracks_.rows() % kReported == 0) input_.report();
  }

  double position(const char* name, double number) const {
    const std::string flaw = flawOfPosition(name, "", number);
    if (!flaw.empty())
      refuseRow(fmt::format("has {} {}, which is not finite in single precision", name, number));
    return number;
  }

  float weight(double number) const {
    if (!(number >= 0.0) || !flawOfPosition("weight", "", number).empty()) {
      refuseRow(fmt::format("has the weight {}: it must be finite and not negative", number));
    }
    return static_cast<float>(number);
  }

  const TrackInput& input_;
  JsonCharacters& characters_;
  TrackBuilder tracks_;
  std::vector<Where> path_;
  std::string key_;
  std::optional<int> version_;
  bool hasTracks_ = false;
  Picture picture_;
  Json pictureFields_ = Json::object();
  std::optional<std::int32_t> track_;
  std::optional<std::string> name_;
  std::array<double, 4> row_{};
  std::size_t count_ = 0;
};

}  // namespace

bool isTracksJson(std::string_view beginning) {
  return beginning.find(fmt::format("\"{}\"", kTracksField)) != std::string_view::npos;
}

std::string otherThanTracks(std::string_view beginning) {
  const bool isUv = beginning.find("\"per_frame\"") != std::string_view::npos;
  if (isTracksJson(beginning) || isUv) return "";
  if (beginning.find("\"cornerpin\"") != std::string_view::npos) {
    return "this is a result, not tracks: give the file that it was solved from";
  }
  return fmt::format(
      "this is JSON, such as --quads takes, without \"{}\" at its beginning: no tracks are in it",
      kTracksField);
}

Tracks readJson(const TrackInput& input) {
  JsonCharacters characters(input.source);
  TrackEvents events(input, characters);
  Json::sax_parse(JsonCharacterIterator(&characters), JsonCharacterIterator(nullptr), &events);
  return events.finish();
}

}  // namespace cornerpin

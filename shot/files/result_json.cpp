// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_json.h"

#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "shot/files/number_text.h"
#include "shot/files/provenance_json.h"
#include "shot/files/quad_file.h"

namespace cornerpin {

namespace {

using Json = nlohmann::ordered_json;

// Numbers that are not finite become null, bytes that are not UTF-8 the replacement character.
std::string textOf(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json jsonOf(Point p) { return {p.x, p.y}; }

Json jsonOf(const Symmetric2& c) {
  if (!std::isfinite(c.xx) || !std::isfinite(c.xy) || !std::isfinite(c.yy)) return nullptr;
  return {{c.xx, c.xy}, {c.xy, c.yy}};
}

Json runsOf(const TrackResult& track, TrackUse use) {
  Json runs = Json::array();
  for (const TrackRun& run : track.runs) {
    if (run.use == use) runs.push_back({run.first, run.last});
  }
  return runs;
}

Json jsonOf(const TrackResult& track) {
  const bool known = std::isfinite(track.place.x) && std::isfinite(track.place.y);
  return {{"name", track.name},
          {"place", known ? jsonOf(track.place) : Json(nullptr)},
          {"covariance", jsonOf(track.covariance)},
          {"good", runsOf(track, TrackUse::Good)},
          {"ignored", runsOf(track, TrackUse::Ignored)},
          {"absent", runsOf(track, TrackUse::Absent)}};
}

Json jsonOf(const WorstTrack& track) {
  const TrackStretch& s = track.stretch;
  return {{"track", track.name}, {"first", s.first}, {"last", s.last},           {"peak", s.peak},
          {"moves", s.moves},    {"off", s.off},     {"stands_out", s.standsOut}};
}

Json jsonOf(const Advice& advice) {
  return {{"first", advice.frames.first}, {"last", advice.frames.last}, {"text", advice.text}};
}

Json jsonOf(const Doubt& doubt) { return {{"code", nameOf(doubt.code)}, {"text", doubt.text}}; }

// Whether it is good, and what makes it doubtful.
void addJudgement(const FrameResult& frame, Json& json) {
  json["verdict"] = judgementOf(frame);
  json["expected_error"] = frame.expectedError;
  Json& doubts = json["doubts"] = Json::array();
  for (const Doubt& doubt : frame.doubts) doubts.push_back(jsonOf(doubt));
}

// Of a solved frame: how the fit came about.
void addFit(const FrameResult& frame, Json& json) {
  json["good"] = frame.good;
  json["good_rms"] = frame.goodRms;
  json["sigma"] = frame.sigma;
  json["loss"] = nameOf(frame.loss);
  json["width"] = frame.width;
  json["stage"] = nameOf(frame.verdict.origin.stage);
  if (std::string why = whyOf(frame); !why.empty()) json["why"] = std::move(why);
}

// Where a transform carries a quad.
Json cornersIn(const ShotResult& result, const Homography& h, std::size_t q) {
  Quad places = result.quads[q].corners;
  for (Point& corner : places) corner = carried(result, h, corner);
  return cornersJson(places);
}

// All quads by their names.
Json quadsIn(const ShotResult& result, const Homography& h, const FrameFigures& figures) {
  Json quads = Json::object();
  for (std::size_t q = 0; q < result.quads.size(); ++q) {
    Json covariances = Json::array();
    for (const Symmetric2& covariance : figures.quads[q]) covariances.push_back(jsonOf(covariance));
    quads[result.quads[q].name] = {{"corners", cornersIn(result, h, q)},
                                   {"covariance", std::move(covariances)},
                                   {"deviation", figures.deviations(q)}};
  }
  return quads;
}

// What was done to the frame's transform.
void addRetouch(const ShotResult& result, const FrameResult& frame, Json& json) {
  json["smoothed"] = frame.smoothed;
  json["filled"] = frame.filled;
  if (!frame.untouched) return;
  const FrameFigures figures = {kNoFigure, frame.untouched->quads};
  json["untouched"] = {{"h", frame.untouched->h},
                       {"quads", quadsIn(result, frame.untouched->h, figures)}};
}

Json jsonOf(const ShotResult& result, const FrameResult& frame) {
  const Verdict& verdict = frame.verdict;
  Json json = {{"frame", frame.frame}, {"status", nameOf(verdict.status)}};
  if (verdict.status != Status::Base) {
    json["model"] = nameOf(verdict.model);
    json["on_top"] = verdict.onTop;
    if (!verdict.keptFrom.empty()) json["kept_from"] = verdict.keptFrom;
  }
  json["tracks"] = frame.tracks;
  json["handed_over"] = frame.handedOver;
  json["rms"] = frame.rms;
  json["h"] = frame.h;
  json["noise"] = frame.figures.noise;
  if (verdict.status == Status::Solved) addFit(frame, json);
  if (std::string reason = reasonOf(frame); !reason.empty()) json["reason"] = std::move(reason);
  addJudgement(frame, json);
  json["quads"] = quadsIn(result, frame.h, frame.figures);
  addRetouch(result, frame, json);
  return json;
}

Json jsonOf(const ShotResult& result, const BetweenFrame& frame) {
  Json quads = Json::object();
  for (std::size_t q = 0; q < result.quads.size(); ++q) {
    quads[result.quads[q].name] = {{"corners", cornersIn(result, frame.h, q)}};
  }
  return {{"frame", frame.frame}, {"h", frame.h}, {"quads", std::move(quads)}};
}

// Every fraction in a value as the nearest with so many digits.
void roundNumbers(Json& value, int digits) {
  if (value.is_number_float()) value = roundedTo(digits, value.get<double>());
  if (!value.is_structured()) return;
  for (Json& item : value) roundNumbers(item, digits);
}

using Sink = std::function<void(std::string_view)>;

// An object whose members are written one by one, each on a line of its own, and those that are
// lists an item a line: a long shot's result is never in memory as a whole.
class JsonWriter {
 public:
  // digits: how many of each number; 0 for all
  JsonWriter(const Sink& write, int digits) : write_(write), digits_(digits) { write_("{"); }

  void add(const std::string& name, Json value) {
    beginMember(name);
    writeValue(std::move(value));
  }

  template <class Items, class ToJson>
  void addList(const char* name, const Items& items, const ToJson& toJson) {
    beginMember(name);
    write_("[");
    const char* separator = "\n";
    for (const auto& item : items) {
      write_(separator);
      writeValue(toJson(item));
      separator = ",\n";
    }
    write_("\n]");
  }

  void close() { write_("}\n"); }

 private:
  void beginMember(const std::string& name) {
    write_(separator_ + textOf(name) + ":");
    separator_ = ",\n";
  }

  void writeValue(Json value) {
    if (digits_ > 0) roundNumbers(value, digits_);
    write_(textOf(value));
  }

  const Sink& write_;
  int digits_;
  const char* separator_ = "";
};

void writeMembers(const ShotResult& result, JsonWriter& file, PhaseCount& count) {
  file.add("cornerpin", 2);
  const Json provenance = provenanceJson(result);
  for (const auto& field : provenance.items()) file.add(field.key(), field.value());
  file.add("base_frame", result.baseFrame);
  file.add("base_why", result.whyBase.empty() ? Json(nullptr) : Json(result.whyBase));
  file.add("reference_frame", result.referenceFrame);
  file.add("base_tracks", result.baseTracks);
  file.add("handed_over", result.handedOver);
  file.add("left_out", result.leftOut);
  if (result.unused) {
    file.addList("left_out_tracks", *result.unused, [](const UnusedTrack& track) {
      return Json{{"name", track.name}, {"why", nameOf(track.why)}};
    });
  } else {
    file.add("left_out_tracks", nullptr);
  }
  file.add("units", kPixels);
  file.add("loss", nameOf(result.loss));
  file.add("seed", result.seed);
  file.add("max_error", result.maxError);
  file.add("front", jsonOf(result.baseCentre));
  const auto asJson = [](const auto& item) { return jsonOf(item); };
  file.addList("quads", result.quads, quadJson);
  file.addList("tracks", result.tracks, asJson);
  file.addList("worst_tracks", result.worst, asJson);
  file.addList("advice", result.advice, asJson);
  file.addList("frames", result.frames, [&](const FrameResult& frame) {
    count.add();
    return jsonOf(result, frame);
  });
  file.add("smooth", result.smooth ? Json(*result.smooth) : Json(nullptr));
  file.add("fill", result.fill);
  file.addList("between", result.between,
               [&](const BetweenFrame& frame) { return jsonOf(result, frame); });
  file.close();
}

}  // namespace

void writeResultJson(const ShotResult& result, OutputFile& out, const Progress& progress) {
  PhaseCount count(progress, Phase::Writing, result.frames.size());
  const Sink write = [&out](std::string_view text) { out.write(text); };
  JsonWriter file(write, 0);
  writeMembers(result, file, count);
}

std::string resultJson(const ShotResult& result) { return roundedResultJson(result, 0); }

std::string roundedResultJson(const ShotResult& result, int digits) {
  const Progress nobody;
  PhaseCount count(nobody, Phase::Writing, result.frames.size());
  std::string json;
  const Sink write = [&json](std::string_view text) { json += text; };
  JsonWriter file(write, digits);
  writeMembers(result, file, count);
  return json;
}

}  // namespace cornerpin

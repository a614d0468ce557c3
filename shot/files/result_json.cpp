// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_json.h"

#include <nlohmann/json.hpp>
#include <string>

namespace cornerpin {

namespace {

using Json = nlohmann::ordered_json;

// Numbers that are not finite become null, bytes that are not UTF-8 the replacement character.
std::string textOf(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json jsonOf(const Quad& quad) {
  Json corners = Json::array();
  for (Point p : quad) corners.push_back({p.x, p.y});
  return corners;
}

Json jsonOf(const WorstTrack& track) {
  const TrackStretch& s = track.stretch;
  return {{"track", track.name}, {"first", s.first}, {"last", s.last},           {"peak", s.peak},
          {"moves", s.moves},    {"off", s.off},     {"stands_out", s.standsOut}};
}

// Of a solved frame: how the fit came about.
void addFit(const FrameResult& frame, Json& json) {
  json["inliers"] = frame.good;
  json["inlier_rms"] = frame.goodRms;
  json["scale"] = frame.sigma;
  json["loss"] = nameOf(frame.loss);
  json["width"] = frame.width;
  json["stage"] = nameOf(frame.verdict.origin.stage);
  if (!frame.why.empty()) json["why"] = frame.why;
}

Json jsonOf(const ShotResult& result, const FrameResult& frame, const std::optional<Quad>& quad) {
  const Verdict& verdict = frame.verdict;
  Json json = {{"frame", frame.frame}, {"status", nameOf(verdict.status)}};
  if (verdict.status != Status::Base) {
    json["model"] = nameOf(verdict.model);
    json["on_top"] = verdict.onTop;
  }
  json["tracks"] = frame.tracks;
  json["rms"] = frame.rms;
  json["h"] = frame.h;
  json["noise"] = frame.figures.noise;
  json["deviation"] = frame.figures.deviations();
  if (verdict.status == Status::Solved) addFit(frame, json);
  if (!frame.reason.empty()) json["reason"] = frame.reason;
  if (quad) {
    Quad places;
    for (std::size_t i = 0; i < quad->size(); ++i) places[i] = carried(result, frame, (*quad)[i]);
    json["quad"] = jsonOf(places);
  }
  return json;
}

// An object whose members are written one by one, each on a line of its own, and those that are
// lists an item a line: a long shot's result is never in memory as a whole.
class JsonFile {
 public:
  explicit JsonFile(OutputFile& out) : out_(out) { out_.write("{"); }

  void add(const char* name, const Json& value) {
    beginMember(name);
    out_.write(textOf(value));
  }

  template <class Items, class ToJson>
  void addList(const char* name, const Items& items, const ToJson& toJson) {
    beginMember(name);
    out_.write("[");
    const char* separator = "\n";
    for (const auto& item : items) {
      out_.write(separator + textOf(toJson(item)));
      separator = ",\n";
    }
    out_.write("\n]");
  }

  void close() { out_.write("}\n"); }

 private:
  void beginMember(const char* name) {
    out_.write(separator_ + textOf(name) + ":");
    separator_ = ",\n";
  }

  OutputFile& out_;
  const char* separator_ = "";
};

}  // namespace

void writeResultJson(const ShotResult& result, const std::optional<Quad>& quad, OutputFile& out) {
  JsonFile file(out);
  file.add("cornerpin", 1);
  file.add("base_frame", result.baseFrame);
  file.add("base_tracks", result.baseTracks);
  file.add("left_out", result.leftOut);
  file.add("units", nameOf(result.units));
  file.add("loss", nameOf(result.loss));
  file.add("seed", result.seed);
  file.add("corners", jsonOf(result.quads.front().corners));
  file.addList("worst_tracks", result.worst, [](const WorstTrack& track) { return jsonOf(track); });
  file.addList("frames", result.frames,
               [&](const FrameResult& frame) { return jsonOf(result, frame, quad); });
  file.close();
}

}  // namespace cornerpin

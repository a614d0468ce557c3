// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_json.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

namespace cornerpin {

namespace {

std::string jsonNumber(double value) {
  return std::isfinite(value) ? fmt::format("{}", value) : "null";
}

std::string jsonText(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string jsonPoint(Point p) { return fmt::format("[{},{}]", jsonNumber(p.x), jsonNumber(p.y)); }

std::string jsonQuad(const Quad& quad) {
  return fmt::format("[{},{},{},{}]", jsonPoint(quad[0]), jsonPoint(quad[1]), jsonPoint(quad[2]),
                     jsonPoint(quad[3]));
}

std::string jsonFigures(const FrameFigures& figures) {
  const auto& d = figures.deviations;
  return fmt::format(R"("noise":{},"deviation":[{},{},{},{}])", jsonNumber(figures.noise),
                     jsonNumber(d[0]), jsonNumber(d[1]), jsonNumber(d[2]), jsonNumber(d[3]));
}

std::string jsonFrame(const ShotResult& result, const FrameResult& frame,
                      const std::optional<Quad>& quad) {
  const Homography& h = frame.h;
  std::string text =
      fmt::format(R"({{"frame":{},"status":"{}")", frame.frame, nameOf(frame.verdict.status));
  if (frame.verdict.status != Status::Base) {
    text += fmt::format(R"(,"model":"{}","on_top":{})", nameOf(frame.verdict.model),
                        frame.verdict.onTop);
  }
  text += fmt::format(R"(,"tracks":{},"rms":{},"h":[[{},{},{}],[{},{},{}],[{},{},{}]],{})",
                      frame.tracks, jsonNumber(frame.rms), h[0][0], h[0][1], h[0][2], h[1][0],
                      h[1][1], h[1][2], h[2][0], h[2][1], h[2][2], jsonFigures(frame.figures));
  if (frame.verdict.status == Status::Solved) {
    text += fmt::format(
        R"(,"inliers":{},"inlier_rms":{},"scale":{},"loss":"{}","width":{},"stage":"{}")",
        frame.good, jsonNumber(frame.goodRms), jsonNumber(frame.sigma), nameOf(frame.loss),
        jsonNumber(frame.width), nameOf(frame.verdict.origin.stage));
    const std::string why = describe(frame.verdict.origin, static_cast<std::size_t>(frame.good),
                                     static_cast<std::size_t>(frame.tracks));
    if (!why.empty()) text += fmt::format(R"(,"why":{})", jsonText(why));
  }
  const std::string reason = reasonOf(frame.verdict);
  if (!reason.empty()) text += fmt::format(R"(,"reason":{})", jsonText(reason));
  if (quad) {
    Quad places;
    for (std::size_t i = 0; i < quad->size(); ++i) places[i] = carried(result, frame, (*quad)[i]);
    text += fmt::format(R"(,"quad":{})", jsonQuad(places));
  }
  return text + "}";
}

std::string jsonWorst(const WorstTrack& track) {
  const TrackStretch& s = track.stretch;
  return fmt::format(
      R"({{"track":{},"first":{},"last":{},"peak":{},"moves":{},"off":{},"stands_out":{}}})",
      jsonText(track.name), s.first, s.last, s.peak, jsonNumber(s.moves), jsonNumber(s.off),
      s.standsOut);
}

// The items one per line.
class JsonList {
 public:
  explicit JsonList(OutputFile& out) : out_(out) { out_.write("["); }
  void add(const std::string& item) {
    out_.write(separator_ + item);
    separator_ = ",\n";
  }
  void close() { out_.write("\n]"); }

 private:
  OutputFile& out_;
  const char* separator_ = "\n";
};

}  // namespace

void writeResultJson(const ShotResult& result, const std::optional<Quad>& quad, OutputFile& out) {
  out.write(fmt::format(
      "{{\"cornerpin\":1,\n\"base_frame\":{},\n\"base_tracks\":{},\n"
      "\"left_out\":{},\n\"units\":\"{}\",\n\"loss\":\"{}\",\n\"seed\":{},\n\"corners\":{},\n",
      result.baseFrame, result.baseTracks, result.leftOut, nameOf(result.units),
      nameOf(result.loss), result.seed, jsonQuad(result.corners)));
  out.write("\"worst_tracks\":");
  JsonList worst(out);
  for (const WorstTrack& track : result.worst) worst.add(jsonWorst(track));
  worst.close();
  out.write(",\n\"frames\":");
  JsonList frames(out);
  for (const FrameResult& frame : result.frames) frames.add(jsonFrame(result, frame, quad));
  frames.close();
  out.write("}\n");
}

}  // namespace cornerpin

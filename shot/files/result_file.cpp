// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

namespace cornerpin {

namespace {

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

// Where a corner lies in the frame; NaN on or behind the horizon. The base frame's tracks are in
// front of it.
Point carried(const ShotResult& result, const FrameResult& frame, Point corner) {
  const double front = denominator(frame.h, result.baseCentre);
  const double here = denominator(frame.h, corner);
  const Point p = map(frame.h, corner);
  const bool visible = front * here > 0.0 && std::isfinite(p.x) && std::isfinite(p.y);
  return visible ? p : Point{kNoValue, kNoValue};
}

std::string number(double value, const char* none) {
  return std::isfinite(value) ? fmt::format("{}", value) : none;
}

std::string jsonNumber(double value) { return number(value, "null"); }
std::string csvNumber(double value) { return number(value, ""); }

std::string csvText(const std::string& text) {
  if (text.empty()) return text;
  const bool blank =
      text.front() == ' ' || text.front() == '\t' || text.back() == ' ' || text.back() == '\t';
  if (!blank && text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

std::string jsonText(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string jsonPoint(Point p) { return fmt::format("[{},{}]", jsonNumber(p.x), jsonNumber(p.y)); }

std::string jsonQuad(const Quad& quad) {
  return fmt::format("[{},{},{},{}]", jsonPoint(quad[0]), jsonPoint(quad[1]), jsonPoint(quad[2]),
                     jsonPoint(quad[3]));
}

std::string jsonTrust(const FrameTrust& trust) {
  const auto& d = trust.deviations;
  return fmt::format(R"("noise":{},"deviation":[{},{},{},{}])", jsonNumber(trust.noise),
                     jsonNumber(d[0]), jsonNumber(d[1]), jsonNumber(d[2]), jsonNumber(d[3]));
}

std::string jsonFrame(const ShotResult& result, const FrameResult& frame, const FrameTrust& trust,
                      const std::optional<Quad>& quad) {
  const Homography& h = frame.h;
  std::string text =
      fmt::format(R"({{"frame":{},"status":"{}")", frame.frame, nameOf(frame.status));
  if (frame.status != Status::Base) {
    text += fmt::format(R"(,"model":"{}","on_top":{})", nameOf(frame.model), frame.onTop);
  }
  text += fmt::format(R"(,"tracks":{},"rms":{},"h":[[{},{},{}],[{},{},{}],[{},{},{}]],{})",
                      frame.tracks, jsonNumber(frame.rms), h[0][0], h[0][1], h[0][2], h[1][0],
                      h[1][1], h[1][2], h[2][0], h[2][1], h[2][2], jsonTrust(trust));
  if (frame.status == Status::Solved) {
    text += fmt::format(
        R"(,"inliers":{},"inlier_rms":{},"scale":{},"loss":"{}","width":{},"stage":"{}")",
        frame.inliers, jsonNumber(frame.inlierRms), jsonNumber(frame.scale), nameOf(frame.loss),
        jsonNumber(frame.width), nameOf(frame.stage));
    if (!frame.why.empty()) text += fmt::format(R"(,"why":{})", jsonText(frame.why));
  }
  if (!frame.reason.empty()) text += fmt::format(R"(,"reason":{})", jsonText(frame.reason));
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

void writeJson(const ShotResult& result, const ShotTrust& trust, const std::optional<Quad>& quad,
               OutputFile& out) {
  out.write(fmt::format(
      "{{\"cornerpin\":1,\n\"base_frame\":{},\n\"base_tracks\":{},\n"
      "\"left_out\":{},\n\"units\":\"{}\",\n\"loss\":\"{}\",\n\"seed\":{},\n\"corners\":{},\n",
      result.baseFrame, result.baseTracks, result.leftOut, nameOf(result.units),
      nameOf(result.loss), result.seed, jsonQuad(trust.corners)));
  out.write("\"worst_tracks\":");
  JsonList worst(out);
  for (const WorstTrack& track : trust.worst) worst.add(jsonWorst(track));
  worst.close();
  out.write(",\n\"frames\":");
  JsonList frames(out);
  for (std::size_t i = 0; i < result.frames.size(); ++i) {
    frames.add(jsonFrame(result, result.frames[i], trust.frames[i], quad));
  }
  frames.close();
  out.write("}\n");
}

std::string csvTrust(const FrameResult& frame, const FrameTrust& trust) {
  std::string text = ",,";
  if (frame.status != Status::Base) text = fmt::format(",{},{}", nameOf(frame.model), frame.onTop);
  text += "," + csvNumber(trust.noise);
  for (double deviation : trust.deviations) text += "," + csvNumber(deviation);
  return text;
}

std::string csvFrame(const ShotResult& result, const FrameResult& frame, const FrameTrust& trust,
                     const std::optional<Quad>& quad) {
  std::string text = fmt::format("{}", frame.frame);
  for (const auto& row : frame.h) {
    for (double element : row) text += fmt::format(",{}", element);
  }
  text += fmt::format(",{},{},{}", csvNumber(frame.rms), frame.tracks, nameOf(frame.status));
  const bool solved = frame.status == Status::Solved;
  text += solved ? fmt::format(",{},{},{},{}", frame.inliers, csvNumber(frame.inlierRms),
                               csvNumber(frame.scale), nameOf(frame.stage))
                 : ",,,,";
  if (quad) {
    for (const Point& corner : *quad) {
      const Point p = carried(result, frame, corner);
      text += fmt::format(",{},{}", csvNumber(p.x), csvNumber(p.y));
    }
  }
  text += csvTrust(frame, trust);
  return text + fmt::format(",{},{}\n", csvText(frame.why), csvText(frame.reason));
}

void writeCsv(const ShotResult& result, const ShotTrust& trust, const std::optional<Quad>& quad,
              OutputFile& out) {
  out.write(
      "frame,h00,h01,h02,h10,h11,h12,h20,h21,h22,rms,tracks,status,inliers,inlier_rms,scale,stage");
  if (quad) out.write(",qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3");
  out.write(",model,on_top,noise,deviation0,deviation1,deviation2,deviation3,why,reason\n");
  for (std::size_t i = 0; i < result.frames.size(); ++i) {
    out.write(csvFrame(result, result.frames[i], trust.frames[i], quad));
  }
}

}  // namespace

Quad parseQuad(const std::string& text) {
  std::array<double, 8> numbers{};
  const char* at = text.data();
  const char* end = at + text.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0 && (at == end || *at++ != ',')) at = end;
    const auto [stop, error] = std::from_chars(at, end, numbers[i]);
    if (error != std::errc() || !std::isfinite(numbers[i])) {
      throw std::invalid_argument("a quad is eight numbers, x0,y0,x1,y1,x2,y2,x3,y3, not \"" +
                                  text + "\"");
    }
    at = stop;
  }
  if (at != end)
    throw std::invalid_argument("a quad has eight numbers, not more: \"" + text + "\"");
  Quad quad;
  for (std::size_t i = 0; i < quad.size(); ++i) quad[i] = {numbers[2 * i], numbers[2 * i + 1]};
  return quad;
}

std::optional<Format> formatOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  if (extension == ".json") return Format::Json;
  if (extension == ".csv") return Format::Csv;
  return std::nullopt;
}

void writeResult(const ShotResult& result, const ShotTrust& trust, Format format,
                 const std::optional<Quad>& quad, OutputFile& out) {
  format == Format::Json ? writeJson(result, trust, quad, out) : writeCsv(result, trust, quad, out);
}

std::string explanationRow(const std::string& track, int frame, const TrackInfluence& influence) {
  return fmt::format("{},{},{},{},{},{}\n", csvText(track), frame, csvNumber(influence.residual),
                     csvNumber(influence.weight), csvNumber(influence.leverage),
                     csvNumber(influence.influence));
}

}  // namespace cornerpin

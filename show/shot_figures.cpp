// SPDX-License-Identifier: BSD-3-Clause
#include "show/shot_figures.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace cornerpin {

namespace {

constexpr int kDigits = 3;

// The nearest number with three digits.
double rounded(double value) {
  if (!std::isfinite(value)) return value;
  double number = value;
  const std::string text = fmt::format("{:.{}g}", value, kDigits);
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

// The larger of two, or the one that is not known.
double larger(double a, double b) { return std::isnan(a) || a > b ? a : b; }

std::vector<double> lineOf(const std::vector<shot::Frame>& frames) {
  const std::size_t count = std::min(frames.size(), kMostValues);
  std::vector<double> line;
  for (std::size_t i = 0; i < count; ++i) {
    double largest = 0.0;
    for (std::size_t f = i * frames.size() / count; f < (i + 1) * frames.size() / count; ++f) {
      largest = larger(frames[f].expectedError, largest);
    }
    line.push_back(rounded(largest));
  }
  return line;
}

// The upper of the two middle ones; NaN without a solved frame, and unknown ones count as largest.
double medianRms(const std::vector<shot::Frame>& frames) {
  std::vector<double> all;
  for (const shot::Frame& frame : frames) {
    if (frame.status == "solved") all.push_back(frame.goodRms);
  }
  if (all.empty()) return std::numeric_limits<double>::quiet_NaN();
  const auto middle = all.begin() + static_cast<std::ptrdiff_t>((all.size() - 1) / 2);
  std::nth_element(all.begin(), middle, all.end(),
                   [](double a, double b) { return !std::isnan(b) && (std::isnan(a) || a > b); });
  return *middle;
}

}  // namespace

ShotFigures figuresOf(const std::vector<shot::Frame>& frames) {
  ShotFigures figures;
  figures.frames = frames.size();
  if (!frames.empty()) {
    figures.first = frames.front().frame;
    figures.last = frames.back().frame;
  }
  figures.rms = rounded(medianRms(frames));
  for (const shot::Frame& frame : frames) {
    figures.doubtful += frame.isDoubtful ? 1 : 0;
    figures.reduced += frame.status == "reduced" ? 1 : 0;
    figures.held += frame.status == "held" ? 1 : 0;
    if (!std::isfinite(frame.expectedError)) continue;
    if (figures.worstFrame && !(frame.expectedError > figures.worst)) continue;
    figures.worst = frame.expectedError;
    figures.worstFrame = frame.frame;
  }
  figures.worst = rounded(figures.worst);
  figures.line = lineOf(frames);
  return figures;
}

ShotFigures figuresOf(const shot::Result& result) {
  ShotFigures figures = figuresOf(result.frames());
  figures.text = result.closingSentence();
  return figures;
}

nlohmann::ordered_json figuresJson(const ShotFigures& figures) {
  using Json = nlohmann::ordered_json;
  return {{"first", figures.first},
          {"last", figures.last},
          {"frames", figures.frames},
          {"doubtful", figures.doubtful},
          {"reduced", figures.reduced},
          {"held", figures.held},
          {"worst", figures.worst},
          {"worst_frame", figures.worstFrame ? Json(*figures.worstFrame) : Json(nullptr)},
          {"rms", figures.rms},
          {"line", figures.line},
          {"text", figures.text}};
}

ShotFigures figuresIn(const LinedJson& json) {
  ShotFigures figures;
  figures.first = json.at("first").integer();
  figures.last = json.at("last").integer();
  figures.frames = json.at("frames").count();
  figures.doubtful = json.at("doubtful").count();
  figures.reduced = json.at("reduced").count();
  figures.held = json.at("held").count();
  figures.worst = json.at("worst").lengthOrNull();
  const LinedJson& frame = json.at("worst_frame");
  if (!frame.isNull()) figures.worstFrame = frame.integer();
  figures.rms = json.at("rms").lengthOrNull();
  for (const LinedJson& value : json.at("line").items()) {
    figures.line.push_back(value.lengthOrNull());
  }
  figures.text = json.at("text").text();
  return figures;
}

}  // namespace cornerpin

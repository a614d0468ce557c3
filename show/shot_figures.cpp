// SPDX-License-Identifier: BSD-3-Clause
#include "show/shot_figures.h"

#include <algorithm>
#include <cmath>

#include "shot/advice/closing_words.h"
#include "shot/files/number_text.h"
#include "shot/files/summary.h"

namespace cornerpin {

namespace {

constexpr int kDigits = 3;

double rounded(double value) { return roundedTo(kDigits, value); }

// A number that is not finite is written as null.
double numberIn(const JsonField& field) { return field.lengthOrNull(); }

// The larger of two, or the one that is not known.
double larger(double a, double b) { return std::isnan(a) || a > b ? a : b; }

std::vector<double> lineOf(const std::vector<FrameResult>& frames) {
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

}  // namespace

ShotFigures figuresOf(const ShotResult& result) {
  const Summary summary = summarise(result);
  ShotFigures figures;
  figures.frames = result.frames.size();
  if (!result.frames.empty()) {
    figures.first = result.frames.front().frame;
    figures.last = result.frames.back().frame;
  }
  figures.doubtful = summary.doubtful;
  figures.reduced = summary.reduced;
  figures.held = summary.held;
  figures.rms = rounded(summary.medianRms);
  for (const FrameResult& frame : result.frames) {
    if (!std::isfinite(frame.expectedError)) continue;
    if (figures.worstFrame && !(frame.expectedError > figures.worst)) continue;
    figures.worst = frame.expectedError;
    figures.worstFrame = frame.frame;
  }
  figures.worst = rounded(figures.worst);
  figures.line = lineOf(result.frames);
  figures.text = closingSentence(result);
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

ShotFigures figuresIn(const JsonField& field) {
  ShotFigures figures;
  figures.first = field.at("first").integer();
  figures.last = field.at("last").integer();
  figures.frames = field.at("frames").count();
  figures.doubtful = field.at("doubtful").count();
  figures.reduced = field.at("reduced").count();
  figures.held = field.at("held").count();
  figures.worst = numberIn(field.at("worst"));
  const JsonField frame = field.at("worst_frame");
  if (!frame.isNull()) figures.worstFrame = frame.integer();
  figures.rms = numberIn(field.at("rms"));
  const JsonField line = field.at("line");
  for (std::size_t i = 0; i < line.size(); ++i) figures.line.push_back(numberIn(line.at(i)));
  figures.text = field.at("text").text();
  return figures;
}

}  // namespace cornerpin

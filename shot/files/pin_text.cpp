// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/pin_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "shot/files/number_text.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kNamedStretches = 10;

bool hasCorners(const PinFrame& frame) {
  return std::all_of(frame.to.begin(), frame.to.end(),
                     [](Point p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

void noteWithoutKey(const std::vector<int>& frames, const char* why, WriteNotes& notes) {
  if (frames.empty()) return;
  notes.push_back(
      fmt::format("no key in {}: {}", textOf(stretchesOf(frames), kNamedStretches), why));
}

bool isSame(const Quad& a, const Quad& b) {
  return std::equal(a.begin(), a.end(), b.begin(),
                    [](Point p, Point q) { return p.x == q.x && p.y == q.y; });
}

}  // namespace

std::vector<const PinFrame*> keyedFrames(const Pin& pin, WriteNotes& notes) {
  std::vector<const PinFrame*> keyed;
  std::vector<int> beyond;
  std::vector<int> absent;
  for (const PinFrame& frame : pin.frames) {
    if (hasCorners(frame)) {
      keyed.push_back(&frame);
    } else {
      (isFinite(frame.h) ? beyond : absent).push_back(frame.frame);
    }
  }
  if (keyed.empty()) {
    throw std::invalid_argument("there is no frame in which all four corners go somewhere");
  }
  noteWithoutKey(beyond, "there a corner is on or behind the horizon", notes);
  noteWithoutKey(absent, "there a corner is not known", notes);
  return keyed;
}

std::vector<const PinFrame*> transformedFrames(const Pin& pin, WriteNotes& notes) {
  std::vector<const PinFrame*> keyed;
  std::vector<int> others;
  for (const PinFrame& frame : pin.frames) {
    if (isFinite(frame.h)) {
      keyed.push_back(&frame);
    } else {
      others.push_back(frame.frame);
    }
  }
  if (keyed.empty()) throw std::invalid_argument("there is no frame with a transform");
  noteWithoutKey(others, "there is no transform", notes);
  return keyed;
}

void noteRectangle(const Pin& pin, const Quad& picture, WriteNotes& notes) {
  if (isSame(pin.from, picture)) return;
  notes.push_back(
      "the rectangle is not the whole picture, and the file tells only where its corners go: pin "
      "something that is as large as the rectangle");
}

std::string decimal(double value) {
  std::string text;
  appendDecimal(text, value);
  return text;
}

std::string pairText(Point p) { return "(" + decimal(p.x) + ", " + decimal(p.y) + ")"; }

std::string quotedName(const std::string& name) {
  return nlohmann::json(name).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/nk_knobs.h"

#include <algorithm>
#include <array>

namespace cornerpin {

namespace {

bool startsWith(std::string_view text, std::string_view part) {
  return text.substr(0, part.size()) == part;
}

bool isVersionOf(std::string_view name, std::string_view word) {
  if (!startsWith(word, name)) return false;
  return word.find_first_not_of("0123456789_", name.size()) == std::string_view::npos;
}

constexpr std::array<std::string_view, 4> kOutputs = {"outputBottomLeft", "outputBottomRight",
                                                      "outputTopRight", "outputTopLeft"};

}  // namespace

NkClass classOf(std::string_view word) {
  if (isVersionOf("Tracker", word)) return NkClass::Tracker;
  if (isVersionOf("PlanarTracker", word)) return NkClass::Planar;
  if (isVersionOf("CornerPin2D", word)) return NkClass::Pin;
  if (word == "Root") return NkClass::Root;
  const bool moves = startsWith(word, "Transform") || startsWith(word, "Reconcile3D");
  return moves ? NkClass::Skipped : NkClass::Other;
}

std::size_t numberedPlace(std::string_view name, std::string_view knob, std::size_t most) {
  if (knob.size() != name.size() + 1 || !startsWith(knob, name)) return kNoPlace;
  const char digit = knob.back();
  if (digit < '1' || digit > '9') return kNoPlace;
  const auto place = static_cast<std::size_t>(digit - '1');
  return place < most ? place : kNoPlace;
}

std::size_t trackPlace(NkClass node, std::string_view knob) {
  if (node == NkClass::Tracker) return numberedPlace("track", knob, kMostPlaces);
  const auto* found = std::find(kOutputs.begin(), kOutputs.end(), knob);
  if (node != NkClass::Planar || found == kOutputs.end()) return kNoPlace;
  return static_cast<std::size_t>(found - kOutputs.begin());
}

NkColumn columnOf(std::string_view name) {
  if (name == "enable") return NkColumn::Enable;
  if (name == "name") return NkColumn::Name;
  if (name == "track_x") return NkColumn::X;
  return name == "track_y" ? NkColumn::Y : NkColumn::Other;
}

}  // namespace cornerpin

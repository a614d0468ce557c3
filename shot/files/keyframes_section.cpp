// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/keyframes_section.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "shot/files/number_text.h"

namespace cornerpin {

namespace {

using Kind = KeyframesSection::Kind;

struct NamedCorner {
  std::string_view name;
  Corner corner;
};

// Names for programs, which are the same in every language.
constexpr std::array<NamedCorner, 8> kMatchNames = {{
    {"ADBE Corner Pin-0001", kTopLeft},
    {"ADBE Corner Pin-0002", kTopRight},
    {"ADBE Corner Pin-0003", kBottomLeft},
    {"ADBE Corner Pin-0004", kBottomRight},
    {"CC Power Pin-0002", kTopLeft},
    {"CC Power Pin-0003", kTopRight},
    {"CC Power Pin-0004", kBottomLeft},
    {"CC Power Pin-0005", kBottomRight},
}};

// Names for people, those of one effect or the other.
constexpr std::array<NamedCorner, 8> kDisplayNames = {{
    {"Upper Left", kTopLeft},
    {"Upper Right", kTopRight},
    {"Lower Left", kBottomLeft},
    {"Lower Right", kBottomRight},
    {"Top Left", kTopLeft},
    {"Top Right", kTopRight},
    {"Bottom Left", kBottomLeft},
    {"Bottom Right", kBottomRight},
}};

struct NamedKind {
  std::string_view name;
  Kind kind;
};

constexpr std::array<NamedKind, 8> kTransforms = {{
    {"Anchor Point", Kind::Anchor},
    {"ADBE Anchor Point", Kind::Anchor},
    {"Position", Kind::Position},
    {"ADBE Position", Kind::Position},
    {"Scale", Kind::Scale},
    {"ADBE Scale", Kind::Scale},
    {"Rotation", Kind::Rotation},
    {"ADBE Rotate Z", Kind::Rotation},
}};

constexpr std::array<NamedKind, 4> kPoints = {{
    {"Feature Center", Kind::FeatureCenter},
    {"ADBE MTracker Pt Feature Center", Kind::FeatureCenter},
    {"Attach Point", Kind::AttachPoint},
    {"ADBE MTracker Pt Attach Pt", Kind::AttachPoint},
}};

template <class All>
auto found(const All& all, std::string_view name) {
  const auto at = std::find_if(all.begin(), all.end(),
                               [&](const auto& candidate) { return candidate.name == name; });
  return at != all.end() ? &*at : nullptr;
}

// The cells up to the last one with anything in it.
std::vector<std::string_view> cellsOf(std::string_view line) {
  std::vector<std::string_view> cells;
  for (line = trimmed(line); !line.empty();) {
    const std::size_t end = std::min(line.find('\t'), line.size());
    cells.push_back(trimmed(line.substr(0, end)));
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return cells;
}

// Without " #2" behind it.
std::string_view withoutNumber(std::string_view name) {
  const std::size_t mark = name.rfind(" #");
  return mark == std::string_view::npos ? name : trimmed(name.substr(0, mark));
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

std::optional<Corner> cornerOf(std::string_view effect, std::string_view property) {
  const NamedCorner* corner = found(kMatchNames, property);
  if (corner == nullptr && (contains(effect, "Corner Pin") || contains(effect, "Power Pin"))) {
    corner = found(kDisplayNames, withoutNumber(property));
  }
  return corner != nullptr ? std::optional<Corner>(corner->corner) : std::nullopt;
}

}  // namespace

KeyframesSection sectionOf(std::string_view heading) {
  const std::vector<std::string_view> cells = cellsOf(heading);
  KeyframesSection section;
  if (cells.empty()) return section;
  const std::string_view property = cells.back();
  const std::string_view effect = cells.size() > 1 ? cells[cells.size() - 2] : property;
  if (cells[0] == "Layer") {
    section.kind = Kind::Layer;
  } else if (cells[0] == "End of Keyframe Data") {
    section.kind = Kind::End;
  } else if (const std::optional<Corner> corner = cornerOf(effect, property)) {
    section.kind = Kind::Corner;
    section.corner = *corner;
    section.owner = effect;
  } else if (const NamedKind* point = cells.size() > 3 ? found(kPoints, property) : nullptr) {
    section.kind = point->kind;
    section.owner = cells[cells.size() - 3];
    section.point = effect;
  } else if (const NamedKind* kind = cells.size() < 3 ? found(kTransforms, property) : nullptr) {
    section.kind = kind->kind;
  }
  return section;
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_builder.h"

#include <fmt/format.h>

#include <optional>
#include <stdexcept>
#include <utility>

#include "shot/files/far_frame.h"
#include "shot/files/number_text.h"
#include "shot/solve/selection.h"

namespace cornerpin {

namespace {

bool isSameRow(const Observation& a, const Observation& b) {
  return a.frame == b.frame && a.track == b.track && a.x == b.x && a.y == b.y &&
         a.weight == b.weight;
}

}  // namespace

Tracks TrackBuilder::finish(Repeats repeats) {
  refused_.raise();
  if (tracks_.observations.empty()) throw InputError(file_, "no track is in it");
  if (!anyPresent_) throw InputError(file_, "no track has a weight above 0");
  refuseFurthest();
  tracks_.sortNames();
  if (frames_.isAll()) {
    refuseFarFrames();
  } else {
    leaveOutFarFrames();
  }
  refuseTooMany();
  if (!tracks_.arrange()) {
    if (repeats == Repeats::One) joinRepeated();
    if (!tracks_.arrange()) refuseRepeated();
  }
  return std::move(tracks_);
}

std::size_t TrackBuilder::indexOf(std::string_view name) {
  refuseZero(name);
  name_.assign(name);
  const auto [entry, isNew] = indices_.try_emplace(name_, tracks_.names.size());
  if (isNew) {
    tracks_.names.push_back(name_);
    followers_.push_back(entry->second);
  }
  return entry->second;
}

void TrackBuilder::refuseZero(std::string_view name) const {
  if (name.find('\0') == std::string_view::npos) return;
  throw InputError(file_,
                   fmt::format("the name {} of a track has a zero byte in it: is this a text "
                               "file?",
                               shown(name)));
}

void TrackBuilder::rename(std::int32_t track, const std::string& name) {
  refuseZero(name);
  std::string& held = tracks_.names[static_cast<std::size_t>(track)];
  indices_.erase(held);
  indices_.emplace(name, static_cast<std::size_t>(track));
  held = name;
}

void TrackBuilder::refuseFurthest() const {
  for (const Observation& row : tracks_.observations) {
    if (firstFrame_ >= -kFurthestFrame && lastFrame_ <= kFurthestFrame) return;
    if (row.frame >= -kFurthestFrame && row.frame <= kFurthestFrame) continue;
    throw InputError(file_, row.line, fmt::format("frame is too large: \"{}\"", row.frame));
  }
}

void TrackBuilder::refuseFarFrames() const {
  const std::optional<FarFrame> far = findFarFrame(tracks_.observations, firstFrame_, lastFrame_);
  if (!far) return;
  throw InputError(file_, far->line,
                   fmt::format("frame {} is {} frames from the nearest other, and the shot has "
                               "{}: if that is right, name the frames with --frames",
                               far->frame, far->away, far->frames));
}

void TrackBuilder::leaveOutFarFrames() {
  if (!findFarFrame(tracks_.observations, firstFrame_, lastFrame_)) return;
  try {
    takeFrames(tracks_, frames_);
  } catch (const std::invalid_argument&) {
    throw InputError(file_, fmt::format("no track is seen in the frames {}", frames_.text()));
  }
  const auto [first, last] = std::minmax_element(
      tracks_.observations.begin(), tracks_.observations.end(),
      [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
  firstFrame_ = first->frame;
  lastFrame_ = last->frame;
}

void TrackBuilder::refuseTooMany() const {
  if (std::int64_t{lastFrame_} - firstFrame_ < kMaxFrames) return;
  throw InputError(
      file_, fmt::format("frames {} to {} span more than {}", firstFrame_, lastFrame_, kMaxFrames));
}

// Of rows that are the same the first stays. They are sorted already.
void TrackBuilder::joinRepeated() {
  auto& rows = tracks_.observations;
  rows.erase(std::unique(rows.begin(), rows.end(), isSameRow), rows.end());
}

// Of the rows whose track the frame has already, the first in the file.
void TrackBuilder::refuseRepeated() const {
  const auto& rows = tracks_.observations;
  std::vector<const Observation*> repeated;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (rows[i].frame == rows[i - 1].frame && rows[i].track == rows[i - 1].track) {
      repeated.push_back(&rows[i]);
    }
  }
  std::sort(repeated.begin(), repeated.end(),
            [](const Observation* a, const Observation* b) { return a->line < b->line; });
  RefusedRows refused;
  for (const Observation* row : repeated) {
    refused.add({file_, row->line,
                 fmt::format("track {} is given twice in frame {}, first on line {}",
                             shown(tracks_.names[static_cast<std::size_t>(row->track)]), row->frame,
                             row[-1].line)});
  }
  refused.raise();
  throw std::logic_error("no track is repeated");
}

}  // namespace cornerpin

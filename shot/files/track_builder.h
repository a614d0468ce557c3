// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_BUILDER_H
#define SHOT_FILES_TRACK_BUILDER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "shot/files/input_error.h"
#include "shot/files/refused_rows.h"
#include "shot/solve/frame_range.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// Tracks that grow row by row as a file is read, and what is to be checked once all are there.
class TrackBuilder {
 public:
  /// What becomes of a track that is given twice in a frame, in the same place with the same
  /// weight.
  enum class Repeats { Refused, One };

  /// \param file    its name, for messages
  /// \param frames  where they are not all, no frame is refused for being far off: where one is,
  ///                rows outside of them are left out
  TrackBuilder(const std::string& file, const FrameRange& frames) : file_(file), frames_(frames) {}

  void reserve(std::size_t rows) { tracks_.observations.reserve(rows); }

  /// The number of the track with this name, which is a new one where it has not been met. Tracks
  /// mostly come in the order of the frame before, or one stays for many rows: the track that
  /// followed the last one when that was met before is guessed, and itself where none did. A name
  /// with a zero in it throws `InputError`: no text has one, and no file of tracks could carry it.
  std::int32_t track(std::string_view name) {
    if (tracks_.names.empty() || tracks_.names[followers_[last_]] != name) {
      const std::size_t index = indexOf(name);
      followers_[last_] = index;
    }
    last_ = followers_[last_];
    return static_cast<std::int32_t>(last_);
  }
  bool has(std::string_view name) const { return indices_.count(std::string(name)) > 0; }
  /// Gives a track another name, which no track has.
  void rename(std::int32_t track, const std::string& name);

  void add(const Observation& row) {
    anyPresent_ = anyPresent_ || row.weight > 0.0f;
    firstFrame_ = std::min(firstFrame_, row.frame);
    lastFrame_ = std::max(lastFrame_, row.frame);
    tracks_.observations.push_back(row);
  }

  std::size_t rows() const { return tracks_.observations.size(); }
  std::size_t names() const { return tracks_.names.size(); }

  /// A row that cannot be taken; reading goes on behind it.
  void refuse(const InputError& error) { refused_.add(error); }
  /// One behind which nothing can be read.
  void refuseLast(const InputError& error) { refused_.addLast(error); }
  /// Throws what was refused, if anything was.
  void raise() const { refused_.raise(); }

  /// The tracks in the order of their names, arranged. Throws `InputError` for rows that were
  /// refused, where no row is there or none has a weight above 0, for a frame beyond
  /// `kFurthestFrame` or far from all others (`findFarFrame`), for frames that span more than
  /// `kMaxFrames`, and for a track that is given twice in a frame.
  Tracks finish(Repeats repeats = Repeats::Refused);

 private:
  std::size_t indexOf(std::string_view name);
  void refuseZero(std::string_view name) const;
  void refuseFurthest() const;
  void refuseFarFrames() const;
  void leaveOutFarFrames();
  void refuseTooMany() const;
  void joinRepeated();
  [[noreturn]] void refuseRepeated() const;

  std::string file_;
  FrameRange frames_;
  Tracks tracks_;
  RefusedRows refused_;
  std::unordered_map<std::string, std::size_t> indices_;
  std::string name_;                    // to look up
  std::vector<std::size_t> followers_;  // of each track, the one to guess for the next row
  std::size_t last_ = 0;                // the track of the last row
  std::int32_t firstFrame_ = std::numeric_limits<std::int32_t>::max();
  std::int32_t lastFrame_ = std::numeric_limits<std::int32_t>::min();
  bool anyPresent_ = false;
};

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "shot/files/format.h"
#include "shot/files/line_tracks.h"
#include "shot/files/number_text.h"
#include "shot/files/owned_tracks.h"
#include "shot/files/track_input.h"

namespace cornerpin {

namespace {

bool isQuoted(std::string_view line) { return trimmed(line).substr(0, 1) == "\""; }

bool isOneWord(std::string_view line) {
  return trimmed(line).find_first_of(" \t") == std::string_view::npos;
}

// Blocks of a name in quotes, a clip's number or a camera in quotes or neither, the number of keys,
// and the keys: frame, x, y, a residual, which is no weight, and in some files z. Further cameras
// of a name follow without it.
class BlocksReader {
 public:
  explicit BlocksReader(const TrackInput& input) : file_(input), owned_(file_.tracks) {}

  Tracks read() {
    file_.readAll([&] {
      while (file_.nextUncommented()) readBlock();
    });
    Picture picture = factsOf(Format::Blocks).picture;
    picture.firstFrame = firstFrame_;
    return file_.finish(picture, TrackBuilder::Repeats::One);
  }

 private:
  void readBlock() {
    std::string quoted = takeQuoted();
    next("a camera, a clip or a number of keys");
    if (isQuoted(file_.lines.text())) {
      name_ = std::move(quoted);
      readCamera(takeQuoted());
      return;
    }
    const std::int32_t number = file_.takeCount(Words(file_.lines), "a clip or the number of keys");
    const bool more = file_.nextUncommented();
    if (more && !isQuoted(file_.lines.text()) && isOneWord(file_.lines.text())) {
      name_ = std::move(quoted);
      hasCamera_ = false;
      readKeys(fmt::format("{}", number), takeKeyCount(), 1);
      return;
    }
    if (more) file_.lines.stay();
    if (hasCamera_) {
      readKeys(quoted, number, 0);
    } else {
      name_ = std::move(quoted);
      readKeys("", number, 0);
    }
  }

  void readCamera(const std::string& camera) {
    hasCamera_ = true;
    next("a number of keys");
    readKeys(camera, takeKeyCount(), 0);
  }

  std::int32_t takeKeyCount() const {
    return file_.takeCount(Words(file_.lines), "the number of keys");
  }

  void next(const char* what) {
    if (!file_.nextUncommented()) file_.require(what);
  }

  std::string takeQuoted() const {
    Words words(file_.lines);
    const std::string_view all = words.rest();
    const std::string_view text = words.takeQuoted("a name");
    words.requireEnd();
    if (text.empty()) throw file_.lines.error(all, "a name is wanted between the quotes");
    return std::string(text);
  }

  void readKeys(const std::string& owner, std::int32_t keys, int firstFrame) {
    if (keys > 0) setFirstFrame(firstFrame);
    std::int32_t track = -1;
    file_.takeRows(name_, keys, [&](Words& words, Observation& row) {
      row.frame = words.takeFrame();
      if (!takePlace(file_.lines, words, row)) return false;
      if (!words.atEnd()) words.takePosition("residual");
      if (!words.atEnd()) takeDepth(words);
      words.requireEnd();
      if (track < 0) track = owned_.track(name_, owner);
      row.track = track;
      return true;
    });
  }

  void takeDepth(Words& words) {
    words.takePosition("z");
    if (!hasDepth_) file_.note(file_.lines.line(), "z is left out, here and on other lines");
    hasDepth_ = true;
  }

  void setFirstFrame(int frame) {
    if (firstFrame_.value_or(frame) != frame) {
      throw file_.lines.error(
          "frames count from 1 in blocks with a clip's number and from 0 in all others, and the "
          "file has both: split it");
    }
    firstFrame_ = frame;
  }

  LineTracks file_;
  OwnedTracks owned_;
  std::string name_;
  bool hasCamera_ = false;  // the name's blocks so far
  bool hasDepth_ = false;
  std::optional<int> firstFrame_;
};

}  // namespace

Tracks readBlocks(const TrackInput& input) { return BlocksReader(input).read(); }

}  // namespace cornerpin

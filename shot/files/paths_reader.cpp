// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <string>
#include <string_view>

#include "shot/files/format.h"
#include "shot/files/line_tracks.h"
#include "shot/files/number_text.h"
#include "shot/files/track_input.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

enum Status : std::int32_t { kUsable = 4, kOutOfSight = 32 };

constexpr int kColumns = 4;  // behind the name, which may have blanks

// The end of the text that holds so many words; all of it where it has no more.
std::string_view lastWords(std::string_view text, int count) {
  std::string_view before = trimmed(text);
  for (; count > 0 && !before.empty(); --count) {
    const std::size_t blank = before.find_last_of(" \t");
    before = trimmed(before.substr(0, blank == std::string_view::npos ? 0 : blank));
  }
  return text.substr(
      before.empty() ? 0 : static_cast<std::size_t>(before.data() - text.data()) + before.size());
}

// Lines of name, frame, u, v and status.
class PathsReader {
 public:
  explicit PathsReader(const TrackInput& input) : file_(input) {}

  Tracks read() {
    file_.readAll([&] {
      for (bool more = file_.nextUncommented(); more; more = file_.lines.nextFilled()) takeLine();
    });
    if (absent_ > 0) {
      file_.note(firstAbsent_,
                 fmt::format("{} without 4 in the status or with 32, the first here: the track is "
                             "absent there",
                             counted(absent_, "position")));
    }
    return file_.finish(factsOf(Format::Paths).picture);
  }

 private:
  void takeLine() {
    const std::string_view text = file_.lines.text();
    const std::string_view columns = lastWords(text, kColumns);
    const std::string_view name = trimmed(text.substr(0, text.size() - columns.size()));
    file_.takeRow(Words(file_.lines, columns), [&](Words& words, Observation& row) {
      if (name.empty()) {
        throw file_.lines.error(
            text, fmt::format("a name, a frame, two positions and a status are wanted, not {}",
                              shown(trimmed(text))));
      }
      row.frame = words.takeFrame();
      const bool isThere = takePlace(file_.lines, words, row);
      if (isAbsent(words.takeWhole("status")) || !isThere) return false;
      row.track = file_.tracks.track(name);
      return true;
    });
  }

  bool isAbsent(std::int32_t status) {
    if ((status & kUsable) != 0 && (status & kOutOfSight) == 0) return false;
    if (absent_++ == 0) firstAbsent_ = file_.lines.line();
    return true;
  }

  LineTracks file_;
  std::size_t absent_ = 0;
  std::uint32_t firstAbsent_ = 0;
};

}  // namespace

Tracks readPaths(const TrackInput& input) { return PathsReader(input).read(); }

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "shot/files/number_text.h"
#include "shot/files/pin_text.h"
#include "shot/files/track_writers.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kBlock = std::size_t{64} * 1024;

using Frames = std::vector<const PinFrame*>;

// A script on its way to a file.
class Script {
 public:
  explicit Script(OutputFile& out) : out_(out) {}
  ~Script() = default;
  Script(const Script&) = delete;
  Script& operator=(const Script&) = delete;

  Script& operator<<(std::string_view text) {
    text_ += text;
    if (text_.size() > kBlock) flush();
    return *this;
  }
  void flush() {
    out_.write(text_);
    text_.clear();
  }

  void key(int frame, double value) {
    *this << fmt::format(" x{} ", frame);
    appendDecimal(text_, value);
  }
  void pair(Point p) { *this << "{" << decimal(p.x) << " " << decimal(p.y) << "}"; }

  void begin(const Picture& picture) {
    *this << "# x grows to the right and y upwards, in pixels; the middle of the first pixel is "
             "(0.5, 0.5)\n";
    if (picture.width && picture.height)
      *this << fmt::format("# of a picture of {} x {}\n", *picture.width, *picture.height);
  }
  void head() { *this << "set cut_paste_input [stack 0]\nversion 13.0 v1\n"; }

 private:
  OutputFile& out_;
  std::string text_;
};

std::string escaped(std::string_view name) {
  std::string text;
  text.reserve(name.size());
  for (const char c : name) {
    if (std::string_view("\\\"{}[]$").find(c) != std::string_view::npos) text += '\\';
    if (c == '\n' || c == '\t') {
      text += c == '\n' ? "\\n" : "\\t";
    } else {
      text += c;
    }
  }
  return text;
}

// What a tracker's rows have, in this order.
constexpr std::array<const char*, 31> kColumns = {
    "5 1 20 enable e",
    "3 1 75 name name",
    "2 1 58 track_x track_x",
    "2 1 58 track_y track_y",
    "2 1 63 offset_x offset_x",
    "2 1 63 offset_y offset_y",
    "4 1 27 T T",
    "4 1 27 R R",
    "4 1 27 S S",
    "2 0 45 error error",
    "1 1 0 error_min error_min",
    "1 1 0 error_max error_max",
    "1 1 0 pattern_x pattern_x",
    "1 1 0 pattern_y pattern_y",
    "1 1 0 pattern_r pattern_r",
    "1 1 0 pattern_t pattern_t",
    "1 1 0 search_x search_x",
    "1 1 0 search_y search_y",
    "1 1 0 search_r search_r",
    "1 1 0 search_t search_t",
    "2 1 0 key_track key_track",
    "2 1 0 key_search_x key_search_x",
    "2 1 0 key_search_y key_search_y",
    "2 1 0 key_search_r key_search_r",
    "2 1 0 key_search_t key_search_t",
    "2 1 0 key_track_x key_track_x",
    "2 1 0 key_track_y key_track_y",
    "2 1 0 key_track_r key_track_r",
    "2 1 0 key_track_t key_track_t",
    "2 1 0 key_centre_offset_x key_centre_offset_x",
    "2 1 0 key_centre_offset_y key_centre_offset_y",
};

// Behind the error: its limits, the pattern and the search area around the point, and no keys.
constexpr const char* kOtherCells =
    " 0 0 -32 -32 32 32 -22 -22 22 22 {} {} {} {} {} {} {} {} {} {} {} }\n";

// The observations of each track, by frame: those of track t are from starts[t] to starts[t + 1].
struct ByTrack {
  explicit ByTrack(const Tracks& tracks) : starts(tracks.names.size() + 1) {
    for (const Observation& row : tracks.observations) ++starts[trackOf(row) + 1];
    for (std::size_t t = 1; t < starts.size(); ++t) starts[t] += starts[t - 1];
    std::vector<std::size_t> next(starts.begin(), starts.end() - 1);
    rows.resize(tracks.observations.size());
    for (const Observation& row : tracks.observations) rows[next[trackOf(row)]++] = &row;
  }
  static std::size_t trackOf(const Observation& row) { return static_cast<std::size_t>(row.track); }

  std::vector<std::size_t> starts;
  std::vector<const Observation*> rows;
};

class TrackRow {
 public:
  TrackRow(Script& script, const Observation* const* first, const Observation* const* last)
      : script_(script), first_(first), last_(last) {}

  void write(const std::string& name) {
    writeEnable();
    script_ << " \"" << escaped(name) << "\"";
    writeCurve([](const Observation& row) { return row.x; });
    writeCurve([](const Observation& row) { return row.y; });
    writeZero();
    writeZero();
    script_ << " 0 0 0";
    writeZero();
    script_ << kOtherCells;
  }

 private:
  // 0 where there is no position, too.
  void writeEnable() {
    script_ << " { {curve K";
    double enabled = -1.0;
    const auto set = [&](int frame, double value) {
      if (value != enabled) script_.key(frame, value);
      enabled = value;
    };
    for (const auto* row = first_; row != last_; ++row) {
      const bool follows = row == first_ || row[-1]->frame + 1 == row[0]->frame;
      if (!follows) set(row[-1]->frame + 1, 0.0);
      set(row[0]->frame, row[0]->weight > 0.0f ? 1.0 : 0.0);
    }
    script_ << "}";
  }

  template <class F>
  void writeCurve(F value) {
    script_ << " {curve";
    for (const auto* row = first_; row != last_; ++row) script_.key((*row)->frame, value(**row));
    script_ << "}";
  }

  void writeZero() {
    script_ << " {curve K";
    script_.key((*first_)->frame, 0.0);
    script_ << "}";
  }

  Script& script_;
  const Observation* const* first_;
  const Observation* const* last_;
};

WriteNotes notesOn(const Tracks& tracks, std::size_t empty) {
  WriteNotes notes;
  if (empty > 0) notes.push_back(counted(empty, "track") + " without positions left out");
  const auto weighted = std::count_if(
      tracks.observations.begin(), tracks.observations.end(),
      [](const Observation& row) { return row.weight != 0.0f && row.weight != 1.0f; });
  if (weighted > 0) {
    notes.push_back(fmt::format("weights other than 0 and 1 are left out: {}",
                                counted(static_cast<std::size_t>(weighted), "position")));
  }
  return notes;
}

// Letters, digits and underscores.
std::string nodeName(const std::string& name) {
  std::string text = "CornerPin_" + name;
  for (char& c : text) {
    if (std::isalnum(static_cast<unsigned char>(c)) == 0 || static_cast<unsigned char>(c) > 0x7f)
      c = '_';
  }
  return name.empty() ? "CornerPin" : text;
}

// The corner in the frames in which it goes anywhere.
void writeCorner(Script& script, const Pin& pin, std::size_t corner) {
  const auto writeCurve = [&](double Point::*coordinate) {
    script << "{curve L";
    for (const PinFrame& frame : pin.frames) {
      const Point p = frame.to[corner];
      if (!std::isnan(p.x) && !std::isnan(p.y)) script.key(frame.frame, p.*coordinate);
    }
    script << "}";
  };
  script << fmt::format(" to{} {{", corner + 1);
  writeCurve(&Point::x);
  script << " ";
  writeCurve(&Point::y);
  script << "}\n";
}

void writeElement(Script& script, const Frames& frames, std::size_t row, std::size_t column) {
  script << "{curve L";
  for (const PinFrame* frame : frames) script.key(frame->frame, frame->h[row][column]);
  script << "}";
}

// The transform among those of space: z stays as it is.
void writeMatrix(Script& script, const Frames& frames) {
  script << " transform_matrix {";
  for (std::size_t row = 0; row < 3; ++row) {
    if (row == 2) script << " {0 0 1 0} ";
    script << (row == 1 ? " {" : "{");
    writeElement(script, frames, row, 0);
    script << " ";
    writeElement(script, frames, row, 1);
    script << " 0 ";
    if (row == 2) {
      script << "1";
    } else {
      writeElement(script, frames, row, 2);
    }
    script << "}";
  }
  script << "}\n";
}

// With the matrix where there are frames for it, otherwise by points.
void writeNode(Script& script, const Pin& pin, const Frames& matrix, const std::string& name) {
  const bool isMatrix = !matrix.empty();
  script << "push $cut_paste_input\nCornerPin2D {\n";
  for (std::size_t corner = 0; corner < pin.from.size(); ++corner) {
    if (isMatrix) {
      script << fmt::format(" to{} ", corner + 1);
      script.pair(pin.from[corner]);
      script << "\n";
    } else {
      writeCorner(script, pin, corner);
    }
  }
  if (isMatrix) writeMatrix(script, matrix);
  script << " invert false\n";
  for (std::size_t corner = 0; corner < pin.from.size(); ++corner) {
    script << fmt::format(" from{} ", corner + 1);
    script.pair(pin.from[corner]);
    script << "\n";
  }
  script << " name " << name << "\n selected true\n}\n";
}

bool isWhole(const Quad& quad) {
  return std::none_of(quad.begin(), quad.end(),
                      [](Point p) { return std::isnan(p.x) || std::isnan(p.y); });
}

void noteCorners(const Pin& pin, WriteNotes& notes) {
  std::vector<int> beyond;
  std::vector<int> absent;
  for (const PinFrame& frame : pin.frames) {
    if (!isWhole(frame.to)) (isFinite(frame.h) ? beyond : absent).push_back(frame.frame);
  }
  if (!beyond.empty()) {
    notes.push_back(
        fmt::format("corners on or behind the horizon have no key: frames {}; "
                    "transform_matrix has them",
                    textOf(stretchesOf(beyond), 10)));
  }
  if (!absent.empty()) {
    notes.push_back(fmt::format("corners that are not known have no key: frames {}",
                                textOf(stretchesOf(absent), 10)));
  }
}

}  // namespace

WriteNotes writeNkTracks(const Tracks& tracks, OutputFile& out) {
  const ByTrack byTrack(tracks);
  const auto& starts = byTrack.starts;
  const std::size_t named = tracks.names.size();
  std::size_t empty = 0;
  for (std::size_t t = 0; t < named; ++t) empty += starts[t] == starts[t + 1] ? 1 : 0;
  Script script(out);
  script.begin(tracks.picture);
  script.head();
  script << "push $cut_paste_input\nTracker4 {\n";
  script << fmt::format(" tracks {{ {{ 1 {} {} }}\n{{", kColumns.size(), named - empty);
  for (const char* column : kColumns) script << " { " << column << " 1 }\n";
  script << "}\n{\n";
  const Observation* const* rows = byTrack.rows.data();
  for (std::size_t t = 0; t < named; ++t) {
    if (starts[t] == starts[t + 1]) continue;
    TrackRow(script, rows + starts[t], rows + starts[t + 1]).write(tracks.names[t]);
  }
  script << "}\n}\n name Tracker1\n selected true\n}\n";
  script.flush();
  return notesOn(tracks, empty);
}

WriteNotes writeNkPin(const Pin& pin, const PinStyle& style, OutputFile& out) {
  const bool hasPoints = style.nk != PinStyle::Nk::Matrix;
  const bool hasMatrix = style.nk != PinStyle::Nk::Points;
  const std::string name = nodeName(pin.name);
  WriteNotes notes;
  if (hasPoints) noteCorners(pin, notes);
  const Frames matrix = hasMatrix ? transformedFrames(pin, notes) : Frames{};
  Script script(out);
  script.begin(pin.picture);
  script << "# corners: 1 bottom left, 2 bottom right, 3 top right, 4 top left\n";
  if (hasPoints && hasMatrix) script << "# two nodes that do the same: use one of them\n";
  script.head();
  if (hasPoints) writeNode(script, pin, {}, name);
  if (hasMatrix) writeNode(script, pin, matrix, hasPoints ? name + "_matrix" : name);
  script.flush();
  return notes;
}

}  // namespace cornerpin

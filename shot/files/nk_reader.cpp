// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "shot/files/nk_knobs.h"
#include "shot/files/nk_pin.h"
#include "shot/files/nk_rows.h"
#include "shot/files/node_curve.h"
#include "shot/files/node_words.h"
#include "shot/files/number_text.h"
#include "shot/files/pin.h"
#include "shot/files/skip_notes.h"
#include "shot/files/track_builder.h"
#include "shot/files/track_input.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

using Kind = NodeWords::Kind;

// Kinds of what is skipped.
enum class About { Expressions, Keys, Nodes, Places, Pins, Counts };

constexpr std::size_t kLongestWord = 1024;  // of names of knobs and nodes
// Of curves beside those of x and y, of which there are many or which have few keys.
constexpr std::size_t kMostSideKeys = kMostKeys / 8;

struct HeldTrack {
  std::string name;
  std::uint32_t line = 0;
  std::size_t first = 0;  // of the node's keys
};

// A node while it is read: its name may stand at its end.
struct Node {
  NkClass kind = NkClass::Other;
  std::string type;  // as it stands
  std::string name;
  std::uint32_t line = 0;
  std::vector<NkColumn> columns;
  std::vector<HeldTrack> tracks;
  std::vector<NodeKey> keys;
  std::array<NodePlace, kMostPlaces> places;
  std::array<std::string, kMostPlaces> placeNames;
  NkPin pin;

  const std::string& label() const { return name.empty() ? type : name; }
};

// A pin, by what people find it.
struct NamedPin {
  std::string label;
  std::uint32_t line = 0;
  std::string text() const { return fmt::format("{} (line {})", label, line); }
};

class NkReader {
 public:
  explicit NkReader(const TrackInput& input)
      : input_(input),
        words_(input.source),
        tracks_(input.source.name(), input.frames),
        notes_(input.source.name(), input.trace.notes,
               {"expressions", "tracks with keys left out", "nodes", "places", "pins", "counts"}),
        rows_(tracks_, input) {}

  Tracks read() {
    input_.report();
    for (Kind kind = words_.next(); kind != Kind::End; kind = words_.next()) takeCommand(kind);
    takePin();
    notes_.close();
    if (tracks_.rows() == 0) refuseEmpty();
    input_.trace.rows = static_cast<std::int64_t>(tracks_.rows());
    Tracks tracks = tracks_.finish();
    tracks.picture = factsOf(Format::Nk).picture;
    return tracks;
  }

 private:
  // With all that was skipped: what was meant is among it.
  [[noreturn]] void refuseEmpty() const {
    tracks_.raise();
    std::string text = "no track is in it: wanted are trackers, planar trackers or a CornerPin2D";
    for (const std::string& note : input_.trace.notes) {
      text += '\n';
      text += note;
    }
    throw InputError(words_.file(), text);
  }

  void takeCommand(Kind kind) {
    if (kind == Kind::Open) return words_.skipGroup();
    if (kind != Kind::Word) return;
    if (words_.text()[0] == '#') return words_.skipLine();
    const std::string type(words_.text().substr(0, kLongestWord));
    const std::uint32_t line = words_.line();
    kind = words_.next();
    const NkClass nodeClass = classOf(type);
    if (kind == Kind::Open && nodeClass != NkClass::Other) {
      takeNode(nodeClass, type, line);
    } else {
      skip(kind);
      if (kind == Kind::Open || isValue(kind)) words_.skipCommand();
    }
  }

  static bool isValue(Kind kind) { return kind == Kind::Word || kind == Kind::Quoted; }
  void skip(Kind kind) {
    if (kind == Kind::Open) words_.skipGroup();
  }

  void takeNode(NkClass kind, const std::string& type, std::uint32_t line) {
    node_ = {};
    node_.kind = kind;
    node_.type = type;
    node_.line = line;
    for (Kind next = words_.next(); next != Kind::Close;) {
      if (isValue(next)) {
        next = takeKnob();
      } else {
        skip(next);
        next = words_.next();
      }
    }
    finishNode();
  }

  // What ends the command; the last of several values that a knob has counts.
  Kind takeKnob() {
    if (!words_.text().empty() && words_.text()[0] == '#') {
      words_.skipLine();
      return words_.next();
    }
    knob_.assign(words_.text().substr(0, kLongestWord));
    const Kind kind = words_.next();
    if (!isValue(kind) && kind != Kind::Open) return kind;
    takeValue(kind);
    return words_.skipCommand();
  }

  void takeValue(Kind kind) {
    if (knob_ == "name") {
      node_.name = takeText(kind).substr(0, kLongestWord);
    } else if (knob_ == "tracks" && node_.kind == NkClass::Tracker && kind == Kind::Open) {
      takeTracks();
    } else if (node_.kind == NkClass::Pin) {
      takePinKnob(kind);
    } else if (knob_ == "format" && node_.kind == NkClass::Root && kind == Kind::Quoted) {
      noteFormat();
    } else if (const std::size_t place = trackPlace(node_.kind, knob_); place != kNoPlace) {
      takePlace(kind, node_.places[place]);
      node_.placeNames[place] = knob_;
    } else {
      skip(kind);
    }
  }

  // A value as a text; of a group what stands in it.
  std::string takeText(Kind kind) {
    if (kind != Kind::Open) return unescaped(words_.text());
    const NodeWords::Mark from = words_.mark();
    words_.skipGroup();
    const std::string text = words_.since(from, kLongestWord + 2);
    return text.size() < 2 ? "" : unescaped(trimmed(text.substr(1, text.size() - 2)));
  }

  void noteFormat() {
    const std::string_view text = words_.text();
    const std::size_t width = text.find(' ');
    if (width == std::string_view::npos) return;
    const std::size_t end = std::min(text.find(' ', width + 1), text.size());
    const std::string size =
        fmt::format("{}x{}", text.substr(0, width), text.substr(width + 1, end - width - 1));
    if (size.size() > kShownLength) return;
    notes_.add(About::Nodes, words_.line(), [&] {
      return fmt::format("the root's format {0} is not used: give --size {0} if it is the clip's",
                         size);
    });
  }

  // An element of a knob or of a row. The keys come in order.
  void takeElement(Kind kind, std::string_view what, std::size_t mostKeys, NodeCurve& curve) {
    const std::uint32_t line = words_.line();
    if (const auto flaw = readNodeCurve(words_, kind, mostKeys, curve)) tracks_.refuse(*flaw);
    if (!curve.expression.empty()) {
      notes_.add(About::Expressions, line, [&] {
        return fmt::format("{}: the expression {} is skipped", what, shown(curve.expression));
      });
    }
    if (curve.between > 0) {
      notes_.add(About::Keys, line, [&] {
        return fmt::format("{}: {} between two frames left out", what,
                           counted(curve.between, "key"));
      });
    }
    if (const auto twice = sortKeys(curve)) {
      tracks_.refuse(
          {words_.file(), line, fmt::format("{} has two keys in frame {}", what, *twice)});
      curve.clear();
    }
  }

  void takePlace(Kind kind, NodePlace& place) {
    place = {};
    place.line = words_.line();
    x_.clear();
    y_.clear();
    if (kind != Kind::Open) {
      takeElement(kind, knob_, kMostKeys, x_);
    } else if (const Kind first = words_.nextItem();
               isValue(first) && trimmed(words_.text()) == "curve") {
      words_.skipGroup();
      notes_.add(About::Keys, place.line, [&] {
        return fmt::format(
            "{} is one curve: x and y are wanted, each in braces, in one pair of braces", knob_);
      });
    } else if (first != Kind::Close) {
      takeElement(first, knob_, kMostKeys, x_);
      const Kind second = words_.nextItem();
      if (second == Kind::Close) return;
      takeElement(second, knob_, kMostKeys, y_);
      leaveGroup();
    }
    if (x_.constant && y_.constant) {
      place.constant = Point{*x_.constant, *y_.constant};
    } else {
      pair(knob_, place.line, place.keys);
    }
  }

  // The rest of a group.
  void leaveGroup() {
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) skip(kind);
  }

  void pair(std::string_view name, std::uint32_t line, std::vector<NodeKey>& keys) {
    const Unpaired unpaired = pairKeys(x_, y_, keys);
    if (unpaired.x + unpaired.y == 0) return;
    notes_.add(About::Keys, line, [&] {
      return fmt::format(
          "{}: {} of x and {} of y without the other coordinate, first in frame {}: "
          "dropped",
          shown(name), counted(unpaired.x, "key"), counted(unpaired.y, "key"), unpaired.first);
    });
  }

  // The group of a tracker: counts, columns and rows, each in braces.
  void takeTracks() {
    const std::uint32_t line = words_.line();
    node_.tracks.clear();
    node_.keys.clear();
    node_.columns.clear();
    double count = -1.0;
    std::size_t rows = 0;
    std::size_t group = 0;
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) {
      if (kind != Kind::Open) continue;
      ++group;
      if (group == 1) {
        count = takeCount();
      } else if (group == 2) {
        takeColumns();
      } else if (group == 3) {
        rows = takeRows();
      } else {
        words_.skipGroup();
      }
    }
    if (count >= 0.0 && count != static_cast<double>(rows)) {
      notes_.add(About::Counts, line, [&] {
        return fmt::format("the head counts {} tracks, {} are there", count, rows);
      });
    }
  }

  // The last number.
  double takeCount() {
    double count = -1.0;
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) {
      skip(kind);
      if (kind == Kind::Word) parse(words_.text(), count);
    }
    return count;
  }

  void takeColumns() {
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) {
      if (kind == Kind::Open) node_.columns.push_back(takeColumn());
    }
  }

  // By its name, the first word that is no number.
  NkColumn takeColumn() {
    NkColumn column = NkColumn::Other;
    bool isNamed = false;
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) {
      skip(kind);
      double number = 0.0;
      if (isNamed || !isValue(kind) || parse(words_.text(), number) != Parsed::Nothing) continue;
      column = columnOf(words_.text());
      isNamed = true;
    }
    return column;
  }

  bool hasColumn(NkColumn column) const {
    return std::find(node_.columns.begin(), node_.columns.end(), column) != node_.columns.end();
  }

  std::size_t takeRows() {
    std::size_t rows = 0;
    const std::uint32_t line = words_.line();
    const bool isRead = hasColumn(NkColumn::X) && hasColumn(NkColumn::Y);
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) {
      if (kind != Kind::Open) continue;
      ++rows;
      if (isRead) {
        takeRow(rows);
      } else {
        words_.skipGroup();
      }
    }
    if (rows > 0 && !isRead) {
      tracks_.refuse({words_.file(), line,
                      "the tracker's columns are not understood: no track_x or no track_y is among "
                      "them"});
    }
    return rows;
  }

  void takeRow(std::size_t number) {
    HeldTrack track;
    track.line = words_.line();
    track.first = node_.keys.size();
    x_.clear();
    y_.clear();
    enable_.clear();
    std::size_t column = 0;
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) {
      takeCell(kind, column < node_.columns.size() ? node_.columns[column] : NkColumn::Other,
               track);
      ++column;
    }
    if (track.name.empty()) track.name = fmt::format("track {}", number);
    if (x_.constant && y_.constant) return noteConstant(track.name, track.line);
    pair(track.name, track.line, node_.keys);
    if (node_.keys.size() == track.first) return noteEmpty(track.name, track.line);
    NodeKey* keys = node_.keys.data();
    enableKeys(enable_, keys + track.first, keys + node_.keys.size());
    node_.tracks.push_back(std::move(track));
  }

  void takeCell(Kind kind, NkColumn column, HeldTrack& track) {
    switch (column) {
      case NkColumn::Name:
        track.name = takeText(kind);
        break;
      case NkColumn::X:
        takeElement(kind, "track_x", kMostKeys, x_);
        break;
      case NkColumn::Y:
        takeElement(kind, "track_y", kMostKeys, y_);
        break;
      case NkColumn::Enable:
        takeElement(kind, "enable", kMostSideKeys, enable_);
        break;
      case NkColumn::Other:
        skip(kind);
        break;
    }
  }

  void noteConstant(std::string_view name, std::uint32_t line) {
    notes_.add(About::Places, line, [&] {
      return fmt::format("{} has no keys: a constant is no track, it is skipped", shown(name));
    });
  }

  void takePinKnob(Kind kind) {
    NkPin& pin = node_.pin;
    constexpr std::size_t kCorners = 4;
    if (const std::size_t to = numberedPlace("to", knob_, kCorners); to != kNoPlace) {
      takePlace(kind, pin.to[to]);
    } else if (const std::size_t from = numberedPlace("from", knob_, kCorners); from != kNoPlace) {
      takePlace(kind, pin.from[from]);
    } else if (kind == Kind::Open && (knob_ == "transform_matrix" || knob_ == "extra matrix")) {
      takeMatrix();
    } else if (knob_ == "invert" && isValue(kind)) {
      pin.isInverted = words_.text() != "false" && words_.text() != "0";
    } else {
      skip(kind);
    }
  }

  // Four rows of four elements.
  void takeMatrix() {
    node_.pin.matrix.assign(9, {});
    std::size_t row = 0;
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) {
      if (kind == Kind::Open) takeMatrixRow(row);
      ++row;
    }
  }

  void takeMatrixRow(std::size_t row) {
    constexpr std::array<std::size_t, 4> kPlaces = {0, 1, 9, 2};  // 9: not in the plane
    std::size_t column = 0;
    for (Kind kind = words_.nextItem(); kind != Kind::Close; kind = words_.nextItem()) {
      const std::size_t r = row < kPlaces.size() ? kPlaces[row] : 9;
      const std::size_t c = column < kPlaces.size() ? kPlaces[column] : 9;
      if (r < 3 && c < 3) {
        takeElement(kind, knob_, kMostSideKeys, node_.pin.matrix[3 * r + c]);
      } else {
        skip(kind);
      }
      ++column;
    }
  }

  void finishNode() {
    if (node_.kind == NkClass::Skipped) {
      notes_.add(About::Nodes, node_.line, [&] {
        return fmt::format("the {} {} is skipped: it has no tracks that could be read", node_.type,
                           shown(node_.label()));
      });
    } else if (node_.kind == NkClass::Pin) {
      finishPin();
    } else if (node_.kind != NkClass::Root) {
      finishTracker();
    }
  }

  void finishTracker() {
    bool any = false;
    for (std::size_t i = 0; i < node_.tracks.size(); ++i) {
      const bool isLast = i + 1 == node_.tracks.size();
      const std::size_t end = isLast ? node_.keys.size() : node_.tracks[i + 1].first;
      HeldTrack& track = node_.tracks[i];
      const NodeKey* keys = node_.keys.data();
      any |= addTrack(std::move(track.name), track.line, keys + track.first, keys + end);
    }
    for (std::size_t i = 0; i < kMostPlaces; ++i) any |= addPlace(i);
    if (!any) {
      notes_.add(About::Nodes, node_.line, [&] {
        return fmt::format("the {} {} has no tracks", node_.type, shown(node_.label()));
      });
    }
    rows_.flush();
    node_ = {};
  }

  bool addPlace(std::size_t index) {
    const NodePlace& place = node_.places[index];
    const std::string& name = node_.placeNames[index];
    if (place.constant) noteConstant(name, place.line);
    if (place.constant || place.line == 0) return false;
    const NodeKey* keys = place.keys.data();
    return addTrack(name, place.line, keys, keys + place.keys.size());
  }

  // False for a track without keys.
  bool addTrack(std::string name, std::uint32_t line, const NodeKey* first, const NodeKey* last) {
    if (first != last) {
      rows_.add(std::move(name), node_.label(), line, first, last);
      return true;
    }
    noteEmpty(name, line);
    return false;
  }

  void noteEmpty(std::string_view name, std::uint32_t line) {
    notes_.add(About::Places, line,
               [&] { return fmt::format("{} has no positions: skipped", shown(name)); });
  }

  void finishPin() {
    std::vector<std::string> said;
    CornerKeys corners = cornersOf(node_.pin, said);
    for (const std::string& text : said) {
      notes_.add(About::Pins, node_.line,
                 [&] { return fmt::format("{}: {}", shown(node_.label()), text); });
    }
    NamedPin pin{node_.label(), node_.line};
    node_ = {};
    const bool isEmpty =
        std::all_of(corners.begin(), corners.end(), [](const auto& keys) { return keys.empty(); });
    if (isEmpty) return noteSkipped(pin, "it has no corners");
    ++pinCount_;
    const bool isBetter = pinCount_ == 1 || (!isMoving(corners_) && isMoving(corners));
    if (isBetter) {
      std::swap(pin, pin_);
      corners_ = std::move(corners);
    }
    if (pinCount_ > 1 && others_.size() < SkipNotes::kNamed) others_.push_back(std::move(pin));
  }

  void noteSkipped(const NamedPin& pin, const std::string& why) {
    notes_.add(About::Pins, pin.line,
               [&] { return fmt::format("the pin {} is skipped: {}", shown(pin.label), why); });
  }

  // Where there are tracks, pins are not what is meant.
  void takePin() {
    if (pinCount_ == 0) return;
    const bool isTaken = tracks_.rows() == 0;
    const std::string why =
        isTaken ? fmt::format("{} is taken", pin_.text()) : std::string("the script has tracks");
    if (!isTaken) noteSkipped(pin_, why);
    for (const NamedPin& other : others_) noteSkipped(other, why);
    if (!isTaken) return;
    input_.trace.isPin = true;
    for (std::size_t i = 0; i < corners_.size(); ++i) {
      const NodeKey* keys = corners_[i].data();
      addTrack(kCornerNames[i], pin_.line, keys, keys + corners_[i].size());
    }
    rows_.flush();
  }

  const TrackInput& input_;
  NodeWords words_;
  TrackBuilder tracks_;
  SkipNotes notes_;
  NkRows rows_;
  Node node_;
  std::string knob_;
  NodeCurve x_;
  NodeCurve y_;
  NodeCurve enable_;
  NamedPin pin_;  // the one that is taken
  CornerKeys corners_;
  std::vector<NamedPin> others_;
  std::size_t pinCount_ = 0;
};

}  // namespace

Tracks readNk(const TrackInput& input) { return NkReader(input).read(); }

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "shot/files/input_error.h"
#include "shot/files/keyframes_section.h"
#include "shot/files/layer_motion.h"
#include "shot/files/line_reader.h"
#include "shot/files/number_text.h"
#include "shot/files/owned_tracks.h"
#include "shot/files/pin.h"
#include "shot/files/skip_notes.h"
#include "shot/files/track_builder.h"
#include "shot/files/track_input.h"

namespace cornerpin {

namespace {

using Kind = KeyframesSection::Kind;

constexpr std::size_t kReported = 65536;  // rows between two reports
constexpr std::string_view kHeader = "Adobe After Effects ";
constexpr double kOldest = 5.0;
constexpr double kNewest = 9.0;

bool startsWith(std::string_view text, std::string_view part) {
  return text.substr(0, part.size()) == part;
}

// The heading on one line, as people read it.
std::string headingText(std::string_view heading) {
  std::string text(trimmed(heading));
  std::replace(text.begin(), text.end(), '\t', ' ');
  return shown(text);
}

// Kinds of what is skipped.
enum class About { Sections, Keys };

class KeyframesReader {
 public:
  explicit KeyframesReader(const TrackInput& input)
      : input_(input),
        lines_(input.source),
        tracks_(input.source.name(), input.frames),
        points_(tracks_),
        skipped_(lines_.file(), input.trace.notes, {"sections", "keys"}),
        picture_(factsOf(Format::Keyframes).picture) {}

  Tracks read() {
    input_.report();
    readVersion();
    readHeader();
    while (hasNext()) {
      if (!takeLine()) break;
    }
    noteEnd();
    tracks_.raise();
    const bool isLayer = !pin_ && !hasPoints_ && layer_ < 2 && motion_.isPlaced();
    Tracks tracks = pin_ || isLayer ? finishPin() : finishPoints();
    tracks.picture = picture_;
    input_.trace.rows = static_cast<std::int64_t>(tracks.observations.size());
    return tracks;
  }

 private:
  /// What a row holds in front of its values; no frame where it holds for all.
  using Frame = std::optional<double>;

  /// The pin that is read: the first in the file.
  struct PinOf {
    int layer = 0;
    std::string effect;
  };
  struct CornerValues {
    bool isThere = false;
    std::optional<Point> constant;
  };

  void note(const std::string& text) { input_.trace.notes.push_back(lines_.error(text).what()); }
  void noteFile(const std::string& text) {
    input_.trace.notes.push_back(lines_.file() + ": " + text);
  }

  bool hasNext() {
    if (isBroken_) return false;
    try {
      return lines_.nextFilled();
    } catch (const InputError& error) {
      tracks_.refuseLast(error);
      isBroken_ = true;
      return false;
    }
  }

  void readVersion() {
    if (!lines_.nextFilled()) throw InputError(lines_.file(), "the file is empty");
    const std::string_view line = trimmed(lines_.text());
    if (!startsWith(line, kHeader) || line.find("Keyframe Data") == std::string_view::npos) {
      throw lines_.error(
          fmt::format("keyframe text begins with \"Adobe After Effects 6.0 Keyframe Data\", not {}",
                      shown(line)));
    }
    const std::string_view rest = line.substr(kHeader.size());
    double version = 0.0;
    const bool isKnown = parse(rest.substr(0, rest.find(' ')), version) == Parsed::Number &&
                         version >= kOldest && version <= kNewest;
    if (!isKnown) note(shown(line) + " is none of the versions 5.0 to 9.0: read as one of them");
  }

  // Lines of a name and a value; the sections begin with the first line without a tab in front.
  void readHeader() {
    while (hasNext()) {
      if (!isIndented()) {
        lines_.stay();
        return;
      }
      const std::string_view line = trimmed(lines_.text());
      const std::size_t tab = line.find('\t');
      const std::string_view name = trimmed(line.substr(0, tab));
      const std::string_view value =
          tab < line.size() ? trimmed(line.substr(tab)) : line.substr(0, 0);
      if (name == "Source Width") picture_.width = readLength("Source Width", value);
      if (name == "Source Height") picture_.height = readLength("Source Height", value);
    }
  }

  int readLength(const char* name, std::string_view value) const {
    double length = 0.0;
    const bool isLength = parse(value, length) == Parsed::Number && length >= 1.0 &&
                          length <= std::numeric_limits<int>::max() && length == std::floor(length);
    if (isLength) return static_cast<int>(length);
    const std::string text =
        fmt::format("{} must be a whole number above 0, not {}", name, shown(value));
    throw value.empty() ? lines_.error(text) : lines_.error(value, text);
  }

  bool isIndented() const {
    const char first = lines_.text()[0];
    return first == '\t' || first == ' ';
  }

  // Behind a heading, rows of numbers may stand without a tab in front.
  bool isRow() const {
    if (isIndented()) return true;
    double number = 0.0;
    return isInSection_ && parse(Words(lines_).take(), number) == Parsed::Number;
  }

  // False at the end of the data.
  bool takeLine() {
    if (!isRow()) return takeHeading();
    if (++rows_ % kReported == 0) input_.report();
    if (isHeadDue_) {
      isHeadDue_ = false;
      double number = 0.0;
      if (parse(Words(lines_).take(), number) == Parsed::Nothing) return true;
    }
    if (section_.kind == Kind::Other) return true;
    try {
      takeRow();
    } catch (const InputError& error) {
      tracks_.refuse(error);
    }
    return true;
  }

  bool takeHeading() {
    section_ = sectionOf(lines_.text());
    isInSection_ = section_.kind != Kind::Layer;
    isHeadDue_ = isInSection_;
    track_ = -1;
    switch (section_.kind) {
      case Kind::Layer:
        beginLayer();
        break;
      case Kind::End:
        return false;
      case Kind::Corner:
        beginCorner();
        break;
      case Kind::FeatureCenter:
      case Kind::AttachPoint:
        beginPoint();
        break;
      case Kind::Other:
        skipSection("skipped");
        break;
      default:
        if (pin_ && pin_->layer != layer_) skipSection("skipped: it is not of the pin's layer");
    }
    return true;
  }

  void beginLayer() {
    ++layer_;
    section_.kind = Kind::Other;
    if (!pin_) motion_ = {};
  }

  void skipSection(const char* how) {
    skipped_.add(About::Sections, lines_.line(),
                 [&] { return fmt::format("{} is {}", headingText(lines_.text()), how); });
    if (firstSkipped_.empty()) firstSkipped_ = headingText(lines_.text());
    section_.kind = Kind::Other;
  }

  void beginCorner() {
    if (hasPoints_) return skipSection("skipped: point tracks come first");
    if (!pin_) pin_ = PinOf{layer_, section_.owner};
    if (pin_->layer != layer_ || pin_->effect != section_.owner) {
      return skipSection("skipped: one pin is read, the first");
    }
    corners_[section_.corner].isThere = true;
    track_ = tracks_.track(kCornerNames[section_.corner]);
  }

  // The points of several layers are told apart by the layer, too.
  void beginPoint() {
    if (pin_) return skipSection("skipped: the pin comes first");
    hasPoints_ = true;
    if (layer_ > 0) section_.owner = fmt::format("Layer {} {}", layer_, section_.owner);
    std::pair<std::string, std::string> point = {section_.point, section_.owner};
    if (section_.kind == Kind::FeatureCenter) {
      attached_.erase(point);
      lastFeature_ = std::move(point);
    } else if (point == lastFeature_) {
      skipSection("skipped: the feature is read");
    } else {
      attachedRows_ = &attached_[point];
    }
  }

  void takeRow() {
    Words words(lines_);
    const Frame frame = readFrame(words);
    const bool isPair = section_.kind != Kind::Rotation;
    const std::string_view values = words.rest();
    Point p;
    p.x = words.takePosition(isPair ? "x" : "the rotation");
    p.y = isPair ? words.takePosition("y") : p.x;
    if (std::isnan(p.x) != std::isnan(p.y)) {
      throw lines_.error(values, fmt::format("one of x and y is NaN and the other a number: of a "
                                             "gap both are NaN"));
    }
    if (!std::isnan(p.x)) addRow(frame, p);
  }

  Frame readFrame(Words& words) const {
    const std::string_view line = lines_.text();
    const std::size_t second = line.empty() ? 0 : line.find_first_not_of(' ', 1);
    if (line[0] == '\t' && second < line.size() && line[second] == '\t') return std::nullopt;
    const std::string_view text = words.rest();
    const double frame = words.takeNumber("frame");
    if (std::isfinite(frame) && std::fabs(frame) <= std::numeric_limits<std::int32_t>::max()) {
      return frame;
    }
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    throw lines_.error(word, std::isfinite(frame)
                                 ? fmt::format("frame is too large: {}", shown(word))
                                 : fmt::format("frame must be finite, not {}", shown(word)));
  }

  void addRow(Frame frame, Point p) {
    switch (section_.kind) {
      case Kind::Anchor:
        return addTo(motion_.anchor, frame, p);
      case Kind::Position:
        return addTo(motion_.position, frame, p);
      case Kind::Scale:
        return addTo(motion_.scale, frame, p);
      case Kind::Rotation:
        return addTo(motion_.rotation, frame, p);
      default:
        addPosition(frame, p);
    }
  }

  void addTo(KeyedPair& pair, Frame frame, Point p) {
    if (!frame) return pair.set(p);
    if (pair.keys().size() >= static_cast<std::size_t>(kMaxFrames)) {
      throw lines_.error(fmt::format("a section has more than {} keys", kMaxFrames));
    }
    pair.add({*frame, p, lines_.line()});
  }

  void addPosition(Frame frame, Point p) {
    if (!frame) return addConstant(p);
    if (*frame != std::floor(*frame)) {
      return skipped_.add(About::Keys, lines_.line(), [&] {
        return fmt::format("{} is between two frames: skipped", shown(Words(lines_).take()));
      });
    }
    Observation row;
    row.x = p.x;
    row.y = p.y;
    row.frame = static_cast<std::int32_t>(*frame);
    row.line = lines_.line();
    if (section_.kind == Kind::AttachPoint) return attachedRows_->push_back(row);
    if (section_.kind == Kind::FeatureCenter && track_ < 0) {
      track_ = points_.track(section_.point, section_.owner);
      const auto index = static_cast<std::size_t>(track_);
      if (index >= isFeature_.size()) isFeature_.resize(index + 1);
      isFeature_[index] = true;
    }
    row.track = track_;
    if (section_.kind == Kind::Corner) cornerFrames_.push_back(row.frame);
    tracks_.add(row);
  }

  void addConstant(Point p) {
    if (section_.kind == Kind::Corner) {
      corners_[section_.corner].constant = p;
    } else {
      skipped_.add(About::Keys, lines_.line(),
                   [] { return std::string("a position without a frame: skipped"); });
    }
  }

  // By anything, a line that is too long included.
  bool isFollowed() {
    try {
      return lines_.nextFilled();
    } catch (const InputError&) {
      return true;
    }
  }

  void noteEnd() {
    if (section_.kind != Kind::End) {
      noteFile("there is no \"End of Keyframe Data\": the file may be cut off");
    } else if (isFollowed()) {
      noteFile("what follows \"End of Keyframe Data\" is skipped");
    }
    skipped_.close();
  }

  Tracks finishPoints() {
    for (auto& [point, rows] : attached_) {
      if (rows.empty()) continue;
      const std::int32_t track = points_.track(point.first, point.second);
      const auto index = static_cast<std::size_t>(track);
      if (index < isFeature_.size() && isFeature_[index]) continue;
      for (Observation& row : rows) {
        row.track = track;
        tracks_.add(row);
      }
      rows = {};
    }
    if (tracks_.rows() == 0 && !hasPoints_) refuseKind();
    if (motion_.isThere()) {
      noteFile("position, anchor point, scale and rotation place the layer: the tracks are in it");
    }
    return tracks_.finish();
  }

  [[noreturn]] void refuseKind() const {
    std::string text = "neither a corner pin nor point tracks are in it";
    if (!firstSkipped_.empty()) text += ", but " + firstSkipped_;
    throw InputError(lines_.file(), text);
  }

  Tracks finishPin() {
    if (pin_) {
      requireCorners();
    } else {
      pinLayer();
    }
    arrangeMotion();
    addConstants();
    Tracks tracks = tracks_.finish();
    if (motion_.isPlaced()) {
      placeLayer(tracks);
    } else if (motion_.isThere()) {
      noteFile("corners stay in the layer: where that is takes both Position and Anchor Point");
    }
    input_.trace.isPin = true;
    return tracks;
  }

  void requireCorners() const {
    for (std::size_t corner = 0; corner < corners_.size(); ++corner) {
      if (corners_[corner].isThere) continue;
      throw InputError(lines_.file(), fmt::format("the corner pin {} has no section for {}",
                                                  shown(pin_->effect), kCornerNames[corner]));
    }
  }

  // A layer that is only placed carries its own corners along.
  void pinLayer() {
    if (!picture_.width || !picture_.height) {
      throw InputError(lines_.file(),
                       "the layer has no size: Source Width and Source Height are missing");
    }
    const double width = *picture_.width;
    const double height = *picture_.height;
    corners_[kBottomLeft].constant = Point{0.0, height};
    corners_[kBottomRight].constant = Point{width, height};
    corners_[kTopRight].constant = Point{width, 0.0};
    corners_[kTopLeft].constant = Point{0.0, 0.0};
  }

  void arrangeMotion() {
    for (KeyedPair* pair :
         {&motion_.anchor, &motion_.position, &motion_.scale, &motion_.rotation}) {
      const KeyedPair::Key* twice = pair->arrange();
      if (twice == nullptr) continue;
      throw InputError(lines_.file(), twice->line,
                       fmt::format("frame {} is given twice in a section", twice->frame));
    }
  }

  // Corners without keys are there in every frame that another corner, or the layer, has.
  void addConstants() {
    const bool areSome = std::any_of(corners_.begin(), corners_.end(),
                                     [](const CornerValues& c) { return c.constant.has_value(); });
    if (!areSome) return;
    const std::vector<std::int32_t> frames = framesOfConstants();
    for (std::size_t corner = 0; corner < corners_.size(); ++corner) {
      if (!corners_[corner].constant) continue;
      Observation row;
      row.x = corners_[corner].constant->x;
      row.y = corners_[corner].constant->y;
      row.track = tracks_.track(kCornerNames[corner]);
      for (const std::int32_t frame : frames) {
        row.frame = frame;
        tracks_.add(row);
      }
    }
  }

  std::vector<std::int32_t> framesOfConstants() const {
    std::vector<std::int32_t> frames = cornerFrames_;
    if (frames.empty()) {
      for (const KeyedPair* pair :
           {&motion_.anchor, &motion_.position, &motion_.scale, &motion_.rotation}) {
        addWholeFrames(*pair, frames);
      }
    }
    if (frames.empty()) frames.push_back(0);
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
    return frames;
  }

  static void addWholeFrames(const KeyedPair& pair, std::vector<std::int32_t>& frames) {
    for (const KeyedPair::Key& key : pair.keys()) {
      if (key.frame == std::floor(key.frame))
        frames.push_back(static_cast<std::int32_t>(key.frame));
    }
  }

  void placeLayer(Tracks& tracks) const {
    int frame = 0;
    std::optional<Placement> placement;
    for (Observation& row : tracks.observations) {
      if (!placement || row.frame != frame) placement = motion_.at(row.frame);
      frame = row.frame;
      const Point p = placement->apply({row.x, row.y});
      const bool fits = std::fabs(p.x) <= kLargest && std::fabs(p.y) <= kLargest;
      if (!fits) throw InputError(lines_.file(), row.line, "the layer's motion carries it too far");
      row.x = p.x;
      row.y = p.y;
    }
  }

  static constexpr double kLargest = static_cast<double>(std::numeric_limits<float>::max());

  const TrackInput& input_;
  LineReader lines_;
  TrackBuilder tracks_;
  OwnedTracks points_;
  SkipNotes skipped_;
  Picture picture_;
  std::string firstSkipped_;
  std::size_t rows_ = 0;
  bool isBroken_ = false;  // behind a line that cannot be read

  int layer_ = 0;
  KeyframesSection section_;
  bool isInSection_ = false;
  bool isHeadDue_ = false;   // the names of the columns may come next
  std::int32_t track_ = -1;  // of the section; none before its first row
  std::vector<Observation>* attachedRows_ = nullptr;

  std::optional<PinOf> pin_;
  std::array<CornerValues, 4> corners_;
  std::vector<std::int32_t> cornerFrames_;
  LayerMotion motion_;  // of the pin's layer, or of the last one

  bool hasPoints_ = false;
  std::pair<std::string, std::string> lastFeature_;  // point and tracker
  std::vector<bool> isFeature_;                      // of tracks
  /// Rows of attach points by point and tracker, as long as no feature of it is met.
  std::map<std::pair<std::string, std::string>, std::vector<Observation>> attached_;
};

}  // namespace

Tracks readKeyframes(const TrackInput& input) { return KeyframesReader(input).read(); }

}  // namespace cornerpin

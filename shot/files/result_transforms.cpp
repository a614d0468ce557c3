// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_transforms.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "shot/files/byte_source.h"
#include "shot/files/csv_records.h"
#include "shot/files/input_error.h"
#include "shot/files/number_text.h"
#include "shot/plane/extent.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

namespace {

constexpr std::size_t kElements = 9;
constexpr std::size_t kCoordinates = 8;
constexpr std::size_t kMostColumns = 1000;
constexpr std::size_t kNoColumn = static_cast<std::size_t>(-1);
constexpr std::string_view kBetween = "between";
constexpr std::array<std::string_view, kElements> kElementNames = {
    "h00", "h01", "h02", "h10", "h11", "h12", "h20", "h21", "h22"};
constexpr std::array<std::string_view, kCoordinates> kCornerColumns = {"qx0", "qy0", "qx1", "qy1",
                                                                       "qx2", "qy2", "qx3", "qy3"};

// A row: a frame with one quad.
struct Row {
  double frame = 0.0;
  std::string quad;
  Homography h{};
  std::optional<Status> status;  // none between frames
  std::optional<Quad> corners;   // none where one of them is nowhere
};

class ResultTable {
 public:
  explicit ResultTable(ByteSource& source) : csv_(source) {}

  ResultTransforms read() {
    readHeader();
    while (csv_.next()) take(readRow());
    if (result_.frames.empty()) throw InputError(csv_.name(), "there is a header but no frame");
    setReference();
    return std::move(result_);
  }

 private:
  [[noreturn]] void refuse(const std::string& text) const {
    throw InputError(csv_.name(), csv_.line(), text);
  }

  void readHeader() {
    if (!csv_.next()) throw InputError(csv_.name(), "the file is empty");
    if (csv_.fieldCount() > kMostColumns) {
      refuse(fmt::format("the header has more than {} fields", kMostColumns));
    }
    for (std::size_t i = 0; i < csv_.fieldCount(); ++i) {
      header_.emplace_back(trimmed(csv_.field(i)));
    }
    frame_ = columnOf("frame");
    status_ = columnOf("status");
    std::transform(kElementNames.begin(), kElementNames.end(), elements_.begin(),
                   [this](std::string_view name) { return columnOf(name); });
    std::transform(kCornerColumns.begin(), kCornerColumns.end(), corners_.begin(),
                   [this](std::string_view name) { return columnOf(name); });
    const auto quad = std::find(header_.begin(), header_.end(), "quad");
    if (quad != header_.end()) quad_ = static_cast<std::size_t>(quad - header_.begin());
  }

  std::size_t columnOf(std::string_view name) const {
    const auto found = std::find(header_.begin(), header_.end(), name);
    if (found != header_.end()) return static_cast<std::size_t>(found - header_.begin());
    refuse(fmt::format("a result has a column {}, and this header has none", shown(name)));
  }

  double number(std::size_t column) const {
    double value = 0.0;
    const std::string_view text = csv_.field(column);
    const Parsed parsed = parse(text, value);
    if (parsed != Parsed::Number) refuse(flawOfNumber(header_[column], text, parsed));
    if (!std::isfinite(value)) refuse(flawOfPosition(header_[column], text, value));
    return value;
  }

  Row readRow() const {
    if (csv_.fieldCount() != header_.size()) {
      refuse(fmt::format("the row has {}, the header has {}", counted(csv_.fieldCount(), "field"),
                         header_.size()));
    }
    Row row;
    row.frame = number(frame_);
    row.quad = quad_ != kNoColumn ? std::string(csv_.field(quad_)) : "quad";
    for (std::size_t i = 0; i < kElements; ++i) row.h[i / 3][i % 3] = number(elements_[i]);
    if (row.h[2][2] != 1.0) refuse("h22 has to be 1");
    row.status = readStatus();
    row.corners = readCorners();
    return row;
  }

  std::optional<Status> readStatus() const {
    const std::string_view text = csv_.field(status_);
    if (text == kBetween) return std::nullopt;
    for (const Status status : {Status::Base, Status::Solved, Status::Reduced, Status::Held}) {
      if (text == nameOf(status)) return status;
    }
    refuse(fmt::format("{} is no status of a frame", shown(text)));
  }

  std::optional<Quad> readCorners() const {
    const bool areAll = std::none_of(corners_.begin(), corners_.end(), [this](std::size_t column) {
      return csv_.field(column).empty();
    });
    if (!areAll) return std::nullopt;
    Quad quad{};
    for (std::size_t i = 0; i < quad.size(); ++i) {
      quad[i] = {number(corners_[2 * i]), number(corners_[2 * i + 1])};
    }
    return quad;
  }

  void take(const Row& row) {
    if (row.status) {
      takeFrame(row);
    } else {
      takeBetween(row);
    }
    takeQuad(row);
  }

  void takeFrame(const Row& row) {
    std::deque<FrameTransform>& frames = result_.frames;
    if (!frames.empty() && row.frame == frames.back().frame) {
      if (row.h != frames.back().h)
        refuse("the frame has another transform than on the line above");
      return;
    }
    const bool isWhole =
        row.frame == std::floor(row.frame) && std::fabs(row.frame) <= kFurthestFrame;
    const bool follows = frames.empty() || row.frame == frames.back().frame + 1.0;
    if (!isWhole || !follows) refuse("the frame is not the one behind the frame before");
    if (frames.size() == kMaxFrames) refuse(fmt::format("more than {} frames", kMaxFrames));
    frames.push_back({static_cast<int>(row.frame), *row.status, row.h});
    if (row.status == Status::Base) result_.baseFrame = frames.back().frame;
  }

  void takeBetween(const Row& row) {
    std::deque<BetweenFrame>& between = result_.between;
    if (!between.empty() && row.frame == between.back().frame) return;
    if (result_.frames.empty() || row.frame < result_.frames.back().frame ||
        row.frame >= result_.frames.back().frame + 1.0 ||
        (!between.empty() && row.frame < between.back().frame)) {
      refuse("the frame is not behind the one before");
    }
    if (between.size() == kMaxFrames) {
      refuse(fmt::format("more than {} transforms between frames", kMaxFrames));
    }
    between.push_back({row.frame, row.h});
  }

  // Where it is in the reference frame, which has no other transform than the identity; until that
  // is met, back from where another frame shows it.
  void takeQuad(const Row& row) {
    const auto [index, isNew] = indices_.try_emplace(row.quad, quads_.size());
    if (isNew && result_.frames.size() > 1) {
      refuse(fmt::format("the frames before have no quad {}", shown(row.quad)));
    }
    if (isNew && quads_.size() == kMostQuads) refuse(fmt::format("more than {} quads", kMostQuads));
    if (isNew) quads_.push_back({row.quad, {}, false});
    FoundQuad& quad = quads_[index->second];
    const bool isReference = row.h == kIdentity;
    if (isReference && row.status && !reference_) reference_ = result_.frames.back().frame;
    if (!row.corners || quad.isExact || (quad.corners && !isReference)) return;
    const Homography back = inverse(row.h);
    if (!isFinite(back)) return;
    Quad corners{};
    std::transform(row.corners->begin(), row.corners->end(), corners.begin(),
                   [&](Point corner) { return isReference ? corner : map(back, corner); });
    const bool areSomewhere = std::all_of(corners.begin(), corners.end(), [](Point corner) {
      return std::isfinite(corner.x) && std::isfinite(corner.y);
    });
    if (!areSomewhere) return;
    quad.corners = corners;
    quad.isExact = isReference;
  }

  void setReference() {
    result_.referenceFrame = reference_.value_or(result_.baseFrame);
    Points corners;
    for (const FoundQuad& quad : quads_) {
      if (!quad.corners) {
        throw InputError(csv_.name(), fmt::format("no frame shows all corners of the quad {}",
                                                  shown(quad.name)));
      }
      result_.quads.push_back({quad.name, *quad.corners});
      for (const Point corner : *quad.corners) corners.add(corner);
    }
    const Box box = boxAround(corners);
    result_.baseCentre = {box.low.x / 2 + box.high.x / 2, box.low.y / 2 + box.high.y / 2};
  }

  struct FoundQuad {
    std::string name;
    std::optional<Quad> corners;
    bool isExact = false;
  };

  CsvRecords csv_;
  std::vector<std::string> header_;
  std::size_t frame_ = 0;
  std::size_t status_ = 0;
  std::size_t quad_ = kNoColumn;
  std::array<std::size_t, kElements> elements_{};
  std::array<std::size_t, kCoordinates> corners_{};
  ResultTransforms result_;
  std::vector<FoundQuad> quads_;
  std::unordered_map<std::string, std::size_t> indices_;  // of these, by name
  std::optional<int> reference_;
};

}  // namespace

bool isResultCsv(std::string_view beginning) {
  const std::string_view header = beginning.substr(0, beginning.find_first_of("\r\n"));
  const std::size_t frame = header.find("frame");
  return frame != std::string_view::npos && header.find("h00", frame) != std::string_view::npos &&
         header.find("qx0", frame) != std::string_view::npos;
}

ResultTransforms readResultCsv(const std::string& path) {
  ByteSource source(path);
  return ResultTable(source).read();
}

ResultTransforms transformsOf(const ShotResult& result) {
  ResultTransforms transforms;
  transforms.picture = result.provenance.picture;
  transforms.baseFrame = result.baseFrame;
  transforms.referenceFrame = result.referenceFrame;
  transforms.baseCentre = result.baseCentre;
  transforms.quads = result.quads;
  transforms.between.assign(result.between.begin(), result.between.end());
  for (const FrameResult& frame : result.frames) {
    transforms.frames.push_back({frame.frame, frame.verdict.status, frame.h});
  }
  return transforms;
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "shot/files/export.h"
#include "tests/shot/files/keyframes_sections.h"
#include "tests/shot/files/made_pin.h"
#include "tests/shot/files/node_lists.h"
#include "tests/shot/files/usda_samples.h"
#include "tests/support/format_files.h"

using namespace cornerpin;
using other::Clip;
using other::Place;

namespace {

// Powers of two, so that all that is done with the corners here is exact.
constexpr int kWidth = 2048;
constexpr int kHeight = 1024;
constexpr double kW = kWidth;
constexpr double kH = kHeight;
constexpr std::size_t kFrames = 3;

// Where numbers are no fractions of powers of two: some rounding of coordinates up to 4096.
constexpr double kRounding = 16 * 4096.0 * 0x1p-53;

using Corners = std::array<Place, 4>;  // bottom left, bottom right, top right, top left
constexpr Corners kPicture = {{{0, 0}, {kW, 0}, {kW, kH}, {0, kH}}};
constexpr Place kMiddle = {kW / 2, kH / 2};

using Transforms = std::array<Homography, kFrames>;  // x right, y up, pixels' centres at 0.5

// The top right corner goes behind the horizon, there and back, which is a gap where the corners
// are all that is written.
constexpr Homography kGap = {{{-1, 0, 0}, {0, -1, 0}, {-0.75 / kW, -0.5 / kH, 1}}};

// The corners go to (0, 0), (W - 0.5, 0.5), (W, H) and (0.5, H - 0.5); behind a gap to (0.5, 0.5),
// (W / 2, 1), (W / 2, H / 2) and (0.5, H / 4).
constexpr Transforms kFivePoints = {
    {{{{(kW - 0.5) / kW, 0.5 / kH, 0}, {0.5 / kW, (kH - 0.5) / kH, 0}, {0, 0, 1}}},
     kGap,
     {{{(kW / 4 - 0.5) / kW, 0, 0.5}, {0, (kH / 4 - 0.5) / kH, 0.5}, {-0.5 / kW, 0, 1}}}}};

// What has a position, a scale and a rotation: half the size, a gap, a quarter turn.
constexpr Transforms kPlaced = {
    {{{{0.5, 0, 12.5}, {0, 0.25, 0.5}, {0, 0, 1}}}, kGap, {{{0, 2, -3}, {-2, 0, kH}, {0, 0, 1}}}}};

struct Convention {
  YAxis y;
  double centre;  // of the first pixel
  int first;      // frame of the clip
};

std::vector<Convention> conventions() {
  std::vector<Convention> all;
  for (const YAxis y : {YAxis::Up, YAxis::Down}) {
    for (const double centre : {0.5, 0.0}) {
      for (const int first : {0, 1, 1001}) all.push_back({y, centre, first});
    }
  }
  return all;
}

// A place as the result has it.
Place ownPlace(const Convention& c, Place p) {
  const double y = c.y == YAxis::Up ? p.y : kH - p.y;
  return {p.x - 0.5 + c.centre, y - 0.5 + c.centre};
}

// The rows of C, which makes own numbers of places, and those of its inverse.
Homography toOwn(const Convention& c) {
  const double off = c.centre - 0.5;
  if (c.y == YAxis::Up) return {{{1, 0, off}, {0, 1, off}, {0, 0, 1}}};
  return {{{1, 0, off}, {0, -1, kH + off}, {0, 0, 1}}};
}
Homography fromOwn(const Convention& c) {
  const double off = c.centre - 0.5;
  if (c.y == YAxis::Up) return {{{1, 0, -off}, {0, 1, -off}, {0, 0, 1}}};
  return {{{1, 0, -off}, {0, -1, kH + off}, {0, 0, 1}}};
}

Homography multiplied(const Homography& a, const Homography& b) {
  Homography c{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
    }
  }
  return c;
}

Homography normalised(Homography h) {
  const double last = h[2][2];
  for (auto& row : h) {
    for (double& element : row) element /= last;
  }
  return h;
}

// The inverse but for a factor.
Homography adjugate(const Homography& h) {
  Homography a{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const std::size_t r = (j + 1) % 3;
      const std::size_t s = (j + 2) % 3;
      const std::size_t c = (i + 1) % 3;
      const std::size_t d = (i + 2) % 3;
      a[i][j] = h[r][c] * h[s][d] - h[r][d] * h[s][c];
    }
  }
  return a;
}

std::array<double, 3> times(const Homography& h, Place p) {
  std::array<double, 3> v{};
  for (std::size_t i = 0; i < 3; ++i) v[i] = h[i][0] * p.x + h[i][1] * p.y + h[i][2];
  return v;
}

Place carried(const Homography& h, Place p) {
  const std::array<double, 3> v = times(h, p);
  return {v[0] / v[2], v[1] / v[2]};
}

// None on the other side of the horizon than `front`.
std::optional<Place> carried(const Homography& h, Place p, Place front) {
  if (!(times(h, p)[2] * times(h, front)[2] > 0.0)) return std::nullopt;
  return carried(h, p);
}

ShotResult resultOf(const Transforms& transforms, const Convention& c) {
  ShotResult result;
  Picture& picture = result.provenance.picture;
  picture.width = kWidth;
  picture.height = kHeight;
  picture.y = c.y;
  picture.pixelCentre = c.centre;
  picture.firstFrame = c.first;
  result.baseFrame = result.referenceFrame = c.first;
  const Place middle = ownPlace(c, kMiddle);
  result.baseCentre = {middle.x, middle.y};
  NamedQuad quad = {"picture", {}};
  for (std::size_t i = 0; i < 4; ++i) {
    const Place p = ownPlace(c, kPicture[i]);
    quad.corners[i] = {p.x, p.y};
  }
  result.quads = {quad};
  for (std::size_t i = 0; i < kFrames; ++i) {
    FrameResult frame;
    frame.frame = c.first + static_cast<int>(i);
    frame.verdict.status = i == 0 ? Status::Base : Status::Solved;
    frame.h = normalised(multiplied(multiplied(toOwn(c), transforms[i]), fromOwn(c)));
    frame.figures = baseFrameFigures(1);
    result.frames.push_back(frame);
  }
  return result;
}

// By frame: each corner's numbers as they stand in a file. Of results, which have their own, they
// are places.
using Found = std::map<int, std::array<std::optional<Place>, 4>>;

struct File {
  std::string text;
  Convention own;
};

void put(Found& found, int frame, std::size_t corner, Place p) {
  EXPECT_FALSE(found[frame].at(corner)) << frame << " " << corner;
  found[frame].at(corner) = p;
}

constexpr std::array<const char*, 4> kNames = {"bottom_left", "bottom_right", "top_right",
                                               "top_left"};

Found inPoints(const File& file) {
  Found found;
  for (const auto& [key, p] : other::numbersIn("points", file.text)) {
    for (std::size_t i = 0; i < 4; ++i) {
      if (key.first == kNames.at(i)) put(found, key.second, i, p);
    }
  }
  return found;
}

void expectPicture(const made::List& node, const std::string& knobs) {
  for (std::size_t i = 0; i < 4; ++i) {
    const made::List& place = node.of(knobs + std::to_string(i + 1));
    EXPECT_EQ(std::stod(place.at(0).word), kPicture[i].x);
    EXPECT_EQ(std::stod(place.at(1).word), kPicture[i].y);
  }
}

Found inNodePoints(const made::List& node) {
  expectPicture(node, "from");
  Found found;
  for (std::size_t i = 0; i < 4; ++i) {
    const made::List& to = node.of("to" + std::to_string(i + 1));
    const made::Keys x = made::keysOf(to.at(0));
    const made::Keys y = made::keysOf(to.at(1));
    EXPECT_EQ(x.size(), y.size());
    for (const auto& [frame, value] : x) put(found, frame, i, {value, y.at(frame)});
  }
  return found;
}

// Where transforms carry the picture's corners, whichever side of the horizon they are on.
Found cornersBy(const std::map<int, Homography>& transforms) {
  Found found;
  for (const auto& [frame, h] : transforms) {
    for (std::size_t i = 0; i < 4; ++i) put(found, frame, i, carried(h, kPicture[i]));
  }
  return found;
}

Found inNodeMatrix(const made::List& node) {
  expectPicture(node, "from");
  expectPicture(node, "to");
  const made::List& rows = node.of("transform_matrix");
  std::map<int, Homography> transforms;
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 3; ++c) {
      if (r == 2 && c == 2) continue;
      for (const auto& [frame, value] : made::keysOf(rows.at(r + r / 2).at(c + c / 2)))
        transforms[frame][r][c] = value;
    }
  }
  EXPECT_EQ(rows.at(3).at(3).word, "1");
  for (auto& [frame, h] : transforms) h[2][2] = 1.0;
  return cornersBy(transforms);
}

std::vector<made::List> pinNodesIn(const File& file, std::size_t count) {
  std::vector<made::List> nodes = made::nodesIn(file.text, "CornerPin2D");
  EXPECT_EQ(nodes.size(), count);
  nodes.resize(count);
  return nodes;
}

Found inNkPoints(const File& file) { return inNodePoints(pinNodesIn(file, 1)[0]); }
Found inNkMatrix(const File& file) { return inNodeMatrix(pinNodesIn(file, 1)[0]); }
Found inFirstOfNkBoth(const File& file) { return inNodePoints(pinNodesIn(file, 2)[0]); }
Found inSecondOfNkBoth(const File& file) { return inNodeMatrix(pinNodesIn(file, 2)[1]); }

Found inKeyframes(const File& file) {
  const std::map<std::string, std::size_t> corners = {{"1", 3}, {"2", 2}, {"3", 0}, {"4", 1}};
  Found found;
  for (const auto& [heading, rows] : made::sectionsIn(file.text)) {
    const std::string begin = "Effects\tADBE Corner Pin #1\tADBE Corner Pin-000";
    EXPECT_EQ(heading.substr(0, begin.size()), begin);
    const std::size_t corner = corners.at(heading.substr(begin.size()));
    for (const auto& [frame, xy] : rows) put(found, frame, corner, {xy.at(0), xy.at(1)});
  }
  return found;
}

Found inKeyframesTransform(const File& file) {
  const auto sections = made::sectionsIn(file.text);
  Found found;
  for (const auto& row : sections.at("Position")) {
    for (std::size_t i = 0; i < 4; ++i) {
      const Point p = made::placed(sections, row.first, {kPicture[i].x, kH - kPicture[i].y});
      put(found, row.first, i, {p.x, p.y});
    }
  }
  return found;
}

Found inBlender(const File& file) {
  const std::map<std::string, std::size_t> corners = {
      {"Lower Left", 0}, {"Lower Right", 1}, {"Upper Right", 2}, {"Upper Left", 3}};
  Found found;
  for (const auto& call : made::callsOf(file.text)) {
    if (call.at(0) != "key") continue;
    put(found, static_cast<int>(std::stod(call.at(2))), corners.at(call.at(1)),
        {std::stod(call.at(3)), std::stod(call.at(4))});
  }
  return found;
}

Found inNatron(const File& file) {
  std::map<std::string, std::map<int, std::array<double, 2>>> values;
  for (const auto& call : made::callsOf(file.text)) {
    if (call.at(0) != "set") continue;
    const auto axis = static_cast<std::size_t>(std::stod(call.at(3)));
    values[call.at(1)][static_cast<int>(std::stod(call.at(2)))].at(axis) = std::stod(call.at(4));
  }
  Found found;
  for (std::size_t i = 0; i < 4; ++i) {
    const std::string number = std::to_string(i + 1);
    const auto& from = values["from" + number];
    EXPECT_EQ(from.size(), 1u);
    for (const auto& [frame, p] : from)
      EXPECT_EQ(p, (std::array<double, 2>{kPicture[i].x, kPicture[i].y}));
    for (const auto& [frame, p] : values["to" + number]) put(found, frame, i, {p[0], p[1]});
  }
  return found;
}

Found inUsda(const File& file) {
  Found found;
  for (const auto& [frame, matrix] : made::samplesIn(file.text)) {
    for (std::size_t i = 0; i < 4; ++i) {
      const Point p = made::through(matrix, {kPicture[i].x, kPicture[i].y});
      put(found, frame, i, {p.x, p.y});
    }
  }
  return found;
}

Place placeOfOwn(const File& file, Place p) { return carried(fromOwn(file.own), p); }

// Their transforms' places, which are those that they tell of the quad's corners, where they do.
Found inJson(const File& file) {
  Found found;
  const nlohmann::json whole = nlohmann::json::parse(file.text);
  for (const auto& frame : whole.at("frames")) {
    Homography h{};
    for (std::size_t k = 0; k < 9; ++k) h[k / 3][k % 3] = frame.at("h").at(k / 3).at(k % 3);
    for (std::size_t i = 0; i < 4; ++i) {
      const Place p = carried(h, ownPlace(file.own, kPicture[i]));
      put(found, frame.at("frame"), i, placeOfOwn(file, p));
      const auto& corner = frame.at("quads").at("picture").at("corners").at(i);
      if (corner.is_null() || corner.at(0).is_null()) continue;
      EXPECT_EQ(corner.at(0), p.x);
      EXPECT_EQ(corner.at(1), p.y);
    }
  }
  return found;
}

Found inCsv(const File& file) {
  const std::vector<std::string> lines = made::parts(file.text, '\n');
  const std::vector<std::string> header = made::parts(lines.at(0), ',');
  Found found;
  for (std::size_t line = 1; line < lines.size(); ++line) {
    std::map<std::string, std::string> row;
    const std::vector<std::string> cells = other::split(lines[line], ",");
    for (std::size_t i = 0; i < header.size(); ++i) row[header[i]] = cells.at(i);
    Homography h{};
    for (std::size_t k = 0; k < 9; ++k)
      h[k / 3][k % 3] = std::stod(row.at("h" + std::to_string(k / 3) + std::to_string(k % 3)));
    for (std::size_t i = 0; i < 4; ++i) {
      const Place p = carried(h, ownPlace(file.own, kPicture[i]));
      put(found, std::stoi(row.at("frame")), i, placeOfOwn(file, p));
      const std::string number = std::to_string(i);
      if (row.at("qx" + number).empty()) continue;
      EXPECT_EQ(std::stod(row.at("qx" + number)), p.x);
      EXPECT_EQ(std::stod(row.at("qy" + number)), p.y);
    }
  }
  return found;
}

// What a file has of a corner behind the horizon: nothing, or a transform that takes it there.
enum class Gap { Corner, Frame, None };

struct PinFormat {
  const char* name;
  const char* numbers;  // the format of tracks that has them as this one does
  Format format;
  PinStyle::Nk nk;
  PinStyle::Keyframes keyframes;
  Gap gap;
  Found (*in)(const File& file);
  std::vector<ExportKind> kinds;
};

void PrintTo(const PinFormat& format, std::ostream* out) { *out << format.name; }

const std::vector<PinFormat>& pinFormats() {
  constexpr auto kPoints = PinStyle::Nk::Points;
  constexpr auto kPin = PinStyle::Keyframes::Pin;
  const std::vector<ExportKind> both = {ExportKind::Pin, ExportKind::Stabilise};
  const std::vector<ExportKind> all = {ExportKind::Pin, ExportKind::Stabilise, ExportKind::Matrix};
  const std::vector<ExportKind> results = {ExportKind::Pin, ExportKind::Matrix};
  constexpr auto kMatrix = PinStyle::Nk::Matrix;
  constexpr auto kBoth = PinStyle::Nk::Both;
  static const std::vector<PinFormat> formats = {
      {"points", "points", Format::Points, kPoints, kPin, Gap::Corner, inPoints, both},
      {"nk_points", "nk", Format::Nk, kPoints, kPin, Gap::Corner, inNkPoints, both},
      {"nk_matrix", "nk", Format::Nk, kMatrix, kPin, Gap::None, inNkMatrix, all},
      {"nk_both_points", "nk", Format::Nk, kBoth, kPin, Gap::Corner, inFirstOfNkBoth, both},
      {"nk_both_matrix", "nk", Format::Nk, kBoth, kPin, Gap::None, inSecondOfNkBoth, both},
      {"keyframes", "keyframes", Format::Keyframes, kPoints, kPin, Gap::Frame, inKeyframes, both},
      {"keyframes_transform", "keyframes", Format::Keyframes, kPoints,
       PinStyle::Keyframes::Transform, Gap::Frame, inKeyframesTransform, both},
      {"blender", "uv", Format::Blender, kPoints, kPin, Gap::Frame, inBlender, both},
      {"natron", "nk", Format::Natron, kPoints, kPin, Gap::Frame, inNatron, both},
      {"usda", "nk", Format::Usda, kPoints, kPin, Gap::None, inUsda, all},
      {"json", "nk", Format::Json, kPoints, kPin, Gap::None, inJson, results},
      {"csv", "nk", Format::Csv, kPoints, kPin, Gap::None, inCsv, results}};
  return formats;
}

File written(const PinFormat& format, ExportKind kind, const Transforms& transforms,
             const Convention& own) {
  const ShotResult result = resultOf(transforms, own);
  Export what;
  what.format = format.format;
  what.kind = kind;
  what.style.nk = format.nk;
  what.style.keyframes = format.keyframes;
  File file;
  file.own = own;
  file.text = made::textOf(
      [&](OutputFile& out) { return writeExport(what, result, nullptr, "in", out).notes; });
  return file;
}

// Where the corners are to be: across the transforms, or back through them. In numbers by other
// code than the writers'.
Found expected(const PinFormat& format, ExportKind kind, const Transforms& transforms, int first) {
  Found found;
  for (std::size_t i = 0; i < kFrames; ++i) {
    const bool isBack = kind == ExportKind::Stabilise;
    const Homography h = isBack ? adjugate(transforms[i]) : transforms[i];
    const Place front = isBack ? carried(transforms[i], kMiddle) : kMiddle;
    std::array<std::optional<Place>, 4> places;
    bool isWhole = true;
    for (std::size_t k = 0; k < 4; ++k) {
      places.at(k) = carried(h, kPicture[k], front);
      isWhole = isWhole && places.at(k);
      if (format.gap == Gap::None) places.at(k) = carried(h, kPicture[k]);
    }
    if (!isWhole && format.gap == Gap::Frame) continue;
    const Clip clip = {kWidth, kHeight, first};
    for (std::optional<Place>& place : places) {
      if (place) place = other::numbersIn(format.numbers, clip, *place);
    }
    found[other::frameIn(format.numbers, clip, first + static_cast<int>(i))] = places;
  }
  return found;
}

void expectSame(const Found& found, const Found& wanted, double most) {
  ASSERT_EQ(found.size(), wanted.size());
  for (auto is = found.begin(), at = wanted.begin(); at != wanted.end(); ++is, ++at) {
    ASSERT_EQ(is->first, at->first);
    for (std::size_t i = 0; i < 4; ++i) {
      ASSERT_EQ(is->second.at(i).has_value(), at->second.at(i).has_value())
          << at->first << " " << i;
      if (!at->second.at(i)) continue;
      EXPECT_LE(std::fabs(is->second.at(i)->x - at->second.at(i)->x), most) << at->first << i;
      EXPECT_LE(std::fabs(is->second.at(i)->y - at->second.at(i)->y), most) << at->first << i;
    }
  }
}

// Pins whose numbers need no rounding are those of the transforms to the last digit. With centres
// at 0 the last element of a transform that is moved is no power of two.
double allowed(const PinFormat& format, ExportKind kind, const Convention& own) {
  const bool isRounded = own.centre == 0.0 || kind == ExportKind::Stabilise ||
                         format.keyframes == PinStyle::Keyframes::Transform;
  return isRounded ? kRounding : 0.0;
}

class PinFormats : public testing::TestWithParam<PinFormat> {};

}  // namespace

TEST_P(PinFormats, HaveTheCornersWhereTheTransformsPutThem) {
  const PinFormat& format = GetParam();
  const bool isPlaced = format.keyframes == PinStyle::Keyframes::Transform;
  const Transforms& transforms = isPlaced ? kPlaced : kFivePoints;
  for (const Convention& own : conventions()) {
    for (const ExportKind kind : format.kinds) {
      SCOPED_TRACE(testing::Message()
                   << "y " << static_cast<int>(own.y) << ", centre " << own.centre
                   << ", first frame " << own.first << ", kind " << static_cast<int>(kind));
      const Found found = format.in(written(format, kind, transforms, own));
      expectSame(found, expected(format, kind, transforms, own.first), allowed(format, kind, own));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, PinFormats, testing::ValuesIn(pinFormats()),
                         [](const auto& format) { return std::string(format.param.name); });

// The places that the corners are seen at by the tests above.
TEST(PinFormatsTransforms, PutCornersOnTheFivePoints) {
  const auto at = [](std::size_t frame, std::size_t corner) {
    const Place p = carried(kFivePoints[frame], kPicture[corner]);
    return std::pair<double, double>(p.x, p.y);
  };
  EXPECT_EQ(at(0, 0), std::make_pair(0.0, 0.0));
  EXPECT_EQ(at(0, 1), std::make_pair(kW - 0.5, 0.5));
  EXPECT_EQ(at(0, 2), std::make_pair(kW, kH));
  EXPECT_EQ(at(2, 0), std::make_pair(0.5, 0.5));
  EXPECT_EQ(at(2, 2), std::make_pair(kW / 2, kH / 2));
  EXPECT_FALSE(carried(kFivePoints[1], kPicture[2], kMiddle));
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/read_back.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "shot/files/input_error.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_writers.h"
#include "tests/shot/compare/disturbed_tracks.h"
#include "tests/shot/files/two_frames.h"
#include "tests/support/files.h"

using namespace cornerpin;
using made::changed;
using made::wanderers;
using made::without;

namespace {

// What is read back of tracks that a writer was to write, when it wrote others.
template <class Writer>
ReadBack ofTracks(Format format, Writer writer, const Tracks& wanted, const Tracks& written) {
  const TemporaryFolder folder;
  OutputFile out(folder / "out");
  writer(written, out);
  out.commit();
  return readBack(folder / "out", format, wanted);
}

ReadBack ofCsv(const Tracks& wanted, const Tracks& written) {
  return ofTracks(Format::Csv, writeCsvTracks, wanted, written);
}

ReadBack ofPin(const std::string& text, Format format, const Pin& pin, const PinStyle& style = {}) {
  const TemporaryFolder folder;
  writeFile(folder / "out", text);
  return readBack(folder / "out", format, pin, style);
}

// A rectangle of 200 x 100 that moves, grows and leans over three frames.
Pin pin() {
  Pin made;
  made.name = "sign";
  made.picture.y = YAxis::Up;
  made.picture.pixelCentre = 0.5;
  made.picture.width = 200;
  made.picture.height = 100;
  made.from = {{{0, 0}, {200, 0}, {200, 100}, {0, 100}}};
  for (int f = 0; f < 3; ++f) {
    PinFrame frame;
    frame.frame = 1001 + f;
    frame.h = {{{1.0 + 0.25 * f, 0.125, 10.0 + f}, {-0.0625, 1.5, 3.0 * f}, {0.001 * f, 0, 1}}};
    for (std::size_t i = 0; i < 4; ++i) {
      const Point p = made.from[i];
      const double w = frame.h[2][0] * p.x + frame.h[2][1] * p.y + 1.0;
      frame.to[i] = {(frame.h[0][0] * p.x + frame.h[0][1] * p.y + frame.h[0][2]) / w,
                     (frame.h[1][0] * p.x + frame.h[1][1] * p.y + frame.h[1][2]) / w};
    }
    made.frames.push_back(frame);
  }
  return made;
}

// The second frame has a corner that goes nowhere.
Pin pinWithAGap() {
  Pin made = pin();
  made.frames[1].to[2] = {std::nan(""), std::nan("")};
  return made;
}

// Keys of a script with the corners in an order, of frames whose corners go somewhere.
std::string script(const Pin& pin, const std::array<std::size_t, 4>& order) {
  std::string text = "FROM = ((0, 0), (1, 0), (1, 1), (0, 1))\nKEYS = [\n";
  for (const PinFrame& frame : pin.frames) {
    std::string line = fmt::format("    ({}", frame.frame);
    bool isWhole = true;
    for (std::size_t corner : order) {
      line += fmt::format(", ({}, {})", frame.to[corner].x, frame.to[corner].y);
      isWhole = isWhole && std::isfinite(frame.to[corner].x);
    }
    if (isWhole) text += line + "),\n";
  }
  return text + "]\n";
}

std::string layer(const Pin& pin) {
  std::string text = "    matrix4d xformOp:transform.timeSamples = {\n";
  for (const PinFrame& frame : pin.frames) {
    const Homography& h = frame.h;
    text += fmt::format(
        "        {}: ( ({}, {}, 0, {}), ({}, {}, 0, {}), (0, 0, 1, 0), ({}, {}, 0, {}) ),\n",
        frame.frame, h[0][0], h[1][0], h[2][0], h[0][1], h[1][1], h[2][1], h[0][2], h[1][2],
        h[2][2]);
  }
  return text + "    }\n";
}

std::string node(const Pin& pin) {
  const auto curve = [&](std::size_t i, std::size_t k) {
    std::string text = "{curve";
    for (const PinFrame& frame : pin.frames)
      text += fmt::format(" x{} {}", frame.frame, frame.h[i][k]);
    return text + "}";
  };
  const auto row = [&](std::size_t i) {
    return "{" + curve(i, 0) + " " + curve(i, 1) + " 0 " + curve(i, 2) + "}";
  };
  return "CornerPin2D {\n transform_matrix {" + row(0) + " " + row(1) + " {0 0 1 0} " + row(2) +
         "}\n}\n";
}

constexpr std::array<std::size_t, 4> kBlenderOrder = {3, 2, 0, 1};  // UL, UR, LL, LR
constexpr std::array<std::size_t, 4> kNatronOrder = {0, 1, 2, 3};

void expectDifference(const ReadBack& read, double largest, std::size_t missing,
                      std::size_t added) {
  EXPECT_NEAR(read.largest, largest, 1e-9);
  EXPECT_EQ(read.missing, missing);
  EXPECT_EQ(read.added, added);
}

}  // namespace

TEST(ReadBack, FindsWhatWasWritten) {
  Tracks tracks = wanderers(5, 10, 1, 9);
  tracks.picture = pin().picture;
  expectDifference(ofCsv(tracks, tracks), 0.0, 0, 0);
  EXPECT_EQ(ofCsv(tracks, tracks).largest, 0.0);
  const ReadBack json = ofTracks(Format::Json, writeJsonTracks, tracks, tracks);
  EXPECT_EQ(json.largest, 0.0);
  EXPECT_TRUE(json.isWhole());
}

TEST(ReadBack, FindsTheLargestDifference) {
  const Tracks tracks = wanderers(5, 10, 1);
  const Tracks off = changed(tracks, [](Observation& o) {
    if (o.track == 1 && o.frame == 2) o.x += 1e-7;
    if (o.track == 3 && o.frame == 4) o.y -= 3e-7;
  });
  expectDifference(ofCsv(tracks, off), 3e-7, 0, 0);
  const Tracks flipped = changed(tracks, [](Observation& o) { o.y = 1080.0 - o.y; });
  EXPECT_GT(ofCsv(tracks, flipped).largest, 100.0);
}

TEST(ReadBack, CountsWhatIsMissing) {
  const Tracks tracks = wanderers(5, 10, 1);
  const auto gone = [](const Observation& o) {  // a track, a frame, one more: 10 + 4 + 1
    return o.track == 4 || o.frame == 10 || (o.track == 2 && o.frame == 5);
  };
  const Tracks fewer = without(tracks, gone);
  expectDifference(ofCsv(tracks, fewer), 0.0, 15, 0);
  expectDifference(ofCsv(fewer, tracks), 0.0, 0, 15);
  const Tracks light = changed(tracks, [&](Observation& o) { o.weight = gone(o) ? 0.0f : 1.0f; });
  expectDifference(ofCsv(light, fewer), 0.0, 0, 0);
}

TEST(ReadBack, FindsTracksThatTheFormatCallsOtherwise) {
  const Tracks tracks = wanderers(5, 10, 1);
  Tracks renamed = tracks;
  renamed.names[3] = "track 03";
  expectDifference(ofCsv(tracks, renamed), 0.0, 0, 0);
  const Tracks both = changed(renamed, [](Observation& o) {
    if (o.track == 3 && o.frame == 4) o.y -= 2.0;
  });
  expectDifference(ofCsv(tracks, both), 2.0, 0, 0);
}

TEST(ReadBack, ReadsScriptsInTheirOrder) {
  expectDifference(ofPin(script(pin(), kNatronOrder), Format::Natron, pin()), 0.0, 0, 0);
  EXPECT_EQ(ofPin(script(pin(), kNatronOrder), Format::Natron, pin()).largest, 0.0);
  expectDifference(ofPin(script(pinWithAGap(), kNatronOrder), Format::Natron, pinWithAGap()), 0.0,
                   0, 0);
  EXPECT_GT(ofPin(script(pin(), kBlenderOrder), Format::Natron, pin()).largest, 50.0);
  Pin off = pin();
  off.frames[2].to[1].y += 0.25;
  expectDifference(ofPin(script(off, kNatronOrder), Format::Natron, pin()), 0.25, 0, 0);
  off.frames.erase(off.frames.begin());
  expectDifference(ofPin(script(off, kNatronOrder), Format::Natron, pin()), 0.25, 4, 0);
  expectDifference(ofPin("nothing\n", Format::Natron, pin()), 0.0, 12, 0);
  expectDifference(ofPin(script(pin(), kNatronOrder), Format::Natron, pinWithAGap()), 0.0, 0, 4);
}

// 0.002 of a width of 200 pixels.
TEST(ReadBack, TellsPixelsOfUnitsOfThePicture) {
  Picture shares = pin().picture;
  shares.scale = Scale::Picture;
  const Pin wanted = converted(pin(), shares);
  expectDifference(ofPin(script(wanted, kBlenderOrder), Format::Blender, wanted), 0.0, 0, 0);
  EXPECT_GT(ofPin(script(wanted, kNatronOrder), Format::Blender, wanted).largest, 50.0);
  Pin off = wanted;
  off.frames[1].to[3].x += 0.002;
  const ReadBack read = ofPin(script(off, kBlenderOrder), Format::Blender, wanted);
  expectDifference(read, 0.4, 0, 0);
  EXPECT_EQ(read.scale, Scale::Pixels);
  Pin unsized = wanted;
  unsized.picture.width.reset();
  const ReadBack bare = ofPin(script(off, kBlenderOrder), Format::Blender, unsized);
  expectDifference(bare, 0.002, 0, 0);
  EXPECT_EQ(textOf(bare), "read back: largest difference 0.002 in units of the file");
}

// In the first frame nothing is divided: the corners at x = 200 move by 200 times as much.
TEST(ReadBack, CarriesTheRectangleByTransforms) {
  Pin off = pin();
  off.frames[0].h[1][0] += 0.001;
  PinStyle style;
  style.nk = PinStyle::Nk::Matrix;
  for (const bool isNode : {false, true}) {
    const Format format = isNode ? Format::Nk : Format::Usda;
    const auto write = isNode ? node : layer;
    EXPECT_EQ(ofPin(write(pin()), format, pin(), style).largest, 0.0);
    expectDifference(ofPin(write(pin()), format, pin(), style), 0.0, 0, 0);
    expectDifference(ofPin(write(off), format, pin(), style), 0.2, 0, 0);
    Pin fewer = off;
    fewer.frames.pop_back();
    expectDifference(ofPin(write(fewer), format, pin(), style), 0.2, 1, 0);
    Pin turned = pin();
    for (PinFrame& frame : turned.frames) std::swap(frame.h[0][1], frame.h[1][0]);
    EXPECT_GT(ofPin(write(turned), format, pin(), style).largest, 10.0);
    Pin nowhere = pin();
    nowhere.frames[1].h[2] = {0.0, 0.0, 0.0};
    EXPECT_TRUE(std::isinf(ofPin(write(nowhere), format, pin(), style).largest));
  }
  Pin more = pin();
  more.frames[2].frame = 2000;
  expectDifference(ofPin(layer(more), Format::Usda, pin()), 0.0, 1, 1);
}

// Half as wide, a quarter turn from x to y about (100, 50), which goes to (7, 8): (0, 0) is
// (-50, -50) from there, scaled, turned to (50, -50), and at (57, -42).
TEST(ReadBack, CarriesTheCornersByPositionScaleAndRotation) {
  const std::string text =
      "Anchor Point\n\tFrame\tX pixels\n\t1001\t100\t50\t0\n\n"
      "Position\n\tFrame\tX pixels\n\t1001\t7\t8\t0\n\n"
      "Scale\n\tFrame\tX percent\n\t1001\t50\t100\t100\n\n"
      "Rotation\n\tFrame\tDegrees\n\t1001\t90\n\nEnd of Keyframe Data\n";
  Pin wanted = pin();
  wanted.frames.resize(1);
  wanted.frames[0].to = {{{57, -42}, {57, 58}, {-43, 58}, {-43, -42}}};
  PinStyle style;
  style.keyframes = PinStyle::Keyframes::Transform;
  expectDifference(ofPin(text, Format::Keyframes, wanted, style), 0.0, 0, 0);
  wanted.frames[0].to[2].x += 1.5;
  expectDifference(ofPin(text, Format::Keyframes, wanted, style), 1.5, 0, 0);
  expectDifference(ofPin(text, Format::Keyframes, pinWithAGap(), style),
                   ofPin(text, Format::Keyframes, pinWithAGap(), style).largest, 1, 0);
}

TEST(ReadBack, ReadsCornersFromFormatsWithReaders) {
  const TemporaryFolder folder;
  OutputFile out(folder / "out");
  writeCsvTracks(tracksOf(pin()), out);
  out.commit();
  expectDifference(readBack(folder / "out", Format::Csv, pin(), {}), 0.0, 0, 0);
  Pin off = pin();
  off.frames[0].to[0].x += 5.0;
  expectDifference(readBack(folder / "out", Format::Csv, off, {}), 5.0, 0, 0);
}

namespace {

// What is read back of a result that was to be written, when another was.
ReadBack ofResult(Format format, const ShotResult& wanted, const ShotResult& other) {
  const TemporaryFolder folder;
  writeFile(folder / "out", written(other, format));
  return readBack(folder / "out", format, transformsOf(wanted));
}

}  // namespace

// Two corners are behind the horizon of the second frame, whose transform has x' = 2 x + 10 over
// 1 - y / 4.
TEST(ReadBack, ComparesWhereTransformsOfResultsCarryTheCorners) {
  ShotResult result = twoFrames();
  result.between = {{5.5, kIdentity}};
  for (const Format format : {Format::Json, Format::Csv}) {
    expectDifference(ofResult(format, result, result), 0.0, 0, 0);
    ShotResult off = result;
    off.between[0].h[0][2] = 0.25;
    expectDifference(ofResult(format, result, off), 0.25, 0, 0);
    off.frames[1].h[0][2] = 11.0;
    EXPECT_EQ(ofResult(format, result, off).largest, 8.0);  // where 1 - y / 4 is -1/8
    ShotResult fewer = result;
    fewer.frames.pop_back();
    fewer.tracks.clear();
    fewer.worst.clear();
    fewer.between.clear();
    expectDifference(ofResult(format, result, fewer), 0.0, 2, 0);
    expectDifference(ofResult(format, fewer, result), 0.0, 0, 2);
    ShotResult wider = result;
    wider.quads[0].corners[0].x -= 0.5;
    EXPECT_EQ(ofResult(format, result, wider).largest, 2.0);
  }
}

TEST(ReadBack, RefusesFilesThatCannotBeRead) {
  EXPECT_THROW(readBack("/nowhere", Format::Csv, wanderers(1, 1, 1)), InputError);
  EXPECT_THROW(ofPin("no,header\n", Format::Csv, pin()), InputError);
}

TEST(ReadBack, IsToldInWords) {
  ReadBack read;
  EXPECT_EQ(textOf(read), "read back: largest difference 0 px");
  read.largest = 0.00012345;
  read.missing = 3;
  read.added = 1;
  EXPECT_EQ(textOf(read), "read back: largest difference 0.000123 px, 3 missing, 1 too many");
}

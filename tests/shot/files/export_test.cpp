// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/export.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/shot/files/tracks_in.h"
#include "tests/shot/files/two_frames.h"
#include "tests/support/refusal.h"

using namespace cornerpin;

namespace {

Export exportTo(Format format, ExportKind kind) {
  Export what;
  what.format = format;
  what.kind = kind;
  return what;
}

}  // namespace

TEST(FlawOf, SaysWhatAFormatDoesNotHoldAndWhichDo) {
  EXPECT_EQ(flawOf(Format::Nk, ExportKind::Pin), "");
  EXPECT_EQ(flawOf(Format::Blocks, ExportKind::Tracks), "");
  EXPECT_EQ(flawOf(Format::Blocks, ExportKind::Pin),
            "blocks files hold tracks, no pins: add --as tracks, or write one of csv, json, "
            "points, nk, keyframes, blender, natron, usda");
  EXPECT_EQ(flawOf(Format::Keyframes, ExportKind::Matrix),
            "--as matrix is not written to keyframes files, but to csv, json, nk, usda");
  EXPECT_EQ(flawOf(Format::Usda, ExportKind::Tracks),
            "usda files hold pins, no tracks: cornerpin solve makes pins of tracks, which as they "
            "are go to csv, json, points, nk, blocks, uv");
  EXPECT_EQ(flawOf(Format::Json, ExportKind::Stabilise),
            "--as stabilise is not written to json files, but to points, nk, keyframes, blender, "
            "natron, usda");
}

TEST(PinnedQuad, IsTheOneThatWasAskedFor) {
  ShotResult result = twoFrames();
  EXPECT_EQ(pinnedQuad(result), nullptr);
  result.provenance.options = GivenOptions{};
  EXPECT_EQ(pinnedQuad(result), nullptr);
  result.provenance.options->quads = {result.quads[0]};
  EXPECT_EQ(pinnedQuad(result), &result.quads[0]);
  result.provenance.options->quads.push_back(result.quads[0]);
  EXPECT_EQ(refusal([&] { pinnedQuad(result); }),
            "a pin has four corners, and there are 2 quads: give one with --quad");
}

TEST(RequireKnown, AsksForTheSizeWhereARectangleIsWritten) {
  Picture picture;
  picture.y = YAxis::Up;
  picture.pixelCentre = 0.5;
  const auto said = [&](Format format, ExportKind kind) {
    return refusal([&] { requireKnown(exportTo(format, kind), picture, "f"); });
  };
  EXPECT_EQ(said(Format::Nk, ExportKind::Pin),
            "nk files need to know, and \"f\" does not say, how large the picture is: add --size "
            "WxH");
  EXPECT_EQ(said(Format::Nk, ExportKind::Matrix), "");
  EXPECT_EQ(said(Format::Nk, ExportKind::Tracks), "");
  EXPECT_EQ(said(Format::Json, ExportKind::Pin), "");
  EXPECT_NE(said(Format::Points, ExportKind::Stabilise), "");
  picture.width = 20;
  picture.height = 10;
  EXPECT_EQ(said(Format::Nk, ExportKind::Pin), "");
}

TEST(WriteTracks, ConvertsToTheFormatsPicture) {
  Tracks tracks = tracksIn("track,frame,x,y\na,1,2,3\n");
  const TemporaryFolder folder;
  OutputFile out(folder / "out.csv");
  writeTracks(tracks, Format::Csv, "f", out);
  out.commit();
  EXPECT_EQ(readFile(folder / "out.csv"), "track,frame,x,y,weight\na,1,2,3,1\n");
  OutputFile refused(folder / "out.usda");
  EXPECT_NE(refusal([&] { writeTracks(tracks, Format::Points, "f", refused); }), "");
}

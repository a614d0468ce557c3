// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_blocks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"
#include "tests/shot/files/written_tracks.h"

using namespace cornerpin;

namespace {

std::vector<std::string> namesIn(const TrackBlocks& blocks) {
  std::vector<std::string> names;
  const auto write = [&](const Tracks&, OutputFile& out) {
    blocks.write(
        out, [&](std::string&, const std::string& name, std::size_t) { names.push_back(name); },
        [](std::string&, const Observation&) {});
    return WriteNotes{};
  };
  writtenBy(write, {});
  return names;
}

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

// Five points over three frames, one of them absent in one, in pixels with y up and the centre of
// the first pixel at (0.5, 0.5).
std::vector<ReadRow> fivePoints(int firstFrame) {
  const double w = kWidth;
  const double h = kHeight;
  const std::vector<ReadRow> points = {{"1", 0, 0.0, 0.0},
                                       {"2", 0, w, h},
                                       {"3", 0, 0.5, 0.5},
                                       {"4", 0, w / 2, h / 2},
                                       {"5", 0, w - 0.5, h - 0.5}};
  std::vector<ReadRow> rows;
  for (const ReadRow& point : points) {
    for (int i = 0; i < 3; ++i) {
      if (point.name == "4" && i == 1) continue;
      rows.push_back({point.name, firstFrame + i, point.x + 0.1 * i, point.y - 0.3 * i});
    }
  }
  return rows;
}

// The numbers that each format has for a place, written out.
ReadRow inFormat(Format format, ReadRow row) {
  switch (format) {
    case Format::Blocks:
      return {row.name, row.frame, row.x - 0.5, row.y - 0.5};
    case Format::Paths:
      return {row.name, row.frame, 2.0 * (row.x - 0.5) / (kWidth - 1) - 1.0,
              -(2.0 * (row.y - 0.5) / (kHeight - 1) - 1.0)};
    case Format::Rz2:
      return {row.name, row.frame, row.x, kHeight - row.y};
    case Format::Uv:
      return {row.name, row.frame, row.x / kWidth, row.y / kHeight};
    default:
      return row;
  }
}

Picture upright() {
  Picture picture;
  picture.width = kWidth;
  picture.height = kHeight;
  picture.y = YAxis::Up;
  picture.pixelCentre = 0.5;
  return picture;
}

// That the numbers of a file, by what the reader says of them, are the places.
void expectPlaces(const Tracks& tracks, const std::vector<ReadRow>& places) {
  const PictureMap map(tracks.picture, upright());
  const std::vector<ReadRow> rows = rowsOf(tracks);
  ASSERT_EQ(rows.size(), places.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Point place = map(Point{rows[i].x, rows[i].y});
    EXPECT_NEAR(place.x, places[i].x, 1e-11);
    EXPECT_NEAR(place.y, places[i].y, 1e-11);
  }
}

std::string writtenAs(Format format, const Tracks& tracks) {
  if (format == Format::Points) return writtenBy(writePointsTracks, tracks);
  if (format == Format::Blocks) return writtenBy(writeBlocksTracks, tracks);
  return format == Format::Uv ? writtenBy(writeUvTracks, tracks) : "";
}

}  // namespace

TEST(TrackBlocks, KeepNamesApartWhenTheyAreMadeAlike) {
  const Tracks tracks = madeTracks({{"a#", 1, 0.0, 0.0},
                                    {"a_", 1, 0.0, 0.0},
                                    {"a\n", 1, 0.0, 0.0},
                                    {" b ", 1, 0.0, 0.0},
                                    {" ", 1, 0.0, 0.0}});
  const TrackBlocks blocks(tracks, {"f", "#", false});
  // In the order of " ", " b ", "a\n", "a#" and "a_", which keeps its name.
  EXPECT_EQ(namesIn(blocks), (std::vector<std::string>{"_", "b", "a__", "a___", "a_"}));
}

TEST(TrackBlocks, NameTenNamesThatTheyChange) {
  std::vector<ReadRow> rows;
  for (char c = 'a'; c < 'a' + 12; ++c) rows.push_back({std::string("#") + c, 1, 0.0, 0.0});
  const Tracks tracks = madeTracks(rows);
  const TrackBlocks blocks(tracks, {"f", "#", false});
  ASSERT_EQ(blocks.notes().size(), 11u);
  EXPECT_EQ(blocks.notes()[10], "2 more names are written otherwise, too");
}

TEST(TrackBlocks, GoThroughFilesAndBackToTheLastDigit) {
  for (const Format format : kLineFormats) {
    SCOPED_TRACE(factsOf(format).word);
    const std::vector<ReadRow> places = fivePoints(1);
    std::vector<ReadRow> numbers;
    std::vector<TextRow> text;
    for (const ReadRow& place : places) {
      const ReadRow row = inFormat(format, place);
      numbers.push_back(row);
      text.push_back({row.name, std::to_string(row.frame), fmt::format("{}", row.x),
                      fmt::format("{}", row.y)});
    }
    const Tracks tracks = tracksIn(lineFile(format, text));
    EXPECT_EQ(rowsOf(tracks), numbers);
    expectPlaces(tracks, places);
    const std::string written = writtenAs(format, tracks);
    if (!factsOf(format).writesTracks) continue;
    ReadTrace trace;
    const Tracks again = tracksIn(written, &trace);
    EXPECT_EQ(trace.format, format);
    EXPECT_EQ(rowsOf(again), numbers);
    EXPECT_EQ(again.picture.firstFrame, tracks.picture.firstFrame);
    EXPECT_EQ(writtenAs(format, again), written);
  }
}

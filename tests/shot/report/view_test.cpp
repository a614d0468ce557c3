// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/view.h"

#include <gtest/gtest.h>

#include "tests/shot/report/small_result.h"

using namespace cornerpin;

namespace {

View viewOfAll(const ShotResult& result, const Tracks* tracks,
               const std::optional<PictureSize>& size = std::nullopt) {
  const PageSubject subject = {result, tracks, ""};
  return viewOf(subject, shownOf(subject, {}), size);
}

Picture pictureOf(YAxis y, double centre) {
  Picture picture;
  picture.y = y;
  picture.pixelCentre = centre;
  return picture;
}

}  // namespace

TEST(View, IsThePictureWhereItsSizeIsKnown) {
  ShotResult result = small::result(4, 3);
  result.provenance.picture = pictureOf(YAxis::Down, 0.5);
  result.provenance.picture.width = 640;
  result.provenance.picture.height = 480;
  const View view = viewOfAll(result, nullptr);
  EXPECT_TRUE(view.isPicture);
  EXPECT_EQ(view.x, 0.0);
  EXPECT_EQ(view.y, 0.0);
  EXPECT_EQ(view.width, 640.0);
  EXPECT_EQ(view.height, 480.0);
  EXPECT_TRUE(view.fromTracks.isIdentity());
}

// Pixel (0, 0), the lowest left one, has its centre half a pixel from the picture's lower edge.
TEST(View, TurnsYAndMovesPixelCentres) {
  ShotResult result = small::result(4, 3);
  result.provenance.picture = pictureOf(YAxis::Up, 0.0);
  result.provenance.picture.width = 640;
  result.provenance.picture.height = 480;
  const View view = viewOfAll(result, nullptr);
  const Point place = view.fromTracks(Point{0.0, 0.0});
  EXPECT_EQ(place.x, 0.5);
  EXPECT_EQ(place.y, 479.5);
}

TEST(View, TakesTheSizeThatPicturesTell) {
  ShotResult result = small::result(4, 3);
  result.provenance.picture = pictureOf(YAxis::Up, 0.5);
  const View view = viewOfAll(result, nullptr, PictureSize{100, 50});
  EXPECT_TRUE(view.isPicture);
  EXPECT_EQ(view.width, 100.0);
  EXPECT_EQ(view.fromTracks(Point{3.0, 1.0}).y, 49.0);
}

// Four tracks go from (10, 20) to (11.5 + 8, 20.75 + 4), the box whose own size on each side is as
// far as the quad's corners count: none of them is in that but (10, 20).
TEST(View, IsAroundTheTracksWithoutASize) {
  const ShotResult result = small::result(4, 5);
  const Tracks tracks = small::tracks(4, 5);
  for (const Tracks* known : {&tracks, static_cast<const Tracks*>(nullptr)}) {
    const View view = viewOfAll(result, known);
    EXPECT_FALSE(view.isPicture);
    EXPECT_NEAR(view.x, 10 - 0.05 * 9.5, 1e-12);
    EXPECT_NEAR(view.width, 1.1 * 9.5, 1e-12);
    EXPECT_NEAR(view.y, 20 - 0.05 * 4.75, 1e-12);
    EXPECT_NEAR(view.height, 1.1 * 4.75, 1e-12);
  }
}

TEST(View, TurnsYWithoutASize) {
  ShotResult result = small::result(4, 5);
  result.provenance.picture = pictureOf(YAxis::Up, 0.5);
  const View view = viewOfAll(result, nullptr);
  const double low = view.fromTracks(Point{10.0, 20.0}).y;
  const double high = view.fromTracks(Point{10.0, 24.75}).y;
  EXPECT_EQ(low - high, 4.75);
  EXPECT_NEAR(view.y, high - 0.05 * 4.75, 1e-12);
  EXPECT_NEAR(view.height, 1.1 * 4.75, 1e-12);
}

TEST(View, HasASizeWhateverThereIs) {
  ShotResult result = small::result(1, 1);
  result.quads.clear();
  EXPECT_GT(viewOfAll(result, nullptr).width, 0.0);
  EXPECT_GT(viewOfAll(result, nullptr).height, 0.0);
  result.tracks.clear();
  EXPECT_GT(viewOfAll(result, nullptr).width, 0.0);
  EXPECT_GT(viewOfAll(result, nullptr).height, 0.0);
}

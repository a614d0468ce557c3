// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/picture.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace cornerpin;

namespace {

constexpr double kWidth = 1920.0;
constexpr double kHeight = 1080.0;

Picture picture(Scale scale, std::optional<YAxis> y, std::optional<double> centre) {
  Picture picture;
  picture.scale = scale;
  picture.y = y;
  picture.pixelCentre = centre;
  return picture;
}

Picture sized(Picture picture) {
  picture.width = 1920;
  picture.height = 1080;
  return picture;
}

// By plain formulas from x right, y up, the origin at the corner of the lower left pixel.
struct Convention {
  const char* name;
  Picture picture;
  Point (*of)(Point reference);
};

const Convention kConventions[] = {
    {"points", picture(Scale::Pixels, YAxis::Up, 0.5), [](Point p) { return p; }},
    {"blocks", picture(Scale::Pixels, YAxis::Up, 0.0),
     [](Point p) {
       return Point{p.x - 0.5, p.y - 0.5};
     }},
    {"keyframes", picture(Scale::Pixels, YAxis::Down, 0.5),
     [](Point p) {
       return Point{p.x, kHeight - p.y};
     }},
    {"centres downwards", picture(Scale::Pixels, YAxis::Down, 0.0),
     [](Point p) {
       return Point{p.x - 0.5, kHeight - p.y - 0.5};
     }},
    {"paths", picture(Scale::AboutZero, YAxis::Down, 0.0),
     [](Point p) {
       return Point{2.0 * (p.x - 0.5) / (kWidth - 1.0) - 1.0,
                    -(2.0 * (p.y - 0.5) / (kHeight - 1.0) - 1.0)};
     }},
    {"paths by edges", picture(Scale::AboutZero, YAxis::Down, 0.5),
     [](Point p) {
       return Point{2.0 * p.x / kWidth - 1.0, -(2.0 * p.y / kHeight - 1.0)};
     }},
    {"uv", picture(Scale::Picture, YAxis::Up, 0.5),
     [](Point p) {
       return Point{p.x / kWidth, p.y / kHeight};
     }},
};

const Point kPoints[] = {
    {0.0, 0.0}, {kWidth, kHeight}, {0.5, 0.5}, {kWidth / 2.0, kHeight / 2.0}, {kWidth - 0.5, 0.5}};

}  // namespace

TEST(PictureMap, CarriesPointsBetweenAllConventions) {
  for (const Convention& from : kConventions) {
    for (const Convention& to : kConventions) {
      SCOPED_TRACE(std::string(from.name) + " to " + to.name);
      const PictureMap map(sized(from.picture), to.picture);
      for (Point reference : kPoints) {
        const Point wanted = to.of(reference);
        const Point found = map(from.of(reference));
        EXPECT_NEAR(found.x, wanted.x, 1e-12 * kWidth);
        EXPECT_NEAR(found.y, wanted.y, 1e-12 * kWidth);
      }
    }
  }
}

TEST(PictureMap, LeavesNumbersOfTheSameConventionAsTheyAre) {
  for (const Convention& convention : kConventions) {
    const PictureMap map(sized(convention.picture), sized(convention.picture));
    EXPECT_TRUE(map.isIdentity()) << convention.name;
    EXPECT_EQ(map(Point{0.1, 0.7}).x, 0.1);
    EXPECT_EQ(map(Point{0.1, 0.7}).y, 0.7);
  }
}

TEST(PictureMap, RoundsOnceBetweenPixels) {
  const PictureMap map(sized(picture(Scale::Pixels, YAxis::Down, 0.5)),
                       picture(Scale::Pixels, YAxis::Up, 0.0));
  EXPECT_EQ(map(Point{1e-3, 0.1}).x, 1e-3 - 0.5);
  EXPECT_EQ(map(Point{1e-3, 0.1}).y, 1079.5 - 0.1);
}

// A point goes with the transform, whichever picture it is looked at in.
TEST(PictureMap, CarriesTransforms) {
  const Homography h = {{{1.1, 0.02, 30.0}, {-0.01, 0.9, -12.0}, {1e-5, -2e-5, 1.0}}};
  for (const Convention& to : kConventions) {
    const PictureMap map(sized(kConventions[0].picture), to.picture);
    const Homography converted = map(h);
    EXPECT_EQ(converted[2][2], 1.0);
    for (Point p : kPoints) {
      const Point wanted = map(cornerpin::map(h, p));
      const Point found = cornerpin::map(converted, map(p));
      EXPECT_NEAR(found.x, wanted.x, 1e-10 * kWidth) << to.name;
      EXPECT_NEAR(found.y, wanted.y, 1e-10 * kWidth) << to.name;
    }
  }
}

TEST(PictureMap, HasAMatrixAndItsInverse) {
  const PictureMap map(sized(kConventions[0].picture), kConventions[4].picture);
  const Homography both = product(map.matrix(), map.inverseMatrix());
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(both[i][j], i == j ? 1.0 : 0.0, 1e-15);
  }
  const Point p = cornerpin::map(map.matrix(), {100.0, 200.0});
  EXPECT_NEAR(p.x, map(Point{100.0, 200.0}).x, 1e-15);
}

TEST(MissingBetween, NamesWhatOneSideLacksAndTheOtherNeeds) {
  const Picture unknown;
  const Picture up = picture(Scale::Pixels, YAxis::Up, 0.5);
  const Picture down = picture(Scale::Pixels, YAxis::Down, 0.5);
  const Picture uv = picture(Scale::Picture, YAxis::Up, 0.5);
  using Facts = std::vector<PictureFact>;
  EXPECT_EQ(missingBetween(unknown, unknown), Facts{});
  EXPECT_EQ(missingBetween(unknown, up), (Facts{PictureFact::YAxis, PictureFact::PixelCentre}));
  EXPECT_EQ(missingBetween(up, up), Facts{});
  EXPECT_EQ(missingBetween(up, down), Facts{PictureFact::Size});
  EXPECT_EQ(missingBetween(up, sized(down)), Facts{});
  EXPECT_EQ(missingBetween(sized(up), down), Facts{});
  EXPECT_EQ(missingBetween(uv, up), Facts{PictureFact::Size});
  EXPECT_EQ(missingBetween(uv, uv), Facts{});
  EXPECT_EQ(missingBetween(kConventions[4].picture, kConventions[5].picture),
            Facts{PictureFact::Size});
  EXPECT_THROW(PictureMap(up, down), std::logic_error);
}

TEST(Completed, TakesWhatIsNotKnownFromTheOther) {
  const Picture from = sized(picture(Scale::Picture, YAxis::Down, 0.5));
  const Picture all = completed({}, from);
  EXPECT_EQ(all.scale, Scale::Pixels);
  EXPECT_EQ(all.y, YAxis::Down);
  EXPECT_EQ(all.pixelCentre, 0.5);
  EXPECT_EQ(all.width, 1920);
  EXPECT_EQ(all.height, 1080);
  EXPECT_EQ(completed(picture(Scale::Pixels, YAxis::Up, 0.0), from).y, YAxis::Up);
}

TEST(FrameShift, NeedsTheFirstFrameOfBoth) {
  Picture from;
  Picture to;
  EXPECT_EQ(frameShift(from, to), 0);
  from.firstFrame = 1;
  EXPECT_EQ(frameShift(from, to), 0);
  EXPECT_EQ(frameShift(to, from), 0);
  to.firstFrame = 1001;
  EXPECT_EQ(frameShift(from, to), 1000);
}

TEST(PictureMap, LeavesUnitsOfAPictureOfUnknownSize) {
  for (const Scale scale : {Scale::Picture, Scale::AboutZero}) {
    Picture picture;
    picture.scale = scale;
    picture.pixelCentre = 0.0;
    const PictureMap map(picture, picture);
    EXPECT_TRUE(map.isIdentity());
    EXPECT_EQ(map(Point{0.25, -0.75}).x, 0.25);
    EXPECT_EQ(map(Point{0.25, -0.75}).y, -0.75);
  }
}

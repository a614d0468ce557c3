// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/place_worth.h"

#include <gtest/gtest.h>

#include "shot/fit/general_position.h"
#include "shot/fit/support.h"
#include "shot/plane/similarity.h"
#include "shot/solve/base_frame.h"

using namespace cornerpin;

namespace {

const Points kSpread = {{0, 0}, {100, 5}, {95, 80}, {7, 90}, {40, 30}, {60, 70}, {20, 55}};
const Points kOnALine = {{0, 0}, {10, 10}, {20, 20}, {30, 30}, {40, 40}, {50, 50}};
const Quad kSurface = {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}};

double gainOf(const Points& places, const Quad& surface) {
  return noiseGain(Model::Projective, places, surface);
}

}  // namespace

TEST(PlaceWorth, IsThatOfThePlacesLookedAtLast) {
  const Quad twice = {{{0, 0}, {200, 0}, {200, 200}, {0, 200}}};
  PlaceWorth worth(PlaceWorth::FarOff::Counted);
  for (int round = 0; round < 2; ++round) {
    for (int look = 0; look < 2; ++look) {  // the second one finds it known
      worth.look(kSpread, kSurface, Loss::Tukey);
      EXPECT_TRUE(worth.inGeneralPosition());
      EXPECT_EQ(worth.gain(), gainOf(kSpread, kSurface));
    }
    worth.look(kSpread, twice, Loss::Tukey);
    EXPECT_EQ(worth.gain(), gainOf(kSpread, twice));
    worth.look(kOnALine, kSurface, Loss::Tukey);
    EXPECT_FALSE(worth.inGeneralPosition());
  }
}

TEST(PlaceWorth, LeavesOutFarOffPlacesWithALoss) {
  Points places = kSpread;
  places.add({1e7, 3e6});
  PlaceWorth worth(PlaceWorth::FarOff::LeftOut);
  worth.look(places, kSurface, Loss::Tukey);
  EXPECT_EQ(worth.gain(), gainOf(kSpread, kSurface));
  PlaceWorth counted(PlaceWorth::FarOff::Counted);
  counted.look(places, kSurface, Loss::Tukey);
  EXPECT_EQ(counted.gain(), gainOf(places, kSurface));
  PlaceWorth withoutLoss(PlaceWorth::FarOff::LeftOut);
  withoutLoss.look(places, kSurface, Loss::None);
  EXPECT_EQ(withoutLoss.inGeneralPosition(), inGeneralPosition(places));
}

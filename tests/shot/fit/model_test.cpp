// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/model.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(Model, HasAName) {
  EXPECT_STREQ(nameOf(Model::Held), "held");
  EXPECT_STREQ(nameOf(Model::Translation), "translation");
  EXPECT_STREQ(nameOf(Model::Similarity), "similarity");
  EXPECT_STREQ(nameOf(Model::Affine), "affine");
  EXPECT_STREQ(nameOf(Model::Projective), "projective");
}

TEST(Model, WantsATrackForEveryTwoParameters) {
  EXPECT_EQ(tracksFor(Model::Held), 0u);
  EXPECT_EQ(tracksFor(Model::Translation), 1u);
  EXPECT_EQ(tracksFor(Model::Similarity), 2u);
  EXPECT_EQ(tracksFor(Model::Affine), 3u);
  EXPECT_EQ(tracksFor(Model::Projective), 4u);
}

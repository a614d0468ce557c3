// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/nk_pin.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace cornerpin;

namespace {

NodePlace at(double x, double y) {
  NodePlace place;
  place.line = 1;
  place.constant = Point{x, y};
  return place;
}

NodePlace moving(std::vector<NodeKey> keys) {
  NodePlace place;
  place.line = 1;
  place.keys = std::move(keys);
  return place;
}

NodeCurve number(double value) {
  NodeCurve curve;
  curve.constant = value;
  return curve;
}

NodeCurve curve(std::vector<std::int32_t> frames, std::vector<double> values) {
  NodeCurve made;
  made.frames = std::move(frames);
  made.values = std::move(values);
  return made;
}

std::vector<NodeCurve> matrix(const std::vector<double>& elements) {
  std::vector<NodeCurve> all;
  all.reserve(elements.size());
  for (const double element : elements) all.push_back(number(element));
  return all;
}

const std::vector<double> kOne = {1, 0, 0, 0, 1, 0, 0, 0, 1};

// A rectangle of 2 by 1.
std::array<NodePlace, 4> rectangle() { return {at(0, 0), at(2, 0), at(2, 1), at(0, 1)}; }

void expectKey(const NodeKey& key, std::int32_t frame, double x, double y) {
  EXPECT_EQ(key.frame, frame);
  EXPECT_DOUBLE_EQ(key.x, x);
  EXPECT_DOUBLE_EQ(key.y, y);
  EXPECT_EQ(key.weight, 1.0f);
}

using Texts = std::vector<std::string>;

}  // namespace

TEST(CornersOf, AreWhereTheKeysSay) {
  NkPin pin;
  pin.to = {moving({{1, 2, 5}, {3, 4, 6}}), moving({{5, 6, 6}}), at(7, 8), {}};
  pin.matrix = matrix(kOne);
  Texts notes;
  const CornerKeys corners = cornersOf(pin, notes);
  ASSERT_EQ(corners[0].size(), 2u);
  expectKey(corners[0][1], 6, 3, 4);
  ASSERT_EQ(corners[1].size(), 1u);
  expectKey(corners[1][0], 6, 5, 6);
  ASSERT_EQ(corners[2].size(), 2u);  // stands still in the frames of the others
  expectKey(corners[2][0], 5, 7, 8);
  expectKey(corners[2][1], 6, 7, 8);
  EXPECT_TRUE(corners[3].empty());
  EXPECT_TRUE(isMoving(corners));
  EXPECT_EQ(notes, Texts{});
}

TEST(CornersOf, StandInFrameZeroWhereNoneMoves) {
  NkPin pin;
  pin.to = rectangle();
  Texts notes;
  const CornerKeys corners = cornersOf(pin, notes);
  for (const auto& keys : corners) ASSERT_EQ(keys.size(), 1u);
  expectKey(corners[2][0], 0, 2, 1);
  EXPECT_FALSE(isMoving(corners));
  EXPECT_EQ(notes, Texts{});
}

// By hand: x to (2x + 3) / (1 + x / 2), y to (y + frame) / (1 + x / 2), all over a last element 2.
TEST(CornersOf, GoThroughAMatrixWhereNothingElseMoves) {
  NkPin pin;
  pin.from = rectangle();
  pin.to = rectangle();
  pin.matrix = matrix({4, 0, 6, 0, 2, 0, 1, 0, 2});
  pin.matrix[5] = curve({10, 11}, {20, 22});
  pin.matrix[2] = curve({3}, {6});  // one key holds everywhere
  Texts notes;
  const CornerKeys corners = cornersOf(pin, notes);
  for (const auto& keys : corners) ASSERT_EQ(keys.size(), 2u);
  expectKey(corners[0][0], 10, 3, 10);
  expectKey(corners[0][1], 11, 3, 11);
  expectKey(corners[1][0], 10, 7.0 / 2, 5);
  expectKey(corners[2][1], 11, 7.0 / 2, 6);
  expectKey(corners[3][0], 10, 3, 11);
  EXPECT_EQ(notes, Texts{});
  pin.from = {};  // where they are pinned to is where they are without the matrix
  expectKey(cornersOf(pin, notes)[1][0], 10, 7.0 / 2, 5);
  pin.from = {at(0, 0), at(4, 0), at(4, 1), at(0, 1)};
  expectKey(cornersOf(pin, notes)[1][0], 10, 11.0 / 3, 20.0 / 6);
  EXPECT_EQ(notes, Texts{"from1 to from4 through its transform_matrix: to1 to to4 are left out"});
}

TEST(CornersOf, AreAbsentBehindTheMatrixsHorizon) {
  NkPin pin;
  pin.from = rectangle();
  pin.matrix = matrix({1, 0, 0, 0, 1, 0, 0, 0, -1});  // the last element divides all
  pin.matrix[6] = curve({4, 5}, {0.5, 0.25});         // 1 - x / 2, 1 - x / 4
  Texts notes;
  const CornerKeys corners = cornersOf(pin, notes);
  ASSERT_EQ(corners[0].size(), 2u);
  expectKey(corners[0][0], 4, 0, 0);
  ASSERT_EQ(corners[1].size(), 1u);
  expectKey(corners[1][0], 5, -4, 0);
  ASSERT_EQ(corners[2].size(), 1u);
  expectKey(corners[2][0], 5, -4, -2);
  EXPECT_EQ(notes, Texts{"corners on or behind the horizon are left out: 2"});
}

TEST(CornersOf, NeedAllElementsInAFrame) {
  NkPin pin;
  pin.from = rectangle();
  pin.matrix = matrix(kOne);
  pin.matrix[2] = curve({1, 2, 3, 5}, {1, 2, 3, 5});
  pin.matrix[5] = curve({2, 3, 4, 6}, {20, 30, 40, 60});
  Texts notes;
  const CornerKeys corners = cornersOf(pin, notes);
  ASSERT_EQ(corners[0].size(), 2u);
  expectKey(corners[0][0], 2, 2, 20);
  expectKey(corners[0][1], 3, 3, 30);
  EXPECT_EQ(notes, Texts{"4 frames of its transform_matrix are left out: some elements have no key "
                         "there"});
}

TEST(CornersOf, AStandingMatrixIsThatOfItsKey) {
  NkPin pin;
  pin.from = rectangle();
  pin.matrix = matrix(kOne);
  pin.matrix[2] = curve({7}, {10});
  Texts notes;
  CornerKeys corners = cornersOf(pin, notes);
  ASSERT_EQ(corners[1].size(), 1u);
  expectKey(corners[1][0], 7, 12, 0);
  pin.matrix[2] = number(10);
  corners = cornersOf(pin, notes);
  ASSERT_EQ(corners[1].size(), 1u);
  expectKey(corners[1][0], 0, 12, 0);
  EXPECT_EQ(notes, Texts{});
}

TEST(CornersOf, SayWhatFourCornersCannotCarry) {
  NkPin pin;
  pin.to = {moving({{1, 2, 5}}), {}, {}, {}};
  pin.matrix = matrix(kOne);
  pin.matrix[0] = number(2);
  pin.isInverted = true;
  Texts notes;
  EXPECT_EQ(cornersOf(pin, notes)[0].size(), 1u);
  EXPECT_EQ(notes, (Texts{"its transform_matrix is left out: only where to1 to to4 are is read",
                          "invert is left out: the corners are to1 to to4"}));
}

TEST(CornersOf, CannotBeKnownWithoutNumbers) {
  NkPin pin;
  pin.matrix = matrix(kOne);
  pin.matrix[2] = curve({1, 2}, {1, 2});
  pin.from = {at(0, 0), {}, {}, {}};
  Texts notes;
  for (const auto& keys : cornersOf(pin, notes)) EXPECT_TRUE(keys.empty());
  pin.from = rectangle();
  pin.matrix[3] = {};
  for (const auto& keys : cornersOf(pin, notes)) EXPECT_TRUE(keys.empty());
  EXPECT_EQ(notes,
            (Texts{"it moves by its transform_matrix, and the corners that this moves are not "
                   "known: write numbers for from1 to from4",
                   "its transform_matrix has elements that are neither numbers nor curves"}));
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/node_curve.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Frames = std::vector<std::int32_t>;
using Values = std::vector<double>;

struct Read {
  NodeCurve curve;
  std::string flaw;    // without the file's name
  std::string behind;  // the word behind the element
};

Read readElement(const std::string& element, std::size_t most = kMostKeys) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.nk";
  writeFile(path, element + " behind");
  ByteSource source(path);
  NodeWords words(source);
  Read read;
  read.curve.constant = 7.0;  // all is overwritten
  read.curve.frames = {1};
  read.curve.values = {1.0};
  read.curve.expression = "e";
  if (const auto flaw = readNodeCurve(words, words.next(), most, read.curve))
    read.flaw = std::string(flaw->what()).substr(path.size());
  words.next();
  read.behind = words.text();
  return read;
}

void expectKeys(const std::string& element, const Frames& frames, const Values& values) {
  const Read read = readElement(element);
  EXPECT_EQ(read.curve.frames, frames) << element;
  EXPECT_EQ(read.curve.values, values) << element;
  EXPECT_EQ(read.curve.expression, "") << element;
  EXPECT_EQ(read.curve.constant, std::nullopt) << element;
  EXPECT_EQ(read.flaw, "") << element;
  EXPECT_EQ(read.behind, "behind") << element;
}

void expectExpression(const std::string& element, const std::string& shown) {
  const Read read = readElement(element);
  EXPECT_EQ(read.curve.expression, shown) << element;
  EXPECT_FALSE(read.curve.hasKeys()) << element;
  EXPECT_EQ(read.curve.constant, std::nullopt) << element;
  EXPECT_EQ(read.flaw, "") << element;
  EXPECT_EQ(read.behind, "behind") << element;
}

void expectFlaw(const std::string& element, const std::string& flaw) {
  const Read read = readElement(element);
  EXPECT_EQ(read.flaw, flaw) << element;
  EXPECT_FALSE(read.curve.hasKeys()) << element;
  EXPECT_EQ(read.curve.expression, "") << element;
  EXPECT_EQ(read.behind, "behind") << element;
}

NodeCurve curve(Frames frames, Values values) {
  NodeCurve made;
  made.frames = std::move(frames);
  made.values = std::move(values);
  return made;
}

}  // namespace

TEST(NodeCurve, HasKeysInTheFramesThatAreTold) {
  expectKeys("{curve x1001 412.5 x1002 -413.1 x-3 1e-05}", {1001, 1002, -3}, {412.5, -413.1, 1e-5});
  expectKeys("{curve K x5 1}", {5}, {1.0});
  expectKeys("{\"curve \" x374 2.5}", {374}, {2.5});
  expectKeys("{curve\n x1 2\n x2\n3\n}", {1, 2}, {2.0, 3.0});
  expectKeys("{ curve x1.0 +2 }", {1}, {2.0});
}

TEST(NodeCurve, GoesOnByTheStepOfTheTwoLastKeys) {
  expectKeys("{curve x5 1 2 3}", {5, 6, 7}, {1.0, 2.0, 3.0});
  expectKeys("{curve x1 1 x4 2 3 4}", {1, 4, 7, 10}, {1.0, 2.0, 3.0, 4.0});
  // Behind a gap the frame has to be told twice before the step is one again.
  expectKeys("{curve x1 1 2 x18 249 x19 242.1 235.2}", {1, 2, 18, 19, 20},
             {1.0, 2.0, 249.0, 242.1, 235.2});
  expectKeys("{curve x1 1 2 x18 3 4}", {1, 2, 18, 34}, {1.0, 2.0, 3.0, 4.0});
  expectKeys("{curve x42 1 x44 2 3 x47 4}", {42, 44, 46, 47}, {1.0, 2.0, 3.0, 4.0});
  expectKeys("{curve x9 1 x7 2 3}", {9, 7, 5}, {1.0, 2.0, 3.0});
}

TEST(NodeCurve, BeginsInFrameZero) {
  expectKeys("{curve 5 6 7}", {0, 1, 2}, {5.0, 6.0, 7.0});
  expectKeys("{curve i 5 x10 6 7}", {0, 10, 20}, {5.0, 6.0, 7.0});
}

TEST(NodeCurve, SkipsLettersAndTangents) {
  expectKeys("{curve i x1 5 L x2 6 K 7 S x9 8 R C x10 9}", {1, 2, 3, 9, 10},
             {5.0, 6.0, 7.0, 8.0, 9.0});
  expectKeys("{curve x1 5 s95 t-0.5 u1e-3 v.25 x2 6 s0}", {1, 2}, {5.0, 6.0});
}

TEST(NodeCurve, MayBeEmpty) {
  expectKeys("{curve}", {}, {});
  expectKeys("{}", {}, {});
  expectKeys("{curve K}", {}, {});
}

TEST(NodeCurve, HasNoKeyWhereTheValueIsNotANumber) {
  expectKeys("{curve x1 5 x2 nan 6 -nan 7}", {1, 3, 5}, {5.0, 6.0, 7.0});
  expectKeys("nan", {}, {});
}

TEST(NodeCurve, LeavesOutKeysBetweenFrames) {
  const Read read = readElement("{curve x1 5 x1.5 6 7 8}");
  EXPECT_EQ(read.curve.frames, (Frames{1, 2}));
  EXPECT_EQ(read.curve.values, (Values{5.0, 7.0}));
  EXPECT_EQ(read.curve.between, 2u);
}

TEST(NodeCurve, MayBeANumber) {
  for (const char* element : {"5.5", "{5.5}", "{ 5.5 }", "\"5.5\""}) {
    const Read read = readElement(element);
    EXPECT_EQ(read.curve.constant, 5.5) << element;
    EXPECT_FALSE(read.curve.hasKeys());
    EXPECT_EQ(read.curve.expression, "");
    EXPECT_EQ(read.behind, "behind");
  }
}

TEST(NodeCurve, MayBeAnExpression) {
  expectExpression("{width}", "{width}");
  expectExpression("{parent.X.x i}", "{parent.X.x i}");
  expectExpression("{curve+5 x1 2 x2 3}", "{curve+5 x1 2 x2 3}");
  expectExpression("{curve + 5 x1 2}", "{curve + 5 x1 2}");
  expectExpression("{curve x1 {a b} 2}", "{curve x1 {a b} 2}");
  expectExpression("{{a} b}", "{{a} b}");
  expectExpression("{5 {a} b}", "{5 {a} b}");
  expectExpression("{5 * 3}", "{5 * 3}");
  expectExpression("{curve x}", "{curve x}");
  expectExpression("{curve xa 5}", "{curve xa 5}");
  expectExpression("{curve sinus}", "{curve sinus}");
  expectExpression("width", "width");
  expectExpression("{a\nb}", "{...}");
  EXPECT_LE(readElement("{" + std::string(1000, 'a') + "}").curve.expression.size(), 63u);
}

TEST(NodeCurve, IsRefusedWithTheColumnAndTheValue) {
  expectFlaw("{curve x1 inf x2 5}", ":1: column 11: the value must be finite, not \"inf\"");
  expectFlaw("{curve x1 -infinity}", ":1: column 11: the value must be finite, not \"-infinity\"");
  expectFlaw("{curve 4e38}", ":1: column 8: the value is too large: \"4e38\"");
  expectFlaw("{curve 1e999}", ":1: column 8: the value is out of range: \"1e999\"");
  expectFlaw("{curve 1,5}",
             ":1: column 8: the value must be a number, not \"1,5\": write a decimal point");
  expectFlaw("{curve x1 5 -2x {a}}", ":1: column 13: the value must be a number, not \"-2x\"");
  expectFlaw("inf", ":1: column 1: the value must be finite, not \"inf\"");
  expectFlaw("{inf}", ":1: column 2: the value must be finite, not \"inf\"");
  expectFlaw("{1e999 {a} b}", ":1: column 2: the value is out of range: \"1e999\"");
  expectFlaw("{curve x2147483648 1}",
             ":1: column 8: the frame of \"x2147483648\" is no whole number of 32 bits");
  expectFlaw("{curve x2147483647 1 2}",
             ":1: column 22: the frame of \"2\" is no whole number of 32 bits");
  expectFlaw("{curve xnan 1}", ":1: column 8: the frame of \"xnan\" is no whole number of 32 bits");
}

TEST(NodeCurve, HasNoMoreKeysThanAreAllowed) {
  EXPECT_EQ(readElement("{curve 1 2 3}", 3).flaw, "");
  EXPECT_EQ(readElement("{curve 1 2 3 4 5}", 3).flaw,
            ":1: column 14: the curve has more than 3 keys");
}

TEST(SortKeys, PutsFramesInOrderAndTellsWhatIsThereTwice) {
  NodeCurve keys = curve({3, 1, 2}, {30.0, 10.0, 20.0});
  EXPECT_EQ(sortKeys(keys), std::nullopt);
  EXPECT_EQ(keys.frames, (Frames{1, 2, 3}));
  EXPECT_EQ(keys.values, (Values{10.0, 20.0, 30.0}));
  keys = curve({3, 1, 3}, {30.0, 10.0, 30.0});
  EXPECT_EQ(sortKeys(keys), 3);
  keys = curve({1, 1}, {1.0, 2.0});
  EXPECT_EQ(sortKeys(keys), 1);
}

TEST(PairKeys, TakesFramesThatBothHave) {
  std::vector<NodeKey> keys;
  const Unpaired unpaired = pairKeys(curve({1, 2, 4, 6}, {1, 2, 4, 6}),
                                     curve({2, 3, 6, 7, 8}, {20, 30, 60, 70, 80}), keys);
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_EQ(keys[0].frame, 2);
  EXPECT_EQ(keys[0].x, 2.0);
  EXPECT_EQ(keys[0].y, 20.0);
  EXPECT_EQ(keys[1].frame, 6);
  EXPECT_EQ(keys[1].x, 6.0);
  EXPECT_EQ(keys[1].y, 60.0);
  EXPECT_EQ(unpaired.x, 2u);
  EXPECT_EQ(unpaired.y, 3u);
  EXPECT_EQ(unpaired.first, 1);
}

TEST(PairKeys, TakesAConstantInAllFramesOfTheOther) {
  NodeCurve constant;
  constant.constant = 5.0;
  std::vector<NodeKey> keys;
  EXPECT_EQ(pairKeys(constant, curve({2, 3}, {20, 30}), keys).y, 0u);
  EXPECT_EQ(pairKeys(curve({9}, {90}), constant, keys).x, 0u);
  ASSERT_EQ(keys.size(), 3u);
  EXPECT_EQ(keys[1].x, 5.0);
  EXPECT_EQ(keys[1].y, 30.0);
  EXPECT_EQ(keys[2].x, 90.0);
  EXPECT_EQ(keys[2].y, 5.0);
}

TEST(EnableKeys, HoldsAKeyUntilTheNext) {
  std::vector<NodeKey> keys;
  for (std::int32_t frame = 0; frame < 7; ++frame) keys.push_back({0.0, 0.0, frame, 0.5f});
  const auto weights = [&](const NodeCurve& enable) {
    enableKeys(enable, keys.data(), keys.data() + keys.size());
    std::vector<float> all;
    all.reserve(keys.size());
    for (const NodeKey& key : keys) all.push_back(key.weight);
    return all;
  };
  EXPECT_EQ(weights(curve({2, 4, 5}, {1, 0, 1})), (std::vector<float>{1, 1, 1, 1, 0, 1, 1}));
  EXPECT_EQ(weights(curve({2, 4}, {0, 1})), (std::vector<float>{0, 0, 0, 0, 1, 1, 1}));
  EXPECT_EQ(weights({}), std::vector<float>(7, 1.0f));
  NodeCurve off;
  off.constant = 0.0;
  EXPECT_EQ(weights(off), std::vector<float>(7, 0.0f));
}

// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <cmath>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "shot/files/track_writers.h"
#include "tests/shot/files/made_pin.h"
#include "tests/shot/files/usda_samples.h"

using namespace cornerpin;
using made::Matrix;
using made::samplesIn;
using made::through;

namespace {

constexpr Quad kRectangle = {{{0.0, 0.0}, {1920.0, 0.0}, {1920.0, 1080.0}, {0.0, 1080.0}}};

std::string layerOf(const Pin& pin, WriteNotes* notes = nullptr) {
  return made::textOf([&](OutputFile& out) { return writeUsdaPin(pin, {}, out); }, notes);
}

}  // namespace

TEST(UsdaWriter, WritesALayerWithAMatrixForEveryFrame) {
  Pin pin = made::pinOf(kRectangle, {kIdentity, kIdentity}, 1001);
  pin.frames[1].h = {{{1.5, 2.0, 3.0}, {4.0, 5.0, 6.0}, {1e-7, -0.25, 1.0}}};
  WriteNotes notes;
  PinStyle style;
  style.framesPerSecond = 23.976;
  const std::string text =
      made::textOf([&](OutputFile& out) { return writeUsdaPin(pin, style, out); }, &notes);
  EXPECT_TRUE(notes.empty());
  EXPECT_EQ(
      text,
      "#usda 1.0\n"
      "(\n"
      "    defaultPrim = \"sign\"\n"
      "    startTimeCode = 1001\n"
      "    endTimeCode = 1002\n"
      "    timeCodesPerSecond = 23.976\n"
      "    framesPerSecond = 23.976\n"
      "    upAxis = \"Y\"\n"
      ")\n\n"
      "# The transform of \"sign\": points are rows (x, y, 0, 1), divided by the last of\n"
      "# the four that come out. In pixels, x to the right and y up, from the lower\n"
      "# left corner of the picture, so that the middle of its first pixel is\n"
      "# (0.5, 0.5).\n"
      "def Xform \"sign\"\n"
      "{\n"
      "    matrix4d xformOp:transform.timeSamples = {\n"
      "        1001: ( (1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0), (0, 0, 0, 1) ),\n"
      "        1002: ( (1.5, 4, 0, 0.0000001), (2, 5, 0, -0.25), (0, 0, 1, 0), (3, 6, 0, 1) ),\n"
      "    }\n"
      "    uniform token[] xformOpOrder = [\"xformOp:transform\"]\n\n"
      "    def Mesh \"rectangle\"\n"
      "    {\n"
      "        uniform bool doubleSided = 1\n"
      "        float3[] extent = [(0, 0, 0), (1920, 1080, 0)]\n"
      "        int[] faceVertexCounts = [4]\n"
      "        int[] faceVertexIndices = [0, 1, 2, 3]\n"
      "        point3f[] points = [(0, 0, 0), (1920, 0, 0), (1920, 1080, 0), (0, 1080, 0)]\n"
      "        texCoord2f[] primvars:st = [(0, 0), (1, 0), (1, 1), (0, 1)] (\n"
      "            interpolation = \"vertex\"\n"
      "        )\n"
      "        uniform token subdivisionScheme = \"none\"\n"
      "    }\n"
      "}\n");
}

TEST(UsdaWriter, CarriesTheTransformsToTheLastDigit) {
  const Pin pin = made::pinOf(kRectangle, made::someTransforms(), -1);
  const std::map<int, Matrix> samples = samplesIn(layerOf(pin));
  ASSERT_EQ(samples.size(), pin.frames.size());
  for (const PinFrame& frame : pin.frames) {
    const Matrix& m = samples.at(frame.frame);
    const std::array<std::size_t, 3> places = {0, 1, 3};
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column) {
        EXPECT_EQ(m[places[column]][places[row]], frame.h[row][column]);
      }
    }
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(m[2][i], i == 2 ? 1.0 : 0.0);
      EXPECT_EQ(m[i][2], i == 2 ? 1.0 : 0.0);
      const Point p = through(m, kRectangle[i]);
      EXPECT_NEAR(p.x, frame.to[i].x, 1e-9);
      EXPECT_NEAR(p.y, frame.to[i].y, 1e-9);
    }
  }
}

TEST(UsdaWriter, KeepsFramesWhoseCornersGoNowhere) {
  Pin pin = made::pinOf(kRectangle, made::someTransforms());
  pin.frames[1].to[0] = {made::kNan, made::kNan};
  WriteNotes notes;
  EXPECT_EQ(samplesIn(layerOf(pin, &notes)).size(), 3u);
  EXPECT_TRUE(notes.empty());
  pin.frames[1].h[0][0] = made::kNan;
  EXPECT_EQ(samplesIn(layerOf(pin, &notes)).size(), 2u);
  EXPECT_EQ(notes, WriteNotes{"no key in 2: there is no transform"});
  pin.frames.resize(2);
  pin.frames.erase(pin.frames.begin());
  EXPECT_THROW(layerOf(pin), std::invalid_argument);
}

TEST(UsdaWriter, NamesThePrimAsPrimsAreNamed) {
  const std::map<std::string, std::string> names = {
      {"sign 1", "sign_1"}, {"1a", "_1a"}, {"", "_"}, {"\xC3\xA4\"\n", "____"}, {"aZ_9", "aZ_9"}};
  for (const auto& [name, prim] : names) {
    Pin pin = made::pinOf(kRectangle, {kIdentity});
    pin.name = name;
    const std::string text = layerOf(pin);
    EXPECT_NE(text.find("def Xform \"" + prim + "\"\n"), std::string::npos) << name;
    EXPECT_NE(text.find("defaultPrim = \"" + prim + "\"\n"), std::string::npos) << name;
    EXPECT_EQ(made::parts(text, '\n').size(), 34u);
  }
}

// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>

#include "shot/files/track_writers.h"
#include "tests/shot/files/made_pin.h"

using namespace cornerpin;

namespace {

constexpr Quad kRectangle = {{{100.5, 20.25}, {1820.0, 20.25}, {1820.0, 1000.0}, {100.5, 1000.0}}};

std::string scriptOf(const Pin& pin, WriteNotes* notes = nullptr) {
  return made::textOf([&](OutputFile& out) { return writeNatronPin(pin, out); }, notes);
}

// By parameter, frame and dimension.
std::map<std::tuple<std::string, double, double>, double> valuesIn(
    const std::vector<std::vector<std::string>>& calls) {
  std::map<std::tuple<std::string, double, double>, double> values;
  for (const auto& call : calls) {
    if (call.size() != 5 || call[0] != "set") continue;
    values[{call[1], std::stod(call[2]), std::stod(call[3])}] = std::stod(call[4]);
  }
  return values;
}

}  // namespace

TEST(NatronWriter, KeysTheCornersFromTheBottomLeftAround) {
  const Pin pin = made::pinOf(kRectangle, made::someTransforms(), 1001);
  WriteNotes notes;
  const auto calls = made::callsOf(scriptOf(pin, &notes));
  EXPECT_TRUE(notes.empty());
  EXPECT_EQ(calls[0], (std::vector<std::string>{"new", "net.sf.openfx.CornerPinPlugin"}));
  EXPECT_EQ(calls.size(), 1 + 8 + 8 * pin.frames.size());
  const auto values = valuesIn(calls);
  EXPECT_EQ(values.size(), 8 + 8 * pin.frames.size());
  for (std::size_t corner = 0; corner < 4; ++corner) {
    const std::string number = std::to_string(corner + 1);
    EXPECT_EQ(values.at({"from" + number, 1001, 0}), kRectangle[corner].x);
    EXPECT_EQ(values.at({"from" + number, 1001, 1}), kRectangle[corner].y);
    for (const PinFrame& frame : pin.frames) {
      EXPECT_EQ(values.at({"to" + number, frame.frame, 0}), frame.to[corner].x);
      EXPECT_EQ(values.at({"to" + number, frame.frame, 1}), frame.to[corner].y);
    }
  }
}

TEST(NatronWriter, LeavesOutFramesWithoutACorner) {
  Pin pin = made::pinOf(kRectangle, made::someTransforms(), -1);
  pin.frames[0].to[kBottomRight].y = made::kNan;
  WriteNotes notes;
  const auto values = valuesIn(made::callsOf(scriptOf(pin, &notes)));
  EXPECT_EQ(values.size(), 8u + 8u * 2u);
  EXPECT_EQ(values.count({"to1", -1, 0}), 0u);
  EXPECT_EQ(values.at({"from1", 0, 0}), 100.5);
  EXPECT_EQ(values.at({"to1", 0, 0}), pin.frames[1].to[0].x);
  EXPECT_EQ(notes, WriteNotes{"no key in -1: there a corner is on or behind the horizon"});
}

TEST(NatronWriter, TakesEveryNameAndTellsItsConvention) {
  for (const std::string& name :
       {std::string("a\nimport nothing"), std::string("\xFF\r\""), std::string()}) {
    Pin pin = made::pinOf(kRectangle, made::someTransforms());
    pin.name = name;
    const std::string script = scriptOf(pin);
    EXPECT_EQ(made::callsOf(script).at(0).at(0), "new") << script;
    EXPECT_NE(script.find("\n# In pixels, x to the right and y up"), std::string::npos);
  }
}

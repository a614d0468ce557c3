// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "shot/files/track_writers.h"
#include "tests/shot/files/made_pin.h"

using namespace cornerpin;

namespace {

constexpr Quad kPicture = {{{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}};

// A pin in units of the picture.
Pin unitPin() {
  Pin pin = made::pinOf(kPicture, made::someTransforms(), 1001);
  for (PinFrame& frame : pin.frames) {
    for (Point& corner : frame.to) corner = {corner.x / 1920.0, corner.y / 1080.0};
  }
  return pin;
}

std::string scriptOf(const Pin& pin, WriteNotes* notes = nullptr) {
  return made::textOf([&](OutputFile& out) { return writeBlenderPin(pin, out); }, notes);
}

}  // namespace

TEST(BlenderWriter, KeysEverySocketInEveryFrame) {
  const Pin pin = unitPin();
  WriteNotes notes;
  const auto calls = made::callsOf(scriptOf(pin, &notes));
  EXPECT_TRUE(notes.empty());
  ASSERT_EQ(calls.size(), 2 + 4 * pin.frames.size()) << calls[0].back();
  EXPECT_EQ(calls[0], (std::vector<std::string>{"new", "CompositorNodeCornerPin"}));
  EXPECT_EQ(calls[1], (std::vector<std::string>{"label", "sign"}));
  std::map<std::pair<std::string, double>, Point> keys;
  for (std::size_t i = 2; i < calls.size(); ++i) {
    ASSERT_EQ(calls[i].size(), 6u);
    EXPECT_EQ(calls[i][0], "key");
    EXPECT_EQ(std::stod(calls[i][5]), 0.0);
    keys[{calls[i][1], std::stod(calls[i][2])}] = {std::stod(calls[i][3]), std::stod(calls[i][4])};
  }
  EXPECT_EQ(keys.size(), 4 * pin.frames.size());
  for (const PinFrame& frame : pin.frames) {
    const auto expectKey = [&](const char* socket, Point p) {
      const Point key = keys.at({socket, frame.frame});
      EXPECT_EQ(key.x, p.x) << socket << " " << frame.frame;
      EXPECT_EQ(key.y, p.y) << socket << " " << frame.frame;
    };
    expectKey("Lower Left", frame.to[0]);
    expectKey("Lower Right", frame.to[1]);
    expectKey("Upper Right", frame.to[2]);
    expectKey("Upper Left", frame.to[3]);
  }
}

TEST(BlenderWriter, WritesPlainDecimalsAndItsConvention) {
  Pin pin = unitPin();
  pin.frames.resize(1);
  pin.frames[0].to[kBottomLeft] = {2.5e-7, -1e17};
  const std::string script = scriptOf(pin);
  EXPECT_NE(script.find("(1001, (0, 0.000925925925925926), (0.0005208333333333333, "
                        "0.000925925925925926), (0.00000025, -100000000000000000), "
                        "(0.0005208333333333333, 0)),\n"),
            std::string::npos)
      << script;
  EXPECT_NE(script.find("\n# x grows to the right and y up"), std::string::npos);
}

TEST(BlenderWriter, LeavesOutFramesWithoutACornerAndSaysWhatItCannotCarry) {
  Pin pin = unitPin();
  pin.frames[1].to[kTopLeft] = {made::kNan, made::kNan};
  pin.from[0].x = 0.25;
  WriteNotes notes;
  const auto calls = made::callsOf(scriptOf(pin, &notes));
  ASSERT_EQ(calls.size(), 2u + 4u * 2u);
  for (const auto& call : calls) EXPECT_TRUE(call.size() < 3 || call[2] != "1002.0");
  ASSERT_EQ(notes.size(), 2u);
  EXPECT_EQ(notes[0], "no key in 1002: there a corner is on or behind the horizon");
  EXPECT_EQ(notes[1],
            "the rectangle is not the whole picture, and the file tells only where its corners "
            "go: pin something that is as large as the rectangle");
}

TEST(BlenderWriter, TakesEveryName) {
  for (const std::string& name :
       {std::string("a\"b\\n\n#\r'"), std::string("\xC3\xA4 \xE2\x82\xAC"), std::string("\xFF"),
        std::string()}) {
    Pin pin = unitPin();
    pin.name = name;
    const auto calls = made::callsOf(scriptOf(pin));
    EXPECT_EQ(calls.at(0).at(0), "new") << name << calls[0].back();
  }
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/difference_text.h"

#include <gtest/gtest.h>

#include "tests/shot/compare/two_results.h"

using namespace cornerpin;

namespace {

std::string textOf(const ShotResult& a, const ShotResult& b, std::optional<double> most = {}) {
  return differenceText(differenceOf(a, b), {"a.json", "b.json"}, a, most);
}

// The top right corner of frame 7 is 3 pixels further right.
ShotResult moved() {
  ShotResult result = steadyShot(0, 9, 4);
  result.frames[7].h[0][0] = 1.03;
  return result;
}

}  // namespace

TEST(DifferenceText, SaysThatNothingDiffers) {
  EXPECT_EQ(textOf(moved(), moved()), "Same: nothing differs.\n");
}

TEST(DifferenceText, NamesTheWorstFrameAndCorner) {
  EXPECT_EQ(textOf(steadyShot(0, 9, 4), moved()),
            "corners       differ in 1 of 10 frames, worst 3 px in frame 7, the top right corner\n"
            "              ▁▁▁▁▁▁▁█▁▁\n\n"
            "Different: corners move in 1 of 10 frames: 7. Worst: 3 px in frame 7, the top right "
            "corner.\n");
}

TEST(DifferenceText, CountsWhatIsBeyondTheLimit) {
  const ShotResult first = steadyShot(0, 9, 4);
  EXPECT_TRUE(isDifferent(differenceOf(first, moved()), 2.0));
  EXPECT_FALSE(isDifferent(differenceOf(first, moved()), 3.5));
  const std::string same = "\n\nSame: no corner moves by more than 3.5 px.\n";
  const std::string text = textOf(first, moved(), 3.5);
  EXPECT_EQ(text.substr(text.size() - same.size()), same);
  EXPECT_NE(textOf(first, moved(), 2.0).find("\nDifferent: corners move by more than 2 px in 1 of"),
            std::string::npos);
}

TEST(DifferenceText, NamesWhatIsInOneOnly) {
  ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = steadyShot(2, 9, 4);
  first.tracks.resize(7);
  for (std::size_t i = 0; i < 7; ++i) first.tracks[i].name = std::string(1, char('a' + i));
  second.provenance.options->drop = {"n*"};
  EXPECT_EQ(textOf(first, second),
            "options       no other option  (a.json)\n"
            "              --drop 'n*'  (b.json)\n"
            "tracks        7 only in a.json: a, b, c, d, e and 2 more\n"
            "frames        2 only in a.json: 0-1\n\n"
            "Different: frames are in one only.\n");
  EXPECT_TRUE(isDifferent(differenceOf(first, second), 1.0));
}

// Options count unless only pixels do.
TEST(DifferenceText, CountsOptionsUnlessPixelsAreAsked) {
  const ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = first;
  second.provenance.options->hold = true;
  EXPECT_TRUE(isDifferent(differenceOf(first, second), {}));
  EXPECT_FALSE(isDifferent(differenceOf(first, second), 0.0));
  EXPECT_NE(textOf(first, second, 0.0).find("\n\nSame: no corner moves.\n"), std::string::npos);
  EXPECT_NE(textOf(first, second).find("\n\nDifferent: no corner moves, but see above.\n"),
            std::string::npos);
}

TEST(DifferenceText, SaysWhyNothingIsCompared) {
  ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = steadyShot(0, 9, 6);
  first.frames[6].verdict.status = second.frames[4].verdict.status = Status::Held;
  EXPECT_EQ(textOf(first, second, 1.0),
            "base frame    4 and 6\n"
            "reference     frames 4 and 6: not compared\n\n"
            "Different: the corners cannot be compared: frame 4 cannot be the reference: it was "
            "held: take another one, for both files with cornerpin rebase.\n");
}

TEST(DifferenceText, NamesTheProgramsAndTheFilesThatResultsWereMadeOf) {
  ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = first;
  first.provenance.program = {{"cornerpin", "0.1.0", "12ab"}};
  second.provenance.program = {{"cornerpin", "0.2.0", ""}};
  second.provenance.input = {{"shot.csv", "34cd", "csv", 240}};
  EXPECT_EQ(textOf(first, second),
            "program       cornerpin 0.1.0, commit 12ab  (a.json)\n"
            "              cornerpin 0.2.0  (b.json)\n"
            "tracks from   not known  (a.json)\n"
            "              shot.csv, 240 rows, SHA-256 34cd  (b.json)\n\n"
            "Different: no corner moves, but see above.\n");
}

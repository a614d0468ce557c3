// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/pin_scan.h"

#include <gtest/gtest.h>

#include "shot/files/input_error.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

class File {
 public:
  explicit File(const std::string& text) { writeFile(path(), text); }
  std::string path() const { return folder_ / "pin"; }

 private:
  TemporaryFolder folder_;
};

}  // namespace

TEST(PinScan, TakesTheKeysOfScripts) {
  const File file(
      "# of 3 lines (1, 2)\n"
      "FROM = ((0, 0), (1, 0))\n"
      "    (1001, (0.5, -2), (3e-07, 4)),\n"
      "    (-3, (1, 2), (3, 4.25)),\n"
      "    (7, (1, 2), (3, 4, 5)),\n"
      "    (8.5, (1, 2), (3, 4)),\n"
      "]\n");
  EXPECT_EQ(numbersInLines(file.path(), 4),
            (KeyedNumbers{{1001, {0.5, -2.0, 3e-7, 4.0}}, {-3, {1.0, 2.0, 3.0, 4.25}}}));
}

TEST(PinScan, TakesTheKeysOfLayers) {
  const File file(
      "    startTimeCode = 1\n"
      "        1: ( (1, 2, 0, 3), (4, 5, 0, 6), (0, 0, 1, 0), (7, 8, 0, 1) ),\n");
  EXPECT_EQ(numbersInLines(file.path(), 16),
            (KeyedNumbers{{1, {1, 2, 0, 3, 4, 5, 0, 6, 0, 0, 1, 0, 7, 8, 0, 1}}}));
}

TEST(PinScan, TakesTheSectionsOfKeyframeText) {
  const File file(
      "Adobe After Effects 6.0 Keyframe Data\n\n\tUnits Per Second\t24\n\n"
      "Position\n\tFrame\tX pixels\tY pixels\tZ pixels\n\t0\t5\t6.5\t0\n\t1\t7\t8\t0\n\n"
      "Rotation\n\tFrame\tDegrees\n\t1\t-3.5\nEnd of Keyframe Data\n");
  auto sections = numbersInSections(file.path());
  EXPECT_EQ(sections["Position"], (KeyedNumbers{{0, {5.0, 6.5, 0.0}}, {1, {7.0, 8.0, 0.0}}}));
  EXPECT_EQ(sections["Rotation"], (KeyedNumbers{{1, {-3.5}}}));
}

TEST(PinScan, TakesTheMatrixOfANode) {
  const File file(
      "CornerPin2D {\n to1 {{curve x1 5} 6}\n"
      " transform_matrix {{{curve L x3 2 x4 2.5 2.75} 0.125 0 -7}\n"
      "   {0 {curve x3 1 x5 3} 0 1e-3} {0 0 1 0} {0 0 0 1}}\n name pin\n}\n");
  const ScannedMatrix matrix(file.path());
  EXPECT_EQ(matrix.at(3), (Homography{{{2, 0.125, -7}, {0, 1, 1e-3}, {0, 0, 1}}}));
  EXPECT_EQ(matrix.at(5), (Homography{{{2.75, 0.125, -7}, {0, 3, 1e-3}, {0, 0, 1}}}));
  EXPECT_EQ(matrix.at(4), std::nullopt);
  EXPECT_EQ(matrix.at(0), std::nullopt);
}

TEST(PinScan, TakesNoMatrixThatIsNotWhole) {
  EXPECT_EQ(ScannedMatrix(File("CornerPin2D {\n name pin\n}\n").path()).at(1), std::nullopt);
  const File cut(" transform_matrix {{1 0 0 0} {0 1 0 0} {0 0 1 0} {0 0 0");
  EXPECT_EQ(ScannedMatrix(cut.path()).at(1), std::nullopt);
  const File closed(" transform_matrix }}}} 1 2 { x\n");
  EXPECT_EQ(ScannedMatrix(closed.path()).at(1), std::nullopt);
}

TEST(PinScan, RefusesWhatIsNotThere) {
  EXPECT_THROW(numbersInLines("/nowhere", 8), InputError);
  EXPECT_THROW(numbersInSections("/nowhere"), InputError);
  EXPECT_THROW(ScannedMatrix("/nowhere"), InputError);
}

// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <locale>

#include "shot/files/result_file.h"
#include "shot/files/track_reader.h"
#include "shot/solve/shot_solver.h"
#include "shot/solve/tracks.h"
#include "tests/support/files.h"

namespace {

std::string solved(const TemporaryFolder& folder, cornerpin::Format format) {
  const cornerpin::Tracks tracks = cornerpin::readTracks(CORNERPIN_DATA "/facade.csv");
  cornerpin::OutputFile out(folder / "r");
  const cornerpin::ShotResult result = cornerpin::solveShot(tracks);
  cornerpin::writeResult(result, format, out);
  out.commit();
  return readFile(folder / "r");
}

struct CommaDecimals : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(Locale, OfCppDoesNotChangeAByte) {
  const TemporaryFolder folder;
  const std::string json = solved(folder, cornerpin::Format::Json);
  const std::string csv = solved(folder, cornerpin::Format::Csv);
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaDecimals));
  const std::string jsonThere = solved(folder, cornerpin::Format::Json);
  const std::string csvThere = solved(folder, cornerpin::Format::Csv);
  std::locale::global(before);
  EXPECT_EQ(jsonThere, json);
  EXPECT_EQ(csvThere, csv);
}

// Builds a German locale of its own, so that none needs to be installed.
TEST(Locale, OfCDoesNotChangeAByte) {
  const TemporaryFolder folder;
  const std::string build =
      "localedef -i de_DE -f UTF-8 " + folder.path().string() + "/de_DE.UTF-8 >/dev/null 2>&1";
  const int ignored =
      std::system(build.c_str());  // warns on harmless things: its result says little
  (void)ignored;
  ::setenv("LOCPATH", folder.path().c_str(), 1);
  const bool there = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
  ::unsetenv("LOCPATH");
  if (!there) GTEST_SKIP() << "localedef cannot build de_DE (Debian package locales)";
  char text[16];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  const std::string there_json = solved(folder, cornerpin::Format::Json);
  const std::string there_csv = solved(folder, cornerpin::Format::Csv);
  std::setlocale(LC_ALL, "C");
  EXPECT_STREQ(text, "1,5");
  EXPECT_EQ(there_json, solved(folder, cornerpin::Format::Json));
  EXPECT_EQ(there_csv, solved(folder, cornerpin::Format::Csv));
}

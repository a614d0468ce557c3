// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>

#include "tests/support/files.h"
#include "tests/tools/program.h"

namespace {

// Three tracks over ten frames; what each line is made of the numbers is told.
template <class F>
std::string csv(F line) {
  std::string text = "track,frame,x,y\n";
  for (int t = 0; t < 3; ++t) {
    for (int f = 1; f <= 10; ++f) {
      const double x = 100.25 * (t + 1) + 1.5 * f + 0.125 * (f * f % 7);
      const double y = 300.5 - 41.0 * t + 2.25 * f * (t + 1);
      text += line("t" + std::to_string(t), f, x, y);
    }
  }
  return text;
}

std::string row(const std::string& name, int frame, double x, double y) {
  return name + "," + std::to_string(frame) + "," + std::to_string(x) + "," + std::to_string(y) +
         "\n";
}

std::string plain() { return csv(row); }

class TwoFiles {
 public:
  TwoFiles(const std::string& first, const std::string& second) {
    writeFile(this->first(), first);
    writeFile(this->second(), second);
  }
  std::string first() const { return folder_ / "a.csv"; }
  std::string second() const { return folder_ / "b.csv"; }
  Outcome check(std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"check", first(), second()});
    return cornerpin(more);
  }

 private:
  TemporaryFolder folder_;
};

}  // namespace

TEST(CheckCommand, EndsInNoughtWhereNothingDiffers) {
  const TwoFiles files(plain(), plain());
  const Outcome run = files.check();
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "Same: nothing differs.\n");
  EXPECT_EQ(run.err, "");
}

TEST(CheckCommand, EndsInFourAndNamesWhatDiffers) {
  const TwoFiles flipped(plain(), csv([](const std::string& name, int frame, double x, double y) {
                           return row(name, frame, x - 0.5, 1079.5 - y);
                         }));
  const Outcome run = flipped.check();
  EXPECT_EQ(run.code, 4);
  EXPECT_EQ(run.err, "");
  EXPECT_TRUE(contains(run.out, "\n\nDifferent: y flipped about 1080, half a pixel.\n")) << run.out;
  EXPECT_TRUE(contains(run.out, "x' = x - 0.5, y' = 1079.5 - y")) << run.out;
  const TwoFiles later(plain(), csv([](const std::string& name, int frame, double x, double y) {
                         return row(name, frame + 1, x, y);
                       }));
  EXPECT_TRUE(contains(later.check().out, "\nDifferent: frame +1.\n"));
}

TEST(CheckCommand, AllowsWhatItIsTold) {
  const TwoFiles files(plain(), csv([](const std::string& name, int frame, double x, double y) {
                         return row(name, frame, x + (frame == 4 ? 0.25 : 0.0), y);
                       }));
  EXPECT_EQ(files.check().code, 4);
  EXPECT_EQ(files.check({"--max", "0.2"}).code, 4);
  EXPECT_EQ(files.check({"--max", "0.3"}).code, 0);
  EXPECT_EQ(files.check({"--max", "-1"}).code, 2);
}

TEST(CheckCommand, ReadsAnyFormat) {
  const TwoFiles files("track,frame,x,y\nb,5,3.5,4\na,5,1,2\n",
                       R"({"cornerpin_tracks":1,"tracks":[{"name":"a","positions":[[5,1,2]]},)"
                       R"({"name":"b","positions":[[5,3.5,4]]}]})");
  EXPECT_EQ(files.check().out, "Same: nothing differs.\n");
  const Outcome wrong = files.check({"--from-second", "csv"});
  EXPECT_EQ(wrong.code, 3);
  EXPECT_EQ(files.check({"--from-first", "usda"}).code, 2);
  EXPECT_EQ(cornerpin({"check", files.first(), "/nowhere.csv"}).code, 3);
}

TEST(CheckCommand, ReadsStandardInputOnce) {
  const TwoFiles files(plain(), plain());
  ChildOptions options;
  options.in = files.first();
  EXPECT_EQ(cornerpin({"check", "-", files.second()}, options).code, 0);
  EXPECT_EQ(cornerpin({"check", "-", "-"}).err,
            "cornerpin: both files want standard input: name a file for one\n");
}

namespace {

// Two frames, in the second of which the surface lies 2 to the right.
constexpr const char* kResult =
    R"({"cornerpin":1,"base_frame":0,"base_tracks":4,"left_out":0,"units":"fit",)"
    R"("corners":[[0,0],[8,0],[8,8],[0,8]],"frames":[)"
    R"({"frame":0,"status":"base","tracks":4,"rms":0,"h":[[1,0,0],[0,1,0],[0,0,1]]},)"
    R"({"frame":1,"status":"solved","tracks":4,"rms":0,"h":[[1,0,2],[0,1,0],[0,0,1]]}]})";

// Where its corners go, as they are seen with y down, so far lower.
std::string corners(double down) {
  const auto rows = [&](const char* name, double x, double y) {
    return row(name, 0, x, y + down) + row(name, 1, x + 2.0, y + down);
  };
  return "track,frame,x,y\n" + rows("bottom_left", 0, 8) + rows("bottom_right", 8, 8) +
         rows("top_right", 8, 0) + rows("top_left", 0, 0);
}

}  // namespace

TEST(CheckCommand, ComparesTheCornersOfAResult) {
  const TwoFiles same(kResult, corners(0.0));
  EXPECT_EQ(same.check().code, 0) << same.check().out << same.check().err;
  const TwoFiles off(corners(0.0), kResult);
  EXPECT_EQ(off.check().code, 0);
  const TwoFiles half(kResult, corners(0.5));
  EXPECT_EQ(half.check().code, 4);
  EXPECT_TRUE(contains(half.check().out, "\nDifferent: half a pixel (+0.5 in y).\n"))
      << half.check().out;
  std::string right = kResult;
  const std::string quad = "[[0,0],[8,0],[8,8],[0,8]]";
  right.replace(right.find(quad), quad.size(), "[[0.5,0],[8.5,0],[8.5,8],[0.5,8]]");
  const TwoFiles results(kResult, right);
  EXPECT_EQ(results.check().code, 4);
  EXPECT_TRUE(contains(results.check().out, "\nDifferent: half a pixel (+0.5 in x).\n"))
      << results.check().out;
  const TwoFiles tracks(kResult, plain());
  EXPECT_EQ(tracks.check().code, 2);
  EXPECT_TRUE(contains(tracks.check().err, "has 3 tracks, and")) << tracks.check().err;
}

TEST(CheckCommand, ComparesAResultInCsv) {
  const TemporaryFolder folder;
  EXPECT_LT(
      cornerpin({"solve", kFacade, "-o", folder / "r.json", "-o", folder / "r.csv", "-q"}).code, 5);
  const Outcome run = cornerpin({"check", folder / "r.json", folder / "r.csv"});
  EXPECT_EQ(run.out, "Same: nothing differs.\n") << run.err;
  EXPECT_EQ(run.code, 0);
}

TEST(CheckCommand, KeepsControlCharactersFromTheTerminal) {
  const TwoFiles files("track,frame,x,y\n\x1b[31ma,1,1,2\n", "track,frame,x,y\nb,1,1,2\n");
  EXPECT_FALSE(contains(files.check().out, "\x1b")) << files.check().out;
  EXPECT_TRUE(contains(files.check().out, "?[31ma is b")) << files.check().out;
}

// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

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

namespace {

// How one file's numbers become another's, and how much its frames are later.
struct Change {
  double times = 1.0;
  double plusX = 0.0;
  double timesY = 1.0;
  double plusY = 0.0;
  int frames = 0;
};

constexpr int kFirst = 7;
constexpr int kMoving = 6;  // frames

using Corners = std::vector<std::pair<double, double>>;

// A corner of a quad that moves, grows and leans, by exact steps: bottom left, bottom right, top
// right, top left where y grows downwards.
Corners cornersIn(int i, const Change& c) {
  const double grows = 1.0 + 0.125 * i;
  const Corners square = {{100.0, 300.0}, {400.0, 324.0}, {416.0, 100.0}, {96.0, 120.0}};
  Corners corners;
  for (const auto& [x, y] : square) {
    const double movedX = grows * x + 0.25 * i * y + 3.0 * i * i;
    const double movedY = grows * y - 8.5 * i;
    corners.emplace_back(c.times * movedX + c.plusX, c.timesY * movedY + c.plusY);
  }
  return corners;
}

// A corner pin whose corners are those in this order.
std::string pinWith(const Change& c, const std::vector<std::size_t>& order = {0, 1, 2, 3}) {
  std::string text = "CornerPin2D {\n";
  for (std::size_t k = 0; k < 4; ++k) {
    std::string x;
    std::string y;
    for (int i = 0; i < kMoving; ++i) {
      const auto [px, py] = cornersIn(i, c)[order[k]];
      const std::string frame = " x" + std::to_string(kFirst + c.frames + i) + " ";
      x += frame + std::to_string(px);
      y += frame + std::to_string(py);
    }
    text += " to" + std::to_string(k + 1) + " {{curve L" + x + "} {curve L" + y + "}}\n";
  }
  return text + " name CornerPin1\n}\n";
}

// The transform between two triangles of numbers, by the differences of their corners.
std::string resultWith(const Change& c, bool asCsv) {
  std::string rows;
  const Corners first = cornersIn(0, c);
  const auto text = [](double number) { return fmt::format("{}", number); };
  for (int i = 0; i < kMoving; ++i) {
    // x' = a x + b y + m, y' = d y + n of the picture before the change, and of the numbers after.
    const double a = 1.0 + 0.125 * i;
    const double b = 0.25 * i * c.times / c.timesY;
    const double m = c.times * 3.0 * i * i + c.plusX - a * c.plusX - b * c.plusY;
    const double n = c.timesY * -8.5 * i + c.plusY - a * c.plusY;
    const std::string frame = std::to_string(kFirst + c.frames + i);
    const std::string status = i == 0 ? "base" : "solved";
    if (asCsv) {
      rows += frame + "," + text(a) + "," + text(b) + "," + text(m) + ",0," + text(a) + "," +
              text(n) + ",0,0,1," + status;
      for (const auto& [x, y] : cornersIn(i, c)) rows += "," + text(x) + "," + text(y);
      rows += "\n";
    } else {
      rows += (i == 0 ? "" : ",") + fmt::format(R"({{"frame":{},"status":"{}","tracks":4,"rms":0,)"
                                                R"("h":[[{},{},{}],[0,{},{}],[0,0,1]]}})",
                                                frame, status, a, b, m, a, n);
    }
  }
  if (asCsv) {
    return "frame,h00,h01,h02,h10,h11,h12,h20,h21,h22,status,qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3\n" +
           rows;
  }
  return fmt::format(
      R"({{"cornerpin":1,"base_frame":{},"base_tracks":4,"left_out":0,"units":"fit",)"
      R"("corners":[[{},{}],[{},{}],[{},{}],[{},{}]],"frames":[{}]}})",
      kFirst + c.frames, first[0].first, first[0].second, first[1].first, first[1].second,
      first[2].first, first[2].second, first[3].first, first[3].second, rows);
}

struct Named {
  Change change;
  const char* words;
};

const std::vector<Named> kNamed = {
    {{1.0, 0.0, -1.0, 1080.0, 0}, "y flipped about 1080"},
    {{1.0, 0.5, 1.0, 0.5, 0}, "half a pixel (+0.5 in x and y)"},
    {{1.0, -0.5, -1.0, 1079.5, 0}, "y flipped about 1080, half a pixel"},
    {{1.0, 0.0, 1.0, 0.0, 1}, "frame +1"},
    {{0.5, 0.0, 0.5, 0.0, 0}, "scaled by 0.5"},
    {{0.5, 0.0, 0.5, 0.0, -1}, "scaled by 0.5, frame -1"}};

}  // namespace

TEST(CheckCommand, NamesWhatDiffersBetweenPins) {
  EXPECT_EQ(TwoFiles(pinWith({}), pinWith({})).check().out, "Same: nothing differs.\n");
  for (const Named& named : kNamed) {
    const Outcome run = TwoFiles(pinWith({}), pinWith(named.change)).check();
    EXPECT_EQ(run.code, 4);
    EXPECT_TRUE(contains(run.out, fmt::format("\nDifferent: {}.\n", named.words))) << run.out;
  }
  const Outcome run = TwoFiles(pinWith({}), pinWith({}, {3, 2, 1, 0})).check();
  EXPECT_EQ(run.code, 4);
  EXPECT_TRUE(contains(run.out, "\nDifferent: corner order.\n")) << run.out;
}

TEST(CheckCommand, NamesWhatDiffersBetweenResults) {
  for (const bool asCsv : {false, true}) {
    EXPECT_EQ(TwoFiles(resultWith({}, !asCsv), resultWith({}, asCsv)).check().code, 0);
    for (const Named& named : kNamed) {
      const Outcome run = TwoFiles(resultWith({}, false), resultWith(named.change, asCsv)).check();
      EXPECT_EQ(run.code, 4);
      EXPECT_TRUE(contains(run.out, fmt::format("\nDifferent: {}.\n", named.words))) << run.out;
    }
  }
}

TEST(CheckCommand, NamesWhatDiffersBetweenAPinAndAResult) {
  const Outcome run = TwoFiles(resultWith({}, false), pinWith({}, {1, 2, 3, 0})).check();
  EXPECT_EQ(run.code, 4);
  EXPECT_TRUE(contains(run.out, "\nDifferent: corner order.\n")) << run.out;
}

TEST(CheckCommand, KeepsControlCharactersFromTheTerminal) {
  const TwoFiles files("track,frame,x,y\n\x1b[31ma,1,1,2\n", "track,frame,x,y\nb,1,1,2\n");
  EXPECT_FALSE(contains(files.check().out, "\x1b")) << files.check().out;
  EXPECT_TRUE(contains(files.check().out, "?[31ma is b")) << files.check().out;
}

// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/shared_options.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "shot/files/input_error.h"
#include "tests/support/child.h"
#include "tests/support/files.h"
#include "tests/support/terminal.h"

using namespace cornerpin;

namespace {

using Words = std::vector<std::string>;

// The option after a command line.
template <class Option>
Option parsed(Words words) {
  CLI::App app;
  Option option;
  option.addTo(app);
  std::reverse(words.begin(), words.end());  // the last one is parsed first
  app.parse(words);
  return option;
}

// The message of what `action` throws.
template <class Action>
std::string refusal(const Action& action) {
  try {
    action();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "nothing thrown";
}

// Tracks a and b in the frames 1 and 2.
Tracks smallShot() {
  Tracks tracks;
  tracks.names = {"a", "b"};
  for (int frame : {1, 2}) {
    for (int track : {0, 1}) {
      Observation o;
      o.track = track;
      o.frame = frame;
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

// The weights that a command line leaves: a1, b1, a2, b2.
std::vector<float> weightsAfter(const Words& words, const FrameRange& frames = {}) {
  Tracks tracks = smallShot();
  parsed<SelectionOptions>(words).apply(tracks, frames);
  std::vector<float> weights;
  for (const Observation& o : tracks.observations) weights.push_back(o.weight);
  return weights;
}

}  // namespace

TEST(TracksArgument, IsRequiredAndNotEmpty) {
  EXPECT_EQ(parsed<TracksArgument>({"in.csv"}).path, "in.csv");
  EXPECT_EQ(parsed<TracksArgument>({"-"}).path, "-");
  EXPECT_THROW(parsed<TracksArgument>({}), CLI::RequiredError);
  EXPECT_THROW(parsed<TracksArgument>({""}), CLI::ValidationError);
}

TEST(ResultArgument, IsRequiredAndNotEmpty) {
  EXPECT_EQ(parsed<ResultArgument>({"in.json"}).path, "in.json");
  EXPECT_EQ(parsed<ResultArgument>({"-"}).path, "-");
  EXPECT_THROW(parsed<ResultArgument>({}), CLI::RequiredError);
  EXPECT_THROW(parsed<ResultArgument>({""}), CLI::ValidationError);
}

TEST(OutputOptions, TakeTheFormatFromTheNameUnlessItIsNamed) {
  EXPECT_EQ(parsed<OutputOptions>({}).format(), Format::Json);
  EXPECT_EQ(parsed<OutputOptions>({"-o", "a.JSON"}).format(), Format::Json);
  EXPECT_EQ(parsed<OutputOptions>({"--output", "a.csv"}).format(), Format::Csv);
  EXPECT_EQ(parsed<OutputOptions>({"-o", "a.csv", "--format", "json"}).format(), Format::Json);
  EXPECT_EQ(parsed<OutputOptions>({"-o", "-", "--format", "csv"}).format(), Format::Csv);
  EXPECT_EQ(parsed<OutputOptions>({"-o", "-"}).format(), Format::Json);
  EXPECT_EQ(refusal([] {
              parsed<OutputOptions>({"-o", "a.txt"}).format();
            }),
            "\"a.txt\" ends neither in .json nor in .csv: add --format json or --format csv");
}

TEST(OutputOptions, RefuseUnknownFormatsAndAFormatWithoutAFile) {
  EXPECT_THROW(parsed<OutputOptions>({"-o", "a", "--format", "xml"}), CLI::ValidationError);
  EXPECT_EQ(refusal([] {
              parsed<OutputOptions>({"--format", "json"}).format();
            }),
            "--format: no file is written: add -o FILE");
}

TEST(OutputOptions, KnowStandardOutput) {
  EXPECT_TRUE(parsed<OutputOptions>({"-o", "-"}).isStandardOutput());
  EXPECT_FALSE(parsed<OutputOptions>({"-o", "a.csv"}).isStandardOutput());
  EXPECT_FALSE(parsed<OutputOptions>({}).isStandardOutput());
}

TEST(JsonOption, IsAFlag) {
  EXPECT_FALSE(parsed<JsonOption>({}).given);
  EXPECT_TRUE(parsed<JsonOption>({"--json"}).given);
}

TEST(BaseOption, TakesAFrameOrAuto) {
  EXPECT_EQ(parsed<BaseOption>({}).value(), std::nullopt);
  EXPECT_EQ(parsed<BaseOption>({"--base", "auto"}).value(), std::nullopt);
  EXPECT_EQ(parsed<BaseOption>({"--base", "33"}).value(), 33);
  EXPECT_EQ(parsed<BaseOption>({"--base", "-4"}).value(), -4);
  for (const char* text : {"", "first", "1.5", "1 ", "2147483648"}) {
    EXPECT_EQ(refusal([&] { BaseOption{text}.value(); }),
              std::string("--base takes a frame number or auto, not \"") + text + "\"");
  }
}

TEST(ParseQuad, ReadsEightNumbers) {
  const Quad quad = parseQuad("-1,2.5,3e1,4,5,6,7,-8");
  EXPECT_EQ(quad[0].x, -1.0);
  EXPECT_EQ(quad[0].y, 2.5);
  EXPECT_EQ(quad[1].x, 30.0);
  EXPECT_EQ(quad[3].y, -8.0);
}

TEST(ParseQuad, RefusesAnythingElse) {
  for (const char* text :
       {"", "1", "1,2,3,4,5,6,7", "1,2,3,4,5,6,7,8,9", "1,2,3,4,5,6,7,x", "1,2,3,4,5,6,7,inf",
        "1;2;3;4;5;6;7;8", "1,2,3,4,5,6,7,8 ", "1,,3,4,5,6,7,8", "1,2,3,4,5,6,7,"}) {
    EXPECT_THROW(parseQuad(text), std::invalid_argument) << text;
  }
}

TEST(ReferenceOption, TakesAFrame) {
  EXPECT_EQ(parsed<ReferenceOption>({}).value(), std::nullopt);
  EXPECT_EQ(parsed<ReferenceOption>({"--reference", "-4"}).value(), -4);
  EXPECT_THROW(parsed<ReferenceOption>({"--reference", ""}), CLI::ValidationError);
  for (const char* text : {"auto", "1.5", "2147483648"}) {
    EXPECT_EQ(refusal([&] { ReferenceOption{text}.value(); }),
              std::string("--reference takes a frame number, not \"") + text + "\"");
  }
}

namespace {

std::vector<NamedQuad> quadsOf(const Words& words, std::optional<int> frame = 0) {
  return parsed<QuadOptions>(words).value(frame);
}

}  // namespace

TEST(QuadOptions, AreNoneUnlessGiven) {
  EXPECT_TRUE(quadsOf({}).empty());
  EXPECT_TRUE(quadsOf({}, std::nullopt).empty());
  EXPECT_EQ(parsed<QuadOptions>({}).given(), nullptr);
  EXPECT_THROW(quadsOf({"--quads", "1,2"}), std::invalid_argument);
  EXPECT_THROW(quadsOf({"--quads", ""}), CLI::ValidationError);
  EXPECT_THROW(quadsOf({"--quad", ""}), CLI::ValidationError);
  EXPECT_THROW(quadsOf({"--quad", "0,0,9,0,9,9,0,9", "0,0,9,0,9,9,0,9"}), CLI::ExtrasError);
}

TEST(QuadOptions, GiveNamesOrCount) {
  const std::vector<NamedQuad> quads =
      quadsOf({"--quad", "0,0,9,0,9,9,0,8", "--quad", "a=b=0,0,9,0,9,9,0,7", "--quad",
               "0,0,9,0,9,9,0,6", "--quads", "0,0,9,0,9,9,0,5"});
  ASSERT_EQ(quads.size(), 4u);
  const char* const names[] = {"quad", "a=b", "quad2", "quad3"};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(quads[i].name, names[i]);
    EXPECT_EQ(quads[i].corners[3].y, 8.0 - static_cast<double>(i));
  }
}

TEST(QuadOptions, RefuseNamesAndShapesThatMeanNothing) {
  EXPECT_EQ(refusal([] {
              quadsOf({"--quad", "a=0,0,9,0,9,9,0,9", "--quad", "a=0,0,9,0,9,9,0,9"});
            }),
            "the quad \"a\" is given twice");
  EXPECT_EQ(refusal([] {
              quadsOf({"--quad", "quad=0,0,9,0,9,9,0,9", "--quads", "0,0,9,0,9,9,0,9"});
            }),
            "the quad \"quad\" is given twice");
  EXPECT_EQ(refusal([] { quadsOf({"--quad", "=0,0,9,0,9,9,0,9"}); }), "a quad's name is empty");
  EXPECT_EQ(refusal([] {
              quadsOf({"--quad", "sign=0,0,9,9,9,0,0,9"});
            }),
            "the quad \"sign\" crosses itself: give its corners in the order around it");
}

TEST(QuadOptions, WantToKnowTheFrame) {
  EXPECT_EQ(refusal([] {
              quadsOf({"--quad", "0,0,9,0,9,9,0,9"}, std::nullopt);
            }),
            "--quad: on which frame were the corners read? Add --reference FRAME");
  EXPECT_EQ(refusal([] {
              quadsOf({"--quads", "0,0,9,0,9,9,0,9"}, std::nullopt);
            }),
            "--quads: on which frame were the corners read? Add --reference FRAME");
}

TEST(QuadOptions, ReadAFileOfQuads) {
  const TemporaryFolder folder;
  const std::string corners = "[[0,0],[9,0],[9,9],[0,9]]";
  writeFile(folder / "q.json",
            R"({"reference_frame":7,"quads":[{"name":"door","corners":)" + corners + "}]}");
  writeFile(folder / "any", "{\"sign\":" + corners + "}");
  const std::vector<NamedQuad> quads =
      quadsOf({"--quad", "0,0,9,0,9,9,0,9", "--quads", folder / "q.json"}, 7);
  ASSERT_EQ(quads.size(), 2u);
  EXPECT_EQ(quads[1].name, "door");
  EXPECT_EQ(quadsOf({"--quads", folder / "any"}, 3)[0].name, "sign");
  EXPECT_EQ(refusal([&] {
              quadsOf({"--quads", folder / "q.json"}, 8);
            }),
            "--quads: the quads of \"" + folder / "q.json" +
                "\" were read on frame 7, not on 8: add --reference 7");
  EXPECT_THROW(quadsOf({"--quads", folder / "none.json"}), InputError);
}

TEST(SelectionOptions, MayBeGivenMoreThanOnce) {
  EXPECT_EQ(weightsAfter({}), (std::vector<float>{1, 1, 1, 1}));
  EXPECT_EQ(weightsAfter({"--drop", "a:1", "--drop", "b:2"}), (std::vector<float>{0, 1, 1, 0}));
  EXPECT_EQ(weightsAfter({"--keep", "a:1", "--keep", "b"}), (std::vector<float>{1, 1, 0, 1}));
  EXPECT_EQ(weightsAfter({"--keep", "b", "--drop", "b:1"}), (std::vector<float>{0, 0, 0, 1}));
}

// A list may name frames that the range leaves out.
TEST(SelectionOptions, ApplyWithinTheFrames) {
  EXPECT_EQ(weightsAfter({"--drop", "a:1", "--drop", "b:2"}, {2, 9}), (std::vector<float>{1, 0}));
  EXPECT_EQ(refusal([] {
              weightsAfter({}, {3, 9});
            }),
            "--frames: \"3-9\" has no frame with a track: take some from 1 to 2");
  EXPECT_EQ(refusal([] {
              weightsAfter({"--keep", "a:1"}, {2, 2});
            }),
            "--keep and --drop leave no track in the frames of --frames: keep or drop others");
}

TEST(FramesOption, IsARangeOrAll) {
  EXPECT_TRUE(parsed<FramesOption>({}).value().isAll());
  EXPECT_EQ(parsed<FramesOption>({"--frames", "-10--3"}).value(), (FrameRange{-10, -3}));
  EXPECT_EQ(parsed<FramesOption>({"--frames=-5"}).value(), (FrameRange{-5, -5}));
  EXPECT_THROW(parsed<FramesOption>({"--frames", ""}), CLI::ValidationError);
  EXPECT_EQ(refusal([] {
              parsed<FramesOption>({"--frames", "5-1"}).value();
            }),
            "--frames: \"5-1\" runs backwards: write 1-5");
}

TEST(TracksArgument, NamesItsFileWithoutTheFolder) {
  const TemporaryFolder folder;
  writeFile(folder / "a.csv", "");
  EXPECT_EQ(parsed<TracksArgument>({folder / "a.csv"}).fileName(), "a.csv");
  for (const char* path : {"-", "/dev/stdin", "/dev/null", "/", "/nowhere/a.csv"}) {
    EXPECT_EQ(parsed<TracksArgument>({path}).fileName(), "") << path;
  }
}

TEST(SelectionOptions, TakeOneWordEach) {
  EXPECT_THROW(parsed<SelectionOptions>({"--drop", "a", "b"}), CLI::ExtrasError);
  EXPECT_THROW(parsed<SelectionOptions>({"--keep", "a", "b"}), CLI::ExtrasError);
}

TEST(SelectionOptions, NameTheOptionThatIsRefused) {
  EXPECT_EQ(refusal([] {
              weightsAfter({"--drop", "c"});
            }),
            "--drop: \"c\" names no track of this shot: take one of a, b");
  EXPECT_EQ(refusal([] {
              weightsAfter({"--keep", "a:9"});
            }),
            "--keep: \"a:9\" names no frame of this shot: take some from 1 to 2");
  EXPECT_EQ(refusal([] {
              weightsAfter({"--keep", "a", "--drop", "a"});
            }),
            "--keep and --drop leave no track: keep or drop others");
}

TEST(UnitsOption, IsFitOrRaw) {
  EXPECT_EQ(parsed<UnitsOption>({}).value(), Units::Fit);
  EXPECT_EQ(parsed<UnitsOption>({"--units", "fit"}).value(), Units::Fit);
  EXPECT_EQ(parsed<UnitsOption>({"--units", "raw"}).value(), Units::Raw);
  EXPECT_THROW(parsed<UnitsOption>({"--units", "pixels"}), CLI::ValidationError);
}

TEST(LossOption, IsOneOfFour) {
  EXPECT_EQ(parsed<LossOption>({}).value(), Loss::Tukey);
  for (Loss loss : {Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey}) {
    EXPECT_EQ(parsed<LossOption>({"--loss", nameOf(loss)}).value(), loss);
  }
  EXPECT_THROW(parsed<LossOption>({"--loss", "some"}), CLI::ValidationError);
}

TEST(HoldOption, IsAFlag) {
  EXPECT_FALSE(parsed<HoldOption>({}).given);
  EXPECT_TRUE(parsed<HoldOption>({"--hold"}).given);
}

TEST(SeedOption, TakesAWholeNumberOf64Bits) {
  EXPECT_EQ(parsed<SeedOption>({}).value(), 1u);
  EXPECT_EQ(parsed<SeedOption>({"--seed", "18446744073709551615"}).value(),
            std::numeric_limits<std::uint64_t>::max());
  for (const char* text : {"", "-1", "1.5", "18446744073709551616"}) {
    EXPECT_EQ(refusal([&] { SeedOption{text}.value(); }),
              std::string("--seed takes a whole number from 0 to 18446744073709551615, not \"") +
                  text + "\"");
  }
}

TEST(ThreadsOption, TakesAWholeNumberFrom1To1024) {
  EXPECT_EQ(parsed<ThreadsOption>({}).value(), 2u);
  EXPECT_EQ(parsed<ThreadsOption>({"--threads", "1024"}).value(), 1024u);
  for (const char* text : {"", "0", "-1", "1.5", "1025", "4294967297", "two"}) {
    EXPECT_EQ(refusal([&] { ThreadsOption{text}.value(); }),
              std::string("--threads takes a whole number from 1 to 1024, not \"") + text + "\"");
  }
}

TEST(SmoothOption, TakesPixelsAboveZero) {
  EXPECT_FALSE(parsed<SmoothOption>({}).value());
  EXPECT_EQ(parsed<SmoothOption>({"--smooth", "0.25"}).value(), 0.25);
  for (const char* text : {"0", "-1", "inf", "nan", "1px", "1e999"}) {
    EXPECT_EQ(refusal([&] { SmoothOption{text}.value(); }),
              std::string("--smooth takes a number of pixels above 0, not \"") + text + "\"");
  }
  EXPECT_THROW(parsed<SmoothOption>({"--smooth", ""}), CLI::ValidationError);
}

TEST(FillOption, IsAFlag) {
  EXPECT_FALSE(parsed<FillOption>({}).given);
  EXPECT_TRUE(parsed<FillOption>({"--fill"}).given);
}

TEST(AtOption, TakesListsOfFrames) {
  EXPECT_TRUE(parsed<AtOption>({}).value().empty());
  EXPECT_EQ(parsed<AtOption>({"--at", "10.5,11.25", "--at", "-3"}).value(),
            (std::vector<double>{10.5, 11.25, -3}));
  for (const char* text : {"", "x", "1.5s", "inf", "nan", "1e999"}) {
    EXPECT_EQ(refusal([&] { AtOption{{std::string("1,") + text}}.value(); }),
              std::string("--at takes frames such as 10.5,11.25, not \"") + text + "\"");
  }
  EXPECT_THROW(parsed<AtOption>({"--at", ""}), CLI::ValidationError);
}

TEST(TalkOptions, AreQuietOrVerboseOrNeither) {
  EXPECT_FALSE(parsed<TalkOptions>({}).quiet.given);
  EXPECT_FALSE(parsed<TalkOptions>({}).verbose);
  EXPECT_TRUE(parsed<TalkOptions>({"-q"}).quiet.given);
  EXPECT_TRUE(parsed<TalkOptions>({"--quiet"}).quiet.given);
  EXPECT_TRUE(parsed<TalkOptions>({"--verbose"}).verbose);
  EXPECT_NO_THROW(parsed<TalkOptions>({"--verbose"}).check());
  EXPECT_EQ(refusal([] {
              parsed<TalkOptions>({"-q", "--verbose"}).check();
            }),
            "--quiet and --verbose exclude each other: leave one out");
}

TEST(ColourOption, IsOneOfThree) {
  EXPECT_EQ(parsed<ColourOption>({}).value(), Colour::Auto);
  EXPECT_EQ(parsed<ColourOption>({"--color", "auto"}).value(), Colour::Auto);
  EXPECT_EQ(parsed<ColourOption>({"--color", "always"}).value(), Colour::Always);
  EXPECT_EQ(parsed<ColourOption>({"--color", "never"}).value(), Colour::Never);
  EXPECT_THROW(parsed<ColourOption>({"--color", "red"}), CLI::ValidationError);
}

namespace {

// The style where standard error is a terminal of this kind.
ProgressStyle onATerminal(const Words& words, bool quiet, const char* kind = "xterm") {
  const std::string text = writtenOnATerminal([&](const std::string& name) {
    ::dup2(::open(name.c_str(), O_RDWR | O_NOCTTY), STDERR_FILENO);
    ::setenv("TERM", kind, 1);
    const ProgressStyle style = parsed<ProgressOption>(words).value(quiet);
    std::fputc('0' + static_cast<int>(style), stderr);
  });
  return static_cast<ProgressStyle>(text.at(0) - '0');
}

}  // namespace

TEST(ProgressOption, IsABarForPeopleOnTerminalsAlone) {
  EXPECT_EQ(onATerminal({}, false), ProgressStyle::Bar);
  EXPECT_EQ(onATerminal({"--progress", "auto"}, false), ProgressStyle::Bar);
  EXPECT_EQ(onATerminal({}, true), ProgressStyle::None);
  EXPECT_EQ(onATerminal({}, false, "dumb"), ProgressStyle::None);
  EXPECT_EQ(onATerminal({"--progress", "none"}, false), ProgressStyle::None);
  const ChildRun elsewhere =
      runInChild([] { EXPECT_EQ(parsed<ProgressOption>({}).value(false), ProgressStyle::None); });
  EXPECT_TRUE(elsewhere.exited);
}

TEST(ProgressOption, IsForProgramsWhereverItIsAskedFor) {
  EXPECT_EQ(onATerminal({"--progress", "json"}, false), ProgressStyle::Json);
  EXPECT_EQ(parsed<ProgressOption>({"--progress", "json"}).value(true), ProgressStyle::Json);
  EXPECT_THROW(parsed<ProgressOption>({"--progress", "xml"}), CLI::ValidationError);
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/selection.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <utility>

using namespace cornerpin;

namespace {

// One row of each name in each frame.
Tracks shotOf(const std::vector<std::string>& names, int first, int last) {
  Tracks tracks;
  tracks.names = names;
  for (int f = first; f <= last; ++f) {
    for (std::size_t t = 0; t < names.size(); ++t) {
      Observation o;
      o.track = static_cast<std::int32_t>(t);
      o.frame = f;
      tracks.observations.push_back(o);
    }
  }
  EXPECT_TRUE(tracks.arrange());
  return tracks;
}

Tracks shotOf(const std::vector<std::string>& names) { return shotOf(names, -20, 99); }

Tracks smallShot() { return shotOf({"a", "b", "c:1"}, -2, 2); }

// What counts, "a-2 b-2 ...".
std::string selected(const std::string& keep, const std::string& drop) {
  Tracks tracks = smallShot();
  const auto parsed = [&](const std::string& text) {
    return text.empty() ? std::vector<Selected>() : parseSelection(text, tracks);
  };
  select(tracks, parsed(keep), parsed(drop));
  std::string left;
  for (const Observation& o : tracks.observations) {
    if (!(o.weight > 0.0f)) continue;
    left += tracks.names[static_cast<std::size_t>(o.track)] + std::to_string(o.frame) + " ";
  }
  EXPECT_EQ(tracks.observations.size(), 15u);
  return left;
}

}  // namespace

TEST(Select, DropsTracksAndStretches) {
  EXPECT_EQ(selected("", "a,c:1:-2-1"), "b-2 b-1 b0 b1 b2 c:12 ");
  EXPECT_EQ(selected("", "a,b,c:1:-2--1,c:1:1"), "c:10 c:12 ");
}

TEST(Select, KeepsNothingElse) {
  EXPECT_EQ(selected("b:0-2,a:-1", ""), "a-1 b0 b1 b2 ");
  EXPECT_EQ(selected("c:1", ""), "c:1-2 c:1-1 c:10 c:11 c:12 ");
}

TEST(Select, DropsFromWhatIsKept) { EXPECT_EQ(selected("b", "b:0-9"), "b-2 b-1 "); }

TEST(Select, LeavesAllWithoutASelection) {
  const std::string all = "a-2 b-2 c:1-2 a-1 b-1 c:1-1 a0 b0 c:10 a1 b1 c:11 a2 b2 c:12 ";
  EXPECT_EQ(selected("", ""), all);
}

TEST(Select, RefusesToLeaveNothing) {
  for (const auto& [keep, drop] : {std::pair("a", "a"), std::pair("a:1-6", "a:0-2")}) {
    try {
      selected(keep, drop);
      ADD_FAILURE() << keep;
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), "the selection leaves no track");
    }
  }
}

// What each item selects, "track:first-last ...".
std::string parsed(const std::string& text, const Tracks& tracks) {
  std::string items;
  for (const Selected& s : parseSelection(text, tracks)) {
    items += tracks.names[static_cast<std::size_t>(s.track)];
    if (!s.frames.isAll()) items += "@" + s.frames.text();
    items += " ";
  }
  return items;
}

std::string refusal(const std::string& text, const Tracks& tracks) {
  try {
    return "taken as " + parsed(text, tracks);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

TEST(ParseSelection, TakesPatterns) {
  const Tracks tracks = shotOf({"n1", "n2", "m1", "n*", "c:1", "c:2"});
  EXPECT_EQ(parsed("?1", tracks), "n1 m1 ");
  EXPECT_EQ(parsed("[mx]*,n[2-9]:5-", tracks), "m1 n2@5- ");
  EXPECT_EQ(parsed("n?:-10--3", tracks), "n1@-10--3 n2@-10--3 n*@-10--3 ");
  EXPECT_EQ(parsed("c:?", tracks), "c:1 c:2 ");
  EXPECT_EQ(parsed("?:1", tracks), "c:1 ");
  EXPECT_EQ(parsed("*:2:7", tracks), "c:2@7 ");
}

TEST(ParseSelection, TakesATracksWholeNameAsThatTrack) {
  const Tracks tracks = shotOf({"n1", "n*", "p", "1", "p,1", "a:5", "a", " b"});
  EXPECT_EQ(parsed("n*", tracks), "n* ");
  EXPECT_EQ(parsed("n*:5", tracks), "n*@5 ");
  EXPECT_EQ(parsed("p,1", tracks), "p,1 ");
  EXPECT_EQ(parsed("1,p", tracks), "1 p ");
  EXPECT_EQ(parsed("a:5", tracks), "a:5 ");
  EXPECT_EQ(parsed("a:6", tracks), "a@6 ");
  EXPECT_EQ(parsed(" b,p", tracks), " b p ");
}

TEST(ParseSelection, TakesNamesInQuotes) {
  const Tracks tracks = shotOf({"p,1", "a:5", "a", "say \"x\"", "\"a\"", "n*", "n1"});
  EXPECT_EQ(parsed("\"p,1\",a", tracks), "p,1 a ");
  EXPECT_EQ(parsed("a, \"p,1\":-5 ,\"n*\"", tracks), "a p,1@-5 n* ");
  EXPECT_EQ(parsed("\"a\":5", tracks), "a@5 ");
  EXPECT_EQ(parsed("\"a:5\":7-9", tracks), "a:5@7-9 ");
  EXPECT_EQ(parsed("\"say \"\"x\"\"\"", tracks), "say \"x\" ");
  EXPECT_EQ(parsed("\"a\"", tracks), "a ");
  EXPECT_EQ(parsed("\"\"\"a\"\"\"", tracks), "\"a\" ");
}

TEST(ParseSelection, TakesATrackTwice) {
  EXPECT_EQ(parsed("a,a,a:1", smallShot()), "a a a@1 ");
  EXPECT_EQ(selected("", "a,a,c:1,c:1"), "b-2 b-1 b0 b1 b2 ");
}

TEST(ParseSelection, NamesTheNearestTracks) {
  const Tracks tracks = shotOf({"t001", "t002", "t017", "sky,1", "sky 2"});
  const char* const first = ": take one of t001, t002, t017 ...";
  EXPECT_EQ(refusal("t0001", tracks),
            "\"t0001\" names no track of this shot: did you mean t001 or t002?");
  EXPECT_EQ(refusal("sky1", tracks),
            "\"sky1\" names no track of this shot: did you mean \"sky,1\" or sky 2?");
  EXPECT_EQ(refusal("n*", tracks), std::string("\"n*\" names no track of this shot") + first);
  EXPECT_EQ(refusal("\"corner\":5", tracks),
            std::string("\"\"corner\":5\" names no track of this shot") + first);
}

TEST(ParseSelection, NamesTheItemItRefuses) {
  const Tracks tracks = smallShot();
  const std::string form = ": write it like 60, 60-81 or 60-";
  const std::pair<const char*, std::string> cases[] = {
      {"", "\"\" is no track's name: take the comma beside it away"},
      {"a,", "\"\" is no track's name: take the comma beside it away"},
      {"a, ,b", "\"\" is no track's name: take the comma beside it away"},
      {"a,x:1-2", "\"x:1-2\" names no track of this shot: take one of a, b, c:1"},
      {"x:99", "\"x:99\" names no track of this shot: take one of a, b, c:1"},
      {":1", "\":1\" names no track of this shot: take one of a, b, c:1"},
      {"\"a", "\"\"a\" has a quote that is never closed: close it"},
      {"\"a\"b", "\"\"a\"b\" goes on behind its quotes: put a colon and frames there"},
      {"a:", "\"a:\" names no frames: \"\" is no range of frames" + form},
      {"a:x", "\"a:x\" names no frames: \"x\" is no range of frames" + form},
      {"\"a\":x", "\"\"a\":x\" names no frames: \"x\" is no range of frames" + form},
      {"a:2-1", "\"a:2-1\" names no frames: \"2-1\" runs backwards: write 1-2"},
      {"a:1-2x", "\"a:1-2x\" names no frames: \"1-2x\" is no range of frames" + form},
      {"a:99999999999",
       "\"a:99999999999\" names no frames: \"99999999999\" has a frame that is too large: take one "
       "from -2147483648 to 2147483647"},
      {"a:1.5", "\"a:1.5\" names no frames: \"1.5\" is no range of frames" + form},
      {"a:3", "\"a:3\" names no frame of this shot: take some from -2 to 2"},
      {"b:2-9,a:-9--3", "\"a:-9--3\" names no frame of this shot: take some from -2 to 2"}};
  for (const auto& [text, message] : cases) EXPECT_EQ(refusal(text, tracks), message);
}

// Names of all sorts of characters, and all sorts of frames.
TEST(ParseSelection, ReadsBackWhatItPrints) {
  std::mt19937 random(1);
  const std::string letters = "ab1:,\"*?[]- ";
  const auto number = [&random](unsigned size) { return static_cast<int>(random() % size); };
  std::set<std::string> names = {"a", "a:1", "a:1-", "\"a\"", "\"a\":1"};
  while (names.size() < 300) {
    std::string name(1, letters[random() % letters.size()]);
    for (int i = number(5); i > 0; --i) name += letters[random() % letters.size()];
    names.insert(name);
  }
  const Tracks tracks = shotOf({names.begin(), names.end()});
  int quoted = 0;
  for (int i = 0; i < 3000; ++i) {
    Selected one;
    one.track = number(300);
    const int first = number(120) - 20;
    if (i % 4 > 0) one.frames.first = one.frames.last = first;
    if (i % 4 == 2) one.frames.last = first + number(100);
    if (i % 4 == 3) one.frames.last = FrameRange().last;
    const std::string text = textOf(one, tracks);
    const std::vector<Selected> back = parseSelection(text, tracks);
    ASSERT_EQ(back.size(), 1u) << text;
    EXPECT_EQ(back[0].track, one.track) << text;
    EXPECT_EQ(back[0].frames, one.frames) << text;
    quoted += text[0] == '"';
  }
  EXPECT_GT(quoted, 1000);
  EXPECT_LT(quoted, 2900);
}

TEST(ParseSelection, PrintsQuotesOnlyWhereTheyAreNeeded) {
  const Tracks tracks = shotOf({"a", "a:1", "p,1", "n*"});
  EXPECT_EQ(textOf({0, {}}, tracks), "a");
  EXPECT_EQ(textOf({0, {2, 3}}, tracks), "a:2-3");
  EXPECT_EQ(textOf({0, {1, 1}}, tracks), "\"a\":1");
  EXPECT_EQ(textOf({1, {}}, tracks), "a:1");
  EXPECT_EQ(textOf({1, {-5, -5}}, tracks), "a:1:-5");
  EXPECT_EQ(textOf({2, {}}, tracks), "\"p,1\"");
  EXPECT_EQ(textOf({3, {}}, tracks), "\"n*\"");
}

TEST(Select, NotesWhatTookTheLastOfATrack) {
  Tracks tracks = shotOf({"a", "b", "c", "d", "e", "f"});
  for (Observation& o : tracks.observations) {
    if (o.track == 5) o.weight = 0.0f;
    if (o.track == 4 && o.frame >= 0) o.weight = 0.0f;
  }
  takeFrames(tracks, {0, 50});
  select(tracks, parseSelection("a,b,c:0-10,f", tracks), parseSelection("b,c:0-20,d,e", tracks));
  const std::vector<std::optional<Unused>> expected = {std::nullopt,          Unused::Dropped,
                                                       Unused::Dropped,       Unused::NotKept,
                                                       Unused::OutsideFrames, std::nullopt};
  EXPECT_EQ(tracks.emptied, expected);
}

TEST(TakeFrames, LeavesNothingOfTheOthers) {
  Tracks tracks = shotOf({"a", "b"});
  takeFrames(tracks, {});
  EXPECT_EQ(tracks.frameCount(), 120);
  EXPECT_TRUE(tracks.emptied.empty());
  takeFrames(tracks, {-3, 4});
  EXPECT_EQ(tracks.firstFrame(), -3);
  EXPECT_EQ(tracks.lastFrame(), 4);
  EXPECT_EQ(tracks.observations.size(), 16u);
  EXPECT_EQ(tracks.frameStarts.size(), 9u);
  EXPECT_EQ(tracks.inFrame(4).end() - tracks.inFrame(4).begin(), 2);
  EXPECT_EQ(tracks.inFrame(5).begin(), tracks.inFrame(5).end());
}

TEST(TakeFrames, RefusesToLeaveNothing) {
  for (const FrameRange range : {FrameRange{100, 200}, FrameRange{50, FrameRange().last}}) {
    Tracks tracks = shotOf({"a"});
    for (Observation& o : tracks.observations) o.weight = o.frame < 50 ? 1.0f : 0.0f;
    try {
      takeFrames(tracks, range);
      ADD_FAILURE() << range.text();
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(),
                "\"" + range.text() + "\" has no frame with a track: take some from -20 to 99");
    }
  }
}

TEST(ApplySelection, TakesFramesAndTracks) {
  Tracks tracks = shotOf({"a", "b", "c"});
  applySelection(tracks, {0, 10}, {"a", "b"}, {"b:5-"});
  EXPECT_EQ(tracks.firstFrame(), 0);
  EXPECT_EQ(tracks.lastFrame(), 10);
  for (const Observation& o : tracks.observations) {
    EXPECT_EQ(o.weight > 0.0f, o.track == 0 || (o.track == 1 && o.frame < 5));
  }
}

TEST(ApplySelection, NamesTheOptionThatIsWrong) {
  using Lists = std::vector<std::string>;
  const auto refusal = [](const FrameRange& frames, const Lists& keep, const Lists& drop) {
    Tracks tracks = shotOf({"a", "b"});
    try {
      applySelection(tracks, frames, keep, drop);
    } catch (const std::invalid_argument& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ(refusal({}, {"x"}, {}).rfind("--keep: \"x\" ", 0), 0u);
  EXPECT_EQ(refusal({}, {}, {"a", "x"}).rfind("--drop: \"x\" ", 0), 0u);
  EXPECT_EQ(refusal({200, 300}, {}, {}).rfind("--frames: \"200-300\" ", 0), 0u);
  EXPECT_EQ(refusal({}, {}, {"a,b"}), "--keep and --drop leave no track: keep or drop others");
  EXPECT_EQ(refusal({0, 5}, {"a"}, {"a"}),
            "--keep and --drop leave no track in the frames of --frames: keep or drop others");
}

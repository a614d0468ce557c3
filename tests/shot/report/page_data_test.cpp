// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/page_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "tests/shot/report/small_result.h"
#include "tests/support/kept_results.h"

using namespace cornerpin;
using Json = nlohmann::json;

namespace {

Json dataOfAll(const PageSubject& subject, const PageLimits& limits = {},
               const std::optional<PictureNote>& pictures = std::nullopt) {
  const Shown shown = shownOf(subject, limits);
  const std::string text = pageDataJson(subject, shown, viewOf(subject, shown), pictures);
  keepResult(text);
  return Json::parse(text);
}

// By track and frame, where the page finds it.
std::map<std::pair<std::string, int>, Point> placesIn(const Json& data) {
  std::map<std::pair<std::string, int>, Point> places;
  const double unit = data["observations"]["unit"];
  const Json& tracks = data["observations"]["tracks"];
  EXPECT_EQ(tracks.size(), data["result"]["tracks"].size());
  for (std::size_t t = 0; t < tracks.size(); ++t) {
    for (const Json& run : tracks[t]) {
      std::int64_t x = 0;
      std::int64_t y = 0;
      EXPECT_EQ(run["x"].size(), run["y"].size());
      for (std::size_t i = 0; i < run["x"].size(); ++i) {
        x += run["x"][i].get<std::int64_t>();
        y += run["y"][i].get<std::int64_t>();
        const std::size_t f = run["first"].get<std::size_t>() + i;
        places[{data["result"]["tracks"][t]["name"], data["result"]["frames"][f]["frame"]}] = {
            static_cast<double>(x) * unit, static_cast<double>(y) * unit};
      }
    }
  }
  return places;
}

}  // namespace

TEST(PageData, HasEveryPositionToHalfAUnit) {
  const ShotResult result = small::result(6, 20, 1001);
  Tracks tracks = small::tracks(6, 20, 1001, 3.14159);
  // One that is not seen in some frames, and one that does not count in one.
  tracks.observations.erase(tracks.observations.begin() + 6 * 7 + 2);
  tracks.observations[6 * 9].weight = 0.0f;
  tracks.arrange();
  const Json data = dataOfAll({result, &tracks, "small.csv"});
  const double unit = data["observations"]["unit"];
  const auto places = placesIn(data);
  EXPECT_EQ(places.size(), tracks.observations.size() - 1);
  for (const Observation& row : tracks.observations) {
    const auto found = places.find({tracks.names[static_cast<std::size_t>(row.track)], row.frame});
    ASSERT_EQ(found != places.end(), row.weight > 0.0f) << row.track << " " << row.frame;
    if (found == places.end()) continue;
    EXPECT_LE(std::fabs(found->second.x - row.x), 0.5 * unit * (1 + 1e-9));
    EXPECT_LE(std::fabs(found->second.y - row.y), 0.5 * unit * (1 + 1e-9));
  }
}

TEST(PageData, HasThePositionsOfTheShownFramesAlone) {
  const ShotResult result = small::result(50, 300);
  const Tracks tracks = small::tracks(50, 300);
  PageLimits limits;
  limits.frames = 30;
  limits.cells = 300;
  const Json data = dataOfAll({result, &tracks, "long.csv"}, limits);
  EXPECT_EQ(data["reduced"]["frames"]["shown"], 30);
  EXPECT_EQ(data["reduced"]["frames"]["of"], 300);
  EXPECT_EQ(data["reduced"]["tracks"]["shown"], 10);
  EXPECT_EQ(data["reduced"]["tracks"]["of"], 50);
  EXPECT_FALSE(data["reduced"]["tracks"]["how"].get<std::string>().empty());
  EXPECT_EQ(data["result"]["frames"].size(), 30u);
  EXPECT_EQ(data["result"]["tracks"].size(), 10u);
  const auto places = placesIn(data);
  EXPECT_EQ(places.size(), 300u);
  for (const auto& [at, place] : places) {
    const Point start = small::placeOf(std::stoi(at.first.substr(1)));
    EXPECT_NEAR(place.x, start.x + 2 * at.second, 0.01);
    EXPECT_NEAR(place.y, start.y + at.second, 0.01);
  }
}

TEST(PageData, SaysWhatIsNotThere) {
  const ShotResult result = small::result(6, 20);
  const Json data = dataOfAll({result, nullptr, "small.json"});
  EXPECT_EQ(data["page"], 1);
  EXPECT_EQ(data["title"], "small.json");
  EXPECT_TRUE(data["observations"].is_null());
  EXPECT_TRUE(data["pictures"].is_null());
  EXPECT_TRUE(data["reduced"]["frames"]["how"].is_null());
  EXPECT_TRUE(data["verdict"]["lines"].empty());
  EXPECT_EQ(data["verdict"]["sentence"],
            "Good: all 20 frames. No corner is expected to be more than 0.5 px off.");
}

TEST(PageData, SaysWhichFramesAreDoubtfulAndWhatHelps) {
  ShotResult result = small::result(6, 20);
  small::doubt(result.frames[4], 7.5);
  small::doubt(result.frames[6], 3.0);
  result.advice = {{{4, 6}, "without t3 it is 1 px: --drop t3:4-6"}};
  const Json data = dataOfAll({result, nullptr, ""});
  EXPECT_EQ(data["verdict"]["sentence"], "Good: 18 of 20 frames. Doubtful: 4, 6.");
  EXPECT_EQ(
      data["verdict"]["lines"],
      (Json{{{"first", 4},
             {"last", 6},
             {"text", "a corner may be off (frame 4); without t3 it is 1 px: --drop t3:4-6"}}}));
}

TEST(PageData, RoundsTheResultToNineDigits) {
  ShotResult result = small::result(6, 2);
  result.frames[1].h[0][2] = 1234.56789012345;
  result.frames[1].h[2][0] = 1.23456789012345e-7;
  const Json data = dataOfAll({result, nullptr, ""});
  EXPECT_EQ(data["result"]["frames"][1]["h"][0][2], 1234.56789);
  EXPECT_EQ(data["result"]["frames"][1]["h"][2][0], 1.23456789e-7);
}

TEST(PageData, CarriesNamesOfAllKinds) {
  ShotResult result = small::result(5, 3);
  const std::vector<std::string> names = {"</script><script>alert(1)</script>", "\"quoted\" \\",
                                          "line\xe2\x80\xa8separator", "<!--", "{{data}}"};
  for (std::size_t t = 0; t < names.size(); ++t) result.tracks[t].name = names[t];
  const Json data = dataOfAll({result, nullptr, "</title>"});
  for (std::size_t t = 0; t < names.size(); ++t)
    EXPECT_EQ(data["result"]["tracks"][t]["name"], names[t]);
  EXPECT_EQ(data["title"], "</title>");
}

TEST(PageData, IsThereForASingleFrameAndWhereAllIsDoubtful) {
  const ShotResult one = small::result(4, 1, -7);
  const Tracks tracks = small::tracks(4, 1, -7);
  const Json data = dataOfAll({one, &tracks, "one"});
  EXPECT_EQ(data["verdict"]["sentence"], "Good: the only frame.");
  EXPECT_EQ(placesIn(data).size(), 4u);
  ShotResult bad = small::result(4, 3);
  for (FrameResult& frame : bad.frames) {
    small::doubt(frame, kNoFigure);
    frame.figures.quads[0].fill({kNoFigure, kNoFigure, kNoFigure});
  }
  EXPECT_EQ(dataOfAll({bad, nullptr, ""})["verdict"]["sentence"],
            "Good: 0 of 3 frames. Doubtful: 0-2.");
}

TEST(PageData, KeepsPositionsWithoutMeasure) {
  const ShotResult result = small::result(4, 2);
  Tracks tracks = small::tracks(4, 2);
  tracks.observations[5].x = 1e30;
  const Json data = dataOfAll({result, &tracks, ""});
  EXPECT_EQ(placesIn(data).size(), 8u);
}

TEST(PageData, TellsOfPictures) {
  const ShotResult result = small::result(4, 2);
  PictureNote note;
  note.frames = 1;
  note.missing = "there is no file for 1 of 2 frames: 1";
  EXPECT_EQ(dataOfAll({result, nullptr, ""}, {}, note)["pictures"],
            (Json{{"linked", false}, {"frames", 1}, {"missing", note.missing}}));
  note.missing.clear();
  EXPECT_TRUE(dataOfAll({result, nullptr, ""}, {}, note)["pictures"]["missing"].is_null());
}

TEST(UnitFor, IsARoundShareOfTheView) {
  View view;
  const std::vector<std::pair<double, double>> cases = {{1920, 0.005}, {200'000, 1},   {399'999, 1},
                                                        {400'000, 2},  {1'000'000, 5}, {1, 5e-6},
                                                        {640, 0.002}};
  for (const auto& [width, unit] : cases) {
    view.width = width;
    EXPECT_DOUBLE_EQ(unitFor(view), unit) << width;
  }
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/provenance_json.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "shot/files/input_error.h"
#include "shot/files/result_reader.h"
#include "tests/shot/files/two_frames.h"

using namespace cornerpin;
using nlohmann::json;

namespace {

constexpr int kOpen = std::numeric_limits<int>::max();

ShotResult fullResult() {
  ShotResult result = twoFrames();
  result.leftOut = 2;
  result.unused = {{{"b", Unused::Dropped}, {"c \"1\"", Unused::NoPlace}}};
  Provenance& from = result.provenance;
  from.program =
      ProgramVersion{"cornerpin", "7.8.9", "0123456789abcdef0123456789abcdef01234567-modified"};
  from.options = GivenOptions();
  from.options->base = -3;
  from.options->reference = 6;
  from.options->frames = {-10, 20};
  from.options->keep = {"a,b", "n*"};
  from.options->drop = {"\"p,1\":5-"};
  from.options->baseOnly = true;
  from.options->hold = true;
  from.options->maxError = 2.5;
  from.options->at = {5.75, 5.25};
  from.options->quads = {{"sign", {{{0, 0}, {4, 0}, {4, 4}, {0, 4}}}}};
  from.input = InputFile{"shot.csv", std::string(64, 'a'), "nk", 5000000000};
  from.picture = {Scale::Pixels, 1920, 1080, YAxis::Up, 0.5, std::nullopt};
  from.rebased = {{5, 6, {"cornerpin", "1", ""}}, {6, 5, *from.program}};
  return result;
}

json writtenJson(const ShotResult& result) { return json::parse(written(result, Format::Json)); }

ShotResult read(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "r.json", text);
  return readResult(folder / "r.json");
}

std::string refusal(const json& result) {
  try {
    read(result.dump());
  } catch (const InputError& error) {
    return std::string(error.what()).substr(error.file.size());
  }
  return "taken";
}

}  // namespace

TEST(ProvenanceJson, HoldsAllThatIsKnown) {
  const json j = writtenJson(fullResult());
  EXPECT_EQ(j["program"], json::parse(R"({"name":"cornerpin","version":"7.8.9",
      "commit":"0123456789abcdef0123456789abcdef01234567-modified"})"));
  EXPECT_EQ(j["options"], json::parse(R"({"base":-3,"reference":6,"frames":[-10,20],
      "keep":["a,b","n*"],"drop":["\"p,1\":5-"],"base_only":true,"hold":true,"units":"fit",
      "loss":"none","seed":1,"max_error":2.5,"smooth":"off","fill":false,"at":[5.75,5.25],
      "quads":[{"name":"sign","corners":[[0,0],[4,0],[4,4],[0,4]]}]})"));
  EXPECT_EQ(j["input"], (json{{"name", "shot.csv"},
                              {"sha256", std::string(64, 'a')},
                              {"format", "nk"},
                              {"rows", 5000000000}}));
  EXPECT_EQ(j["picture"],
            json::parse(
                R"({"width":1920,"height":1080,"y":"up","pixel_centre":0.5,"first_frame":null})"));
  EXPECT_EQ(j["rebased"].size(), 2u);
  EXPECT_EQ(j["rebased"][0], json::parse(R"({"from":5,"to":6,
      "program":{"name":"cornerpin","version":"1","commit":null}})"));
  EXPECT_EQ(j["left_out_tracks"], json::parse(R"([{"name":"b","why":"dropped"},
      {"name":"c \"1\"","why":"no-place"}])"));
  EXPECT_EQ(j["units"], "pixels of the input");
}

TEST(ProvenanceJson, HasAWordForWhatWasNotGiven) {
  ShotResult result = fullResult();
  result.provenance.options = GivenOptions();
  result.provenance.input = InputFile{"", "", "", 3};
  result.units = Units::Raw;
  result.loss = Loss::Huber;
  result.seed = 18446744073709551615u;
  result.smooth = 0.5;
  result.fill = true;
  const json j = writtenJson(result);
  EXPECT_EQ(j["options"], json::parse(R"({"base":"auto","reference":"base","frames":"all","keep":[],
      "drop":[],"base_only":false,"hold":false,"units":"raw","loss":"huber",
      "seed":18446744073709551615,"max_error":"auto","smooth":0.5,"fill":true,"at":[],
      "quads":[]})"));
  EXPECT_EQ(j["input"], json::parse(R"({"name":null,"sha256":null,"format":null,"rows":3})"));
  result.provenance.options->frames = {7, kOpen};
  EXPECT_EQ(writtenJson(result)["options"]["frames"], json::parse("[7,null]"));
}

TEST(ProvenanceJson, IsNullWhereNothingIsKnown) {
  const json j = writtenJson(twoFrames());
  for (const char* field : {"program", "input", "left_out_tracks"}) {
    EXPECT_TRUE(j[field].is_null()) << field;
  }
  EXPECT_EQ(j["picture"],
            json::parse(
                R"({"width":null,"height":null,"y":null,"pixel_centre":null,"first_frame":null})"));
  EXPECT_EQ(j["rebased"], json::array());
  for (const auto& option : j["options"].items()) {
    const std::string& name = option.key();
    const bool isField =
        name == "units" || name == "loss" || name == "seed" || name == "smooth" || name == "fill";
    EXPECT_EQ(option.value().is_null(), !isField) << name;
  }
}

TEST(ProvenanceJson, IsReadBackByteForByte) {
  ShotResult result = fullResult();
  const auto expectReadBack = [&result] {
    const std::string text = written(result, Format::Json);
    EXPECT_EQ(written(read(text), Format::Json), text);
  };
  expectReadBack();
  for (const FrameRange frames : {FrameRange{}, FrameRange{7, kOpen}, FrameRange{7, 7}}) {
    result.provenance.options->frames = frames;
    expectReadBack();
  }
  for (Unused why : kReasonsUnused) result.unused->push_back({"d", why});
  result.units = Units::Raw;
  result.provenance.picture.y = YAxis::Down;
  result.provenance.picture.pixelCentre = 0.0;
  expectReadBack();
  result.provenance.options = GivenOptions();
  result.provenance.input->name.clear();
  expectReadBack();
  result.provenance = {};
  result.unused.reset();
  expectReadBack();
}

// As results were written before they said where they come from.
TEST(ProvenanceJson, IsNotInventedForOlderResults) {
  for (const char* units : {"fit", "raw"}) {
    json old = writtenJson(fullResult());
    for (const char* field :
         {"program", "options", "input", "picture", "rebased", "left_out_tracks"}) {
      old.erase(field);
    }
    old["units"] = units;
    const json again = writtenJson(read(old.dump()));
    json expected = writtenJson(twoFrames());
    expected["options"]["units"] = units;
    EXPECT_EQ(again, expected);
  }
}

TEST(ProvenanceJson, IsRefusedWhereItIsSomethingElse) {
  const json good = writtenJson(fullResult());
  const std::pair<const char*, const char*> wrong[] = {{"/program/name", "1"},
                                                       {"/program/commit", "1"},
                                                       {"/options/base", "\"best\""},
                                                       {"/options/reference", "1.5"},
                                                       {"/options/frames", "[1,0]"},
                                                       {"/options/frames", "[null,0]"},
                                                       {"/options/frames", "\"some\""},
                                                       {"/options/keep/0", "1"},
                                                       {"/options/drop", "\"a\""},
                                                       {"/options/base_only", "null"},
                                                       {"/options/hold", "1"},
                                                       {"/options/units", "\"miles\""},
                                                       {"/options/max_error", "-1"},
                                                       {"/options/at/0", "\"x\""},
                                                       {"/options/quads/0/corners", "[]"},
                                                       {"/input/name", "1"},
                                                       {"/input/sha256", "1"},
                                                       {"/input/rows", "-1"},
                                                       {"/input/rows", "18446744073709551615"},
                                                       {"/picture/width", "0"},
                                                       {"/picture/height", "1.5"},
                                                       {"/picture/y", "\"left\""},
                                                       {"/picture/pixel_centre", "0.25"},
                                                       {"/rebased/0/from", "null"},
                                                       {"/rebased/1/program", "null"},
                                                       {"/left_out_tracks/0/why", "\"x\""},
                                                       {"/units", "\"miles\""}};
  ASSERT_EQ(refusal(good), "taken");
  for (const auto& [place, value] : wrong) {
    json damaged = good;
    damaged[json::json_pointer(place)] = json::parse(value);
    EXPECT_NE(refusal(damaged), "taken") << place << " " << value;
  }
}

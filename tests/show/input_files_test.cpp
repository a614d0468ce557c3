// SPDX-License-Identifier: BSD-3-Clause
#include "show/input_files.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <stdexcept>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Words = std::vector<std::string>;

const std::string kTracks = "track,frame,x,y\na,1,2,3\n";

Words namesOf(const Show& show) {
  Words names;
  for (const ShowShot& shot : show.shots) names.push_back(shot.name + " of " + shot.input);
  return names;
}

template <class Error>
std::string refusalOf(const Words& words) {
  try {
    showOf(words);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

}  // namespace

TEST(HoldsTracks, TellsThemByTheirBeginning) {
  const TemporaryFolder folder;
  const auto holds = [&](const std::string& text) {
    writeFile(folder / "a", text);
    return holdsTracks(folder / "a");
  };
  EXPECT_TRUE(holds(kTracks));
  EXPECT_TRUE(holds("name;y;frame;track;x\n"));
  EXPECT_TRUE(holds("{\n\"cornerpin_tracks\":1,\"picture\":{},\"tracks\":[]}"));
  EXPECT_TRUE(holds("Adobe After Effects 8.0 Keyframe Data\n"));
  EXPECT_FALSE(holds(""));
  EXPECT_FALSE(holds("# What is in here\n\nFrames and tracks.\n"));
  EXPECT_FALSE(holds("frame,h00,h01\n"));
  EXPECT_FALSE(holds("{\"cornerpin\":2}"));
  EXPECT_FALSE(holds("{\"cornerpin_batch\":1}"));
  EXPECT_FALSE(holds("tr\"ack,frame,x,y\n"));
  EXPECT_FALSE(holds(std::string("\x89PNG\0\0\0", 7)));
  EXPECT_FALSE(holdsTracks(folder / "nothing"));
}

TEST(ShowOf, AFolderTakesTheTracksInItByName) {
  const TemporaryFolder folder;
  for (const char* name : {"b.csv", "a10.csv", "a2.csv", ".hidden.csv"}) {
    writeFile(folder / name, kTracks);
  }
  writeFile(folder / "notes.txt", "to do\n");
  std::filesystem::create_directory(folder / "c.csv");
  const Show show = showOf({folder.path().string()}, {{"fill", {}}});
  EXPECT_EQ(namesOf(show), (Words{"a10 of a10.csv", "a2 of a2.csv", "b of b.csv"}));
  EXPECT_EQ(show.shots[0].folder, folder.path().string());
  EXPECT_EQ(wordsOf(show.shots[2].options), Words{"--fill"});
}

TEST(ShowOf, APatternTakesTheFilesByName) {
  const TemporaryFolder folder;
  for (const char* name : {"b", "a"}) {
    std::filesystem::create_directory(folder / name);
    writeFile(folder / (std::string(name) + "/sh" + name + ".csv"), kTracks);
  }
  EXPECT_EQ(namesOf(showOf({folder / "*/sh?.csv"})), (Words{"sha of sha.csv", "shb of shb.csv"}));
  EXPECT_EQ(refusalOf<shot::InputError>({folder / "*.nk"}),
            (folder / "*.nk") + ": no file has such a name");
}

TEST(ShowOf, AFileWithTheSignsOfAPatternIsAFile) {
  const TemporaryFolder folder;
  writeFile(folder / "a[1].csv", kTracks);
  writeFile(folder / "a1.csv", kTracks);
  EXPECT_EQ(namesOf(showOf({folder / "a[1].csv"})), Words{"a[1] of a[1].csv"});
}

TEST(ShowOf, SeveralWordsStandBehindEachOther) {
  const TemporaryFolder folder;
  writeFile(folder / "b.csv", kTracks);
  writeFile(folder / "a.csv", kTracks);
  EXPECT_EQ(namesOf(showOf({folder / "b.csv", folder / "a.csv"})),
            (Words{"b of b.csv", "a of a.csv"}));
}

TEST(ShowOf, TracksInJsonAreNoManifest) {
  const TemporaryFolder folder;
  writeFile(folder / "a.json", "{\n\"cornerpin_tracks\":1,\"tracks\":[]}");
  EXPECT_EQ(namesOf(showOf({folder / "a.json"})), Words{"a of a.json"});
}

TEST(ShowOf, AManifestIsAlone) {
  const TemporaryFolder folder;
  writeFile(folder / "m", "{\"cornerpin_batch\": 1, \"shots\": [{\"input\": \"a.csv\"}]}");
  writeFile(folder / "a.csv", kTracks);
  EXPECT_EQ(namesOf(showOf({folder / "m"})), Words{"a of a.csv"});
  EXPECT_EQ(refusalOf<std::invalid_argument>({folder / "a.csv", folder / "m"}),
            "\"" + (folder / "m") + "\" is a manifest, which is given alone");
}

TEST(ShowOf, RefusesWhatIsNotThereOrNoFile) {
  const TemporaryFolder folder;
  EXPECT_EQ(refusalOf<shot::InputError>({folder / "a.csv"}),
            (folder / "a.csv") + ": there is no such file: check its name and folder");
  EXPECT_EQ(refusalOf<shot::InputError>({folder.path().string()}),
            folder.path().string() + ": no file in this folder holds tracks");
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(refusalOf<shot::InputError>({folder / "pipe"}),
            (folder / "pipe") + ": this is neither a file nor a folder");
}

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/nk_rows.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

// Calls f(rows) and gives what was built, with the rows in the order in which they were added.
template <class F>
Tracks built(F f) {
  const TemporaryFolder folder;
  writeFile(folder / "in", "");
  ByteSource source(folder / "in");
  ReadTrace trace;
  const Progress progress;
  const FrameRange frames;
  const TrackInput input{source, progress, frames, trace};
  TrackBuilder builder("f", frames);
  NkRows rows(builder, input);
  f(rows);
  return builder.finish();
}

void add(NkRows& rows, const std::string& name, const std::string& node, const NodeKey& key) {
  rows.add(name, node, 7, &key, &key + 1);
}

using Names = std::vector<std::string>;

}  // namespace

TEST(NkRows, JoinTheNodeAndANumberToNamesThatRepeat) {
  const NodeKey key{1.0, 2.0, 3, 1.0f};
  const Tracks tracks = built([&](NkRows& rows) {
    add(rows, "a", "n", key);
    add(rows, "a", "n", key);
    add(rows, "a@n 2", "n", key);  // taken by the second one
    add(rows, "a", "n", key);
    rows.flush();
    add(rows, "a", "m", key);
    rows.flush();
    rows.flush();
  });
  EXPECT_EQ(tracks.names, (Names{"a@m", "a@n", "a@n 2@n", "a@n 2@n 2", "a@n 3"}));
  EXPECT_EQ(tracks.observations.size(), 5u);
}

// Many tracks in few frames and few in many: all rows are there, whatever the order was.
TEST(NkRows, AddEveryKey) {
  const std::vector<NodeKey> dense = {{1, 1, -3, 1.0f}, {2, 2, -2, 0.0f}, {3, 3, 0, 1.0f}};
  const std::vector<NodeKey> sparse = {{4, 4, -3, 1.0f}, {5, 5, 900, 1.0f}};
  const auto ends = [](NkRows& rows, const std::string& name, const std::vector<NodeKey>& keys) {
    rows.add(name, "n", 7, keys.data(), keys.data() + keys.size());
  };
  for (const bool both : {false, true}) {
    const Tracks tracks = built([&](NkRows& rows) {
      ends(rows, "b", dense);
      ends(rows, "a", both ? sparse : dense);
      rows.flush();
    });
    ASSERT_EQ(tracks.observations.size(), both ? 5u : 6u);
    const Observation& first = tracks.observations[0];
    EXPECT_EQ(first.track, 0);
    EXPECT_EQ(first.x, both ? 4.0 : 1.0);
    EXPECT_EQ(first.frame, -3);
    EXPECT_EQ(first.line, 7u);
    EXPECT_EQ(tracks.observations[both ? 2 : 3].weight, 0.0f);
    EXPECT_EQ(tracks.observations.back().x, both ? 5.0 : 3.0);
  }
}

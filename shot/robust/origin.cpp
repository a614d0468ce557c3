// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/origin.h"

#include <fmt/format.h>

#include "shot/robust/chance.h"

namespace cornerpin {

namespace {

std::string describeSearch(const Origin& origin, std::size_t good, std::size_t tracks) {
  std::string text = "nothing to start from";
  if (origin.firstStage) {
    const bool isLibrary = *origin.firstStage == Stage::Library;
    text = fmt::format("the {} fits {} of {} tracks",
                       isLibrary ? "library's solve" : "neighbour's transform", origin.firstGood,
                       tracks);
  }
  if (origin.stage == Stage::Sampled) {
    text += fmt::format(", this one {} of {} tracks", good, tracks);
  }
  return text;
}

}  // namespace

const char* nameOf(Stage stage) {
  if (stage == Stage::Library) return "library";
  return stage == Stage::Neighbour ? "neighbour" : "sampled";
}

bool isLikelyByChance(const Origin& origin) { return origin.chance > kMostByChance; }

std::string describe(const Origin& origin, std::size_t good, std::size_t tracks) {
  switch (origin.grounds) {
    case Grounds::None:
      return {};
    case Grounds::TooFew:
      return "too few tracks to tell a bad one";
    case Grounds::NoBadTrack:
      return "no sign of a bad track";
    case Grounds::Continued:
      return "the tracks that were good before agree as they did";
    case Grounds::Searched:
      return describeSearch(origin, good, tracks);
  }
  return {};
}

}  // namespace cornerpin

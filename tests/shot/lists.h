// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_LISTS_H
#define TESTS_SHOT_LISTS_H

#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/plane/points.h"

// Points and matches as lists, which tests change one by one.
namespace lists {

inline cornerpin::Points points(const std::vector<cornerpin::Point>& list) {
  cornerpin::Points result;
  for (const cornerpin::Point& p : list) result.add(p);
  return result;
}

inline cornerpin::Matches matches(const std::vector<cornerpin::Match>& list) {
  cornerpin::Matches result;
  for (const cornerpin::Match& m : list) result.add(m);
  return result;
}

inline std::vector<cornerpin::Match> listOf(const cornerpin::Matches& matches) {
  std::vector<cornerpin::Match> list;
  for (std::size_t i = 0; i < matches.size(); ++i) list.push_back(matches[i]);
  return list;
}

// A frame that is fitted with its matches' own weights.
struct Frame {
  cornerpin::Model model = cornerpin::Model::Projective;
  cornerpin::Homography h = cornerpin::kIdentity;
  std::vector<cornerpin::Match> matches;

  cornerpin::Matches arrays() const { return lists::matches(matches); }
  cornerpin::FittedFrame fitted() const {
    cornerpin::FittedFrame frame;
    frame.model = model;
    frame.h = h;
    for (const cornerpin::Match& m : matches) frame.weights.push_back(m.weight);
    return frame;
  }
};

}  // namespace lists

#endif

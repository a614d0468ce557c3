// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/MMod.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "cornerpin/foundation/exception.h"
#include "tests/support/allocations.h"

namespace {

std::vector<int> visited(const MMod::Loop& loop) {
  std::vector<int> positions;
  for (int i : loop) positions.push_back(i);
  return positions;
}

// The exception that `action` throws, its fields empty when it does not.
template <class Action>
LvIllegalArgumentException thrownBy(Action action) {
  try {
    action();
  } catch (const LvIllegalArgumentException& e) {
    return e;
  }
  return LvIllegalArgumentException("nothing thrown");
}

}  // namespace

TEST(MModMod, AlwaysLandsInTheRangeOfTheDivisor) {
  const int expected[] = {2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2};
  for (int a = -6; a <= 6; ++a) EXPECT_EQ(MMod::mod(a, 4), expected[a + 6]) << a;
}

TEST(MModMod, HandlesTheExtremesOfInt) {
  EXPECT_EQ(MMod::mod(INT_MIN, INT_MAX), INT_MAX - 1);
  EXPECT_EQ(MMod::mod(INT_MAX, INT_MAX), 0);
  EXPECT_EQ(MMod::mod(INT_MIN, 1), 0);
  EXPECT_EQ(MMod::mod(-1, INT_MAX), INT_MAX - 1);
}

TEST(MModMod, RefusesADivisorThatIsNotPositive) {
  for (int n : {0, -1, -4, INT_MIN}) {
    const LvIllegalArgumentException e = thrownBy([=] { MMod::mod(3, n); });
    EXPECT_STREQ(e.message.c_str(), "MMod::mod: the divisor must be positive") << n;
    EXPECT_STREQ(e.file.c_str(), "MMod");
    EXPECT_GT(e.line, 0);
  }
}

TEST(MModError, ThrowsWithMessageFileAndLine) {
  const LvIllegalArgumentException e = thrownBy([] { _MMod_error("x", "MMod", 7); });
  EXPECT_STREQ(e.message.c_str(), "x");
  EXPECT_STREQ(e.file.c_str(), "MMod");
  EXPECT_EQ(e.line, 7);
}

TEST(MModError, ReleasesItsTexts) {
  allocations::expectNoLeakOnAnyFailure([] {
    try {
      _MMod_error("a message long enough to need memory of its own", "MMod", 7);
    } catch (const LvIllegalArgumentException&) {
    }
  });
}

TEST(MModError, TakesNullForAnEmptyText) {
  const LvIllegalArgumentException e = thrownBy([] { _MMod_error(nullptr, nullptr, 7); });
  EXPECT_EQ(e.message.size(), 0u);
  EXPECT_EQ(e.file.size(), 0u);
}

TEST(MModLoop, VisitsEveryPositionOnceFromAnyStart) {
  EXPECT_EQ(visited(MMod::loop(4)), (std::vector<int>{0, 1, 2, 3}));
  EXPECT_EQ(visited(MMod::loop(4, 2)), (std::vector<int>{2, 3, 0, 1}));
  EXPECT_EQ(visited(MMod::loop(4, -1)), (std::vector<int>{3, 0, 1, 2}));
  EXPECT_EQ(visited(MMod::loop(3, 7)), (std::vector<int>{1, 2, 0}));
}

TEST(MModLoop, GoesBackwardToo) {
  EXPECT_EQ(visited(MMod::loop(4, 0, MMod::Backward)), (std::vector<int>{0, 3, 2, 1}));
  EXPECT_EQ(visited(MMod::loop(4, -1, MMod::Backward)), (std::vector<int>{3, 2, 1, 0}));
}

TEST(MModLoop, OfOnePositionVisitsItOnce) {
  EXPECT_EQ(visited(MMod::loop(1, INT_MIN)), std::vector<int>{0});
  EXPECT_EQ(visited(MMod::loop(1, 5, MMod::Backward)), std::vector<int>{0});
}

TEST(MModLoop, DoesNotOverflowOnTheLargestRing) {
  auto forward = MMod::loop(INT_MAX, -1).begin();
  EXPECT_EQ(*forward, INT_MAX - 1);
  EXPECT_EQ(*++forward, 0);
  EXPECT_EQ(*++MMod::loop(INT_MAX, 0, MMod::Backward).begin(), INT_MAX - 1);
  EXPECT_EQ(MMod::loop(INT_MAX).size(), INT_MAX);
}

TEST(MModLoop, RefusesARingWithoutPositions) {
  for (int n : {0, -3}) {
    EXPECT_STREQ(thrownBy([=] { MMod::loop(n); }).message.c_str(),
                 "MMod::loop: the number of positions must be positive");
  }
}

TEST(MModLoop, RefusesADirectionThatIsNeither) {
  const auto e = thrownBy([] { MMod::loop(4, 0, static_cast<MMod::Direction>(0)); });
  EXPECT_STREQ(e.message.c_str(), "MMod::loop: the direction must be Forward or Backward");
}

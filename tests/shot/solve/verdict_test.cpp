// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/verdict.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

struct Case {
  Shortfall shortfall;
  const char* reason;
  bool wantsLower;
};

// Of a frame with seven tracks, five of them good.
const Case kCases[] = {
    {Shortfall::None, "", false},
    {Shortfall::NoTracks, "no tracks", true},
    {Shortfall::TooFewTracks, "7 of the 4 tracks needed", true},
    {Shortfall::BeyondSinglePrecision, "a position is too large for single precision", false},
    {Shortfall::OnOneLineInBase,
     "all its tracks but one, or all of them, lie on one line in the base frame", true},
    {Shortfall::OnOneLine, "all its tracks but one, or all of them, lie on one line", true},
    {Shortfall::BunchedInBase,
     "its tracks lie too close together or too near one line in the base frame", true},
    {Shortfall::FitFailed, "the fit failed: singular", false},
    {Shortfall::NotFinite, "the fit is not finite", false},
    {Shortfall::AcrossHorizon, "the fit puts tracks on both sides of the horizon", false},
    {Shortfall::NoAgreement, "no transform fits enough of its tracks", false},
    {Shortfall::FewAgree, "only 5 of its 7 tracks agree on a transform, any four do", true},
    {Shortfall::GoodOnOneLine, "all its good tracks but one, or all of them, lie on one line",
     true},
    {Shortfall::GoodBunchedInBase,
     "its good tracks lie too close together or too near one line in the base frame", true},
    {Shortfall::LowerIsNearer,
     "the held model agrees with its tracks too and is expected to be nearer at the corners", true},
};

Verdict verdictOf(Shortfall shortfall) {
  Verdict verdict;
  verdict.shortfall = shortfall;
  verdict.tracks = 7;
  verdict.good = 5;
  verdict.error = "singular";
  return verdict;
}

// What a frame that lacks a fourth track says, reduced to a model that was fitted to so many.
std::string reasonOfReduced(Model model, std::size_t fitted) {
  Verdict verdict = verdictOf(Shortfall::TooFewTracks);
  verdict.status = Status::Reduced;
  verdict.model = model;
  verdict.tracks = verdict.fitted = fitted;
  return reasonOf(verdict);
}

}  // namespace

TEST(Status, HasTheFilesWords) {
  EXPECT_STREQ(nameOf(Status::Base), "base");
  EXPECT_STREQ(nameOf(Status::Solved), "solved");
  EXPECT_STREQ(nameOf(Status::Reduced), "reduced");
  EXPECT_STREQ(nameOf(Status::Held), "held");
}

TEST(ReasonOf, EveryShortfall) {
  for (const Case& c : kCases) EXPECT_EQ(reasonOf(verdictOf(c.shortfall)), c.reason);
}

TEST(WantsLowerModel, WhereTracksAreWanting) {
  for (const Case& c : kCases) {
    EXPECT_EQ(wantsLowerModel(verdictOf(c.shortfall)), c.wantsLower) << c.reason;
  }
}

TEST(WantsLowerModel, WhereFourOfTheFewThatAgreeAreThere) {
  Verdict verdict = verdictOf(Shortfall::FewAgree);
  verdict.good = 4;
  EXPECT_TRUE(wantsLowerModel(verdict));
  verdict.good = 3;
  EXPECT_FALSE(wantsLowerModel(verdict));
}

TEST(ReasonOf, AReducedFrameWithTheModelThatItsTracksAllow) {
  EXPECT_EQ(reasonOfReduced(Model::Affine, 3), "3 of the 4 tracks needed");
  EXPECT_EQ(reasonOfReduced(Model::Similarity, 2), "2 of the 4 tracks needed");
  EXPECT_EQ(reasonOfReduced(Model::Translation, 1), "1 of the 4 tracks needed");
}

TEST(ReasonOf, AReducedFrameWhoseTwoOrThreeTracksAreBunched) {
  const std::string more = ", too close together or too near one line";
  EXPECT_EQ(reasonOfReduced(Model::Similarity, 3), "3 of the 4 tracks needed" + more);
  EXPECT_EQ(reasonOfReduced(Model::Translation, 3), "3 of the 4 tracks needed" + more);
  EXPECT_EQ(reasonOfReduced(Model::Translation, 2), "2 of the 4 tracks needed" + more);
}

// Where it has four or more, the reason says of itself that they are.
TEST(ReasonOf, AReducedFrameWithFourTracksSaysItOnce) {
  Verdict verdict = verdictOf(Shortfall::BunchedInBase);
  verdict.status = Status::Reduced;
  verdict.model = Model::Translation;
  verdict.fitted = 4;
  EXPECT_EQ(reasonOf(verdict),
            "its tracks lie too close together or too near one line in the base frame");
}

TEST(ReasonOf, AHeldFrameSaysNothingOfWhatWasFitted) {
  Verdict verdict = verdictOf(Shortfall::TooFewTracks);
  verdict.tracks = verdict.fitted = 3;
  verdict.status = Status::Held;
  EXPECT_EQ(reasonOf(verdict), "3 of the 4 tracks needed");
}

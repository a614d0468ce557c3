// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/verdict.h"

#include <fmt/format.h>

namespace cornerpin {

namespace {

std::string describe(const Verdict& v) {
  switch (v.shortfall) {
    case Shortfall::None:
      return {};
    case Shortfall::NoTracks:
      return "no tracks";
    case Shortfall::TooFewTracks:
      return fmt::format("{} of the {} tracks needed", v.tracks, kFewestTracks);
    case Shortfall::BeyondSinglePrecision:
      return "a position is too large for single precision";
    case Shortfall::OnOneLineInBase:
      return "all its tracks but one, or all of them, lie on one line in the base frame";
    case Shortfall::OnOneLine:
      return "all its tracks but one, or all of them, lie on one line";
    case Shortfall::BunchedInBase:
      return "its tracks lie too close together or too near one line in the base frame";
    case Shortfall::FitFailed:
      return fmt::format("the fit failed: {}", v.error);
    case Shortfall::NotFinite:
      return "the fit is not finite";
    case Shortfall::AcrossHorizon:
      return "the fit puts tracks on both sides of the horizon";
    case Shortfall::NoAgreement:
      return "no transform fits enough of its tracks";
    case Shortfall::FewAgree:
      return fmt::format("only {} of its {} tracks agree on a transform, any four do", v.good,
                         v.tracks);
    case Shortfall::GoodOnOneLine:
      return "all its good tracks but one, or all of them, lie on one line";
    case Shortfall::GoodBunchedInBase:
      return "its good tracks lie too close together or too near one line in the base frame";
    case Shortfall::LowerIsNearer:
      return fmt::format(
          "the {} model agrees with its tracks too and is expected to be nearer at the corners",
          nameOf(v.model));
  }
  return {};
}

}  // namespace

const char* nameOf(Status status) {
  switch (status) {
    case Status::Base:
      return "base";
    case Status::Solved:
      return "solved";
    case Status::Reduced:
      return "reduced";
    case Status::Held:
      return "held";
  }
  return "";
}

bool wantsLowerModel(const Verdict& verdict) {
  switch (verdict.shortfall) {
    case Shortfall::NoTracks:
    case Shortfall::TooFewTracks:
    case Shortfall::OnOneLineInBase:
    case Shortfall::OnOneLine:
    case Shortfall::BunchedInBase:
    case Shortfall::GoodOnOneLine:
    case Shortfall::GoodBunchedInBase:
    case Shortfall::LowerIsNearer:
      return true;
    case Shortfall::FewAgree:
      return verdict.good >= kFewestTracks;
    case Shortfall::None:
    case Shortfall::BeyondSinglePrecision:
    case Shortfall::FitFailed:
    case Shortfall::NotFinite:
    case Shortfall::AcrossHorizon:
    case Shortfall::NoAgreement:
      return false;
  }
  return false;
}

std::string reasonOf(const Verdict& verdict) {
  std::string text = describe(verdict);
  // Three tracks allow an affine model, two a similarity: where they got less, they say why.
  if (verdict.status == Status::Reduced && verdict.fitted < kFewestTracks &&
      tracksFor(verdict.model) < verdict.fitted) {
    text += ", too close together or too near one line";
  }
  return text;
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_VERDICT_H
#define SHOT_SOLVE_VERDICT_H

#include <cstddef>
#include <string>
#include <vector>

#include "shot/fit/model.h"
#include "shot/robust/origin.h"

namespace cornerpin {

enum class Status {
  Base,     ///< the identity
  Solved,   ///< fitted to its tracks with all eight parameters
  Reduced,  ///< fitted to its tracks with fewer: they do not support more
  Held,     ///< its neighbour's transform, the one nearer to the base frame
};

/// "base", "solved", "reduced", "held".
const char* nameOf(Status status);

/// Why a frame has no full transform of its own.
enum class Shortfall {
  None,  ///< it has one
  // Seen before anything is fitted.
  NoTracks,
  TooFewTracks,
  BeyondSinglePrecision,  ///< a position, in the library's unit
  OnOneLineInBase,        ///< all its tracks but one, or all
  OnOneLine,              ///< in the frame itself
  BunchedInBase,          ///< noise in the tracks would throw the corners about
  // Of the fit.
  FitFailed,      ///< the library reported an error
  NotFinite,      ///< the transform
  AcrossHorizon,  ///< tracks on both sides
  // Of the good tracks.
  NoAgreement,  ///< no transform fits enough tracks
  FewAgree,     ///< some transform meets any four
  GoodOnOneLine,
  GoodBunchedInBase,
  LowerIsNearer,  ///< a lower model's corners are expected to be nearer to the truth
};

/// How a frame came out: what was fitted, from where, and why not more.
struct Verdict {
  Status status = Status::Held;
  Model model = Model::Held;  ///< projective where solved; means nothing in the base frame
  bool onTop = false;         ///< reduced, and the model moves a transform that it keeps
  /// Where that is from: its frame, or the two that it lies between.
  std::vector<int> keptFrom;
  Origin origin;  ///< of a solved frame's transform
  Shortfall shortfall = Shortfall::None;
  std::size_t tracks = 0;  ///< seen there and in the base frame
  std::size_t good = 0;    ///< of these, the good ones of the search
  std::size_t fitted = 0;  ///< those that a reduced frame's model was fitted to
  std::string error;       ///< the library's, where the fit failed
};

/// A projective transform wants as many tracks.
constexpr std::size_t kFewestTracks = 4;

/// Whether the tracks might support a model below the projective one: they are what is wanting, not
/// the fit. Without four good ones nothing tells which tracks to fit it to.
bool wantsLowerModel(const Verdict& verdict);

/// Why the frame is reduced or held, for people, such as "3 of the 4 tracks needed"; empty for
/// others.
std::string reasonOf(const Verdict& verdict);

}  // namespace cornerpin

#endif

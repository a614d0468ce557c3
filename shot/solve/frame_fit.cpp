// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/frame_fit.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/general_position.h"
#include "shot/fit/reduced_fit.h"
#include "shot/plane/extent.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

namespace {

constexpr std::size_t kFewestAgreeing = 5;  // some transform meets any four

// Fits a lower model to the good tracks where they support one; `fit.h` is the neighbour's
// transform before.
void reduce(const Matches& file, const Quad& surface, FrameFit& fit) {
  const Matches used = fit.robust.found ? file.subset(fit.robust.good) : file;
  if (used.empty()) return;
  const Model inBase = supportedModel(used.base(), surface, Model::Affine);
  const Model model = supportedModel(used.present(), squareAround(used.present()), inBase);
  const ReducedFit reduced = fitReduced(used, model, fit.h);
  if (reduced.model == Model::Held) return;
  fit.verdict.status = Status::Reduced;
  fit.verdict.model = reduced.model;
  fit.verdict.onTop = reduced.onTop;
  fit.verdict.fitted = used.size();
  fit.h = reduced.h;
}

}  // namespace

void cover(const Points& places, Sweep& sweep) {
  sweep.surface = squareAround(places);
  sweep.corners = std::make_shared<Quad>(cornersOf(boxAround(places)));
}

FrameFitter::FrameFitter(const ShotUnits& units, const SolveOptions& options)
    : units_(units),
      loss_(options.loss),
      robustOptions_{options.loss, options.seed},
      reduces_(options.reduce),
      library_(units) {}

FrameFit FrameFitter::fit(const Matches& file, Sweep& sweep) {
  FrameFit fit;
  fit.verdict = judgeTracks(file, sweep.surface);
  if (!library_.load(file)) fit.verdict.shortfall = Shortfall::BeyondSinglePrecision;
  LibraryTransform transform;
  if (fit.verdict.shortfall == Shortfall::None) transform = fitFull(file, sweep, fit);
  if (fit.verdict.shortfall == Shortfall::None) {
    fit.verdict.status = Status::Solved;
    fit.verdict.model = Model::Projective;
    fit.verdict.origin = fit.robust.origin;
  }
  if (fit.isFirm()) {
    sweep.start = transform;
    sweep.neighbour = fit.h;
    if (loss_ != Loss::None) sweep.memory.rememberGood(file, fit.robust.good);
    return fit;
  }
  sweep.chainBroken = true;
  FrameFit lower = fit;
  lower.h = sweep.neighbour;
  const bool solved = fit.verdict.status == Status::Solved;
  if (reduces_ && (solved || wantsLowerModel(fit.verdict))) reduce(file, sweep.surface, lower);
  sweep.neighbour = lower.h;
  if (!solved) return lower;
  // A transform that meets its four or five tracks whatever they are says nothing against less.
  const bool unchecked = loss_ != Loss::None && file.size() < kFewestForRobust;
  if (!unchecked || lower.verdict.status != Status::Reduced) return fit;
  lower.verdict.shortfall = Shortfall::BunchedInBase;
  return lower;
}

// What stands against a full transform before anything is fitted.
Verdict FrameFitter::judgeTracks(const Matches& file, const Quad& surface) {
  Verdict verdict;
  verdict.tracks = file.size();
  const auto because = [&](Shortfall shortfall) {
    verdict.shortfall = shortfall;
    return verdict;
  };
  if (file.empty()) return because(Shortfall::NoTracks);
  if (file.size() < kFewestTracks) return because(Shortfall::TooFewTracks);
  // Far-off tracks may make the others look like one place. Those in the base frame are left out
  // where bad ones can be told, and in this frame the good ones are looked at instead.
  all_.look(file.base(), surface, loss_);
  const bool tellsBad = loss_ != Loss::None && file.size() >= kFewestForRobust;
  if (!all_.inGeneralPosition()) return because(Shortfall::OnOneLineInBase);
  if (!tellsBad && !inGeneralPosition(file.present())) return because(Shortfall::OnOneLine);
  if (loss_ != Loss::None && !std::isfinite(all_.gain())) return because(Shortfall::BunchedInBase);
  return verdict;
}

// The full transform into `fit.h`, or why there is none into its verdict. Returns where the
// library is to start in the next frame.
LibraryTransform FrameFitter::fitFull(const Matches& file, Sweep& sweep, FrameFit& fit) {
  if (loss_ == Loss::None) return fitByLibrary(sweep, fit).transform;
  const AnotherStart byLibrary = [&]() -> std::optional<Start> {
    const LibraryResult library = fitByLibrary(sweep, fit);
    if (library.shortfall != Shortfall::None) return std::nullopt;
    return Start{Stage::Library, units_.toFit(library.h)};
  };
  std::vector<Start> starts = {{Stage::Neighbour, units_.toFit(sweep.neighbour)}};
  if (file.size() < kFewestForRobust) {
    const std::optional<Start> library = byLibrary();
    // Without tracks to spare there is nothing to tell a bad one by.
    if (!library) return {};
    starts.insert(starts.begin(), *library);
  }
  fit.robust = fitRobustly(file.in(units_.fileToFit), starts, sweep.memory.priorFor(file),
                           robustOptions_, byLibrary);
  return takeRobust(file, sweep, fit);
}

LibraryResult FrameFitter::fitByLibrary(Sweep& sweep, FrameFit& fit) {
  LibraryResult library = bestOfLibrary(sweep);
  fit.verdict.shortfall = library.shortfall;
  fit.verdict.error = library.error;
  fit.h = library.h;
  return library;
}

// From the neighbour's transform. Once that chain has been broken the neighbour may be far away:
// then the linear solution is a second start, and the better fit counts.
LibraryResult FrameFitter::bestOfLibrary(Sweep& sweep) {
  LibraryResult fit = library_.from(sweep.start);
  const bool failed = fit.shortfall != Shortfall::None;
  if (failed) sweep.chainBroken = true;
  if (!sweep.chainBroken) return fit;
  LibraryResult other = library_.fromLinearFit();
  const bool better = failed || other.cost < fit.cost;
  return other.shortfall == Shortfall::None && better ? other : fit;
}

// What stands against the transform that the good tracks agree on. Where none was found and the
// library's fit had failed already, that stays the reason.
void FrameFitter::judgeGood(const Matches& file, const Quad& surface, FrameFit& fit) {
  const RobustFit& robust = fit.robust;
  Verdict& verdict = fit.verdict;
  verdict.good = robust.goodCount;
  if (!robust.found) {
    if (!inGeneralPosition(file.present())) {
      verdict.shortfall = Shortfall::OnOneLine;
    } else if (verdict.shortfall == Shortfall::None) {
      verdict.shortfall = Shortfall::NoAgreement;
    }
    return;
  }
  verdict.shortfall = Shortfall::None;
  if (robust.goodCount < std::min(kFewestAgreeing, file.size())) {
    verdict.shortfall = Shortfall::FewAgree;
    return;
  }
  const Matches good = file.subset(robust.good);
  good_.look(good.base(), surface, loss_);
  if (!good_.inGeneralPosition() || !inGeneralPosition(good.present())) {
    verdict.shortfall = Shortfall::GoodOnOneLine;
    return;
  }
  fit.gain = good_.gain();
  if (!std::isfinite(fit.gain)) verdict.shortfall = Shortfall::GoodBunchedInBase;
}

// What the robust fit has found. Returns where the library is to start in the next frame.
LibraryTransform FrameFitter::takeRobust(const Matches& file, Sweep& sweep, FrameFit& fit) {
  judgeGood(file, sweep.surface, fit);
  if (fit.verdict.shortfall != Shortfall::None) return {};
  fit.h = units_.fromFit(fit.robust.h);
  if (!isFinite(fit.h)) fit.verdict.shortfall = Shortfall::NotFinite;
  const bool searched = fit.robust.origin.grounds == Grounds::Searched;
  if (searched && fit.gain <= kLargestGain)
    sweep.memory.rememberErrors(fit.robust.sigma, fit.robust.freedom);
  return toLibrary(units_.toLibrary(fit.h));
}

}  // namespace cornerpin

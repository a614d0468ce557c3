// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/library_fit.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/linear_fit.h"
#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

constexpr int kFrameRow = 1;  // of the scene; the other is the base frame's

Homography toDouble(const LibraryTransform& m) {
  Homography h;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      h[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = static_cast<double>(m(i, j));
    }
  }
  return h;
}

}  // namespace

LibraryTransform toLibrary(const Homography& h) {
  LibraryTransform m(3, 3, LibraryTransform::ColumnMajor);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      m(i, j) = static_cast<float>(h[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]);
    }
  }
  return m;
}

LibraryFit::LibraryFit(const ShotUnits& units) : units_(units) { makeRoom(1); }

// As many tracks of two frames, all of them absent, and what `MMatchmove::solve` does before its
// sweeps.
void LibraryFit::makeRoom(int tracks) {
  scene_.tracks.resize(tracks);
  for (int i = 0; i < tracks; ++i) {
    scene_.tracks[i].positions = MGenMatrix<float>(2, 2, MGenMatrix<float>::ColumnMajor);
    scene_.tracks[i].weights = MGenVector<float>(2);
  }
  scene_.setupOutputs();
  scene_.solveBaseFrame();
}

bool LibraryFit::load(const Matches& file) {
  file_ = &file;
  const int count = static_cast<int>(file.size());
  if (count > scene_.trackCount) makeRoom(std::max(count, 2 * scene_.trackCount));
  bool finite = true;
  const auto single = [&](double x) {
    const float rounded = static_cast<float>(x);
    finite = finite && std::isfinite(rounded);
    return rounded;
  };
  // Weight 0 is what the library calls absent; the places of absent tracks are not read.
  for (int i = 0; i < scene_.trackCount; ++i) scene_.baseWeights[i] = i < count ? 1.0f : 0.0f;
  for (int i = 0; i < count; ++i) {
    const Match match = file[static_cast<std::size_t>(i)];
    const Point base = units_.fileToLibrary.apply(match.base);
    const Point present = units_.fileToLibrary.apply(match.present);
    scene_.basePositions(i, 0) = single(base.x);
    scene_.basePositions(i, 1) = single(base.y);
    MMatchmoveTrack& track = scene_.tracks[i];
    track.positions(kFrameRow, 0) = single(present.x);
    track.positions(kFrameRow, 1) = single(present.y);
    track.weights[kFrameRow] = static_cast<float>(match.weight);
  }
  return finite;
}

LibraryResult LibraryFit::from(const LibraryTransform& start) {
  LibraryResult result;
  scene_.outputs[kFrameRow] = start.copy(LibraryTransform::ColumnMajor);
  try {
    scene_.solveFrame(kFrameRow);
  } catch (const LvException& error) {
    result.shortfall = Shortfall::FitFailed;
    result.error = error.message.c_str();
    return result;
  }
  result.transform = scene_.outputs[kFrameRow];
  result.h = units_.fromLibrary(toDouble(result.transform));
  result.cost = weightedSquares(*file_, result.h);
  if (!cornerpin::isFinite(result.h) || !std::isfinite(result.cost) ||
      std::isnan(rmsResidual(*file_, result.h))) {
    result.shortfall = Shortfall::NotFinite;
  } else if (!onOneSide(result.h, file_->base())) {
    result.shortfall = Shortfall::AcrossHorizon;
  }
  return result;
}

LibraryResult LibraryFit::fromLinearFit() {
  return from(toLibrary(linearFit(file_->in(units_.fileToLibrary))));
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/library_fit.h"

#include <cmath>

#include "shot/fit/linear_fit.h"
#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

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

LibraryFit::LibraryFit(const BaseFrame& base, const ShotUnits& units) : base_(base), units_(units) {
  const int count = static_cast<int>(base.places().size());
  scene_.tracks.resize(count);
  for (int rank = 0; rank < count; ++rank) {
    scene_.tracks[rank].positions = MGenMatrix<float>(2, 2, MGenMatrix<float>::ColumnMajor);
    scene_.tracks[rank].weights = MGenVector<float>(2);
    const auto i = static_cast<std::size_t>(rank);
    set(rank, kBaseRow, base.places()[i], base.weights()[i]);
  }
  // What `MMatchmove::solve` does before its sweeps.
  scene_.setupOutputs();
  scene_.solveBaseFrame();
}

void LibraryFit::set(int rank, int row, Point file, float weight) {
  const Point p = units_.fileToLibrary.apply(file);
  MMatchmoveTrack& track = scene_.tracks[rank];
  track.positions(row, 0) = static_cast<float>(p.x);
  track.positions(row, 1) = static_cast<float>(p.y);
  track.weights[row] = weight;
}

bool LibraryFit::isFinite(int rank, int row) const {
  const MGenMatrix<float>& p = scene_.tracks[rank].positions;
  return std::isfinite(p(row, 0)) && std::isfinite(p(row, 1));
}

bool LibraryFit::load(const Matches& file) {
  // Weight 0 is what the library calls absent; the places of absent tracks are not read.
  for (int rank : loaded_) scene_.tracks[rank].weights[kFrameRow] = 0.0f;
  loaded_.clear();
  file_ = &file;
  bool finite = true;
  for (std::size_t i = 0; i < file.size(); ++i) {
    const int rank = base_.rankOf(file.tracks()[i]);
    set(rank, kFrameRow, file.present()[i], static_cast<float>(file.weights()[i]));
    finite = finite && isFinite(rank, kBaseRow) && isFinite(rank, kFrameRow);
    loaded_.push_back(rank);
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

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/library_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "shot/fit/linear_fit.h"
#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

constexpr float kMostSingle = std::numeric_limits<float>::max();
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

bool areSingle(const double* numbers, std::size_t count, double centre, double scale) {
  std::size_t single = 0;
  for (std::size_t i = 0; i < count; ++i) {
    single += std::fabs(static_cast<float>(scale * (numbers[i] - centre))) <= kMostSingle ? 1 : 0;
  }
  return single == count;
}

// Whether all points are finite in the unit and single precision.
bool areSingle(const Points& points, const Similarity& unit) {
  return areSingle(points.x(), points.size(), unit.centre.x, unit.scale) &&
         areSingle(points.y(), points.size(), unit.centre.y, unit.scale);
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
  filled_ = false;
  const Similarity& unit = units_.fileToLibrary;
  return areSingle(file.base(), unit) && areSingle(file.present(), unit);
}

// With the matches at hand.
void LibraryFit::fillScene() {
  if (filled_) return;
  filled_ = true;
  const Matches& file = *file_;
  const int count = static_cast<int>(file.size());
  if (count > scene_.trackCount) makeRoom(std::max(count, 2 * scene_.trackCount));
  // Weight 0 is what the library calls absent; the places of absent tracks are not read.
  for (int i = 0; i < scene_.trackCount; ++i) scene_.baseWeights[i] = i < count ? 1.0f : 0.0f;
  for (int i = 0; i < count; ++i) {
    const Match match = file[static_cast<std::size_t>(i)];
    const Point base = units_.fileToLibrary.apply(match.base);
    const Point present = units_.fileToLibrary.apply(match.present);
    scene_.basePositions(i, 0) = static_cast<float>(base.x);
    scene_.basePositions(i, 1) = static_cast<float>(base.y);
    MMatchmoveTrack& track = scene_.tracks[i];
    track.positions(kFrameRow, 0) = static_cast<float>(present.x);
    track.positions(kFrameRow, 1) = static_cast<float>(present.y);
    track.weights[kFrameRow] = static_cast<float>(match.weight);
  }
}

LibraryResult LibraryFit::from(const LibraryTransform& start) {
  LibraryResult result;
  fillScene();
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

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_SHOT_SWEEPS_H
#define SHOT_SOLVE_SHOT_SWEEPS_H

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/frame_fit.h"
#include "shot/solve/model_pass.h"
#include "shot/solve/options.h"
#include "shot/solve/progress.h"
#include "shot/solve/result.h"
#include "shot/solve/surface_map.h"
#include "shot/solve/tracks.h"
#include "shot/solve/units.h"
#include "shot/surface/joint_frames.h"

namespace cornerpin {

/// A shot from one base frame: the transforms of all frames, and where the tracks are on the
/// surface.
///
/// A sweep goes from the base frame to one end of the shot, each frame from its neighbour; the two
/// sweeps know nothing of each other, and run at the same time where there may be two threads. With
/// tracks to hand over to, both sweeps learn these tracks' places (`LearningMap`). The places then
/// follow from all solved frames, whichever sweep they belong to (`startPlaces`), and are refined
/// together with the transforms (`fitJointly`), unless these tracks help no frame; the base frame's
/// tracks stay where it sees them. The shot is swept once more with the places known from the
/// start, where that is of any use.
class ShotSweeps {
 public:
  /// \param report  called after each frame, at the same time from both sweeps
  ShotSweeps(const Tracks& tracks, const SolveOptions& options, int base,
             const std::function<void()>& report);

  /// How often it reports at most.
  std::size_t mostReports() const;

  /// Both sweeps. Enough to compare base frames by.
  void sweepFirst();

  /// Hands over where there is something to hand over to.
  void handOver(const Progress& progress = {});

  /// Chooses the models of the frames that no others may lean on, where frames may be reduced.
  void chooseModels();

  /// Whether others may lean on the frame's transform.
  bool isFirm(const FrameResult& frame) const;

  const BaseFrame& base() const { return base_; }
  const Points& surface() const { return surface_; }
  const ShotUnits& units() const { return units_; }
  const SurfaceMap& surfaceMap() const { return map_; }
  const std::vector<Place>& places() const { return places_; }
  int handedOver() const { return handedOver_; }

  /// Relative to the base frame, without figures of trust and texts: these may be filled in.
  const std::vector<FrameResult>& frames() const { return frames_; }
  std::vector<FrameResult>& frames() { return frames_; }

  /// The matches that a frame was fitted to.
  Matches usedIn(const FrameResult& frame) const;

  /// Whether the frame's fit told good tracks from bad ones.
  bool toldBad(const FrameResult& frame) const;

  /// How a frame was fitted, with the weights of its good tracks in full.
  FittedFrame fittedAs(const FrameResult& frame, const Matches& used) const;

  /// The covariances of a reduced frame's corners, with what its model is expected to miss; where
  /// nothing told them they stay.
  void takeCovariances(const FrameResult& frame, const std::vector<Quad>& quads,
                       FrameFigures& figures) const;

  /// Of the images of places in every frame, with all that the shot's other frames say; fills in
  /// those of the tracks' places.
  /// \param report  called after each frame that takes part
  std::vector<std::vector<Symmetric2>> jointCovariancesOf(
      const Points& places, const std::function<void()>& report = [] {});

 private:
  void sweepBothWays(bool learns);
  void sweep(int step, int last, bool learns);
  void record(int frame, const Matches& file, const FrameFit& fit,
              const std::shared_ptr<const Quad>& corners);
  std::size_t indexOf(const FrameResult& frame) const;
  int neighbourOf(int frame) const;
  void addRobust(const FrameFit& fit, FrameResult& result) const;
  void addSolved(const Matches& file, const FrameFit& fit, FrameResult& result) const;
  bool hasOthers() const;
  bool usesOthers() const;
  bool othersMatter() const;
  bool othersMayHelp(const FrameResult& frame) const;
  int takePlaces();
  bool othersAgree(const std::vector<JointFrame>& joint) const;
  double moveOf(const FrameResult& frame, const Homography& h) const;
  std::vector<JointFrame> jointFrames() const;

  const Tracks& tracks_;
  const SolveOptions& options_;
  const std::function<void()>& report_;
  BaseFrame base_;
  Points surface_;  // the places in the base frame that tell how far the surface reaches
  ShotUnits units_;
  SurfaceMap map_;
  std::vector<Place> places_;  // as the solved frames have told them; empty where nobody asked
  bool trusted_ = false;       // all known tracks decide, not the base frame's where they suffice
  int handedOver_ = 0;         // known tracks that the base frame lacks, where they take part
  std::vector<FrameResult> frames_;
  std::vector<SweptFrame> swept_;    // by frame
  std::optional<ModelPass> models_;  // none where frames keep what the sweeps made of them
};

}  // namespace cornerpin

#endif

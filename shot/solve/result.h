// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_RESULT_H
#define SHOT_SOLVE_RESULT_H

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shot/fit/loss.h"
#include "shot/plane/homography.h"
#include "shot/solve/doubt.h"
#include "shot/solve/named_quad.h"
#include "shot/solve/provenance.h"
#include "shot/solve/track_runs.h"
#include "shot/solve/units.h"
#include "shot/solve/unused_track.h"
#include "shot/solve/verdict.h"
#include "shot/solve/wording.h"
#include "shot/trust/frame_figures.h"
#include "shot/trust/influence.h"
#include "shot/trust/worst_tracks.h"

namespace cornerpin {

/// Texts about how a frame came out (`whyOf`, `reasonOf`).
struct FrameTexts {
  std::string why;
  std::string reason;
};

/// What a frame had before its transform was smoothed or filled in.
struct Untouched {
  Homography h{};
  std::vector<CornerCovariances> quads;
};

/// Lengths are in the file's unit.
struct FrameResult {
  int frame = 0;
  Homography h{};  ///< reference frame to this frame; the last element is 1
  Verdict verdict;
  int tracks = 0;      ///< active ones: weight above 0, and their places on the surface known
  int handedOver = 0;  ///< of these, the ones that are absent from the base frame
  /// Root of the mean squared distance between the active tracks and where `h` carries their
  /// places on the surface, unweighted; NaN without active tracks, and where a held transform
  /// carries one nowhere.
  double rms = std::numeric_limits<double>::quiet_NaN();

  // Of solved frames; where a reduced one has as many tracks as it takes to tell bad ones, its
  // sigma and good tracks are those of the search.
  int good = 0;  ///< tracks within `kGoodWithin` sigmas; with Loss::None all of them
  double goodRms = std::numeric_limits<double>::quiet_NaN();  ///< `rms` over these; solved frames
  /// Standard deviation of one coordinate of a good track; NaN with Loss::None.
  double sigma = std::numeric_limits<double>::quiet_NaN();
  Loss loss = Loss::None;  ///< None too where a frame shows no sign of a bad track
  double width = 0.0;      ///< residual at which that loss bends

  FrameFigures figures;
  /// Of all quads' corners, the largest deviation: the root mean square of how far it may be off.
  /// 0 in the reference frame; NaN where a corner has no figure.
  double expectedError = kNoFigure;
  std::vector<Doubt> doubts;               ///< none: the frame is good
  std::vector<TrackInfluence> influences;  ///< where the options ask for them
  /// Index of the track without which the worst corner of the first quad moves furthest; -1 where
  /// none is known to move it, and in what was read from a file.
  int strongest = -1;

  // What was done to the transform behind the fit; all else is about the fit.
  double smoothed = 0.0;  ///< how far smoothing moved the corner of any quad that moved most
  bool filled = false;    ///< interpolated between frames on both sides
  std::shared_ptr<const Untouched> untouched;  ///< where `h` is not what the fit gave

  /// As a file has them. Null where they follow from the verdict.
  std::shared_ptr<const FrameTexts> texts;
};

/// A transform between two frames, or in one.
struct BetweenFrame {
  double frame = 0.0;
  Homography h{};  ///< from the reference frame
};

/// Why a solved frame's transform was found from where it was (`describe(Origin)`); empty for
/// others.
std::string whyOf(const FrameResult& frame);

/// Why a frame is reduced or held (`reasonOf(Verdict)`); empty for others.
std::string reasonOf(const FrameResult& frame);

/// "good", or "doubtful" where there are doubts.
const char* judgementOf(const FrameResult& frame);

/// A track that the result leans on, by name.
struct WorstTrack {
  std::string name;
  TrackStretch stretch;
};

/// "t042, frames 60-81: without it the worst corner moves 9.3 px"; the text for one frame has
/// "frame 60".
std::string describe(const WorstTrack& track);

/// What was found to make doubtful frames better, for people.
struct Advice {
  Stretch frames;
  std::string text;
};

/// What became of a track of the shot.
struct TrackResult {
  std::string name;
  Point place = {kNoFigure, kNoFigure};  ///< on the surface; NaN where it is not known
  /// Of the place: how far noise lets it be off. NaN where it is not known.
  Symmetric2 covariance = {kNoFigure, kNoFigure, kNoFigure};
  /// From the first frame of the shot to its last. Good where it is among the good tracks of a
  /// frame's fit, or of all that are used where nothing tells good from bad, and in the base frame;
  /// ignored where it is seen (weight above 0) and not good, in held frames always.
  std::vector<TrackRun> runs;
};

/// Places on the surface are those of its picture in the reference frame.
struct ShotResult {
  Provenance provenance;
  int baseFrame = 0;
  std::string whyBase;  ///< why it was chosen, for people; empty where it was given
  int referenceFrame = 0;
  int baseTracks = 0;  ///< tracks seen in the base frame
  int handedOver = 0;  ///< tracks absent from the base frame that take part; 0 where none is needed
  int leftOut = 0;     ///< all others, which take part nowhere
  std::optional<std::vector<UnusedTrack>> unused;  ///< these by name, where that is known
  Units units = Units::Fit;
  Loss loss = Loss::None;
  std::uint64_t seed = 1;
  double maxError = kNoFigure;  ///< the expected error above which a frame is doubtful; NaN: none
  Point baseCentre;  ///< of the box around the base frame's tracks; in front in every frame
  std::vector<NamedQuad> quads;     ///< what the figures of trust are about
  std::vector<TrackResult> tracks;  ///< in the order of `Tracks::names`
  std::vector<FrameResult> frames;  ///< from the first frame of the shot to its last, gaps included
  /// Those that stand out first, greatest influence first, at most 5; what moves a corner by less
  /// than a thousandth of the extent of the base frame's tracks does not stand out.
  std::vector<WorstTrack> worst;

  std::vector<Advice> advice;  ///< what `advise` has found; empty where nobody looked for it

  std::optional<double>
      smooth;         ///< the most that smoothing may have moved a corner, if it was done
  bool fill = false;  ///< whether held and reduced frames were filled in
  std::vector<BetweenFrame> between;  ///< by rising frame
};

/// A place of the reference frame in the frame that has the transform `h`; NaN on or behind the
/// horizon, in front of which the base frame's tracks are.
Point carried(const ShotResult& result, const Homography& h, Point reference);
inline Point carried(const ShotResult& result, const FrameResult& frame, Point reference) {
  return carried(result, frame.h, reference);
}

}  // namespace cornerpin

#endif

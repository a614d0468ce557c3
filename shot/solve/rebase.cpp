// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/rebase.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "shot/solve/judge.h"

namespace cornerpin {

namespace {

// How far there and back may miss a corner, of the quad's extent, before there is no way back.
constexpr double kMiss = 1e-6;

const FrameResult& frameOf(const ShotResult& result, int frame) {
  return result.frames[static_cast<std::size_t>(frame - result.frames.front().frame)];
}

[[noreturn]] void refuse(int frame, const std::string& why) {
  throw std::invalid_argument(
      fmt::format("frame {} cannot be the reference: {}: take another one", frame, why));
}

Homography inverseOf(const FrameResult& frame) {
  if (frame.verdict.status == Status::Held) {
    const std::string reason = reasonOf(frame);
    refuse(frame.frame, reason.empty() ? "it was held" : fmt::format("it was held ({})", reason));
  }
  const Homography back = inverse(frame.h);
  if (!isFinite(back)) refuse(frame.frame, "its transform has no inverse");
  return back;
}

double extentOf(const Quad& quad) {
  return std::sqrt(std::max(squaredDistance(quad[0], quad[2]), squaredDistance(quad[1], quad[3])));
}

// Carries the quads by h, whose inverse `back` has to lead back.
std::vector<NamedQuad> carriedQuads(std::vector<NamedQuad> quads, const Homography& h,
                                    const Homography& back, Point front, int frame) {
  for (NamedQuad& quad : quads) {
    const double allowed = kMiss * extentOf(quad.corners);
    for (Point& corner : quad.corners) {
      if (!onSameSide(h, corner, front)) {
        refuse(frame,
               fmt::format("a corner of the quad \"{}\" lies on or behind its horizon", quad.name));
      }
      const Point there = map(h, corner);
      if (!(std::sqrt(squaredDistance(map(back, there), corner)) <= allowed)) {
        refuse(frame, "its transform has no inverse");
      }
      corner = there;
    }
  }
  return quads;
}

// D C D'.
Symmetric2 carriedBy(const Derivative& d, const Symmetric2& c) {
  const double xx = d.Xx * c.xx + d.Xy * c.xy;  // the first row of D C
  const double xy = d.Xx * c.xy + d.Xy * c.yy;
  const double yx = d.Yx * c.xx + d.Yy * c.xy;
  const double yy = d.Yx * c.xy + d.Yy * c.yy;
  return {xx * d.Xx + xy * d.Xy, xx * d.Yx + xy * d.Yy, yx * d.Yx + yy * d.Yy};
}

Derivative inverse(const Derivative& d) {
  const double determinant = d.Xx * d.Yy - d.Xy * d.Yx;
  return {d.Yy / determinant, -d.Xy / determinant, -d.Yx / determinant, d.Xx / determinant};
}

// Where rounding has left less than nothing, nothing is left.
Symmetric2 difference(const Symmetric2& a, const Symmetric2& b) {
  Symmetric2 c = {a.xx - b.xx, a.xy - b.xy, a.yy - b.yy};
  if (c.xx < 0.0 || c.yy < 0.0) c.xy = 0.0;
  if (c.xx < 0.0) c.xx = 0.0;
  if (c.yy < 0.0) c.yy = 0.0;
  return c;
}

// A result on its way from one reference frame to another.
class Rebase {
 public:
  Rebase(ShotResult& result, const FrameResult& reference)
      : result_(result),
        reference_(reference.frame),
        there_(reference.h),
        back_(inverseOf(reference)),
        quads_(carriedQuads(result.quads, there_, back_, result.baseCentre, reference_)) {
    for (const FrameResult& frame : result.frames) {
      transforms_.push_back(frame.frame == reference_ ? kIdentity
                                                      : withLastOne(product(frame.h, back_)));
      if (!isFinite(transforms_.back())) {
        refuse(reference_, fmt::format("from it, frame {} has no finite transform", frame.frame));
      }
    }
    for (const BetweenFrame& frame : result.between) {
      between_.push_back({frame.frame, withLastOne(product(frame.h, back_))});
      if (!isFinite(between_.back().h)) {
        refuse(reference_, fmt::format("from it, frame {} has no finite transform", frame.frame));
      }
    }
  }

  void apply() {
    for (std::size_t q = 0; q < quads_.size(); ++q) {
      for (std::size_t corner = 0; corner < 4; ++corner) carryCovariances(q, corner);
    }
    for (TrackResult& track : result_.tracks) carryPlace(track);
    for (std::size_t i = 0; i < transforms_.size(); ++i) result_.frames[i].h = transforms_[i];
    result_.between = std::move(between_);
    result_.baseCentre = map(there_, result_.baseCentre);
    result_.quads = std::move(quads_);
    result_.referenceFrame = reference_;
  }

 private:
  // The old reference frame's own covariance of a corner, relative to the base frame: seen from the
  // one the other has the same error.
  Symmetric2 ownOfOldReference(std::size_t q, std::size_t corner) const {
    if (result_.referenceFrame == result_.baseFrame) return {};
    const FrameResult& base = frameOf(result_, result_.baseFrame);
    const Derivative d = derivative(base.h, result_.quads[q].corners[corner]);
    return carriedBy(inverse(d), base.figures.quads[q][corner]);
  }

  Symmetric2 own(const FrameResult& frame, std::size_t q, std::size_t corner,
                 const Symmetric2& ownOfOld) const {
    if (frame.frame == result_.referenceFrame) return ownOfOld;
    const Derivative d = derivative(frame.h, result_.quads[q].corners[corner]);
    return difference(frame.figures.quads[q][corner], carriedBy(d, ownOfOld));
  }

  void carryCovariances(std::size_t q, std::size_t corner) {
    const Symmetric2 ownOfOld = ownOfOldReference(q, corner);
    const Symmetric2 ownOfNew = own(frameOf(result_, reference_), q, corner, ownOfOld);
    const Point place = quads_[q].corners[corner];
    std::vector<Symmetric2> carried;
    for (std::size_t i = 0; i < transforms_.size(); ++i) {
      const FrameResult& frame = result_.frames[i];
      const Symmetric2 fromReference = carriedBy(derivative(transforms_[i], place), ownOfNew);
      carried.push_back(frame.frame == reference_
                            ? Symmetric2{}
                            : sum(own(frame, q, corner, ownOfOld), fromReference));
    }
    for (std::size_t i = 0; i < carried.size(); ++i) {
      result_.frames[i].figures.quads[q][corner] = carried[i];
    }
  }

  void carryPlace(TrackResult& track) const {
    if (!onSameSide(there_, track.place, result_.baseCentre)) {
      track.place = {kNoFigure, kNoFigure};
      track.covariance = {kNoFigure, kNoFigure, kNoFigure};
      return;
    }
    track.covariance = carriedBy(derivative(there_, track.place), track.covariance);
    track.place = map(there_, track.place);
  }

  ShotResult& result_;
  int reference_;
  Homography there_;  // from the old reference frame to the new one
  Homography back_;
  std::vector<NamedQuad> quads_;        // in the new one
  std::vector<Homography> transforms_;  // from there, of each frame
  std::vector<BetweenFrame> between_;
};

// The transforms and figures of the fit where something was done to some of them.
std::optional<ShotResult> untouchedOf(const ShotResult& result) {
  ShotResult untouched;
  untouched.baseFrame = result.baseFrame;
  untouched.referenceFrame = result.referenceFrame;
  untouched.baseCentre = result.baseCentre;
  untouched.quads = result.quads;
  bool any = false;
  for (const FrameResult& frame : result.frames) {
    FrameResult fitted;
    fitted.frame = frame.frame;
    fitted.verdict = frame.verdict;
    fitted.texts = frame.texts;
    fitted.h = frame.untouched ? frame.untouched->h : frame.h;
    fitted.figures.quads = frame.untouched ? frame.untouched->quads : frame.figures.quads;
    untouched.frames.push_back(std::move(fitted));
    any = any || frame.untouched;
  }
  return any ? std::optional<ShotResult>(std::move(untouched)) : std::nullopt;
}

// Relative to a smoothed frame all others have other transforms than the fit's.
void setUntouched(std::vector<FrameResult>& frames, const std::vector<FrameResult>& untouched) {
  for (std::size_t i = 0; i < frames.size(); ++i) {
    frames[i].untouched.reset();
    if (frames[i].h != untouched[i].h) {
      frames[i].untouched =
          std::make_shared<Untouched>(Untouched{untouched[i].h, untouched[i].figures.quads});
    }
  }
}

}  // namespace

void requireFrame(int reference, int first, int last) {
  if (reference >= first && reference <= last) return;
  throw std::invalid_argument(fmt::format(
      "reference frame {} is not in the shot: take one from {} to {}", reference, first, last));
}

std::vector<NamedQuad> carriedToBase(const std::vector<NamedQuad>& quads, const FrameResult& frame,
                                     Point baseCentre) {
  const Homography back = inverseOf(frame);
  return carriedQuads(quads, back, frame.h, map(frame.h, baseCentre), frame.frame);
}

void rebase(ShotResult& result, int reference) {
  requireFrame(reference, result.frames.front().frame, result.frames.back().frame);
  if (reference == result.referenceFrame) return;
  Rebase rebased(result, frameOf(result, reference));
  std::optional<ShotResult> untouched = untouchedOf(result);
  if (untouched) Rebase(*untouched, frameOf(*untouched, reference)).apply();
  rebased.apply();
  if (untouched) setUntouched(result.frames, untouched->frames);
  judgeFigures(result);
  result.advice.clear();  // the errors that it speaks of were relative to another frame
}

}  // namespace cornerpin

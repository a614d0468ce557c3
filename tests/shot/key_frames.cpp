// SPDX-License-Identifier: BSD-3-Clause
#include "tests/shot/key_frames.h"

#include "shot/fit/homography_fit.h"
#include "shot/fit/linear_fit.h"

using namespace cornerpin;

namespace made {

namespace {

Matches common(Tracks::Range key, Tracks::Range frame) {
  Matches matches;
  const Observation* k = key.begin();
  for (const Observation& o : frame) {
    while (k != key.end() && k->track < o.track) ++k;
    if (k == key.end()) break;
    if (k->track == o.track) matches.add({{k->x, k->y}, {o.x, o.y}, o.weight, o.track});
  }
  return matches;
}

class Chain {
 public:
  Chain(const Tracks& tracks, int base, const PairFit& fit, const KeyFrames& rule)
      : tracks_(tracks), fit_(fit), rule_(rule), key_{base, kIdentity}, last_(key_) {}

  // Of a neighbour of the frame before.
  Homography next(int frame) {
    Matches matches = toFrame(frame);
    if (tooFew(matches) && last_.frame != key_.frame) {
      key_ = last_;
      matches = toFrame(frame);
    }
    if (const std::optional<Homography> h = fit_(matches))
      last_ = {frame, withLastOne(product(*h, key_.h))};
    return last_.h;
  }

 private:
  struct Fitted {
    int frame;
    Homography h;
  };

  Matches toFrame(int frame) const {
    return common(tracks_.inFrame(key_.frame), tracks_.inFrame(frame));
  }

  bool tooFew(const Matches& left) const {
    const Tracks::Range key = tracks_.inFrame(key_.frame);
    return static_cast<double>(left.size()) <
               rule_.share * static_cast<double>(key.last - key.first) ||
           static_cast<int>(left.size()) < rule_.fewest;
  }

  const Tracks& tracks_;
  const PairFit& fit_;
  KeyFrames rule_;
  Fitted key_;
  Fitted last_;
};

}  // namespace

std::optional<Homography> plainPairFit(const Matches& matches) {
  if (matches.size() < 4) return std::nullopt;
  const Homography h = fitHomography(matches, linearFit(matches)).h;
  if (!isFinite(h)) return std::nullopt;
  return h;
}

std::vector<Homography> chained(const Tracks& tracks, int base, const PairFit& fit,
                                const KeyFrames& rule) {
  std::vector<Homography> all(static_cast<std::size_t>(tracks.frameCount()), kIdentity);
  const auto at = [&](int frame) -> Homography& {
    return all[static_cast<std::size_t>(frame - tracks.firstFrame())];
  };
  Chain forward(tracks, base, fit, rule);
  for (int f = base + 1; f <= tracks.lastFrame(); ++f) at(f) = forward.next(f);
  Chain backward(tracks, base, fit, rule);
  for (int f = base - 1; f >= tracks.firstFrame(); --f) at(f) = backward.next(f);
  return all;
}

}  // namespace made

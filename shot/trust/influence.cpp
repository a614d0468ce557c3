// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/influence.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <tuple>

namespace cornerpin {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Below this determinant of I - hat the other tracks do not fix the model.
constexpr double kNoneLeft = 1e-9;

constexpr double kMedianOfLengths = 1.1774100225154747;  // sqrt(2 ln 2)

Point residualOf(const FittedFrame& frame, const Match& m) {
  const Point q = map(frame.h, m.from);
  return {m.to.x - q.x, m.to.y - q.y};
}

// What the parameters change by when the track leaves; false when the others do not fix them.
bool stepWithout(const LinearisedFit& fit, const Match& m, Point r, Parameters& step) {
  const Slopes s = fit.slopesAt(m.from);
  const Symmetric2 g = fit.responseAt(m.from);
  const double w2 = m.weight * m.weight;
  const double a = 1.0 - w2 * g.xx;
  const double b = -w2 * g.xy;
  const double d = 1.0 - w2 * g.yy;
  const double det = a * d - b * b;
  if (!(det > kNoneLeft)) return false;
  const double k = -w2 * fit.scale() / det;
  const double x = k * (d * r.x - b * r.y);
  const double y = k * (a * r.y - b * r.x);
  for (std::size_t i = 0; i < step.size(); ++i) step[i] = s.x[i] * x + s.y[i] * y;
  step = fit.solve(step);
  return true;
}

double worstMove(const LinearisedFit& fit, const Parameters& step, const Quad& corners) {
  double worst = 0.0;
  for (const Point& corner : corners) {
    const Point d = fit.displacement(corner, step);
    const double distance = std::hypot(d.x, d.y);
    if (!std::isfinite(distance)) return kNone;
    worst = std::max(worst, distance);
  }
  return worst;
}

// The lower one of two middle ones; NaN for none.
double medianOf(std::vector<double> values) {
  if (values.empty()) return kNone;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>((values.size() - 1) / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// The residual, had the fit not come towards the track.
double unfitted(const TrackInfluence& t) { return t.residual / std::sqrt(1.0 - t.leverage); }

}  // namespace

std::vector<TrackInfluence> influencesOf(const FittedFrame& frame, const Quad& corners) {
  std::vector<TrackInfluence> result(frame.matches.size());
  const auto counts = [](const Match& m) { return m.weight > 0.0; };
  const bool fitted =
      frame.model != Model::Held && std::any_of(frame.matches.begin(), frame.matches.end(), counts);
  for (std::size_t i = 0; i < result.size(); ++i) {
    const Point r = residualOf(frame, frame.matches[i]);
    result[i].residual = std::hypot(r.x, r.y);
  }
  if (!fitted) return result;
  const LinearisedFit fit(frame);
  for (std::size_t i = 0; i < result.size(); ++i) {
    const Match& m = frame.matches[i];
    if (!counts(m)) continue;
    result[i].weight = m.weight;
    const double leverage = m.weight * m.weight * fit.responseAt(m.from).trace() / 2.0;
    result[i].leverage = fit.isDetermined() ? std::clamp(leverage, 0.0, 1.0) : kNone;
    Parameters step{};
    const bool fixed = fit.isDetermined() && stepWithout(fit, m, residualOf(frame, m), step);
    result[i].influence = fixed ? worstMove(fit, step, corners) : kNone;
  }
  return result;
}

void WorstTracks::addFrame(int frame, const std::vector<int>& tracks,
                           const std::vector<TrackInfluence>& influences) {
  std::vector<double> residuals;
  for (const TrackInfluence& t : influences) {
    if (t.weight > 0.0 && std::isfinite(unfitted(t))) residuals.push_back(unfitted(t));
  }
  double deviation = kNone;
  if (residuals.size() >= kFewest) {
    deviation = medianOf(std::move(residuals)) / kMedianOfLengths;
    deviations_.push_back(deviation);
  }
  std::vector<Entry> entries;
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    const TrackInfluence& t = influences[i];
    if (t.influence > 0.0)
      entries.push_back({tracks[i], frame, t.influence, unfitted(t), deviation});
  }
  const auto greater = [](const Entry& a, const Entry& b) {
    return std::tie(b.moves, a.track) < std::tie(a.moves, b.track);
  };
  const std::size_t kept = std::min(entries.size(), kPerFrame);
  std::partial_sort(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(kept),
                    entries.end(), greater);
  entries_.insert(entries_.end(), entries.begin(),
                  entries.begin() + static_cast<std::ptrdiff_t>(kept));
}

TrackStretch WorstTracks::judged(const Entry& entry, double usual) const {
  const double deviation = entry.deviation < usual ? usual : entry.deviation;  // NaN stays
  const double off = entry.residual / deviation;
  const bool standsOut = off > kUnlikely && entry.moves > visible_;
  return {entry.track, entry.frame, entry.frame, entry.frame, entry.moves, off, standsOut};
}

std::vector<TrackStretch> WorstTracks::worst(std::size_t count) const {
  const double usual = medianOf(deviations_);
  std::vector<Entry> entries = entries_;  // by track and frame; moves 0 once in a stretch
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.track, a.frame) < std::tie(b.track, b.frame);
  });
  std::vector<TrackStretch> result;
  const auto less = [&](const Entry& a, const Entry& b) {
    return std::make_tuple(judged(a, usual).standsOut, a.moves) <
           std::make_tuple(judged(b, usual).standsOut, b.moves);
  };
  while (result.size() < count && !entries.empty()) {
    const auto peak = std::max_element(entries.begin(), entries.end(), less);
    if (!(peak->moves > 0.0)) break;
    const auto joins = [&](const Entry& a, const Entry& b) {
      return b.track == a.track && std::abs(b.frame - a.frame) == 1 && b.moves >= peak->moves / 2;
    };
    auto first = peak;
    while (first != entries.begin() && joins(*first, first[-1])) --first;
    auto last = peak;
    while (last + 1 != entries.end() && joins(*last, last[1])) ++last;
    result.push_back(judged(*peak, usual));
    result.back().first = first->frame;
    result.back().last = last->frame;
    std::for_each(first, last + 1, [](Entry& e) { e.moves = 0.0; });
  }
  return result;
}

}  // namespace cornerpin

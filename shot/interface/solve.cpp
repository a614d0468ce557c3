// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "cornerpin/shot.h"
#include "shot/advice/remedy.h"
#include "shot/interface/boundary.h"
#include "shot/interface/result.h"
#include "shot/interface/tracks.h"
#include "shot/solve/frame_range.h"
#include "shot/solve/selection.h"
#include "shot/solve/shot_solver.h"
#include "shot/solve/this_program.h"
#include "shot/time/between.h"
#include "shot/time/retouch.h"

namespace cornerpin::shot {

namespace {

constexpr unsigned kMostThreads = 1024;

[[noreturn]] void refuse(const std::string& text) { throw std::invalid_argument(text); }

// Errors of what reads an option, with its name in front.
template <class Read>
auto named(const char* option, const Read& read) {
  try {
    return read();
  } catch (const std::invalid_argument& error) {
    refuse(fmt::format("{}: {}", option, error.what()));
  }
}

Loss lossOf(const std::string& word) {
  if (word == "tukey") return Loss::Tukey;
  if (word == "cauchy") return Loss::Cauchy;
  if (word == "huber") return Loss::Huber;
  if (word == "none") return Loss::None;
  refuseWord("loss", word, {"tukey", "cauchy", "huber", "none"});
}

Units unitsOf(const std::string& word) {
  if (word == "fit") return Units::Fit;
  if (word == "raw") return Units::Raw;
  refuseWord("units", word, {"fit", "raw"});
}

std::vector<NamedQuad> quadsOf(const Options& options) {
  std::vector<NamedQuad> quads = namedQuadsOf(options.quads);
  if (quads.empty()) return quads;
  if (!options.reference && !options.base) {
    refuse("quads: on which frame were the corners read? Give reference");
  }
  if (const std::string flaw = flawOf(quads); !flaw.empty()) refuse("quads: " + flaw);
  return quads;
}

SolveOptions solveOptionsOf(const Options& options) {
  if (options.threads < 1 || options.threads > kMostThreads) {
    refuse(fmt::format("threads: a number from 1 to {} is wanted, not {}", kMostThreads,
                       options.threads));
  }
  requirePositive("max_error", options.maxError);
  SolveOptions made;
  made.base = options.base;
  made.reference = options.reference;
  made.units = unitsOf(options.units);
  made.loss = lossOf(options.loss);
  made.reduce = !options.hold;
  made.seed = options.seed;
  made.quads = quadsOf(options);
  made.handOver = !options.baseOnly;
  made.maxError = options.maxError;
  made.threads = options.threads;
  made.influences = options.influences;
  return made;
}

RetouchOptions retouchOf(const Options& options) {
  requirePositive("smooth", options.smooth);
  for (const double time : options.at) {
    if (!std::isfinite(time)) refuse(fmt::format("at: a time is wanted, not {}", time));
  }
  return {options.smooth, options.fill, options.at};
}

GivenOptions givenIn(const Options& options, const SolveOptions& solved) {
  GivenOptions given;
  given.base = options.base;
  given.reference = options.reference;
  given.frames = frameRangeOf(options.frames);
  given.keep = options.keep;
  given.drop = options.drop;
  given.baseOnly = options.baseOnly;
  given.hold = options.hold;
  given.maxError = options.maxError;
  given.at = options.at;
  given.quads = solved.quads;
  return given;
}

}  // namespace

std::shared_ptr<const cornerpin::Tracks> takingPart(const std::shared_ptr<const Tracks::Data>& all,
                                                    const Options& options, bool mayChange) {
  const FrameRange frames = frameRangeOf(options.frames);
  if (frames.isAll() && options.keep.empty() && options.drop.empty()) return {all, &all->tracks};
  const auto part = std::make_shared<cornerpin::Tracks>();
  if (mayChange) {
    *part = std::move(const_cast<cornerpin::Tracks&>(all->tracks));
  } else {
    *part = all->tracks;
  }
  applySelection(*part, frames, options.keep, options.drop);
  return part;
}

void checkSolve(const Options& options) {
  givenIn(options, solveOptionsOf(options));
  retouchOf(options);
}

Result solve(Tracks tracks, const Options& options, const Progress& progress) {
  return atBoundary(progress, [&](const cornerpin::Progress& report) {
    const SolveOptions own = solveOptionsOf(options);
    const RetouchOptions retouches = retouchOf(options);
    const GivenOptions given = givenIn(options, own);
    const std::shared_ptr<const Tracks::Data> all = std::move(tracks.data_);
    // Nobody else has them who could tell a change.
    const bool areOwn = all.use_count() == 1;
    const std::shared_ptr<const cornerpin::Tracks> used = takingPart(all, options, areOwn);
    named("at", [&] {
      requireBetween(retouches.at, used->firstFrame(), used->lastFrame());
      return true;
    });
    const auto data = std::make_shared<Result::Data>();
    data->tracks = used;
    data->notes = all->notes;
    data->source = all->source;
    data->explained = options.influences;
    data->result = solveShot(*used, own, report);
    retouch(data->result, retouches, report);
    data->result.provenance.program = thisProgram();
    data->result.provenance.options = given;
    data->result.provenance.input = all->input;
    if (options.advice) advise(*used, own, data->result, report);
    return Result(data);
  });
}

}  // namespace cornerpin::shot

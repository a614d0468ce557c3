// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_PROVENANCE_H
#define SHOT_SOLVE_PROVENANCE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shot/plane/picture.h"
#include "shot/solve/frame_range.h"
#include "shot/solve/named_quad.h"

namespace cornerpin {

/// What made a result. Nothing here depends on where or when that was.
struct ProgramVersion {
  std::string name;
  std::string version;
  std::string commit;  ///< of its source, with "-modified" where that was changed; empty: not known
};

/// The options that a result was solved with, as they were given, but for those that are fields of
/// the result itself and those that change no bit of it.
struct GivenOptions {
  std::optional<int> base;       ///< none: chosen
  std::optional<int> reference;  ///< none: the base frame
  FrameRange frames;
  std::vector<std::string> keep;  ///< lists as `parseSelection` reads them
  std::vector<std::string> drop;
  bool baseOnly = false;
  bool hold = false;
  std::optional<double> maxError;  ///< none: by the extent of the surface
  std::vector<double> at;
  std::vector<NamedQuad> quads;  ///< in the reference frame
};

/// The file that the tracks were read from.
struct InputFile {
  std::string name;    ///< without its folder; empty where it has none
  std::string sha256;  ///< of its bytes, in lower-case hexadecimal; empty: not known
  std::string format;  ///< as --from names it; empty: not known
  std::int64_t rows = 0;
};

/// A result was made relative to another frame.
struct RebaseStep {
  int from = 0;
  int to = 0;
  ProgramVersion program;
};

/// Where a result comes from. What older programs did not note is not there.
struct Provenance {
  std::optional<ProgramVersion> program;
  std::optional<GivenOptions> options;
  std::optional<InputFile> input;
  Picture picture;                  ///< that the tracks were found in, in pixels
  std::vector<RebaseStep> rebased;  ///< in the order in which it was done
};

}  // namespace cornerpin

#endif

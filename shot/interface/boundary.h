// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_INTERFACE_BOUNDARY_H
#define SHOT_INTERFACE_BOUNDARY_H

#include <exception>
#include <optional>
#include <string>

#include "cornerpin/shot.h"
#include "shot/files/format.h"
#include "shot/files/input_error.h"
#include "shot/plane/picture.h"
#include "shot/solve/frame_range.h"
#include "shot/solve/progress.h"

/// What becomes of errors, progress and words between the host layer and its public header.
namespace cornerpin::shot {

/// Passes on what whoever asked is told, and ends the work where they say so: with what they threw,
/// or with `Cancelled`. Every later report ends in the same way, so that all threads of the work
/// come to their end.
class Watch {
 public:
  explicit Watch(const Progress& asked) : asked_(asked) {}
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  /// None where nobody asked; this has to outlive it.
  cornerpin::Progress progress();
  /// Ends work that took its end for an error of its own.
  void check() const;

 private:
  void report(Phase phase, std::size_t done, std::size_t total);

  const Progress& asked_;
  std::exception_ptr ended_;
};

/// Does a piece of work that reports to a `cornerpin::Progress`, with errors as the header has
/// them.
template <class Work>
auto atBoundary(const Progress& asked, const Work& work) {
  try {
    Watch watch(asked);
    auto made = work(watch.progress());
    watch.check();
    return made;
  } catch (const cornerpin::InputError& error) {
    throw InputError(error.what(), error.file, error.line);
  }
}

/// Throws `std::invalid_argument`: "loss: "l1" is none of tukey, cauchy, huber, none".
[[noreturn]] void refuseWord(const char* option, const std::string& word,
                             std::initializer_list<const char*> words);
/// Refuses a number that is given and not finite and above 0.
void requirePositive(const char* option, const std::optional<double>& number);

/// None for an empty word; refuses one that is no format's.
std::optional<Format> formatOfWord(const char* option, const std::string& word);

/// All frames for an empty text; refuses one that is no range.
FrameRange frameRangeOf(const std::string& text);

/// Refuses what makes no sense in it.
cornerpin::Picture pictureOf(const Picture& picture);
Picture pictureOf(const cornerpin::Picture& picture);

}  // namespace cornerpin::shot

#endif

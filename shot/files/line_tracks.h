// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_LINE_TRACKS_H
#define SHOT_FILES_LINE_TRACKS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "shot/files/line_reader.h"
#include "shot/files/track_builder.h"
#include "shot/files/track_input.h"

namespace cornerpin {

/// Tracks from a text file in which each position has a line: what the readers of such share.
class LineTracks {
 public:
  explicit LineTracks(const TrackInput& input)
      : lines(input.source), tracks(input.source.name(), input.frames), input_(input) {
    input_.report();
  }

  LineReader lines;
  TrackBuilder tracks;

  /// What `read()` throws ends the file there: it is named behind the rows that were refused.
  template <class Read>
  void readAll(Read read) {
    try {
      read();
    } catch (const InputError& error) {
      tracks.refuseLast(error);
    }
  }

  /// Adds what `take(words, row)` makes of a line, unless it says that there is nothing to add, and
  /// refuses the row where it throws.
  template <class Take>
  void takeRow(Words words, Take take) {
    try {
      add(words, take);
    } catch (const InputError& error) {
      tracks.refuse(error);
    }
  }

  /// The same for the lines that follow, as many as the block of a track counts. Throws where one
  /// is no row at all, or none is left.
  template <class Take>
  void takeRows(const std::string& name, std::int32_t count, Take take) {
    for (std::int32_t i = 0; i < count; ++i) {
      if (!nextUncommented()) refuseEnd(name, i, count);
      try {
        add(Words(lines), take);
      } catch (const InputError& error) {
        if (!isRow()) refuseLine(name, i, count);
        tracks.refuse(error);
      }
    }
  }

  /// Reads a file that begins with a count of such things, with `read()` on the first line of each.
  /// Notes it where there are more or less of them.
  template <class Read>
  void takeCounted(const char* things, Read read) {
    const std::int32_t count = takeFirstCount(things);
    const std::uint32_t line = lines.line();
    std::int32_t met = 0;
    for (; lines.nextFilled(); ++met) read();
    if (met != count) noteCount(line, things, count, met);
  }

  /// Moves to the next line with anything in it but a comment; false where there is none.
  bool nextUncommented();
  /// Moves to the next line with anything in it; throws where there is none, with what is wanted.
  void require(const char* what);

  /// What is left of a line as one whole number of this name, from 0 on.
  std::int32_t takeCount(Words words, const char* name) const;

  void note(std::uint32_t line, const std::string& text) {
    input_.trace.notes.emplace_back(InputError(lines.file(), line, text).what());
  }

  /// Checks all and tells how many rows there were.
  Tracks finish(const Picture& picture,
                TrackBuilder::Repeats repeats = TrackBuilder::Repeats::Refused);

 private:
  template <class Take>
  void add(Words words, Take take) {
    if (++met_ % kReported == 0) input_.report();
    Observation row;
    row.line = lines.line();
    if (take(words, row)) tracks.add(row);
  }
  std::int32_t takeFirstCount(const char* things);
  void noteCount(std::uint32_t line, const char* things, std::int32_t count, std::int32_t met);
  bool isRow() const;
  [[noreturn]] void refuseEnd(const std::string& name, std::int32_t met, std::int32_t count) const;
  [[noreturn]] void refuseLine(const std::string& name, std::int32_t met, std::int32_t count) const;

  static constexpr std::size_t kReported = 65536;  // rows between two reports

  const TrackInput& input_;
  std::size_t met_ = 0;
};

/// Takes x and y off a line; false for a gap, NaN in both. Throws for NaN in one of them.
bool takePlace(const LineReader& lines, Words& words, Observation& row);

/// Takes a weight off a line, a number from 0 on.
float takeWeight(const LineReader& lines, Words& words, const char* name);

}  // namespace cornerpin

#endif

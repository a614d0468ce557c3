// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_info.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "shot/files/info_row.h"
#include "shot/files/sparkline.h"
#include "shot/solve/verdict.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kWidth = 64;  // of the line over the frames
constexpr std::size_t kListed = 5;

// A track in the frames in which it is seen.
struct Life {
  std::size_t frames = 0;
  int last = 0;
  Stretch longestGap{0, -1};

  void add(int frame) {
    if (frames > 0 && frame - last - 1 > longestGap.last - longestGap.first + 1) {
      longestGap = {last + 1, frame - 1};
    }
    ++frames;
    last = frame;
  }
  int gap() const { return longestGap.last - longestGap.first + 1; }
};

struct Survey {
  explicit Survey(const Tracks& tracks)
      : inFrame(static_cast<std::size_t>(tracks.frameCount())), lives(tracks.names.size()) {
    for (const Observation& seen : tracks.observations) {
      if (!(seen.weight > 0.0f)) continue;
      inFrame[static_cast<std::size_t>(seen.frame - tracks.firstFrame())] += 1.0;
      lives[static_cast<std::size_t>(seen.track)].add(seen.frame);
    }
  }
  std::vector<double> inFrame;  // how many tracks
  std::vector<Life> lives;
};

template <class Number>
Number medianOf(std::vector<Number> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>((numbers.size() - 1) / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

// "12 frames", or "2 to 12 frames, median 9" where the numbers are not all the same.
template <class Number>
std::string spread(Number least, Number most, Number median, const char* noun) {
  if (least == most) return counted(static_cast<std::size_t>(least), noun);
  return fmt::format("{} to {} {}s, median {}", least, most, noun, median);
}

const char* nameOf(char separator) {
  if (separator == ';') return "semicolons";
  return separator == '\t' ? "tabs" : "commas";
}

std::string kindOf(const ReadTrace& trace) {
  const Format format = trace.format.value_or(Format::Csv);
  if (format == Format::Csv) return fmt::format("tracks in CSV with {}", nameOf(trace.separator));
  return fmt::format("{} in {}", trace.isPin ? "a corner pin" : "tracks", factsOf(format).what);
}

std::string sourceRows(const FileLook& look, const ReadTrace& trace) {
  std::string text = fileRows(look, kindOf(trace));
  if (trace.digest) text += infoRow("SHA-256", trace.digest->hex());
  return text + infoRow("rows", fmt::format("{}", trace.rows));
}

// Frames of the shot with fewer tracks than so many, at least one where `some`.
std::vector<int> framesBelow(const Survey& survey, int first, double few, bool some) {
  std::vector<int> frames;
  for (std::size_t i = 0; i < survey.inFrame.size(); ++i) {
    const bool empty = survey.inFrame[i] == 0.0;
    if (survey.inFrame[i] < few && empty != some) frames.push_back(first + static_cast<int>(i));
  }
  return frames;
}

std::string listed(const std::vector<int>& frames) {
  return fmt::format("{}: {}", counted(frames.size(), "frame"),
                     textOf(stretchesOf(frames), kListed));
}

std::string frameRow(const Tracks& tracks, const Survey& survey) {
  std::string text = fmt::format("{}  ({})", textOf({tracks.firstFrame(), tracks.lastFrame()}),
                                 counted(static_cast<std::size_t>(tracks.frameCount()), "frame"));
  const std::vector<int> empty = framesBelow(survey, tracks.firstFrame(), 1.0, false);
  if (!empty.empty()) text += ", no track in " + listed(empty);
  return infoRow("frames", text);
}

std::string lifeRows(const Tracks& tracks, const Survey& survey) {
  std::vector<std::size_t> lengths;
  std::size_t withGaps = 0;
  std::size_t longest = 0;
  for (std::size_t t = 0; t < survey.lives.size(); ++t) {
    lengths.push_back(survey.lives[t].frames);
    if (survey.lives[t].gap() > 0) ++withGaps;
    if (survey.lives[t].gap() > survey.lives[longest].gap()) longest = t;
  }
  const auto [least, most] = std::minmax_element(lengths.begin(), lengths.end());
  std::string text =
      infoRow("tracks", fmt::format("{}, each in {}", lengths.size(),
                                    spread(*least, *most, medianOf(lengths), "frame")));
  if (withGaps == 0) return text + infoRow("gaps", "none: every track is seen without a break");
  return text + infoRow("gaps", fmt::format("in {}, the longest in {}, frames {}",
                                            counted(withGaps, "track"), tracks.names[longest],
                                            textOf(survey.lives[longest].longestGap)));
}

// As many numbers as are drawn, each the least of those that it stands for: a short gap shows.
std::vector<double> fewestOf(const std::vector<double>& counts) {
  const std::size_t blocks = std::min(kWidth, counts.size());
  std::vector<double> fewest;
  for (std::size_t i = 0; i < blocks; ++i) {
    const auto at = [&](std::size_t block) {
      return counts.begin() + static_cast<std::ptrdiff_t>(block * counts.size() / blocks);
    };
    fewest.push_back(*std::min_element(at(i), at(i + 1)));
  }
  return fewest;
}

std::string countRows(const Tracks& tracks, const Survey& survey) {
  const auto [least, most] = std::minmax_element(survey.inFrame.begin(), survey.inFrame.end());
  std::string text = infoRow("per frame", spread(*least, *most, medianOf(survey.inFrame), "track"));
  if (survey.inFrame.size() > 1) text += infoRow("", sparkline(fewestOf(survey.inFrame), kWidth));
  const std::vector<int> few = framesBelow(survey, tracks.firstFrame(), kFewestTracks, true);
  if (few.empty()) return text;
  return text + infoRow("too few", fmt::format("for a full transform of their own (under {}) in {}",
                                               kFewestTracks, listed(few)));
}

}  // namespace

std::string trackInfo(const Tracks& tracks, const FileLook& look, const ReadTrace& trace) {
  const Survey survey(tracks);
  return sourceRows(look, trace) + frameRow(tracks, survey) + lifeRows(tracks, survey) +
         countRows(tracks, survey);
}

}  // namespace cornerpin

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/interface/tracks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "shot/files/conversion.h"
#include "shot/files/input_error.h"
#include "shot/files/track_reader.h"
#include "shot/interface/boundary.h"

namespace cornerpin::shot {

namespace {

constexpr double kLargest = static_cast<double>(std::numeric_limits<float>::max());

[[noreturn]] void refuse(const std::string& text) { throw std::invalid_argument(text); }

std::string textOf(const std::vector<std::size_t>& shape) {
  return fmt::format("{}", fmt::join(shape, " x "));
}

std::vector<std::ptrdiff_t> stridesOf(const std::vector<std::size_t>& shape,
                                      std::vector<std::ptrdiff_t> strides) {
  if (strides.empty()) {
    strides.resize(shape.size());
    std::ptrdiff_t step = 1;
    for (std::size_t d = shape.size(); d-- > 0;) {
      strides[d] = step;
      step *= static_cast<std::ptrdiff_t>(shape[d]);
    }
  }
  if (strides.size() == shape.size()) return strides;
  refuse(fmt::format("strides: {} are given for {} dimensions", strides.size(), shape.size()));
}

// Of tracks without names, in the order of their numbers.
std::vector<std::string> numberedNames(std::size_t count) {
  const std::size_t digits = std::to_string(count == 0 ? 0 : count - 1).size();
  std::vector<std::string> names;
  names.reserve(count);
  for (std::size_t t = 0; t < count; ++t) names.push_back(fmt::format("t{:0{}}", t, digits));
  return names;
}

void checkNames(const std::vector<std::string>& names) {
  for (std::size_t t = 0; t < names.size(); ++t) {
    if (names[t].empty()) refuse(fmt::format("names: that of track {} is empty", t));
    if (names[t].find('\0') != std::string::npos) {
      refuse(fmt::format("names: that of track {} has a zero byte in it", t));
    }
  }
  std::vector<std::string> sorted = names;
  std::sort(sorted.begin(), sorted.end());
  const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
  if (twice != sorted.end()) {
    refuse(
        fmt::format("names: \"{}\" is there twice, and of each track another is wanted", *twice));
  }
}

// A place as it is given: the weight is 0 where the track is absent.
struct Place {
  double x = 0.0;
  double y = 0.0;
  float weight = 0.0f;
};

// Where it is given is told to whoever has to mend it.
template <class Where>
Place placeOf(double x, double y, double weight, const Where& where) {
  if (!(weight >= 0.0) || weight > kLargest) {
    refuse(fmt::format("weights: a number from 0 on in single precision is wanted, not {} {}",
                       weight, where()));
  }
  const bool isKnown = std::fabs(x) <= kLargest && std::fabs(y) <= kLargest;
  if (isKnown) return {x, y, static_cast<float>(weight)};
  if (weight == 0.0 || (std::isnan(x) && std::isnan(y))) return {};
  refuse(
      fmt::format("positions: two numbers in single precision are wanted, or two NaN where the "
                  "track is absent, not {} and {} {}",
                  x, y, where()));
}

void checkFrames(std::int64_t first, std::int64_t last) {
  if (first < -kFurthestFrame || last > kFurthestFrame) {
    refuse(fmt::format("frames: {} to {} are given: at most {} from 0 are wanted", first, last,
                       kFurthestFrame));
  }
  if (last - first >= kMaxFrames) {
    refuse(
        fmt::format("frames: {} to {} are given, which is more than {}", first, last, kMaxFrames));
  }
}

// Refuses tracks that are seen nowhere, and arranges the others.
Tracks finished(std::shared_ptr<Tracks::Data> data, const Picture& picture) {
  cornerpin::Tracks& tracks = data->tracks;
  const bool isSeen =
      std::any_of(tracks.observations.begin(), tracks.observations.end(),
                  [](const cornerpin::Observation& row) { return row.weight > 0.0f; });
  if (!isSeen) refuse("positions: no track is seen in any frame with a weight above 0");
  tracks.sortNames();
  if (!tracks.arrange()) {
    const auto& rows = tracks.observations;
    const auto twice =
        std::adjacent_find(rows.begin(), rows.end(),
                           [](const cornerpin::Observation& a, const cornerpin::Observation& b) {
                             return a.frame == b.frame && a.track == b.track;
                           });
    refuse(fmt::format("rows: track \"{}\" is given twice in frame {}",
                       tracks.names[static_cast<std::size_t>(twice->track)], twice->frame));
  }
  cornerpin::tell(tracks, Format::Csv, pictureOf(picture));
  return Tracks(std::move(data));
}

// Arrays with what belongs together checked.
class CheckedArrays {
 public:
  explicit CheckedArrays(const TrackArrays& arrays) : arrays_(arrays) {
    const std::vector<std::size_t>& shape = arrays.positions.shape();
    if (arrays.positions.isNone() || shape.size() != 3 || shape[2] != 2 || shape[0] == 0 ||
        shape[1] == 0) {
      refuse(fmt::format("positions: an array of frames x tracks x 2 is wanted, not one of {}",
                         shape.empty() ? "nothing" : textOf(shape)));
    }
    const std::vector<std::size_t>& weights = arrays.weights.shape();
    if (!arrays.weights.isNone() &&
        (weights.size() != 2 || weights[0] != frames() || weights[1] != tracks())) {
      refuse(
          fmt::format("weights: an array of {} x {} is wanted, as the positions have it, not one "
                      "of {}",
                      frames(), tracks(), textOf(weights)));
    }
    if (!arrays.names.empty() && arrays.names.size() != tracks()) {
      refuse(fmt::format("names: {} are wanted, one for each track, not {}", tracks(),
                         arrays.names.size()));
    }
    constexpr auto kMost = static_cast<std::size_t>(kMaxFrames);
    if (frames() > kMost || tracks() > std::numeric_limits<std::int32_t>::max()) {
      refuse(fmt::format("positions: {} frames and {} tracks are more than {} and {}", frames(),
                         tracks(), kMost, std::numeric_limits<std::int32_t>::max()));
    }
    checkFrames(arrays.firstFrame, lastFrame());
  }

  std::size_t frames() const { return arrays_.positions.shape()[0]; }
  std::size_t tracks() const { return arrays_.positions.shape()[1]; }
  std::int64_t lastFrame() const {
    return std::int64_t{arrays_.firstFrame} + static_cast<std::int64_t>(frames()) - 1;
  }
  int frame(std::size_t f) const { return arrays_.firstFrame + static_cast<int>(f); }

  Place place(std::size_t f, std::size_t t) const {
    const Array& positions = arrays_.positions;
    const double weight = arrays_.weights.isNone() ? 1.0 : arrays_.weights.at({f, t});
    return placeOf(positions.at({f, t, 0}), positions.at({f, t, 1}), weight,
                   [&] { return fmt::format("of track {} in frame {}", t, frame(f)); });
  }

 private:
  const TrackArrays& arrays_;
};

cornerpin::Observation rowOf(std::size_t track, int frame, const Place& place) {
  cornerpin::Observation row;
  row.track = static_cast<std::int32_t>(track);
  row.frame = frame;
  row.x = place.x;
  row.y = place.y;
  row.weight = place.weight;
  return row;
}

// Of what is absent only so much is kept that all frames and tracks are there.
void addRows(const CheckedArrays& arrays, cornerpin::Tracks& tracks) {
  std::vector<bool> isThere(arrays.tracks(), false);
  const std::size_t last = arrays.frames() - 1;
  bool isLastThere = false;
  for (std::size_t f = 0; f <= last; ++f) {
    for (std::size_t t = 0; t < arrays.tracks(); ++t) {
      const Place place = arrays.place(f, t);
      if (!(place.weight > 0.0f)) continue;
      tracks.observations.push_back(rowOf(t, arrays.frame(f), place));
      isThere[t] = true;
      isLastThere = isLastThere || f == last;
    }
  }
  if (tracks.observations.empty()) return;
  const bool isFirstThere = tracks.observations.front().frame == arrays.frame(0);
  if (!isLastThere) tracks.observations.push_back(rowOf(0, arrays.frame(last), {}));
  if (!isFirstThere) tracks.observations.push_back(rowOf(0, arrays.frame(0), {}));
  for (std::size_t t = 0; t < arrays.tracks(); ++t) {
    const bool isAdded = t == 0 && (!isFirstThere || !isLastThere);
    if (!isThere[t] && !isAdded) tracks.observations.push_back(rowOf(t, arrays.frame(0), {}));
  }
}

// Of a file with a name of its own, that without the folder.
std::string fileNameOf(const std::string& path) {
  std::error_code ignored;
  const bool plain = path.rfind("/dev/", 0) != 0 && std::filesystem::is_regular_file(path, ignored);
  return plain ? std::filesystem::path(path).filename().string() : std::string();
}

// By frame and track.
template <class Visit>
void visitDense(const cornerpin::Tracks& tracks, const Visit& visit) {
  const std::size_t count = tracks.names.size();
  for (const cornerpin::Observation& row : tracks.observations) {
    if (!(row.weight > 0.0f)) continue;
    const auto frame = static_cast<std::size_t>(row.frame - tracks.firstFrame());
    visit(frame * count + static_cast<std::size_t>(row.track), row);
  }
}

std::size_t cellsOf(const cornerpin::Tracks& tracks) {
  return static_cast<std::size_t>(tracks.frameCount()) * tracks.names.size();
}

}  // namespace

Array::Array() = default;

Array::Array(const double* data, std::vector<std::size_t> shape,
             std::vector<std::ptrdiff_t> strides)
    : doubles_(data), shape_(std::move(shape)), strides_(stridesOf(shape_, std::move(strides))) {}

Array::Array(const float* data, std::vector<std::size_t> shape, std::vector<std::ptrdiff_t> strides)
    : floats_(data), shape_(std::move(shape)), strides_(stridesOf(shape_, std::move(strides))) {}

bool Array::isNone() const { return doubles_ == nullptr && floats_ == nullptr; }

const std::vector<std::size_t>& Array::shape() const { return shape_; }

double Array::at(std::initializer_list<std::size_t> index) const {
  std::ptrdiff_t offset = 0;
  auto stride = strides_.begin();
  for (const std::size_t i : index) offset += static_cast<std::ptrdiff_t>(i) * *stride++;
  return doubles_ != nullptr ? doubles_[offset] : static_cast<double>(floats_[offset]);
}

Tracks::Tracks(std::shared_ptr<const Data> data) : data_(std::move(data)) {}
Tracks::~Tracks() = default;

std::vector<std::string> Tracks::names() const { return data_->tracks.names; }

std::vector<Observation> Tracks::observations() const {
  std::vector<Observation> rows;
  rows.reserve(data_->tracks.observations.size());
  for (const cornerpin::Observation& row : data_->tracks.observations) {
    rows.push_back({static_cast<std::size_t>(row.track), row.frame, row.x, row.y,
                    static_cast<double>(row.weight)});
  }
  return rows;
}

int Tracks::firstFrame() const { return data_->tracks.firstFrame(); }
int Tracks::lastFrame() const { return data_->tracks.lastFrame(); }
Picture Tracks::picture() const { return pictureOf(data_->tracks.picture); }
std::vector<std::string> Tracks::notes() const { return data_->notes; }

std::vector<double> Tracks::positions() const {
  std::vector<double> places(2 * cellsOf(data_->tracks), std::numeric_limits<double>::quiet_NaN());
  visitDense(data_->tracks, [&](std::size_t cell, const cornerpin::Observation& row) {
    places[2 * cell] = row.x;
    places[2 * cell + 1] = row.y;
  });
  return places;
}

std::vector<double> Tracks::weights() const {
  std::vector<double> all(cellsOf(data_->tracks), 0.0);
  visitDense(data_->tracks, [&](std::size_t cell, const cornerpin::Observation& row) {
    all[cell] = static_cast<double>(row.weight);
  });
  return all;
}

Tracks readTracks(const std::string& path, const ReadOptions& options, const Progress& progress) {
  return atBoundary(progress, [&](const cornerpin::Progress& report) {
    const cornerpin::Picture told = pictureOf(options.picture);
    ReadTrace trace;
    trace.format = formatOfWord("from", options.from);
    if (options.digest) trace.digest.emplace();
    const auto data = std::make_shared<Tracks::Data>();
    data->tracks = cornerpin::readTracks(path, report, frameRangeOf(options.frames), &trace);
    if (trace.isPin) {
      throw cornerpin::InputError(path,
                                  "this is a corner pin, not tracks: cornerpin convert and "
                                  "cornerpin check take it");
    }
    const cornerpin::Picture contradicted = tell(data->tracks, *trace.format, told);
    refuseContradiction(contradicted, data->tracks.picture, path);
    data->tracks = inPixels(std::move(data->tracks), path);
    data->notes = trace.notes;
    data->source = path;
    data->input = {fileNameOf(path), trace.digest ? trace.digest->hex() : "",
                   factsOf(*trace.format).word, trace.rows};
    return Tracks(data);
  });
}

Tracks tracksFromArrays(const TrackArrays& arrays) {
  const CheckedArrays checked(arrays);
  const auto data = std::make_shared<Tracks::Data>();
  data->tracks.names = arrays.names.empty() ? numberedNames(checked.tracks()) : arrays.names;
  checkNames(data->tracks.names);
  addRows(checked, data->tracks);
  return finished(data, arrays.picture);
}

Tracks tracksFromRows(const std::vector<Observation>& rows, const std::vector<std::string>& names,
                      const Picture& picture) {
  std::size_t count = names.size();
  for (const Observation& row : rows) {
    if (names.empty()) count = std::max(count, row.track + 1);
    if (row.track < count && count <= std::numeric_limits<std::int32_t>::max()) continue;
    refuse(fmt::format("rows: track {} is given, and names has {}", row.track, names.size()));
  }
  const auto data = std::make_shared<Tracks::Data>();
  data->tracks.names = names.empty() ? numberedNames(count) : names;
  checkNames(data->tracks.names);
  data->tracks.observations.reserve(rows.size());
  for (const Observation& row : rows) {
    const Place place = placeOf(row.x, row.y, row.weight, [&] {
      return fmt::format("of track \"{}\" in frame {}", data->tracks.names[row.track], row.frame);
    });
    data->tracks.observations.push_back(rowOf(row.track, row.frame, place));
  }
  if (!rows.empty()) {
    const auto [first, last] = std::minmax_element(
        rows.begin(), rows.end(),
        [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
    checkFrames(first->frame, last->frame);
  }
  return finished(data, picture);
}

}  // namespace cornerpin::shot

// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/written_transforms.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "shot/files/byte_source.h"
#include "shot/files/input_error.h"
#include "shot/files/json_characters.h"

namespace cornerpin {

namespace {

using Json = nlohmann::json;

// Takes the numbers of the lists "quads", "frames" and "between" from the parser's events: of each
// object in them those of "frame", and of "h" or "corners", however deep these lists are.
class TransformEvents {
 public:
  explicit TransformEvents(JsonCharacters& characters) : characters_(characters) {}

  ResultTransforms finish() { return std::move(result_); }

  bool null() { return other(); }
  bool boolean(bool) { return other(); }
  bool string(std::string&) { return other(); }
  bool binary(Json::binary_t&) { return other(); }
  bool number_integer(Json::number_integer_t value) { return number(static_cast<double>(value)); }
  bool number_unsigned(Json::number_unsigned_t value) { return number(static_cast<double>(value)); }
  bool number_float(Json::number_float_t value, const std::string&) { return number(value); }

  bool key(std::string& name) {
    characters_.noteEnd();
    if (depth_ == kWhole) list_ = name;
    if (depth_ == kItem) member_ = name;
    return true;
  }

  bool start_object(std::size_t) {
    if (++depth_ == kItem) {
      frame_.reset();
      numbers_.clear();
    }
    return other();
  }
  bool end_object() {
    if (depth_ == kItem) endItem();
    --depth_;
    return other();
  }
  bool start_array(std::size_t) {
    ++depth_;
    return other();
  }
  bool end_array() {
    --depth_;
    return other();
  }

  bool parse_error(std::size_t, const std::string&, const Json::exception& error) {
    refuse("not JSON: " + jsonFlaw(error));
  }

 private:
  // How many brackets are open around the members of the whole, and around those of an item.
  static constexpr std::size_t kWhole = 1;
  static constexpr std::size_t kItem = 3;

  [[noreturn]] void refuse(const std::string& text) const {
    throw InputError(characters_.file(), characters_.line(), text);
  }

  bool other() {
    characters_.noteEnd();
    return true;
  }

  bool number(double value) {
    if (depth_ == kItem && member_ == "frame") frame_ = value;
    if (depth_ > kItem && (member_ == "h" || member_ == "corners")) numbers_.push_back(value);
    return other();
  }

  void endItem() {
    if (list_ == "quads") {
      requireNumbers(8);
      NamedQuad quad;
      for (std::size_t i = 0; i < 4; ++i) quad.corners[i] = {numbers_[2 * i], numbers_[2 * i + 1]};
      result_.quads.push_back(quad);
    }
    if (list_ != "frames" && list_ != "between") return;
    requireNumbers(9);
    if (!frame_) refuse(fmt::format("{}: \"frame\" is no number", list_));
    Homography h;
    for (std::size_t i = 0; i < 9; ++i) h[i / 3][i % 3] = numbers_[i];
    if (list_ == "between") {
      result_.between.push_back({*frame_, h});
      return;
    }
    if (!(std::fabs(*frame_) <= kFurthestFrame) || *frame_ != std::floor(*frame_)) {
      refuse("frames: \"frame\" is no frame's number");
    }
    result_.frames.push_back({static_cast<int>(*frame_), {}, h});
  }

  void requireNumbers(std::size_t count) const {
    if (numbers_.size() == count) return;
    refuse(fmt::format("{}: {} numbers are needed, not {}", list_, count, numbers_.size()));
  }

  JsonCharacters& characters_;
  ResultTransforms result_;
  std::size_t depth_ = 0;  // brackets that are open
  std::string list_;       // the member of the whole
  std::string member_;     // that of an item in the list
  // What the item has had.
  std::optional<double> frame_;
  std::vector<double> numbers_;
};

}  // namespace

ResultTransforms readWrittenTransforms(const std::string& path) {
  ByteSource source(path);
  JsonCharacters characters(source);
  TransformEvents events(characters);
  Json::sax_parse(JsonCharacterIterator(&characters), JsonCharacterIterator(nullptr), &events);
  return events.finish();
}

}  // namespace cornerpin

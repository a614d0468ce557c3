// SPDX-License-Identifier: BSD-3-Clause
#include "show/lined_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "shot/files/byte_source.h"
#include "shot/files/input_error.h"
#include "shot/files/json_characters.h"
#include "shot/files/number_text.h"
#include "shot/solve/nearest_names.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kDeepest = 8;  // brackets in each other

}  // namespace

const std::vector<LinedJson::Member>& LinedJson::members() const {
  if (!isObject()) refuseValue("an object is needed");
  return members_;
}

const std::vector<LinedJson>& LinedJson::items() const {
  if (!isList()) refuseValue("a list is needed");
  return items_;
}

const std::string& LinedJson::text() const {
  if (!scalar_.is_string()) refuseValue("a text is needed");
  return scalar_.get_ref<const std::string&>();
}

bool LinedJson::flag() const {
  if (!scalar_.is_boolean()) refuseValue("true or false is needed");
  return scalar_.get<bool>();
}

const LinedJson* LinedJson::find(std::string_view name) const {
  for (const Member& member : members()) {
    if (member.name == name) return &member.value;
  }
  return nullptr;
}

void LinedJson::allow(std::initializer_list<const char*> names) const {
  const std::vector<std::string> known(names.begin(), names.end());
  for (const Member& member : members()) {
    if (std::find(known.begin(), known.end(), member.name) != known.end()) continue;
    const std::vector<std::string> meant = nearestNames(member.name, known, 1);
    member.value.refuse(fmt::format("there is no such member{}",
                                    meant.empty() ? fmt::format(", but {}", fmt::join(known, ", "))
                                                  : fmt::format(": did you mean {}?", meant[0])));
  }
}

void LinedJson::refuse(const std::string& text) const {
  throw InputError(*file_, line_,
                   place_.empty() ? text : fmt::format("{}: {}", printable(place_), text));
}

void LinedJson::refuseValue(const std::string& text) const {
  if (isObject()) refuse(text + ", not an object");
  if (isList()) refuse(text + ", not a list");
  const std::string value =
      scalar_.is_string() ? shown(scalar_.get_ref<const std::string&>()) : scalar_.dump();
  refuse(fmt::format("{}, not {}", text, value));
}

/// Takes what the parser meets. A number ends where the character behind it was read, maybe on the
/// next line: values stand on the line of their name, or of the bracket or value before them.
class LinedJsonBuilder : public nlohmann::json_sax<Json> {
 public:
  LinedJsonBuilder(LinedJson& whole, JsonCharacters& characters, const std::string& file)
      : whole_(whole), characters_(characters), file_(file) {}

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t&) override { return add(value); }
  bool string(string_t& value) override {
    line_ = characters_.line();
    return add(std::move(value));
  }
  bool binary(binary_t&) override { return false; }

  bool start_object(std::size_t) override { return begin(LinedJson::Kind::Object); }
  bool start_array(std::size_t) override { return begin(LinedJson::Kind::List); }
  bool end_object() override { return end(); }
  bool end_array() override { return end(); }

  bool key(string_t& name) override {
    line_ = characters_.line();
    if (!names_.back().insert(name).second) {
      throw InputError(file_, line_, fmt::format("the member {} is there twice", shown(name)));
    }
    name_ = std::move(name);
    return true;
  }

  bool parse_error(std::size_t, const std::string&,
                   const nlohmann::detail::exception& error) override {
    throw InputError(file_, characters_.line(), "this is no JSON: " + jsonFlaw(error));
  }

 private:
  LinedJson& put(LinedJson::Kind kind) {
    characters_.noteEnd();
    LinedJson value;
    value.kind_ = kind;
    value.file_ = &file_;
    value.line_ = line_;
    if (open_.empty()) return whole_ = std::move(value);
    LinedJson& parent = *open_.back();
    if (parent.isList()) {
      value.place_ = fmt::format("{}[{}]", parent.place_, parent.items_.size());
      parent.items_.push_back(std::move(value));
      return parent.items_.back();
    }
    value.place_ = parent.place_.empty() ? name_ : parent.place_ + "." + name_;
    parent.members_.push_back({name_, std::move(value)});
    return parent.members_.back().value;
  }

  bool add(Json value) {
    put(LinedJson::Kind::Scalar).scalar_ = std::move(value);
    return true;
  }

  bool begin(LinedJson::Kind kind) {
    line_ = characters_.line();
    LinedJson& value = put(kind);
    if (open_.size() == kDeepest) value.refuse("brackets are too deep for a file of this kind");
    open_.push_back(&value);
    names_.emplace_back();
    return true;
  }

  bool end() {
    open_.pop_back();
    names_.pop_back();
    return true;
  }

  LinedJson& whole_;
  JsonCharacters& characters_;
  const std::string& file_;
  std::vector<LinedJson*> open_;  // none moves: only the innermost one grows
  std::vector<std::unordered_set<std::string>> names_;
  std::string name_;
  std::uint32_t line_ = 1;
};

LinedJsonFile::LinedJsonFile(const std::string& path) {
  ByteSource source(path);
  name_ = source.name();
  if (source.beginning().find('\0') != std::string_view::npos) {
    throw InputError(name_, "this is a binary file, not text: a manifest in JSON is wanted");
  }
  JsonCharacters characters(source);
  if (characters.atEnd()) throw InputError(name_, "the file is empty: write it again");
  LinedJsonBuilder builder(whole_, characters, name_);
  Json::sax_parse(JsonCharacterIterator(&characters), JsonCharacterIterator(nullptr), &builder);
}

}  // namespace cornerpin

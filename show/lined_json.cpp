// SPDX-License-Identifier: BSD-3-Clause
#include "show/lined_json.h"

#include <cornerpin/shot.h>
#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <istream>
#include <limits>
#include <memory>
#include <sstream>
#include <unordered_set>
#include <utility>

#include "show/endless_file.h"
#include "show/wording.h"

namespace cornerpin {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kDeepest = 8;                      // brackets in each other
constexpr std::size_t kLongest = std::size_t{1} << 20U;  // bytes of a text
constexpr std::size_t kLettersPerSlip = 3;
// Of a gzip file: times its size, and what is fine however small the file is.
constexpr std::size_t kMostInflated = 100;
constexpr std::size_t kAlwaysInflated = std::size_t{4} << 20U;

// The name that is the fewest slips away, the first of several; empty where none is near.
std::string nearestTo(const std::string& typed, const std::vector<std::string>& names) {
  std::size_t fewest = typed.size() / kLettersPerSlip + 2;
  std::string nearest;
  for (const std::string& name : names) {
    const std::size_t slips = shot::slipsBetween(typed, name);
    if (slips >= fewest || slips >= std::max(typed.size(), name.size())) continue;
    fewest = slips;
    nearest = name;
  }
  return nearest;
}

// What the parser's exception says, without the parser's name and place in front.
std::string flawIn(const std::exception& error) {
  constexpr std::size_t kMost = 300;
  const std::string text = error.what();
  const std::size_t colon = text.find(": ");
  const std::size_t from = colon == std::string::npos ? 0 : colon + 2;
  return text.substr(from, kMost) + (text.size() - from > kMost ? "..." : "");
}

// Says why a file cannot be read, as all that read files do.
[[noreturn]] void refuseUnreadable(const std::string& path) {
  shot::fileKindOf(path);
  refuseFile(path, 0, "it cannot be read: try again");
}

// All bytes of a file, and of a gzip file those that are packed in it.
std::string textOf(const std::string& path) {
  refuseEndless(path);
  const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(::gzopen(path.c_str(), "rbe"), ::gzclose);
  if (!file) refuseUnreadable(path);
  std::string text;
  std::array<char, 65536> block;
  int count = 0;
  while ((count = ::gzread(file.get(), block.data(), block.size())) > 0) {
    text.append(block.data(), static_cast<std::size_t>(count));
    const auto packed = static_cast<std::size_t>(std::max<z_off_t>(::gzoffset(file.get()), 0));
    if (text.size() > std::max(kAlwaysInflated, kMostInflated * packed)) {
      refuseFile(path, 0,
                 fmt::format("the gzip data inflates to more than {} times its size: "
                             "unpack the file if that is right",
                             kMostInflated));
    }
  }
  int code = Z_OK;
  const std::string flaw = ::gzerror(file.get(), &code);
  if (code == Z_ERRNO) refuseUnreadable(path);
  if (code == Z_BUF_ERROR) refuseFile(path, 0, "the gzip data is cut off: the file is incomplete");
  if (count < 0) refuseFile(path, 0, "the gzip data is broken (" + flaw + ")");
  return text;
}

// A text that a parser reads, and how far it has come.
class LinedText {
 public:
  explicit LinedText(std::string text) : text_(std::move(text)), stream_(text_) {}

  std::istream& stream() { return stream_; }
  bool isEmpty() const { return text_.empty(); }

  // That of the character that is read next.
  std::uint32_t line() {
    const std::streamoff left = stream_.rdbuf()->in_avail();
    const std::size_t end =
        text_.size() - static_cast<std::size_t>(std::max<std::streamoff>(left, 0));
    for (; counted_ < end; ++counted_) line_ += text_[counted_] == '\n' ? 1 : 0;
    return line_;
  }

 private:
  std::string text_;
  std::istringstream stream_;
  std::size_t counted_ = 0;
  std::uint32_t line_ = 1;
};

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
  const auto& text = scalar_.get_ref<const std::string&>();
  if (text.find('\0') != std::string::npos) refuse("a text must not hold the character 0");
  return text;
}

bool LinedJson::flag() const {
  if (!scalar_.is_boolean()) refuseValue("true or false is needed");
  return scalar_.get<bool>();
}

int LinedJson::integer() const {
  if (scalar_.is_number_integer()) {
    const auto value = scalar_.get<double>();  // exact where it fits
    const bool fits =
        std::numeric_limits<int>::min() <= value && value <= std::numeric_limits<int>::max();
    if (fits) return static_cast<int>(value);
  }
  refuseValue("a whole number of 32 bits is needed");
}

std::size_t LinedJson::count() const {
  if (!scalar_.is_number_unsigned()) refuseValue("a whole number from 0 on is needed");
  return scalar_.get<std::size_t>();
}

double LinedJson::lengthOrNull() const {
  if (isNull()) return std::numeric_limits<double>::quiet_NaN();
  if (!scalar_.is_number() || scalar_.get<double>() < 0.0) {
    refuseValue("a number from 0 on or null is needed");
  }
  return scalar_.get<double>();
}

const LinedJson& LinedJson::at(const std::string& name) const {
  const LinedJson* member = find(name);
  if (member == nullptr) refuse(fmt::format("the member {} is missing", inQuotes(name)));
  return *member;
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
    const std::string meant = nearestTo(member.name, known);
    member.value.refuse(fmt::format("there is no such member{}",
                                    meant.empty() ? fmt::format(", but {}", fmt::join(known, ", "))
                                                  : fmt::format(": did you mean {}?", meant)));
  }
}

void LinedJson::refuse(const std::string& text) const {
  refuseFile(*file_, line_,
             place_.empty() ? text : fmt::format("{}: {}", shot::printable(place_), text));
}

void LinedJson::refuseValue(const std::string& text) const {
  if (isObject()) refuse(text + ", not an object");
  if (isList()) refuse(text + ", not a list");
  const std::string value =
      scalar_.is_string() ? inQuotes(scalar_.get_ref<const std::string&>()) : scalar_.dump();
  refuse(fmt::format("{}, not {}", text, value));
}

/// Takes what the parser meets. A number ends where the character behind it was read, maybe on the
/// next line: values stand on the line of their name, or of the bracket or value before them.
class LinedJsonBuilder : public nlohmann::json_sax<Json> {
 public:
  LinedJsonBuilder(LinedJson& whole, LinedText& text, const std::string& file)
      : whole_(whole), text_(text), file_(file) {}

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t&) override { return add(value); }
  bool string(string_t& value) override {
    line_ = text_.line();
    if (value.size() > kLongest) {
      refuseFile(file_, line_,
                 "a text or a number is longer than 1 MB: this is no file of this kind");
    }
    return add(std::move(value));
  }
  bool binary(binary_t&) override { return false; }

  bool start_object(std::size_t) override { return begin(LinedJson::Kind::Object); }
  bool start_array(std::size_t) override { return begin(LinedJson::Kind::List); }
  bool end_object() override { return end(); }
  bool end_array() override { return end(); }

  bool key(string_t& name) override {
    line_ = text_.line();
    if (!names_.back().insert(name).second) {
      refuseFile(file_, line_, fmt::format("the member {} is there twice", inQuotes(name)));
    }
    name_ = std::move(name);
    return true;
  }

  bool parse_error(std::size_t, const std::string&,
                   const nlohmann::detail::exception& error) override {
    refuseFile(file_, text_.line(), "this is no JSON: " + flawIn(error));
  }

 private:
  LinedJson& put(LinedJson::Kind kind) {
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
    line_ = text_.line();
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
  LinedText& text_;
  const std::string& file_;
  std::vector<LinedJson*> open_;  // none moves: only the innermost one grows
  std::vector<std::unordered_set<std::string>> names_;
  std::string name_;
  std::uint32_t line_ = 1;
};

LinedJsonFile::LinedJsonFile(const std::string& path) : name_(path) {
  LinedText text(textOf(path));
  if (text.isEmpty()) refuseFile(name_, 0, "the file is empty: write it again");
  LinedJsonBuilder builder(whole_, text, name_);
  Json::sax_parse(text.stream(), &builder);
}

}  // namespace cornerpin

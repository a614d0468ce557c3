// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/json_field.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>

#include "shot/files/byte_source.h"
#include "shot/files/file_kind.h"
#include "shot/files/input_error.h"

namespace cornerpin {

namespace {

using Json = nlohmann::json;

std::string readWhole(ByteSource& source) {
  std::string text;
  std::array<char, 65536> piece;
  while (const std::size_t count = source.read(piece.data(), piece.size())) {
    text.append(piece.data(), count);
  }
  return text;
}

std::uint32_t lineOf(const std::string& text, std::size_t byte) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text.size()));
  return static_cast<std::uint32_t>(1 + std::count(text.begin(), end, '\n'));
}

}  // namespace

bool JsonField::has(const std::string& name) const {
  if (!isObject()) refuse("an object is needed");
  return value_->contains(name);
}

JsonField JsonField::at(const std::string& name) const {
  const std::string place = place_.empty() ? name : place_ + "." + name;
  if (!has(name)) JsonField(*value_, *file_, place).refuse("missing");
  return {(*value_)[name], *file_, place};
}

std::size_t JsonField::size() const {
  if (!value_->is_array()) refuse("a list is needed");
  return value_->size();
}

JsonField JsonField::at(std::size_t i) const {
  return {(*value_)[i], *file_, fmt::format("{}[{}]", place_, i)};
}

const JsonField& JsonField::list(std::size_t length) const {
  if (!value_->is_array() || value_->size() != length) {
    refuse(fmt::format("a list of {} is needed", length));
  }
  return *this;
}

double JsonField::number() const {
  if (!value_->is_number()) refuse("a number is needed");
  return value_->get<double>();
}

double JsonField::length() const {
  if (!value_->is_number() || value_->get<double>() < 0.0) refuse("a number from 0 on is needed");
  return value_->get<double>();
}

double JsonField::lengthOrNull() const {
  if (isNull()) return std::numeric_limits<double>::quiet_NaN();
  if (!value_->is_number() || value_->get<double>() < 0.0) {
    refuse("a number from 0 on or null is needed");
  }
  return value_->get<double>();
}

int JsonField::integer() const {
  if (value_->is_number_float()) {
    const double number = value_->get<double>();
    const bool isWhole =
        number == std::floor(number) && std::fabs(number) <= std::numeric_limits<int>::max();
    if (isWhole) return static_cast<int>(number);
  }
  const bool negative = value_->is_number_integer() && !value_->is_number_unsigned();
  const bool fits =
      negative ? value_->get<std::int64_t>() >= std::numeric_limits<int>::min()
               : value_->is_number_unsigned() &&
                     value_->get<std::uint64_t>() <= std::uint64_t{std::numeric_limits<int>::max()};
  if (!fits) refuse("a whole number of 32 bits is needed");
  return value_->get<int>();
}

int JsonField::tally() const {
  if (integer() < 0) refuse("a whole number from 0 on is needed");
  return integer();
}

std::uint64_t JsonField::count() const {
  if (!value_->is_number_unsigned()) refuse("a whole number from 0 on is needed");
  return value_->get<std::uint64_t>();
}

bool JsonField::flag() const {
  if (!value_->is_boolean()) refuse("true or false is needed");
  return value_->get<bool>();
}

const std::string& JsonField::text() const {
  if (!value_->is_string()) refuse("a text is needed");
  return value_->get_ref<const std::string&>();
}

void JsonField::refuse(std::string_view text) const {
  throw InputError(*file_,
                   place_.empty() ? std::string(text) : fmt::format("{}: {}", place_, text));
}

JsonFile::JsonFile(const std::string& path, Names names) : JsonFile(ByteSource(path), names) {}

JsonFile::JsonFile(ByteSource&& source, Names names) : JsonFile(source, names) {}

JsonFile::JsonFile(ByteSource& source, Names names) : name_(source.name()) {
  const std::string text = readWhole(source);
  std::set<std::string> seen;
  const auto noteName = [&](int depth, Json::parse_event_t event, const Json& name) {
    if (event == Json::parse_event_t::key && depth == 1 &&
        !seen.insert(name.get<std::string>()).second) {
      throw InputError(name_, name.get<std::string>() + ": there twice");
    }
    return true;
  };
  try {
    // Without a callback the time is proportional to the text.
    value_ = names == Names::Once ? Json::parse(text, noteName) : Json::parse(text);
  } catch (const Json::parse_error& error) {
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
      throw InputError(name_, "the file is empty: write it again");
    }
    if (const std::string kind = otherThanJson(text); !kind.empty()) throw InputError(name_, kind);
    const bool ended = error.byte > text.size();
    throw InputError(name_, lineOf(text, error.byte),
                     ended ? "this is no JSON, or its end is missing: write the file again"
                           : "this is no JSON: mend this line, or give another file");
  } catch (const Json::out_of_range&) {
    throw InputError(name_, "a number is too large for double precision");
  }
}

}  // namespace cornerpin

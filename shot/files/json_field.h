// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_JSON_FIELD_H
#define SHOT_FILES_JSON_FIELD_H

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace cornerpin {

class ByteSource;

/// A value in a JSON file, which knows where it stands. What is not there, or is not what is asked
/// for, throws `InputError` with file and place: "shot.json: frames[3].h: a list of 3 is needed".
/// The file that it comes from must outlive it.
class JsonField {
 public:
  JsonField(const nlohmann::json& value, const std::string& file, std::string place = {})
      : value_(&value), file_(&file), place_(std::move(place)) {}

  bool isNull() const { return value_->is_null(); }
  bool isObject() const { return value_->is_object(); }
  const nlohmann::json& json() const { return *value_; }

  /// Of an object: whether it has the member, and the member.
  bool has(const std::string& name) const;
  JsonField at(const std::string& name) const;

  /// Of a list: its length, and an item. `list` asks for a length.
  std::size_t size() const;
  JsonField at(std::size_t i) const;
  const JsonField& list(std::size_t length) const;

  double number() const;
  double length() const;        ///< a number from 0 on
  double lengthOrNull() const;  ///< NaN for null
  int integer() const;
  int tally() const;  ///< an integer from 0 on
  std::uint64_t count() const;
  bool flag() const;
  const std::string& text() const;

  [[noreturn]] void refuse(std::string_view text) const;

 private:
  const nlohmann::json* value_;
  const std::string* file_;
  std::string place_;  // "frames[3].h"; empty for the whole
};

/// A JSON file in memory, from a gzip file too. "-" is standard input.
class JsonFile {
 public:
  enum class Names {
    Any,   ///< of several members of one name the last one counts
    Once,  ///< members of the whole have names of their own; takes time like the square of a list
  };
  /// Throws `InputError` when the file cannot be read, is not JSON, is cut off, holds a number
  /// beyond double precision, or has a name twice that ought to be there once.
  explicit JsonFile(const std::string& path, Names names = Names::Any);
  /// From the first byte of a source.
  explicit JsonFile(ByteSource& source, Names names = Names::Any);
  explicit JsonFile(ByteSource&& source, Names names = Names::Any);

  const std::string& name() const { return name_; }
  JsonField whole() const { return {value_, name_}; }

 private:
  std::string name_;
  nlohmann::json value_;
};

}  // namespace cornerpin

#endif

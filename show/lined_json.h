// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_LINED_JSON_H
#define SHOW_LINED_JSON_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace cornerpin {

/// A value of a JSON file of a batch, which knows where it stands. What is not what is asked
/// for throws `shot::InputError` with file, line and place: "show.json:7: shots[3].name: a text is
/// needed, not 5". The file's name must outlive it.
class LinedJson {  // NOLINT(bugprone-exception-escape): JSON values move without throwing
 public:
  /// Of an object, in the order of the file.
  struct Member;

  const std::vector<Member>& members() const;
  const std::vector<LinedJson>& items() const;
  const std::string& text() const;
  bool flag() const;
  int integer() const;
  std::size_t count() const;
  double lengthOrNull() const;  ///< a number from 0 on; NaN for null
  /// A text, a number or true or false.
  const nlohmann::json& scalar() const { return scalar_; }

  /// A member, which an object has to have.
  const LinedJson& at(const std::string& name) const;
  /// Null where an object has no such member.
  const LinedJson* find(std::string_view name) const;
  /// Refuses members of other names.
  void allow(std::initializer_list<const char*> names) const;

  bool isObject() const { return kind_ == Kind::Object; }
  bool isList() const { return kind_ == Kind::List; }
  bool isNull() const { return kind_ == Kind::Scalar && scalar_.is_null(); }

  /// "show.json:7".
  std::string where() const { return *file_ + ":" + std::to_string(line_); }

  [[noreturn]] void refuse(const std::string& text) const;
  /// The same with the value behind it.
  [[noreturn]] void refuseValue(const std::string& text) const;

 private:
  friend class LinedJsonBuilder;
  enum class Kind { Scalar, List, Object };

  Kind kind_ = Kind::Scalar;
  nlohmann::json scalar_;
  std::vector<Member> members_;
  std::vector<LinedJson> items_;
  const std::string* file_ = nullptr;
  std::string place_;
  std::uint32_t line_ = 0;
};

struct LinedJson::Member {
  std::string name;
  LinedJson value;
};

/// A whole file, plain or gzip; throws `shot::InputError` where it cannot be read, is no JSON, or
/// has a member twice.
class LinedJsonFile {
 public:
  explicit LinedJsonFile(const std::string& path);
  LinedJsonFile(const LinedJsonFile&) = delete;
  LinedJsonFile& operator=(const LinedJsonFile&) = delete;

  const std::string& name() const { return name_; }
  const LinedJson& whole() const { return whole_; }

 private:
  std::string name_;
  LinedJson whole_;
};

}  // namespace cornerpin

#endif

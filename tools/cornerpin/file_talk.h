// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_FILE_TALK_H
#define TOOLS_CORNERPIN_FILE_TALK_H

#include <string>
#include <vector>

namespace cornerpin::shot {
struct Written;
}

namespace cornerpin {

/// What is said of the files that a command reads and writes.
class FileTalk {
 public:
  /// What was left out of a file that was read: texts with its name.
  void add(const std::vector<std::string>& notes);
  /// What a file that was written cannot carry, and how it compares when it is read again, unless
  /// it was not read again.
  void add(const std::string& path, const shot::Written& written);

  /// The size of the picture that something depended on, if it is the file that tells it; once.
  void addSize(const std::string& file, const shot::Written& written);

  /// A line for each file that was read again.
  std::string readBackRows() const { return rows_; }
  /// On standard error: at most `kTold`, and how many more there are.
  void tellNotes() const;
  static constexpr std::size_t kTold = 20;

 private:
  std::vector<std::string> notes_;
  std::string rows_;
};

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PICTURE_FILES_H
#define SHOT_REPORT_PICTURE_FILES_H

#include <map>
#include <string>

namespace cornerpin {

/// Which file has a frame's picture.
///
/// Told by a pattern for the file's name with one number in it, the frame's: `img_%04d.jpg`,
/// `img_%d.jpg` or `img_####.jpg`; by a folder, whose pictures have the frame as the last number of
/// their names; or by a text file with the names of such files, one a line, which are
/// beside it unless they say where they are.
class PictureFiles {
 public:
  /// Throws `std::invalid_argument` for a text that is none of these, a folder or a list without a
  /// picture, two pictures of one frame, and a list with a name that has no number.
  explicit PictureFiles(const std::string& text);

  /// The path of the frame's picture; empty where there is no such file.
  std::string of(int frame) const;

  /// The path that the picture would have, for messages; empty in a folder or a list.
  std::string nameOf(int frame) const;

 private:
  void addFolder(const std::string& folder);
  void addList(const std::string& path);
  void setPattern(const std::string& pattern);
  void add(int frame, const std::string& path);

  std::map<int, std::string> paths_;  // of a folder or a list
  std::string before_;                // of a pattern: what stands before the number
  std::string behind_;
  int digits_ = 0;  // with zeros in front; 0: those of a list count
};

}  // namespace cornerpin

#endif

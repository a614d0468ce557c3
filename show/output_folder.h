// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_OUTPUT_FOLDER_H
#define SHOW_OUTPUT_FOLDER_H

#include <string>
#include <vector>

namespace cornerpin {

/// The folder that results go to, and a hidden one in it where they are made: files appear in the
/// former whole or not at all, whatever ends who writes them. Several processes may use one folder.
///
/// The hidden folder, ".cornerpin-batch-" with six characters, is locked while it is in use. Those
/// that nobody uses, which killed processes have left, are removed. Every failure throws
/// `std::system_error`.
class OutputFolder {
 public:
  /// Makes the folder where it does not exist.
  explicit OutputFolder(const std::string& path);
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;
  ~OutputFolder();

  /// A file that is there or is to be.
  std::string operator/(const std::string& name) const;

  /// An empty folder to make files in; one of a name at a time.
  std::string beginWork(const std::string& name);
  void endWork(const std::string& name);

  /// Moves files from there to the folder.
  void place(const std::string& work, const std::vector<std::string>& names);

  /// Writes a file; it is on the disk when this is done.
  void write(const std::string& name, const std::string& text);

  /// The same in a tenth of the time, without waiting for the disk: where the machine stops, the
  /// file may be broken afterwards. For what tells that by itself.
  void writeQuickly(const std::string& name, const std::string& text);

  /// Removes files that may not be there.
  void remove(const std::vector<std::string>& names);

  /// The hidden folder's path.
  const std::string& hidden() const { return hidden_; }

 private:
  void removeUnused();
  void makeHidden();
  std::string madeIn(const char* kind, const std::string& name) const;
  void make(const std::string& name, const std::string& text);
  void flush(const std::string& name);

  std::string path_;
  std::string hidden_;
  int lock_ = -1;
};

}  // namespace cornerpin

#endif

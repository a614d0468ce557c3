// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_CHILDREN_H
#define SHOW_CHILDREN_H

#include <signal.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace cornerpin {

/// A process to start, with nothing to read and nowhere to print.
struct ChildCommand {
  std::string program;             ///< path of the file
  std::vector<std::string> words;  ///< what it is called, and its arguments
  std::string folder;              ///< that it runs in
  std::string errors;              ///< file that takes its standard error
  unsigned seconds = 0;            ///< of the processor, then SIGXCPU ends it; 0 for no limit
};

/// How a child ended. One that cannot be started has ended with the code 127.
struct ChildEnd {
  std::size_t tag = 0;
  int code = -1;         ///< exit code; -1 when a signal ended it
  int signal = 0;        ///< that ended it, or that stopped it before it was ended
  bool stopped = false;  ///< whether it had stopped instead of going on
};

/// What is thrown where this process is asked to end.
struct Interrupted {
  int signal = 0;
};

/// Child processes that run side by side, each in a process group of its own: what a terminal sends
/// to its foreground goes to this process alone. They end with this object, and on Linux with this
/// process, however that ends.
///
/// While there is one, SIGCHLD and those of SIGHUP, SIGINT, SIGQUIT and SIGTERM that are not
/// ignored are blocked in the thread that made it, and are taken by `wait` and `checkInterrupted`.
/// At most one at a time.
class Children {
 public:
  Children();
  Children(const Children&) = delete;
  Children& operator=(const Children&) = delete;
  ~Children();

  /// Throws `std::system_error` where the system has no room for another process.
  void start(std::size_t tag, const ChildCommand& command);

  std::size_t running() const { return tags_.size(); }

  /// Waits until one has ended, which takes one that runs. A child that stops (SIGSTOP and its
  /// like) is ended. Throws `Interrupted`.
  ChildEnd wait();

  /// The same, for some time at most: nothing where none has ended by then.
  std::optional<ChildEnd> waitFor(std::chrono::milliseconds time);

  /// Throws `Interrupted` where this process has been asked to end.
  void checkInterrupted() const;

 private:
  struct Running {
    std::size_t tag = 0;
    int stoppedBy = 0;
  };
  bool takeEnded(ChildEnd& end);

  std::map<pid_t, Running> tags_;
  sigset_t awaited_{};
  sigset_t interrupting_{};
  sigset_t maskBefore_{};
  struct sigaction childActionBefore_ {};
};

/// "signal 9 (Killed)".
std::string signalText(int signal);

}  // namespace cornerpin

#endif

// SPDX-License-Identifier: BSD-3-Clause
#include "show/children.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <system_error>

namespace cornerpin {

namespace {

constexpr int kNotStarted = 127;

// A handler that does nothing: a signal that is ignored is never awaited, and the system reaps the
// children of a process that ignores SIGCHLD.
extern "C" void takeNote(int) {}

bool isIgnored(int signal) {
  struct sigaction action {};
  ::sigaction(signal, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

std::vector<char*> pointers(const std::vector<std::string>& words) {
  std::vector<char*> result;
  result.reserve(words.size() + 1);
  for (const std::string& word : words) result.push_back(const_cast<char*>(word.c_str()));
  result.push_back(nullptr);
  return result;
}

// From here to the new program's beginning only what is safe in a signal handler is called: other
// threads of this process may have held locks.
[[noreturn]] void failToStart(const char* what) {
  for (const char* part : {"cornerpin: the process cannot be started: ", what, "\n"}) {
    if (::write(STDERR_FILENO, part, std::strlen(part)) < 0) break;
  }
  ::_exit(kNotStarted);
}

void open(const char* path, int flags, int as) {
  const int fd = ::open(path, flags | O_NOCTTY, 0666);
  if (fd < 0 || ::dup2(fd, as) < 0) failToStart(path);
  if (fd != as) ::close(fd);
}

void endWith(pid_t parent) {
#ifdef __linux__
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
  if (::getppid() != parent) ::_exit(kNotStarted);
}

// The system would end it by SIGKILL a second later. No file holds what it was doing.
void limit(unsigned seconds) {
  const rlimit time = {seconds, seconds + 1};
  const rlimit none = {0, 0};
  if (::setrlimit(RLIMIT_CPU, &time) != 0 || ::setrlimit(RLIMIT_CORE, &none) != 0) {
    failToStart("its time cannot be limited");
  }
}

[[noreturn]] void become(const ChildCommand& command, char* const* words, pid_t parent,
                         const sigset_t& mask) {
  endWith(parent);
  ::setpgid(0, 0);
  open(command.errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
  open("/dev/null", O_RDONLY, STDIN_FILENO);
  open("/dev/null", O_WRONLY, STDOUT_FILENO);
  if (::chdir(command.folder.c_str()) != 0) failToStart(command.folder.c_str());
  if (command.seconds > 0) limit(command.seconds);
  ::sigprocmask(SIG_SETMASK, &mask, nullptr);
  ::execv(command.program.c_str(), words);
  failToStart(command.program.c_str());
}

}  // namespace

Children::Children() {
  ::sigemptyset(&interrupting_);
  for (int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    if (!isIgnored(signal)) ::sigaddset(&interrupting_, signal);
  }
  awaited_ = interrupting_;
  ::sigaddset(&awaited_, SIGCHLD);
  struct sigaction action {};
  action.sa_handler = takeNote;
  ::sigaction(SIGCHLD, &action, &childActionBefore_);
  ::pthread_sigmask(SIG_BLOCK, &awaited_, &maskBefore_);
}

Children::~Children() {
  for (const auto& child : tags_) ::kill(child.first, SIGKILL);
  for (const auto& child : tags_) {
    while (::waitpid(child.first, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  ::sigaction(SIGCHLD, &childActionBefore_, nullptr);
  ::pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
}

void Children::start(std::size_t tag, const ChildCommand& command) {
  const std::vector<char*> words = pointers(command.words);
  const pid_t parent = ::getpid();
  const pid_t child = ::fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "a child process");
  if (child == 0) become(command, words.data(), parent, maskBefore_);
  tags_[child] = {tag, 0};
}

bool Children::takeEnded(ChildEnd& end) {
  for (auto child = tags_.begin(); child != tags_.end(); ++child) {
    int status = 0;
    const pid_t found = ::waitpid(child->first, &status, WNOHANG | WUNTRACED);
    if (found == 0 || (found < 0 && errno == EINTR)) continue;
    if (found < 0) throw std::system_error(errno, std::generic_category(), "waitpid");
    if (WIFSTOPPED(status)) {
      child->second.stoppedBy = WSTOPSIG(status);
      ::kill(child->first, SIGKILL);  // its end is a signal of its own
      continue;
    }
    end = {child->second.tag, -1, child->second.stoppedBy, child->second.stoppedBy != 0};
    if (WIFEXITED(status)) end.code = WEXITSTATUS(status);
    if (WIFSIGNALED(status) && !end.stopped) end.signal = WTERMSIG(status);
    tags_.erase(child);
    return true;
  }
  return false;
}

ChildEnd Children::wait() {
  for (;;) {
    ChildEnd end;
    if (takeEnded(end)) return end;
    const int signal = ::sigwaitinfo(&awaited_, nullptr);
    if (signal > 0 && signal != SIGCHLD) throw Interrupted{signal};
  }
}

std::optional<ChildEnd> Children::waitFor(std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  for (;;) {
    ChildEnd ended;
    if (takeEnded(ended)) return ended;
    const auto left =
        std::chrono::duration_cast<std::chrono::nanoseconds>(end - std::chrono::steady_clock::now())
            .count();
    if (left <= 0) return std::nullopt;
    const timespec most = {static_cast<time_t>(left / 1'000'000'000),
                           static_cast<long>(left % 1'000'000'000)};
    const int signal = ::sigtimedwait(&awaited_, nullptr, &most);
    if (signal > 0 && signal != SIGCHLD) throw Interrupted{signal};
  }
}

void Children::checkInterrupted() const {
  const timespec noTime{};
  const int signal = ::sigtimedwait(&interrupting_, nullptr, &noTime);
  if (signal > 0) throw Interrupted{signal};
}

std::string signalText(int signal) {
  return fmt::format("signal {} ({})", signal, ::strsignal(signal));
}

}  // namespace cornerpin

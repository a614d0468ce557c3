// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "show/children.h"
#include "show/endless_file.h"
#include "show/shot_figures.h"
#include "show/shot_task.h"
#include "show/task_record.h"
#include "show/wording.h"

namespace cornerpin {

namespace {

namespace fs = std::filesystem;

constexpr int kSolvedCode = 0;
constexpr int kDegradedCode = 4;
constexpr std::size_t kLongestMessage = 2000;
constexpr const char* kErrors = "errors";  // in a shot's folder of work: a name without an ending

// What a child has said, a line each, without who said it and where it was made.
std::string messageIn(const std::string& path, const std::string& folder) {
  std::ifstream file(path, std::ios::binary);
  std::string text;
  const std::string who = "cornerpin: ";
  for (std::string line; text.size() < kLongestMessage && std::getline(file, line);) {
    if (line.rfind(who, 0) == 0) line.erase(0, who.size());
    for (std::size_t at = line.find(folder); at != std::string::npos; at = line.find(folder, at)) {
      line.erase(at, folder.size());
    }
    text += (text.empty() ? "" : "\n") + shot::printable(line);
  }
  return text.substr(0, kLongestMessage);
}

// A shot that is being solved.
struct Job {
  ShotTask task;
  std::vector<std::string> replaced;  // files of an earlier run
  std::string work;                   // folder
  int killed = 0;                     // how often
};

class ShowRun {
 public:
  ShowRun(const Show& show, const RunOptions& options, OutputFolder& folder,
          const shot::Progress& progress)
      : show_(show), options_(options), folder_(folder), progress_(progress) {
    for (const ShowShot& shot : show.shots) {
      for (const std::string& file : filesOf(show, shot)) files_.insert(file);
      files_.insert(recordNameOf(shot.name));
    }
  }

  RunCounts run() {
    const std::size_t last = std::min(options_.last, show_.shots.size() - 1);
    total_ = last + 1 - options_.first;
    report();
    for (std::size_t i = options_.first; i <= last; ++i) {
      children_.checkInterrupted();
      begin(i);
      while (children_.running() >= options_.workers) finishOne();
    }
    while (children_.running() > 0) finishOne();
    return counts_;
  }

  std::vector<OpenShot> open() const {
    std::vector<OpenShot> open;
    const std::size_t last = std::min(options_.last, show_.shots.size() - 1);
    for (std::size_t i = options_.first; i <= last; ++i) {
      const ShotTask task = taskOf(show_, show_.shots[i], options_.version);
      const std::optional<TaskRecord> record = recordOf(task.name);
      if (!record || !isDone(task, *record)) open.push_back({i, task.key});
    }
    return open;
  }

 private:
  void report() const { tellShots(progress_, counts_.done, total_ - counts_.kept); }

  std::optional<TaskRecord> recordOf(const std::string& shot) const {
    const std::string path = folder_ / recordNameOf(shot);
    std::error_code ignored;
    if (!fs::exists(path, ignored)) return std::nullopt;
    try {
      TaskRecord record = readRecord(path);
      if (record.task.name == shot) return record;
      return std::nullopt;
    } catch (const shot::InputError&) {
      return std::nullopt;
    }
  }

  bool isDone(const ShotTask& task, const TaskRecord& record) const {
    if (record.task.key != task.key) return false;
    if (record.state == ShotState::Failed) return !options_.retry;
    return std::all_of(task.files.begin(), task.files.end(), [this](const std::string& file) {
      std::error_code ignored;
      return fs::is_regular_file(folder_ / file, ignored);
    });
  }

  // Those of a shot's record that can be its own; somebody may have written in it.
  static std::vector<std::string> filesIn(const TaskRecord& record) {
    const std::string& name = record.task.name;
    std::vector<std::string> files;
    for (const std::string& file : record.task.files) {
      const bool mayBeOwn = file.rfind(name + ".", 0) == 0 && file.find('/') == std::string::npos;
      if (mayBeOwn) files.push_back(file);
    }
    return files;
  }

  void begin(std::size_t i) {
    const ShowShot& shot = show_.shots[i];
    Job job;
    job.task = taskOf(show_, shot, options_.version);
    if (const std::optional<TaskRecord> record = recordOf(shot.name)) {
      if (isDone(job.task, *record)) {
        ++counts_.kept;
        report();
        return;
      }
      job.replaced = filesIn(*record);
    }
    folder_.remove({kShowFile, kShowPage});
    if (const std::string flaw = flawOf(shot); !flaw.empty()) {
      fail(job, flaw);
      return;
    }
    job.work = folder_.beginWork(shot.name);
    start(i, jobs_[i] = std::move(job));
  }

  // Why no process is started for a shot.
  static std::string flawOf(const ShowShot& shot) {
    std::vector<std::string> files = {shot.input};
    if (const auto quads = shot.options.find("quads"); quads != shot.options.end()) {
      files.insert(files.end(), quads->second.begin(), quads->second.end());
    }
    for (const std::string& file : files) {
      if (isEndless(pathOf(shot, file))) {
        return shot::printable(file) +
               ": this is no plain file: shots of a batch are read from files";
      }
    }
    return "";
  }

  void start(std::size_t i, const Job& job) {
    const ShowShot& shot = show_.shots[i];
    const ChildCommand command = {options_.program, solveWords(show_, shot, job.work), shot.folder,
                                  (fs::path(job.work) / kErrors).string(), options_.timeLimit};
    for (;;) {
      try {
        children_.start(i, command);
        return;
      } catch (const std::system_error&) {
        if (children_.running() == 0) throw;
      }
      finishOne();  // makes room
    }
  }

  void finishOne() {
    const ChildEnd end = children_.wait();
    Job& job = jobs_.at(end.tag);
    const bool isTooLong = end.signal == SIGXCPU && options_.timeLimit > 0;
    if (end.signal != 0 && !isTooLong && ++job.killed < kMostTries) {
      job.work = folder_.beginWork(job.task.name);
      start(end.tag, job);
      return;
    }
    if (isTooLong) {
      fail(job,
           fmt::format("took more than {} s of the processor (--time-limit)", options_.timeLimit));
    } else if (end.signal != 0) {
      fail(job, fmt::format("{} by {}, {} times", end.stopped ? "stopped" : "ended",
                            signalText(end.signal), kMostTries));
    } else if (end.code == kSolvedCode || end.code == kDegradedCode) {
      accept(job, end.code == kSolvedCode ? ShotState::Solved : ShotState::Degraded);
    } else {
      const std::string text = messageIn((fs::path(job.work) / kErrors).string(), job.work + "/");
      fail(job, text.empty() ? fmt::format("ended in {} without a message", end.code) : text);
    }
    folder_.endWork(job.task.name);
    jobs_.erase(end.tag);
  }

  void accept(const Job& job, ShotState state) {
    std::optional<ShotFigures> figures;
    try {
      const shot::Result result =
          shot::readResult((fs::path(job.work) / job.task.files[0]).string());
      const std::optional<shot::InputFile> input = result.input();
      if (!input || input->sha256 != job.task.sha256) {
        fail(job,
             shot::printable(job.task.input) + ": the file was changed meanwhile: run it again");
        return;
      }
      figures = figuresOf(result);
      requireFiles(job);
    } catch (const shot::InputError& error) {
      const std::string text = error.what();
      fail(job, "the process ended without its files: " + text.substr(text.rfind('/') + 1));
      return;
    }
    // Whoever is killed in between leaves no record of other files than those that are there.
    folder_.remove({recordNameOf(job.task.name)});
    removeReplaced(job, true);
    folder_.place(job.work, job.task.files);
    write({job.task, options_.version, state, "", figures});
  }

  static void requireFiles(const Job& job) {
    for (const std::string& file : job.task.files) {
      if (!fs::exists(fs::path(job.work) / file)) refuseFile(file, 0, "it is not there");
    }
  }

  // But for those of other shots.
  void removeReplaced(const Job& job, bool isMadeAgain) {
    const std::vector<std::string>& own = job.task.files;
    for (const std::string& file : job.replaced) {
      const bool isOwn = std::find(own.begin(), own.end(), file) != own.end();
      if (isOwn ? !isMadeAgain : files_.count(file) == 0) folder_.remove({file});
    }
  }

  // What no record tells of is somebody else's.
  void fail(const Job& job, const std::string& message) {
    removeReplaced(job, false);
    write({job.task, options_.version, ShotState::Failed, message, std::nullopt});
  }

  void write(const TaskRecord& record) {
    folder_.writeQuickly(recordNameOf(record.task.name), recordText(record));
    ++counts_.done;
    report();
  }

  const Show& show_;
  const RunOptions& options_;
  OutputFolder& folder_;
  const shot::Progress& progress_;
  std::set<std::string> files_;  // of all shots, with their records
  std::map<std::size_t, Job> jobs_;
  std::size_t total_ = 0;
  RunCounts counts_;
  Children children_;
};

}  // namespace

void tellShots(const shot::Progress& progress, std::size_t done, std::size_t total) {
  if (progress && !progress("solving shots", done, total)) throw shot::Cancelled();
}

RunCounts runShow(const Show& show, const RunOptions& options, OutputFolder& folder,
                  const shot::Progress& progress) {
  return ShowRun(show, options, folder, progress).run();
}

std::vector<OpenShot> openShots(const Show& show, const RunOptions& options, OutputFolder& folder) {
  return ShowRun(show, options, folder, {}).open();
}

}  // namespace cornerpin

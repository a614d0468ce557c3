// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "tests/support/small_shot.h"
#include "tests/tools/program.h"

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;
using Bytes = std::map<std::string, std::string>;

const std::string kBoard = CORNERPIN_DATA "/board.csv";  // takes a process long enough to be caught

std::string small(int i) { return "small" + std::to_string(i); }

// Small shots in a new folder.
void addSmall(const std::string& folder, int count) {
  fs::create_directories(folder);
  for (int i = 0; i < count; ++i) writeFile(folder + "/" + small(i) + ".csv", smallShot(i));
}

Bytes bytesIn(const std::string& folder) {
  Bytes bytes;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string text = readFile(entry.path().string());
    bytes[entry.path().filename().string()] = text;
    keepResult(text);
  }
  return bytes;
}

nlohmann::json jsonIn(const std::string& path) { return nlohmann::json::parse(readFile(path)); }

std::string stateOf(const std::string& folder, const std::string& shot) {
  return jsonIn(folder + "/" + shot + ".task.json")["state"];
}

std::string messageOf(const std::string& folder, const std::string& shot) {
  return jsonIn(folder + "/" + shot + ".task.json")["message"];
}

// The children of a process that solve, by the names of their shots' files.
std::map<pid_t, std::string> shotsOf(pid_t parent) {
  const std::string name = std::to_string(parent);
  std::istringstream children(readFile("/proc/" + name + "/task/" + name + "/children"));
  std::map<pid_t, std::string> shots;
  for (pid_t child = 0; children >> child;) {
    const std::string line = readFile("/proc/" + std::to_string(child) + "/cmdline");
    std::istringstream words(line);
    std::string word;
    for (int i = 0; i < 3; ++i) std::getline(words, word, '\0');
    if (contains(line, "--threads=1")) shots[child] = word;
  }
  return shots;
}

pid_t start(const Words& arguments, const std::string& errors = "/dev/null") {
  Words command = {CORNERPIN_PROGRAM, "batch"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  ChildOptions options;
  options.err = errors;
  options.defaultSignals = {SIGINT, SIGTERM, SIGHUP};
  return startChild(command, options);
}

bool hasEnded(pid_t pid) {
  const std::string state = readFile("/proc/" + std::to_string(pid) + "/stat");
  return state.empty() || contains(state, ") Z ");
}

void pauseAMoment() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

// Waits until something holds; whether it does within a minute.
bool wait(const std::function<bool()>& holds) {
  for (int i = 0; i < 60000; ++i) {
    if (holds()) return true;
    pauseAMoment();
  }
  return false;
}

std::size_t recordsIn(const std::string& folder) {
  std::size_t count = 0;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    count += contains(entry.path().filename().string(), ".task.json") ? 1u : 0u;
  }
  return count;
}

// When each record was written.
std::map<std::string, fs::file_time_type> timesIn(const std::string& folder) {
  std::map<std::string, fs::file_time_type> times;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (contains(entry.path().filename().string(), ".task.json")) {
      times[entry.path().filename().string()] = entry.last_write_time();
    }
  }
  return times;
}

// How many shots the tests with real faults have.
int smallShots() { return std::getenv("CORNERPIN_LARGE_BATCH") != nullptr ? 194 : 34; }

}  // namespace

TEST(BatchCommand, WritesResultsExportsPagesAndRecordsBesideEachOther) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 2);
  const Outcome run = cornerpin({"batch", folder / "in", "-o", folder / "out", "--export", "nk",
                                 "--report", "--size=100x100", "--y-up", "--pixel-center=0.5"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_TRUE(contains(run.out, "solved        2 shots of 2\n")) << run.out;
  EXPECT_TRUE(contains(run.out, "done          2 now, 0 were there\n")) << run.out;
  std::set<std::string> names;
  for (const auto& file : bytesIn(folder / "out")) names.insert(file.first);
  EXPECT_EQ(names, (std::set<std::string>{"batch.html", "batch.json", "small0.html", "small0.json",
                                          "small0.nk", "small0.task.json", "small1.html",
                                          "small1.json", "small1.nk", "small1.task.json"}));
}

TEST(BatchCommand, GivesWhatSolveGives) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 1);
  cornerpin(
      {"batch", folder / "in", "-o", folder / "out", "--smooth", "0.25", "--drop", "t1,t5*:2"});
  cornerpin({"solve", folder / "in/small0.csv", "-o", folder / "alone.json", "--smooth", "0.25",
             "--drop", "t1,t5*:2"});
  EXPECT_NE(readFile(folder / "alone.json"), "");
  EXPECT_EQ(readFile(folder / "out/small0.json"), readFile(folder / "alone.json"));
}

TEST(BatchCommand, GivesTheSameBytesWithAnyNumberOfWorkersAnywhere) {
  const TemporaryFolder folder;
  const TemporaryFolder elsewhere;
  addSmall(folder / "in", 9);
  writeFile(folder / "in/broken.csv", "track,frame,x,y\na,1,b,2\n");
  const auto bytesOf = [&](const std::string& in, const std::string& out, const char* workers) {
    const Outcome run = cornerpin({"batch", in, "-o", out, "--workers", workers, "--report"});
    EXPECT_EQ(run.code, 1);
    return bytesIn(out);
  };
  const Bytes one = bytesOf(folder / "in", folder / "1", "1");
  EXPECT_EQ(one.size(), 30u);
  EXPECT_EQ(bytesOf(folder / "in", folder / "2", "2"), one);
  fs::copy(folder / "in", elsewhere / "other");
  EXPECT_EQ(bytesOf(elsewhere / "other", elsewhere / "5", "5"), one);
}

TEST(BatchCommand, TakesAManifestWithOptionsOfItsShots) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 1);
  writeFile(folder / "m.json", R"({"cornerpin_batch": 1, "options": {"smooth": 0.5, "seed": 2},
      "shots": [{"input": "in/small0.csv"},
                {"name": "b", "input": "in/small0.csv",
                 "options": {"seed": 3, "drop": ["t1", "\"t5\":1"]}}]})");
  const Outcome run =
      cornerpin({"batch", folder / "m.json", "-o", folder / "out", "--smooth=0.25", "--quiet"});
  EXPECT_EQ(run.code, 0) << run.err;
  const auto first = jsonIn(folder / "out/small0.json")["options"];
  EXPECT_EQ(first["smooth"], 0.25);
  EXPECT_EQ(first["seed"], 2);
  const auto second = jsonIn(folder / "out/b.json")["options"];
  EXPECT_EQ(second["smooth"], 0.25);
  EXPECT_EQ(second["seed"], 3);
  EXPECT_EQ(second["drop"], nlohmann::json::parse(R"(["t1", "\"t5\":1"])"));
}

TEST(BatchCommand, RefusesOptionsBeforeAnythingIsRun) {
  const TemporaryFolder folder;
  const auto refusal = [&](const std::string& members) {
    writeFile(folder / "m.json",
              "{\"cornerpin_batch\": 1, \"shots\": [\n{\"input\": \"a.csv\",\n" + members + "}]}");
    const Outcome run = cornerpin({"batch", folder / "m.json", "-o", folder / "out"});
    EXPECT_EQ(run.code, 2);
    EXPECT_FALSE(fs::exists(folder / "out"));
    const std::string start = "cornerpin: " + (folder / "m.json") + ":2: shot \"a\": ";
    EXPECT_EQ(run.err.substr(0, start.size()), start);
    return run.err.substr(std::min(start.size(), run.err.size()));
  };
  EXPECT_EQ(refusal("\"options\": {\"smoth\": 1}"),
            "solve has no option --smoth: did you mean --smooth?\n");
  EXPECT_EQ(refusal("\"options\": {\"smooth\": \"x\"}"),
            "--smooth takes a number of pixels above 0, not \"x\"\n");
  EXPECT_EQ(refusal("\"options\": {\"loss\": \"tuckey\"}"),
            "--loss takes tukey, cauchy, huber or none, not \"tuckey\": did you mean tukey?\n");
  EXPECT_EQ(refusal("\"options\": {\"fill\": \"please\"}"),
            "--fill takes no value: give true or false\n");
  EXPECT_EQ(refusal("\"options\": {\"output=x\": true}"), "solve has no option \"output=x\"\n");
  EXPECT_EQ(refusal("\"options\": {\"\": true}"), "solve has no option \"\"\n");
  EXPECT_EQ(refusal("\"options\": {\"base\": true}"), "--base wants a value: --base FRAME\n");
  EXPECT_EQ(refusal("\"options\": {\"base\": [1, 2]}"),
            "--base is given more than once: leave one out\n");
  EXPECT_EQ(refusal("\"options\": {\"threads\": 4}"),
            "a batch sets --threads itself: leave it out\n");
}

TEST(BatchCommand, RefusesWhatMakesNoSense) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 2);
  const auto refusal = [&](Words words) {
    words.insert(words.begin(), "batch");
    const Outcome run = cornerpin(words);
    EXPECT_EQ(run.code, 2) << run.err;
    EXPECT_EQ(run.out, "");
    return run.err;
  };
  const std::string in = folder / "in";
  const std::string out = folder / "out";
  EXPECT_EQ(refusal({in, "-o", in}), "cornerpin: \"" + in +
                                         "\" has tracks that are read: name another folder for "
                                         "results\n");
  EXPECT_EQ(refusal({in, "-o", in + "/small0.csv"}),
            "cornerpin: \"" + in + "/small0.csv\" is a file: name a folder for results\n");
  EXPECT_EQ(refusal({in, "-o", out, "--workers", "0"}),
            "cornerpin: --workers takes a whole number from 1 to 1024, not \"0\"\n");
  EXPECT_EQ(refusal({in, "-o", out, "--time-limit", "1.5"}),
            "cornerpin: --time-limit takes a whole number from 1 to 1000000000, not \"1.5\"\n");
  EXPECT_EQ(refusal({in, "-o", out, "--print-commands", "--time-limit", "x"}),
            "cornerpin: --time-limit takes a whole number from 1 to 1000000000, not \"x\"\n");
  EXPECT_EQ(refusal({in, "-o", out, "--chunk", "0"}),
            "cornerpin: --chunk takes a whole number from 1 to 1000000, not \"0\"\n");
  EXPECT_EQ(refusal({in, "-o", out + "\n", "--print-commands"}),
            "cornerpin: \"" + out +
                "?\" holds a control character, which no command on a line can: call it "
                "otherwise\n");
  EXPECT_EQ(refusal({in, "-o", out, "--scheduler=tcp://h:1", "--chunk", "0"}),
            "cornerpin: --chunk takes a whole number from 1 to 1000000, not \"0\"\n");
  EXPECT_EQ(refusal({in, "-o", out, "--scheduler=tcp://h:1", "--print-commands"}),
            "cornerpin: --print-commands and --scheduler exclude each other: leave one out\n");
  EXPECT_EQ(refusal({in + "/small0.csv", in + "/small1.csv", "-o", out, "--scheduler=tcp://h:1"}),
            "cornerpin: --scheduler: name one manifest, one folder, or one pattern in quotes, so "
            "that each command can name it\n");
  EXPECT_EQ(refusal({in, "-o", out, "--only", "2"}),
            "cornerpin: --only: there is no shot 2: they are from 0 to 1\n");
  EXPECT_EQ(refusal({in, "-o", out, "--only", "1-0"}),
            "cornerpin: --only takes shots such as 0-199, 200- or 7, not \"1-0\"\n");
  EXPECT_TRUE(contains(refusal({in, "-o", out, "--export", "nuk"}), "did you mean nk?"));
  EXPECT_EQ(refusal({in, in, "-o", out, "--print-commands"}),
            "cornerpin: the shots of \"small0.csv\" and \"small0.csv\" would both write "
            "\"small0.json\": name one of them otherwise\n");
  EXPECT_FALSE(fs::exists(out));
}

TEST(BatchCommand, ReplacesNothingThatItReads) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 1);
  fs::create_directory(folder / "out");
  const auto refused = [&](const Words& words, const std::string& file) {
    const std::string before = readFile(file);
    const Outcome run = cornerpin(words);
    EXPECT_EQ(run.code, 2) << file;
    EXPECT_TRUE(contains(run.err, "is read, and a file of the results would take its place"))
        << run.err;
    EXPECT_EQ(readFile(file), before);
  };
  const auto manifest = [&](const std::string& file, const std::string& members) {
    writeFile(file, "{\"cornerpin_batch\": 1, \"shots\": [{" + members + "}]}");
    return file;
  };
  const std::string input = "\"input\": \"" + (folder / "in/small0.csv") + "\"";
  for (const char* name : {"out/batch.json", "out/small0.json", "out/small0.task.json"}) {
    const std::string file = manifest(folder / name, input);
    refused({"batch", file, "-o", folder / "out"}, file);
    fs::remove(file);
  }
  writeFile(folder / "out/small0.json", "{\"a\": [[0, 0], [9, 0], [9, 9], [0, 9]]}");
  const std::string quads = ", \"options\": {\"reference\": 0, \"quads\": \"out/small0.json\"}";
  refused({"batch", manifest(folder / "m.json", input + quads), "-o", folder / "out"},
          folder / "out/small0.json");
  fs::rename(folder / "out/small0.json", folder / "quads.json");
  fs::create_symlink("../quads.json", folder / "out/small0.json");
  refused({"batch", folder / "m.json", "-o", folder / "out"}, folder / "quads.json");
  EXPECT_TRUE(fs::is_symlink(folder / "out/small0.json"));
  writeFile(folder / "out/link.csv", smallShot(1));
  fs::create_symlink("../out/link.csv", folder / "in/link.csv");
  refused({"batch", folder / "in", "-o", folder / "out", "--export", "csv"},
          folder / "out/link.csv");
}

TEST(BatchCommand, RefusesWhatIsNoFileWhereAResultGoes) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 2);
  const auto refusal = [&] {
    const Outcome run = cornerpin({"batch", folder / "in", "-o", folder / "out"});
    EXPECT_EQ(run.code, 2);
    EXPECT_FALSE(fs::exists(folder / "out/small0.json"));
    return run.err;
  };
  const std::string end =
      "\" is no plain file, and a file of the results is called so: name another folder for "
      "results\n";
  fs::create_directories(folder / "out/small1.json/x");
  EXPECT_EQ(refusal(), "cornerpin: \"" + (folder / "out/small1.json") + end);
  // A piece looks at nothing that is another's.
  EXPECT_EQ(cornerpin({"batch", folder / "in", "-o", folder / "out", "--only", "0"}).code, 0);
  fs::remove(folder / "out/small0.json");
  fs::remove_all(folder / "out/small1.json");
  ASSERT_EQ(::mkfifo((folder / "out/small1.task.json").c_str(), 0600), 0);
  EXPECT_EQ(refusal(), "cornerpin: \"" + (folder / "out/small1.task.json") + end);
}

TEST(BatchCommand, EndsIn4WhereAShotHasFramesWithoutAFullTransform) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 1);
  fs::copy(CORNERPIN_DATA "/screen4.csv", folder / "in");
  const Outcome run = cornerpin({"batch", folder / "in", "-o", folder / "out", "--quiet"});
  EXPECT_EQ(run.code, 4);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(stateOf(folder / "out", "screen4"), "degraded");
}

TEST(BatchCommand, WarnsOfResultsOfShotsThatItLacks) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 3);
  const Words words = {"batch", folder / "in", "-o", folder / "out"};
  EXPECT_EQ(cornerpin(words).err, "");
  writeFile(folder / "in/small1.csv", "");  // no tracks any more
  const Outcome run = cornerpin(words);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "cornerpin: warning: \"" + (folder / "out") +
                         "\" has results of 1 shot that this batch lacks: small1\n");
  EXPECT_TRUE(fs::exists(folder / "out/small1.json"));
  Words quiet = words;
  quiet.push_back("--quiet");
  EXPECT_EQ(cornerpin(quiet).err, "");
}

TEST(BatchCommand, NamesTheFirstTenShotsThatFailed) {
  const TemporaryFolder folder;
  std::string list;
  for (int i = 10; i < 22; ++i) list += ",\n{\"input\": \"f" + std::to_string(i) + ".csv\"}";
  writeFile(folder / "m.json", "{\"cornerpin_batch\": 1, \"shots\": [" + list.substr(1) + "]}");
  const Outcome run = cornerpin({"batch", folder / "m.json", "-o", folder / "out", "--quiet"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err,
            "cornerpin: 12 shots failed: f10, f11, f12, f13, f14, f15, f16, f17, f18, f19 and 2 "
            "more\n");
}

// Processes that are killed, stopped and that always end, and files that cannot be read.
TEST(BatchCommand, LosesNothingWhereProcessesAreKilledAndStopped) {
  const TemporaryFolder folder;
  const int count = smallShots();
  addSmall(folder / "in", count);
  // They take long enough to be caught, on a busy machine too.
  for (const char* name : {"killed0", "killed1", "stopped", "doomed"}) {
    fs::copy(CORNERPIN_DATA "/planks.csv", folder / ("in/" + std::string(name) + ".csv"));
  }
  writeFile(folder / "in/broken.csv", "track,frame,x,y\na,1,b,2\n");
  std::string list = "{\"input\": \"in/nowhere.csv\"}";
  for (const auto& entry : fs::directory_iterator(folder / "in")) {
    list += ",\n{\"input\": \"in/" + entry.path().filename().string() + "\"}";
  }
  writeFile(folder / "m.json", "{\"cornerpin_batch\": 1, \"shots\": [" + list + "]}");
  const pid_t batch =
      start({folder / "m.json", "-o", folder / "out", "--workers=4", "--quiet"}, folder / "errors");
  std::set<pid_t> seen;
  std::map<std::string, int> runs;
  EXPECT_TRUE(wait([&] {
    for (const auto& [pid, input] : shotsOf(batch)) {
      if (!seen.insert(pid).second) continue;
      const int run = ++runs[input];
      if (input == "in/stopped.csv" && run == 1) ::kill(pid, SIGSTOP);
      const bool once = contains(input, "killed") && run == 1;
      if (once || input == "in/doomed.csv") ::kill(pid, SIGKILL);
    }
    return hasEnded(batch);
  }));
  EXPECT_EQ(waitForChild(batch).code, 1);
  const std::string errors = readFile(folder / "errors");
  EXPECT_TRUE(contains(errors, "cornerpin: 3 shots failed: ")) << errors;
  for (const char* name : {"broken", "doomed", "nowhere"}) {
    EXPECT_TRUE(contains(errors, name)) << errors;
    EXPECT_EQ(stateOf(folder / "out", name), "failed");
  }
  EXPECT_EQ(messageOf(folder / "out", "doomed"), "ended by signal 9 (Killed), 3 times");
  EXPECT_EQ(messageOf(folder / "out", "broken"), "in/broken.csv:2: x must be a number, not \"b\"");
  EXPECT_EQ(runs["in/doomed.csv"], 3);
  for (const char* name : {"killed0", "killed1", "stopped"}) {
    const int run = runs["in/" + std::string(name) + ".csv"];
    EXPECT_TRUE(run == 1 || run == 2) << name << ": " << run << " runs were seen";
    EXPECT_EQ(stateOf(folder / "out", name), "solved");
  }
  for (int i = 0; i < count; ++i) EXPECT_EQ(stateOf(folder / "out", small(i)), "solved") << i;
  EXPECT_EQ(bytesIn(folder / "out")["killed0.json"].size(),
            bytesIn(folder / "out")["killed1.json"].size());
  EXPECT_EQ(jsonIn(folder / "out/batch.json")["counts"]["failed"], 3);
}

TEST(BatchCommand, GoesOnWhereItWasKilled) {
  const TemporaryFolder folder;
  const int count = smallShots();
  addSmall(folder / "in", count);
  for (int i = 0; i < 4; ++i) fs::copy(kBoard, folder / ("in/a" + std::to_string(i) + ".csv"));
  const auto ended = [&](int signal, int workers) {
    const std::size_t before = recordsIn(folder / "out");
    const pid_t batch =
        start({folder / "in", "-o", folder / "out", "--workers", std::to_string(workers)});
    EXPECT_TRUE(
        wait([&] { return recordsIn(folder / "out") >= before + 3 && !shotsOf(batch).empty(); }));
    const std::map<pid_t, std::string> running = shotsOf(batch);
    ::kill(batch, signal);
    EXPECT_EQ(waitForChild(batch).signal, signal);
    for (const auto& child : running) {
      EXPECT_TRUE(wait([&] { return hasEnded(child.first); })) << child.second;
    }
    EXPECT_FALSE(fs::exists(folder / "out/batch.json"));
  };
  ended(SIGKILL, 2);
  ended(SIGTERM, 3);
  ended(SIGINT, 1);
  const auto times = timesIn(folder / "out");
  const std::string all = std::to_string(count + 4 - static_cast<int>(times.size()));
  const Outcome run = cornerpin({"batch", folder / "in", "-o", folder / "out"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_TRUE(contains(
      run.out, "done          " + all + " now, " + std::to_string(times.size()) + " were there\n"))
      << run.out;
  for (const auto& [name, time] : timesIn(folder / "out")) {
    if (times.count(name) > 0) {
      EXPECT_EQ(time, times.at(name)) << name;
    }
  }
  cornerpin({"batch", folder / "in", "-o", folder / "whole", "--quiet"});
  EXPECT_EQ(bytesIn(folder / "out"), bytesIn(folder / "whole"));
}

TEST(BatchCommand, TellsProgramsThatItHasEnded) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 3);
  const Outcome run = cornerpin(
      {"batch", folder / "in", "-o", folder / "out", "--workers=1", "--progress", "json"});
  EXPECT_TRUE(contains(run.err, "{\"phase\":\"finished\",\"exit_code\":0}\n")) << run.err;
}

TEST(BatchCommand, PrintsCommandsThatDoTheSameInPieces) {
  const TemporaryFolder folder;
  const std::string in = folder / "it's in";
  addSmall(in, 7);
  const Words batch = {"batch", in, "-o", folder / "out dir", "--smooth", "0.25", "--drop", "t5*"};
  Words asked = batch;
  asked.insert(asked.end(), {"--print-commands", "--chunk", "3"});
  const Outcome commands = cornerpin(asked);
  EXPECT_EQ(commands.code, 0) << commands.err;
  EXPECT_FALSE(fs::exists(folder / "out dir"));
  EXPECT_EQ(std::count(commands.out.begin(), commands.out.end(), '\n'), 3);
  EXPECT_TRUE(contains(commands.out, " --only=6-6\n")) << commands.out;
  writeFile(folder / "commands", commands.out);
  const Outcome pieces = runProgram(
      {"/bin/sh", "-c", "xargs -P 3 -d '\\n' -I{} sh -c {} < '" + (folder / "commands") + "'"});
  EXPECT_EQ(pieces.code, 0) << pieces.err;
  EXPECT_EQ(pieces.out, "");
  EXPECT_EQ(recordsIn(folder / "out dir"), 7u);
  EXPECT_FALSE(fs::exists(folder / "out dir/batch.json"));
  const Outcome whole = cornerpin(batch);
  EXPECT_TRUE(contains(whole.out, "done          0 now, 7 were there\n")) << whole.out;
  Words alone = batch;
  alone[3] = folder / "alone";
  cornerpin(alone);
  EXPECT_EQ(bytesIn(folder / "out dir"), bytesIn(folder / "alone"));
}

TEST(BatchCommand, PrintsCommandsOfAPatternInAFolderThatLooksLikeOne) {
  const TemporaryFolder folder;
  addSmall(folder / "a[1]*\\b/in", 3);
  const Outcome run = runProgram(
      {"/bin/sh", "-c", "cd \"$1\" && \"$0\" batch 'in/*.csv' -o out --print-commands | sh",
       CORNERPIN_PROGRAM, folder / "a[1]*\\b"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(recordsIn(folder / "a[1]*\\b/out"), 3u);
}

TEST(BatchCommand, PrintsCommandsForGnuParallel) {
  if (runProgram({"/bin/sh", "-c", "parallel --version | grep -q GNU"}).code != 0) {
    EXPECT_EQ(std::getenv("CI"), nullptr) << "parallel is missing";
    GTEST_SKIP() << "no GNU parallel here";
  }
  const TemporaryFolder folder;
  addSmall(folder / "in", 5);
  writeFile(folder / "in/broken.csv", "track,frame,x,y\na,1,b,2\n");
  const Outcome run = runProgram(
      {"/bin/sh", "-c",
       "\"$0\" batch \"$1\"/in -o \"$1\"/out --print-commands --chunk 2 | HOME=\"$1\" parallel -j2",
       CORNERPIN_PROGRAM, folder.path().string()});
  EXPECT_EQ(run.code, 1) << run.err;  // how many of the commands failed
  EXPECT_TRUE(contains(run.err, "cornerpin: 1 shot failed: broken\n")) << run.err;
  const Outcome whole = cornerpin({"batch", folder / "in", "-o", folder / "out"});
  EXPECT_TRUE(contains(whole.out, "done          0 now, 6 were there\n")) << whole.out;
}

TEST(BatchCommand, FailsShotsThatTakeLongerThanTheyMay) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 1);
  std::istringstream rows(readFile(kBoard));
  std::string text;
  std::string row;
  std::getline(rows, text);
  text += "\n";
  while (std::getline(rows, row)) {
    for (char copy = 'a'; copy < 'p'; ++copy) text += copy + row + "\n";
  }
  writeFile(folder / "in/long.csv", text);
  const Outcome run =
      cornerpin({"batch", folder / "in", "-o", folder / "out", "--quiet", "--time-limit=1"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "cornerpin: 1 shot failed: long\n");
  EXPECT_EQ(messageOf(folder / "out", "long"),
            "took more than 1 s of the processor (--time-limit)");
  EXPECT_EQ(stateOf(folder / "out", "small0"), "solved");
}

// What a scheduler's workers are given, and what is made of it.
TEST(BatchCommand, HasPiecesDoneElsewhereAndPutsThemTogether) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 7);
  writeFile(folder / "in/broken.csv", "track,frame,x,y\na,1,b,2\n");
  const auto run = [&](const std::string& script, const Words& more = {}) {
    writeFile(folder / "python3", "#!/bin/sh\n" + script + "\n");
    fs::permissions(folder / "python3", fs::perms::owner_all);
    Words words = {"batch", folder / "in", "-o", folder / "out", "--scheduler", "tcp://h:1"};
    words.insert(words.end(), more.begin(), more.end());
    ChildOptions options;
    options.environment = {"PATH=" + folder.path().string() + ":" + std::getenv("PATH")};
    return cornerpin(words, options);
  };

  const Outcome gone = run("echo tcp://h:1: it is gone >&2; exit 1");
  EXPECT_EQ(gone.code, 1);
  EXPECT_EQ(gone.err, "cornerpin: tcp://h:1: it is gone\n");
  EXPECT_EQ(gone.out, "");
  EXPECT_EQ(folder.entryCount(), 3u);
  EXPECT_EQ(recordsIn(folder / "out"), 0u);

  // Of three pieces one is not done.
  const std::string pieces = "cp \"$4\" " + (folder / "pieces");
  const Outcome some =
      run(pieces + "; sed -n '1p;3p' \"$4\" | cut -d' ' -f3- | sh 2>&-; echo why >&2",
          {"--chunk=3", "--smooth=0.25", "--workers=2"});
  EXPECT_EQ(some.code, 1);
  EXPECT_EQ(some.err,
            "cornerpin: why\ncornerpin: 3 shots that no worker has done were done here\n"
            "cornerpin: 1 shot failed: broken\n");
  EXPECT_TRUE(contains(some.out, "done          8 now, 0 were there\n")) << some.out;
  const std::string list = readFile(folder / "pieces");
  EXPECT_TRUE(contains(list, " --workers=2 --quiet --smooth=0.25 --only=0-2\n")) << list;
  EXPECT_TRUE(contains(list, " --only=3-5\n")) << list;
  EXPECT_TRUE(contains(list, " --only=6-7\n")) << list;
  cornerpin({"batch", folder / "in", "-o", folder / "alone", "--quiet", "--smooth=0.25"});
  EXPECT_EQ(bytesIn(folder / "out"), bytesIn(folder / "alone"));

  const Outcome again = run("exit 9", {"--smooth=0.25"});  // nobody is asked
  EXPECT_EQ(again.err, "cornerpin: 1 shot failed: broken\n");
  EXPECT_TRUE(contains(again.out, "done          0 now, 8 were there\n")) << again.out;

  fs::remove(folder / "out/small4.json");
  const Outcome failed =
      run(pieces + "; cut -d' ' -f3- \"$4\" | sh 2>&-", {"--smooth=0.25", "--retry"});
  EXPECT_EQ(failed.err, "cornerpin: 1 shot failed: broken\n");
  EXPECT_TRUE(contains(failed.out, "done          2 now, 6 were there\n")) << failed.out;
  EXPECT_EQ(readFile(folder / "pieces").find(" --only=1-7\n"), std::string::npos);
}

// With a scheduler and a worker that are threads of one process.
TEST(BatchCommand, HasWorkersOfDaskDoTheShots) {
  ChildOptions ours;  // Debian's Python, whatever comes first in the path
  ours.environment = {"PATH=/usr/bin:" + std::string(std::getenv("PATH"))};
  if (runProgram({"/usr/bin/env", "python3", "-c", "import distributed"}, ours).code != 0) {
    EXPECT_EQ(std::getenv("CI"), nullptr) << "python3-distributed is missing";
    GTEST_SKIP() << "no dask.distributed here";
  }
  const TemporaryFolder folder;
  addSmall(folder / "in", 3);
  writeFile(folder / "in/broken.csv", "track,frame,x,y\na,1,b,2\n");
  ours.out = folder / "address";
  const pid_t cluster = startChild(
      {"/usr/bin/env", "python3", "-c",
       "import distributed, time\n"
       "made = distributed.LocalCluster(1, threads_per_worker=1, processes=False, protocol='tcp',\n"
       "                                host='127.0.0.1', dashboard_address=None)\n"
       "print(made.scheduler_address, flush=True)\n"
       "time.sleep(120)"},
      ours);
  EXPECT_TRUE(wait([&] { return contains(readFile(folder / "address"), "\n"); }));
  std::string address = readFile(folder / "address");
  address = address.substr(0, address.find('\n'));
  ours.out = "/dev/null";
  const Outcome run = cornerpin(
      {"batch", folder / "in", "-o", folder / "out", "--scheduler", address, "--chunk=2"}, ours);
  ::kill(cluster, SIGKILL);
  waitForChild(cluster);
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "cornerpin: 1 shot failed: broken\n");
  EXPECT_TRUE(contains(run.out, "done          4 now, 0 were there\n")) << run.out;
  cornerpin({"batch", folder / "in", "-o", folder / "alone", "--quiet"});
  EXPECT_EQ(bytesIn(folder / "out"), bytesIn(folder / "alone"));
}

TEST(BatchCommand, IsComparedWithAnotherByDiff) {
  const TemporaryFolder folder;
  addSmall(folder / "in", 2);
  cornerpin({"batch", folder / "in", "-o", folder / "a", "--quiet"});
  cornerpin({"batch", folder / "in", "-o", folder / "b", "--quiet", "--base=2"});
  const Outcome same = cornerpin({"diff", folder / "a", folder / "a"});
  EXPECT_EQ(same.code, 0) << same.err;
  EXPECT_EQ(same.out, "Same: 2 shots\n");
  const Outcome differs = cornerpin({"diff", folder / "a", folder / "b"});
  EXPECT_EQ(differs.code, 4) << differs.err;
  EXPECT_TRUE(contains(differs.out, "other options")) << differs.out;
  EXPECT_TRUE(contains(differs.out, "\nDifferent: 2 of 2 shots in both\n")) << differs.out;
  EXPECT_EQ(cornerpin({"diff", folder / "a", folder / "b", "--max", "1"}).code, 0);
  const Outcome mixed = cornerpin({"diff", folder / "a", folder / "a/small0.json"});
  EXPECT_EQ(mixed.code, 2);
  EXPECT_EQ(mixed.err, "cornerpin: \"" + (folder / "a/small0.json") +
                           "\" is no folder: compare two folders or two files\n");
  EXPECT_EQ(cornerpin({"diff", folder / "a", folder / "in"}).code, 3);
}

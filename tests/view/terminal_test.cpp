// The live view on a terminal: the program on a pseudo-terminal, as the user sees it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <string>

#include "tests/support/temporary_dir.h"

namespace {

constexpr const char* kScreenOpens = "\x1b[?1049h\x1b[?25l";
constexpr const char* kScreenCloses = "\x1b[?25h\x1b[?1049l";

/// A survey of the simulated band on its own terminal.
class TerminalRun {
 public:
  /// `duration`: without it the survey ends only on request.
  explicit TerminalRun(const winsize& size = {24, 80, 0, 0}, const char* duration = "1e6") {
    if (openpty(&master_, &terminal_, nullptr, nullptr, &size) != 0) std::abort();
    tcgetattr(terminal_, &before_);
    child_ = fork();
    if (child_ != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    login_tty(terminal_);
    setenv("TERM", "xterm", 1);
    execl(PELAGRIM_SURVEY_PATH, "pelagrim-survey", "--dir", dir.path().c_str(), "--dwell", "0.2",
          "--duration", duration, "--realtime", nullptr);
    _exit(99);
  }
  ~TerminalRun() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
    close(master_);
    close(terminal_);
  }

  /// Reads on until `text` has come, after the text last waited for.
  void waitFor(const std::string& text) {
    size_t found = 0;
    while ((found = output_.find(text, seen_)) == std::string::npos) read();
    seen_ = found + text.size();
  }
  /// Waits until the program has ended or was stopped; returns its status, as waitpid does.
  int waitForChange() {
    int status = 0;
    while (waitpid(child_, &status, WNOHANG | WUNTRACED) == 0) read();
    read();
    return status;
  }
  /// Stops reading, or has the terminal stop taking output; or goes on.
  void setReading(bool reads) { reads_ = reads; }
  void setTaking(bool takes) { tcflow(terminal_, takes ? TCOON : TCOOFF); }
  template <typename Condition>
  void waitUntil(const Condition& reached) {
    while (!reached()) read();
  }
  void press(char key) {
    if (write(master_, &key, 1) != 1) std::abort();
  }
  void send(int signal_number) { kill(child_, signal_number); }

  /// Whether lines are edited and echoed, and Ctrl-S holds the output, as before the run.
  bool isAsBefore() const {
    termios now = {};
    tcgetattr(terminal_, &now);
    return now.c_lflag == before_.c_lflag && now.c_iflag == before_.c_iflag;
  }
  bool readsKeys() const {
    termios now = {};
    tcgetattr(terminal_, &now);
    return (now.c_lflag & (ICANON | ECHO)) == 0 && (now.c_iflag & IXON) == 0;
  }
  /// What has come since the text last waited for.
  std::string rest() const { return output_.substr(seen_); }

  const TemporaryDir dir;

 private:
  void read() {
    if (std::chrono::steady_clock::now() > deadline_) {
      throw std::runtime_error("timed out; the program has written: " + rest());
    }
    pollfd master = {master_, POLLIN, 0};
    if (poll(&master, reads_ ? 1 : 0, 20) != 1) return;
    char block[4096];
    const ssize_t count = ::read(master_, block, sizeof block);
    if (count > 0) output_.append(block, static_cast<size_t>(count));
  }

  const std::chrono::steady_clock::time_point deadline_ =
      std::chrono::steady_clock::now() + std::chrono::seconds(30);
  int master_ = -1;
  int terminal_ = -1;
  pid_t child_ = -1;
  termios before_ = {};
  bool reads_ = true;
  std::string output_;
  size_t seen_ = 0;
};

bool exited(int status, int with) {
  return WIFEXITED(status) && WEXITSTATUS(status) == with;
}

TEST(Terminal, IsGivenBackHoweverTheSurveyEnds) {
  for (const std::string end : {"q", "Ctrl-C", "SIGTERM", "SIGUSR1", "SIGXCPU twice", "SIGALRM",
                                "a crash", "SIGSYS", "Ctrl-C twice"}) {
    SCOPED_TRACE(end);
    TerminalRun run;
    run.waitFor(kScreenOpens);
    run.waitFor("r rescan");
    EXPECT_TRUE(run.readsKeys());
    if (end == "q") run.press('q');
    if (end == "Ctrl-C") run.press('\x03');
    if (end == "SIGTERM") run.send(SIGTERM);
    if (end == "SIGUSR1") run.send(SIGUSR1);
    if (end == "SIGALRM") run.send(SIGALRM);
    if (end == "a crash") run.send(SIGSEGV);
    if (end == "SIGSYS") run.send(SIGSYS);
    if (end == "SIGXCPU twice") run.send(SIGXCPU), usleep(1000), run.send(SIGXCPU);
    if (end == "Ctrl-C twice") {
      run.send(SIGSTOP);  // so that the second signal finds the program before its orderly end
      ASSERT_TRUE(WIFSTOPPED(run.waitForChange()));
      run.send(SIGINT);
      run.send(SIGTERM);
      run.send(SIGCONT);
    }
    run.waitFor(kScreenCloses);
    const int status = run.waitForChange();
    EXPECT_TRUE(run.isAsBefore());
    const bool in_order = run.rest().find("stopped on request") != std::string::npos;
    if (end == "a crash" || end == "SIGSYS") {
      EXPECT_TRUE(WIFSIGNALED(status) && !in_order) << status;
      EXPECT_EQ(WTERMSIG(status), end == "SIGSYS" ? SIGSYS : SIGSEGV);
    } else if (end == "Ctrl-C twice") {
      EXPECT_TRUE((exited(status, 130) || exited(status, 143)) && !in_order) << status;
    } else {
      EXPECT_TRUE(exited(status, 0) && in_order) << run.rest();
    }
  }
}

TEST(Terminal, LeavesIgnoredSignalsIgnored) {
  for (const int ignored : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGQUIT, SIGTSTP}) {
    std::signal(ignored, SIG_IGN);
  }
  TerminalRun run;
  for (const int ignored : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGQUIT, SIGTSTP}) {
    std::signal(ignored, SIG_DFL);
  }
  run.waitFor(kScreenOpens);
  run.waitFor("r rescan");
  for (const int ignored : {SIGINT, SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGQUIT, SIGTSTP}) {
    run.send(ignored);
  }
  for (int frame = 0; frame < 3; ++frame) run.waitFor("r rescan");
  run.press('q');
  run.waitFor(kScreenCloses);
  EXPECT_TRUE(exited(run.waitForChange(), 0));
  EXPECT_EQ(run.rest().find("resumed"), std::string::npos);
}

TEST(Terminal, KeysRescanAndSuspendAndAWarningIsRepeatedAfterTheScreen) {
  TerminalRun run;
  run.waitFor(kScreenOpens);
  run.waitFor("known after ");
  run.press('r');
  run.waitFor("survey: resumed");

  run.press('\x1a');
  run.waitFor(kScreenCloses);
  ASSERT_TRUE(WIFSTOPPED(run.waitForChange()));
  EXPECT_TRUE(run.isAsBefore());
  run.send(SIGCONT);
  run.waitFor(kScreenOpens);
  run.waitFor("r rescan");
  EXPECT_TRUE(run.readsKeys());

  std::filesystem::remove(run.dir.path() / "survey.csv");
  std::filesystem::create_directory(run.dir.path() / "survey.csv");
  run.waitFor("the survey could not be written");
  run.press('q');
  run.waitFor(kScreenCloses);
  run.waitFor("pelagrim-survey: the survey could not be written whole to ");
  run.waitFor("until then it is kept in memory");
  EXPECT_TRUE(exited(run.waitForChange(), 1));
}

/// The list of the same survey with nothing in its way.
std::string undisturbedList(const std::string& options) {
  const TemporaryDir dir;
  const std::string command = std::string(PELAGRIM_SURVEY_PATH) + " --quiet --dir " +
                              dir.path().string() + " " + options + " > /dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);
  return dir.read("survey.csv");
}

TEST(StalledTerminal, DoesNotStopTheSurveyNorItsEnd) {
  const std::string whole = undisturbedList("--dwell 0.2 --duration 2.7");
  for (const std::string how : {"not read", "stopped", "stopped, left at once"}) {
    SCOPED_TRACE(how);
    TerminalRun run({60, 200, 0, 0}, "2.7");
    run.waitFor(kScreenOpens);
    how == "not read" ? run.setReading(false) : run.setTaking(false);
    run.waitUntil([&] { return run.dir.read("survey.csv") == whole; });
    if (how == "stopped, left at once") {
      run.send(SIGSTOP);
      ASSERT_TRUE(WIFSTOPPED(run.waitForChange()));
      run.send(SIGINT);
    }
    run.send(SIGTERM);
    run.send(SIGCONT);
    const int status = run.waitForChange();
    if (how == "stopped, left at once") {
      EXPECT_TRUE(exited(status, 130) || exited(status, 143)) << status;
    } else {
      EXPECT_TRUE(exited(status, 1)) << status;
    }
    EXPECT_TRUE(run.isAsBefore());
    EXPECT_EQ(run.dir.read("survey.csv"), whole);
    run.setReading(true);
    if (how == "not read") run.waitFor(kScreenCloses);
  }
}

TEST(StalledTerminal, TakesKeysAndLaterTheRestOfThePicture) {
  TerminalRun run({60, 200, 0, 0});
  run.waitFor(kScreenOpens);
  run.setReading(false);
  for (int rescan = 0; rescan < 4; ++rescan) {  // longer than it takes to fill the terminal
    std::filesystem::remove(run.dir.path() / "survey.cfg");
    run.press('r');
    run.waitUntil([&] { return run.dir.has("survey.cfg"); });  // written anew by a start
  }
  run.setReading(true);
  run.waitUntil([&] { return run.rest().size() > 50'000; });
  const std::string pictures = run.rest();
  int row = 0;
  const std::regex row_begins("\x1b\\[([0-9]+);1H");
  for (std::sregex_iterator found(pictures.begin(), pictures.end(), row_begins), end; found != end;
       ++found) {
    row = row % 60 + 1;
    ASSERT_EQ((*found)[1], std::to_string(row));
  }
  run.press('q');
  run.waitFor(kScreenCloses);
  EXPECT_TRUE(exited(run.waitForChange(), 0));
  EXPECT_NE(run.rest().find("stopped on request"), std::string::npos);
}

/// A survey whose JSON lines go to a pipe, which holds about 20 of them.
class PipeRun {
 public:
  explicit PipeRun(const std::string& duration) {
    int ends[2] = {};
    if (pipe(ends) != 0) std::abort();
    pipe_ = ends[0];
    fcntl(pipe_, F_SETPIPE_SZ, 4096);
    child_ = fork();
    if (child_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      dup2(ends[1], STDOUT_FILENO);
      close(ends[0]);
      close(ends[1]);
      execl(PELAGRIM_SURVEY_PATH, "pelagrim-survey", "--dir", dir.path().c_str(), "--dwell", "0.2",
            "--duration", duration.c_str(), "--json", nullptr);
      _exit(99);
    }
    close(ends[1]);
  }
  ~PipeRun() {
    close(pipe_);
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }

  std::string readAll() const {
    std::string text;
    char block[4096];
    for (ssize_t count = 0; (count = ::read(pipe_, block, sizeof block)) > 0;) {
      text.append(block, static_cast<size_t>(count));
    }
    return text;
  }
  std::string list() const { return dir.read("survey.csv"); }
  bool reaches(const std::string& list_then) const {
    for (int i = 0; i < 3000 && list() != list_then; ++i) usleep(10'000);
    return list() == list_then;
  }
  void send(int signal_number) const { kill(child_, signal_number); }
  int waitForEnd() {
    int status = 0;
    waitpid(child_, &status, 0);
    return status;
  }

  const TemporaryDir dir;

 private:
  int pipe_ = -1;
  pid_t child_ = -1;
};

TEST(StalledPipe, GetsEveryLineLateOrIsGivenUpOnRequest) {
  const std::string whole = undisturbedList("--dwell 0.2 --duration 40");
  const auto count = [](const std::string& lines, const std::string& event) {
    const std::string member = "{\"event\":\"" + event + "\"";
    size_t found = 0;
    for (size_t at = 0; (at = lines.find(member, at)) != std::string::npos; ++at) ++found;
    return found;
  };
  PipeRun late("40");
  ASSERT_TRUE(late.reaches(whole));
  const std::string lines = late.readAll();
  EXPECT_TRUE(exited(late.waitForEnd(), 0));
  EXPECT_EQ(count(lines, "dwell"), 200u);
  EXPECT_EQ(count(lines, "tune"), 200u);
  EXPECT_EQ(count(lines, "panel"), 1u);

  PipeRun never("40");
  ASSERT_TRUE(never.reaches(whole));
  never.send(SIGTERM);
  EXPECT_TRUE(exited(never.waitForEnd(), 1));
  EXPECT_EQ(never.list(), whole);
  EXPECT_LT(count(never.readAll(), "dwell"), 30u);
}

}  // namespace

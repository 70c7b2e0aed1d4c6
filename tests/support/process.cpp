#include "support/process.h"

#include <chrono>
#include <csignal>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utmp.h>

namespace norv::test {
namespace {

using namespace std::chrono_literals;

// Everything that a child needs between fork and exec, made beforehand: only async-signal-safe calls are left there.
// env(1) sets the variables.
struct Prepared {
  std::vector<std::string> words{"/usr/bin/env"};
  std::vector<char*> argv;

  explicit Prepared(const Command& command) {
    words.insert(words.end(), command.environment.begin(), command.environment.end());
    if (command.executable.rfind("/bin/", 0) != 0)
      for (const std::string& word : EmulatorWords()) words.push_back(word);
    words.push_back(command.executable);
    words.insert(words.end(), command.arguments.begin(), command.arguments.end());
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
  }
};

[[noreturn]] void Become(const Command& command, Prepared& prepared) {
  for (char stream : command.closed) close(stream - '0');
  if (chdir(command.directory.c_str()) == 0) execv(prepared.argv[0], prepared.argv.data());
  _exit(127);
}

int WaitFor(pid_t child) {
  // An emulator takes its time.
  const auto deadline = std::chrono::steady_clock::now() + (EmulatorWords().empty() ? 60s : 1800s);
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) kill(child, SIGKILL);
    std::this_thread::sleep_for(2ms);
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Whether the program runs already and has a handler for the signal.
bool Listens(pid_t child, const Command& command) {
  const std::string process = "/proc/" + std::to_string(child);
  std::error_code error;
  if (!std::filesystem::equivalent(process + "/exe", command.executable, error)) return false;
  const std::string status = ReadBytes(process + "/status");
  const size_t at = status.find("SigCgt:");
  return at != std::string::npos && std::stoull(status.substr(at + 7), nullptr, 16) >> (command.signal - 1) & 1;
}

void SendSignal(pid_t child, const Command& command) {
  siginfo_t ended{};
  while (!Listens(child, command) && ended.si_pid == 0) {
    waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT);
    std::this_thread::sleep_for(500us);
  }
  std::this_thread::sleep_for(std::chrono::duration<double>(command.after));
  kill(child, command.signal);
}

}  // namespace

Outcome Run(const Command& command) {
  const ScratchFolder folder;
  const std::string input = folder / "input", output = folder / "output", errors = folder / "errors";
  WriteBytes(input, command.input);
  Prepared prepared(command);
  const pid_t child = fork();
  if (child == 0) {
    dup2(open(input.c_str(), O_RDONLY | O_CLOEXEC), 0);
    const std::string& target = command.output.empty() ? output : command.output;
    dup2(open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666), 1);
    dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666), 2);
    Become(command, prepared);
  }
  REQUIRE(child > 0);
  if (command.signal != 0) SendSignal(child, command);
  const int exitCode = WaitFor(child);
  return {exitCode, ReadBytes(output), ReadBytes(errors)};
}

std::vector<std::string> Words(const std::string& line, const std::vector<std::string>& more) {
  std::istringstream stream(line);
  std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

Command NorvIn(const ScratchFolder& folder, const std::string& line) {
  return {.arguments = Words(line), .environment = {"NORV_DIR=" + folder.Path()}, .input = "kkkk"};
}

bool IsReported(const std::string& output, const std::string& text) {
  static const std::regex report(R"(\n\d+\.\d\d secs, \d+\.\d\d mins\., \d+\.\d\d hrs\., \d+\.\d\d days\nDone!)");
  const std::string start = kBanner + text;
  return output.rfind(start, 0) == 0 && std::regex_match(output.substr(start.size()), report);
}

void CheckEnded(const Outcome& outcome, int exitCode, const std::string& complaint) {
  INFO(outcome.output);
  CHECK(outcome.exitCode == exitCode);
  CHECK(complaint.empty() == outcome.errors.empty());
  CHECK(Contains(outcome.errors, complaint));
}

void CheckReported(const Outcome& outcome, const std::string& text) {
  CheckEnded(outcome, 0);
  CHECK(IsReported(outcome.output, text));
}

TerminalRun::TerminalRun(const Command& command) {
  REQUIRE(openpty(&master_, &slave_, nullptr, nullptr, nullptr) == 0);
  Prepared prepared(command);
  child_ = fork();
  if (child_ == 0) {
    close(master_);
    if (login_tty(slave_) == 0) Become(command, prepared);
    _exit(127);
  }
  REQUIRE(child_ > 0);
}

TerminalRun::~TerminalRun() {
  if (child_ > 0) {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  HangUp();
  close(slave_);
}

termios TerminalRun::Settings() const {
  termios settings{};
  REQUIRE(tcgetattr(slave_, &settings) == 0);
  return settings;
}

bool TerminalRun::WaitForEcho(bool echo) const {
  for (int i = 0; i < 2000; ++i) {
    if (((Settings().c_lflag & ECHO) != 0) == echo) return true;
    std::this_thread::sleep_for(10ms);
  }
  return false;
}

void TerminalRun::Type(const std::string& keys) const {
  REQUIRE(write(master_, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size()));
}

void TerminalRun::Signal(int signal) const { kill(child_, signal); }

int TerminalRun::Wait() {
  const int exitCode = WaitFor(child_);
  child_ = -1;
  return exitCode;
}

std::string TerminalRun::Shown() {
  pollfd ready{master_, POLLIN, 0};
  while (poll(&ready, 1, 50) > 0 && (ready.revents & POLLIN)) {
    char bytes[4096];
    const ssize_t got = read(master_, bytes, sizeof bytes);
    if (got <= 0) break;
    shown_.append(bytes, static_cast<size_t>(got));
  }
  return shown_;
}

std::string TerminalRun::Unread() const {
  termios raw = Settings();
  raw.c_lflag &= ~static_cast<tcflag_t>(ICANON);
  raw.c_cc[VMIN] = 0;
  raw.c_cc[VTIME] = 0;
  tcsetattr(slave_, TCSANOW, &raw);
  char bytes[64];
  const ssize_t got = read(slave_, bytes, sizeof bytes);
  return got > 0 ? std::string(bytes, static_cast<size_t>(got)) : "";
}

void TerminalRun::HangUp() {
  if (master_ >= 0) close(master_);
  master_ = -1;
}

}  // namespace norv::test

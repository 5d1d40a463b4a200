#include <array>
#include <cstdlib>
#include <stdexcept>

#include "tests/support/delivery_agent.h"
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace vellobar::tests {

namespace {

std::FILE* opened(int descriptor, const char* mode) {
  std::FILE* const file = ::fdopen(descriptor, mode);
  if (file == nullptr) throw std::runtime_error("cannot open a pipe");
  return file;
}

/// Ends of two pipes: the process reads commands and writes answers.
struct Pipes {
  std::array<int, 2> commands{}, answers{};
};

#ifdef _WIN32

Pipes make_pipes() {
  Pipes pipes;
  const bool made = ::_pipe(pipes.commands.data(), 4096, _O_BINARY | _O_NOINHERIT) == 0 &&
                    ::_pipe(pipes.answers.data(), 4096, _O_BINARY | _O_NOINHERIT) == 0;
  if (!made) throw std::runtime_error("cannot make a pipe");
  return pipes;
}

/// The program beside the running one.
std::string program() {
  char path[MAX_PATH];
  ::GetModuleFileNameA(nullptr, path, MAX_PATH);
  const std::string self = path;
  return self.substr(0, self.find_last_of("\\/") + 1) + "delivery_agent.exe";
}

/// The standard files of a new process are those of the process that starts it.
std::intptr_t start(const Pipes& pipes) {
  const int input = ::_dup(0);
  const int output = ::_dup(1);
  ::_dup2(pipes.commands[0], 0);
  ::_dup2(pipes.answers[1], 1);
  const std::string path = program();
  const std::intptr_t process = ::_spawnl(_P_NOWAIT, path.c_str(), "delivery_agent", nullptr);
  ::_dup2(input, 0);
  ::_dup2(output, 1);
  ::_close(input);
  ::_close(output);
  return process;
}

void wait_for_end(std::intptr_t process) { ::_cwait(nullptr, process, 0); }

#else

Pipes make_pipes() {
  Pipes pipes;
  if (::pipe2(pipes.commands.data(), O_CLOEXEC) != 0 || ::pipe2(pipes.answers.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("cannot make a pipe");
  }
  return pipes;
}

std::intptr_t start(const Pipes& pipes) {
  const pid_t process = ::fork();
  if (process != 0) return process;
  ::dup2(pipes.commands[0], STDIN_FILENO);
  ::dup2(pipes.answers[1], STDOUT_FILENO);
  ::execl(VELLOBAR_DELIVERY_AGENT, "delivery_agent", nullptr);
  ::_exit(127);
}

void wait_for_end(std::intptr_t process) { ::waitpid(static_cast<pid_t>(process), nullptr, 0); }

#endif

}  // namespace

DeliveryAgent::DeliveryAgent() {
  const Pipes pipes = make_pipes();
  process_ = start(pipes);
  ::close(pipes.commands[0]);
  ::close(pipes.answers[1]);
  commands_ = opened(pipes.commands[1], "w");
  answers_ = opened(pipes.answers[0], "r");
  if (process_ <= 0) throw std::runtime_error("cannot start the program that delivers mail");
}

DeliveryAgent::~DeliveryAgent() {
  std::fclose(commands_);
  wait_for_end(process_);
  std::fclose(answers_);
}

void DeliveryAgent::begin_to_deliver(const std::string& path, int count, const std::string& locks) {
  tell("deliver " + path + " " + std::to_string(count) + " " + locks);
  this->count(count);
}

void DeliveryAgent::open(const std::string& path) { tell("open " + path); }

void DeliveryAgent::append(int count) {
  tell("append " + std::to_string(count));
  this->count(count);
}

void DeliveryAgent::tell(const std::string& command) {
  std::fputs((command + "\n").c_str(), commands_);
  std::fflush(commands_);
  ++waited_for_;
}

void DeliveryAgent::wait() {
  for (char line[32]; waited_for_ > 0; --waited_for_) {
    if (std::fgets(line, sizeof line, answers_) == nullptr) throw std::runtime_error("the program that delivers ended");
  }
}

void DeliveryAgent::count(int more) {
  for (int i = 0; i < more; ++i) taken_ += delivered_message(delivered_++);
}

std::string DeliveryAgent::take_delivered() { return std::exchange(taken_, {}); }

}  // namespace vellobar::tests

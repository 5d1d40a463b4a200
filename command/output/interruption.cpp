#include "command/output/interruption.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <algorithm>
#include <atomic>
#include <csignal>
#include <new>

#include "command/output/failure.h"

namespace vellobar::command {

namespace {

constexpr int kNone = 0;

std::atomic<int> noted{kNone};
std::atomic<int> unfinished{0};
int completing = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler uses them");

#ifdef _WIN32

constexpr int kExitCode = 130;

/// Runs on a thread of its own.
BOOL WINAPI on_control(DWORD event) {
  if (unfinished == 0 || noted != kNone) return FALSE;
  interrupt(SIGINT);
  // The system ends the program when this returns; it is to end by itself.
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

#else

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

void end_by(int number) noexcept {
  std::signal(number, SIG_DFL);
  std::raise(number);
}

extern "C" void on_signal(int number) {
  // A second one means it.
  if (unfinished == 0 || noted != kNone) return end_by(number);
  interrupt(number);
}

#endif

}  // namespace

void interrupt(int number) noexcept { noted = number; }

bool was_interrupted() noexcept { return noted != kNone; }

void forget_interruption() noexcept { noted = kNone; }

void stop_if_interrupted() {
  if (was_interrupted()) throw Interrupted();
}

#ifdef _WIN32

void watch_for_interruptions() { SetConsoleCtrlHandler(on_control, TRUE); }

int end_interrupted() noexcept { return kExitCode; }

#else

void watch_for_interruptions() {
  for (const int number : kSignals) {
    struct sigaction before {};
    if (::sigaction(number, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) continue;
    struct sigaction wanted {};
    wanted.sa_handler = on_signal;
    // No restart of what was interrupted: a read that waits for a person must not wait on.
    ::sigemptyset(&wanted.sa_mask);
    ::sigaction(number, &wanted, nullptr);
  }
}

int end_interrupted() noexcept {
  end_by(noted);
  return 128 + noted;
}

#endif

UnfinishedWork::UnfinishedWork() {
  ++unfinished;
  if (!was_interrupted()) return;
  --unfinished;
  throw Interrupted();
}

UnfinishedWork::~UnfinishedWork() { --unfinished; }

CompletingWork::CompletingWork() { ++completing; }

CompletingWork::~CompletingWork() { --completing; }

std::error_code InterruptibleFileSystem::open(const std::string& path, platform::Opening how,
                                              platform::OpenFile& file) noexcept {
  const std::error_code failure = ForwardingFileSystem::open(path, how, file);
  const bool is_new = how == platform::Opening::create_new || how == platform::Opening::create;
  if (failure || !is_new) return failure;
  try {
    new_files_.push_back(file);
  } catch (const std::bad_alloc&) {
    // Then this one is written to its end.
  }
  return failure;
}

std::error_code InterruptibleFileSystem::write(platform::OpenFile file, std::string_view bytes,
                                               std::size_t& put) noexcept {
  const bool is_new = std::find(new_files_.begin(), new_files_.end(), file) != new_files_.end();
  if (!is_new || !was_interrupted() || completing > 0) return ForwardingFileSystem::write(file, bytes, put);
  put = 0;
  return std::make_error_code(std::errc::operation_canceled);
}

std::error_code InterruptibleFileSystem::close(platform::OpenFile file) noexcept {
  new_files_.erase(std::remove(new_files_.begin(), new_files_.end(), file), new_files_.end());
  return ForwardingFileSystem::close(file);
}

}  // namespace vellobar::command

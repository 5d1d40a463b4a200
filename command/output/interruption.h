// What happens when the user interrupts the program (Ctrl-C, a signal to end, a closed window). While nothing is
// unfinished the program ends at once, as it would by itself. While an output is unfinished the interruption is noted,
// and the next write to a new file fails; the output then goes away as it does for any failure, and `main` ends the
// program the way the signal would have. A file that is taking the place of another is completed first.
#pragma once

#include <vector>

#include "platform/forwarding_file_system.h"

namespace vellobar::command {

/// Notes interruptions from now on. One that the program was started to ignore stays ignored.
void watch_for_interruptions();

/// What the system calls on an interruption. `number` is a signal's.
void interrupt(int number) noexcept;

bool was_interrupted() noexcept;

/// Throws Interrupted when there was one.
void stop_if_interrupted();

/// Ends the program as the interruption would have ended it; returns the exit code where that cannot be.
int end_interrupted() noexcept;

/// Forgets an interruption that was noted. For tests.
void forget_interruption() noexcept;

/// While one lives, an interruption does not end the program at once. Making one throws Interrupted when there was one
/// already.
class UnfinishedWork {
 public:
  UnfinishedWork();
  ~UnfinishedWork();
  UnfinishedWork(const UnfinishedWork&) = delete;
  UnfinishedWork& operator=(const UnfinishedWork&) = delete;
};

/// While one lives, writes go on after an interruption: a file that is taking the place of another is completed.
class CompletingWork {
 public:
  CompletingWork();
  ~CompletingWork();
  CompletingWork(const CompletingWork&) = delete;
  CompletingWork& operator=(const CompletingWork&) = delete;
};

/// The operating system's files, of which new ones can no longer be written after an interruption.
class InterruptibleFileSystem final : public platform::ForwardingFileSystem {
 public:
  std::error_code open(const std::string& path, platform::Opening how, platform::OpenFile& file) noexcept override;
  std::error_code write(platform::OpenFile file, std::string_view bytes, std::size_t& put) noexcept override;
  std::error_code close(platform::OpenFile file) noexcept override;

 private:
  std::vector<platform::OpenFile> new_files_;
};

}  // namespace vellobar::command

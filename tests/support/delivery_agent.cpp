// A program that delivers mail, for tests that let it run beside an update. It reads commands, one a line, and answers
// each with a line when it is done:
//
//   deliver FILE COUNT LOCKS   appends COUNT messages, each by itself; LOCKS is "both" (lock file, then the file),
//   "file"
//                              (the file only) or "none"
//   open FILE                  opens the file to append to it, with no lock
//   append COUNT               appends to what was opened, and closes it
//
// Messages are numbered from 0 since the program's start, and each is written in two halves. It makes its own calls, as
// such programs do, and shares nothing with what is tested; on Windows nobody but this component knows where it locks
// a file, so there the component's own lock is taken.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

#include "tests/support/delivery_agent.h"

namespace {

int delivered = 0;

std::string next_message() { return vellobar::tests::delivered_message(delivered++); }

}  // namespace

#ifndef _WIN32

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr useconds_t kPause = 200;

class Mailbox {
 public:
  /// Waits until the file opens.
  void open(const std::string& path) {
    while ((descriptor_ = ::open(path.c_str(), O_WRONLY | O_APPEND)) < 0) ::usleep(kPause);
  }
  void lock() const {
    struct flock whole {};
    whole.l_type = F_WRLCK;
    ::fcntl(descriptor_, F_SETLKW, &whole);
  }
  bool is(const std::string& path) const {
    struct stat mine {};
    struct stat now {};
    return ::fstat(descriptor_, &mine) == 0 && ::stat(path.c_str(), &now) == 0 && mine.st_ino == now.st_ino;
  }
  bool append(const std::string& bytes) const {
    return ::write(descriptor_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  }
  void close() const { ::close(descriptor_); }

 private:
  int descriptor_ = -1;
};

void make_lock_file(const std::string& path) {
  int made = -1;
  while ((made = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600)) < 0) ::usleep(kPause);
  ::close(made);
}

/// The mailbox, locked as asked for, and surely the one that has that name.
Mailbox open_locked(const std::string& path, const std::string& locks) {
  for (;;) {
    Mailbox mailbox;
    mailbox.open(path);
    if (locks != "none") mailbox.lock();
    if (mailbox.is(path)) return mailbox;
    mailbox.close();
  }
}

void deliver(const std::string& path, const std::string& locks) {
  const std::string lock_path = path + ".lock";
  if (locks == "both") make_lock_file(lock_path);
  const Mailbox mailbox = open_locked(path, locks);
  const std::string message = next_message();
  if (!mailbox.append(message.substr(0, 10)) || !mailbox.append(message.substr(10))) std::abort();
  mailbox.close();
  if (locks == "both") ::unlink(lock_path.c_str());
}

}  // namespace

#else

#include "platform/file_handle.h"

namespace {

using vellobar::platform::FileHandle;
using vellobar::platform::Opening;

class Mailbox {
 public:
  void open(const std::string& path) {
    while (!(file_ = FileHandle::open(path, Opening::append)).valid()) std::this_thread::yield();
  }
  bool append(const std::string& bytes) {
    file_.write(bytes);
    return true;
  }
  void close() { file_ = FileHandle(); }
  FileHandle& file() { return file_; }

 private:
  FileHandle file_;
};

void deliver(const std::string& path, const std::string& locks) {
  for (;;) {
    Mailbox mailbox;
    mailbox.open(path);
    // Whoever waits with the file open keeps it from being replaced.
    if ((locks != "none" && !mailbox.file().try_lock()) || !mailbox.file().is_file(path)) {
      mailbox.close();
      std::this_thread::yield();
      continue;
    }
    const std::string message = next_message();
    mailbox.append(message.substr(0, 10));
    mailbox.append(message.substr(10));
    return;
  }
}

}  // namespace

#endif

int main() {
  Mailbox opened;
  std::string line;
  while (std::getline(std::cin, line)) {
    std::istringstream words(line);
    std::string command, path, locks;
    int count = 0;
    words >> command;
    if (command == "deliver" && words >> path >> count >> locks) {
      for (int i = 0; i < count; ++i) deliver(path, locks);
    } else if (command == "open" && words >> path) {
      opened.open(path);
    } else if (command == "append" && words >> count) {
      for (int i = 0; i < count; ++i) opened.append(next_message());
      opened.close();
    } else {
      return 1;
    }
    std::cout << "done" << std::endl;
  }
  return 0;
}

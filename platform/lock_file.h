// The file `NAME.lock` that says to programs which deliver mail that the mailbox `NAME` is being written. Away from
// Windows many of them look at it, some at nothing else.
//
// It is made in one step with its text inside, so that whoever sees it can read whose it is: process and host, and a
// line that tells it from other programs' lock files. The process that made it holds it open. One that was left by a
// process that died is taken away: our own as soon as nobody holds it; one of another program when it is five minutes
// old and names no process, or a process of this host that has ended. Only files of the user's own are judged, and none
// that names another host.
#pragma once

#include <string>

#include "platform/file_handle.h"

namespace vellobar::platform {

class LockFile {
 public:
  /// For a path with its links followed.
  explicit LockFile(std::string path);
  ~LockFile() { remove(); }
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

  /// False when somebody else has made it. True also where none can be made (the user may not make files in that
  /// folder, the disk is full) and where nobody looks at one. Throws std::system_error for other failures.
  bool try_make();
  void remove() noexcept;

  /// Takes away the lock file that a died process left beside this path.
  static void remove_left(const std::string& path) noexcept;

 private:
  std::string path_;
  /// Its name while it is written, and then. Kept, so that removing it needs no memory.
  std::string staged_;
  std::string made_;
  FileHandle held_;
};

}  // namespace vellobar::platform

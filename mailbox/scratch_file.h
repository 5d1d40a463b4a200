// A temporary file that is deleted at the end unless somebody keeps it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/file.h"
#include "platform/temporary_file.h"

namespace vellobar::mailbox {

class ScratchFile {
 public:
  explicit ScratchFile(std::uint32_t tick_offset = 0) : path_(platform::temporary_file_name(tick_offset)) {}
  ~ScratchFile() {
    if (!path_.empty()) platform::remove_file(path_);
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  const std::string& path() const { return path_; }
  /// Leaves the file on the disk.
  std::string keep() { return std::exchange(path_, {}); }

  /// Makes these bytes its content. Error 30012, reported by the message, when it cannot be written.
  void write(std::string_view bytes) const;

 private:
  std::string path_;
};

}  // namespace vellobar::mailbox

// A file system that refuses to open one temporary file for one purpose; all else is the real one.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "platform/forwarding_file_system.h"

namespace vellobar::tests {

class RefusedOpening final : public platform::ForwardingFileSystem {
 public:
  /// Refuses the opening of this number, counted from 0, of those of temporary files for this purpose.
  RefusedOpening(platform::Opening how, int number) : how_(how), number_(number) {}

  std::error_code open(const std::string& path, platform::Opening how, platform::OpenFile& file) noexcept override {
    const std::string_view name = std::string_view(path).substr(path.find_last_of("/\\") + 1);
    const bool counts = how == how_ && name.starts_with("VLB");
    if (counts && seen_++ == number_) return std::make_error_code(std::errc::permission_denied);
    return ForwardingFileSystem::open(path, how, file);
  }

 private:
  platform::Opening how_;
  int number_;
  int seen_ = 0;
};

}  // namespace vellobar::tests

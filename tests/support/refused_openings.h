// A file system that refuses to open one temporary file for one purpose; all else is the real one.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "platform/file_system.h"

namespace vellobar::tests {

class RefusedOpening final : public platform::FileSystem {
 public:
  /// Refuses the opening of this number, counted from 0, of those of temporary files for this purpose.
  RefusedOpening(platform::Opening how, int number) : how_(how), number_(number) {}

  std::error_code open(const std::string& path, platform::Opening how, platform::OpenFile& file) noexcept override {
    const std::string_view name = std::string_view(path).substr(path.find_last_of("/\\") + 1);
    const bool counts = how == how_ && name.starts_with("VLB");
    if (counts && seen_++ == number_) return std::make_error_code(std::errc::permission_denied);
    return real_.open(path, how, file);
  }
  std::error_code read(platform::OpenFile file, std::int64_t position, void* to, std::size_t count,
                       std::size_t& got) noexcept override {
    return real_.read(file, position, to, count, got);
  }
  std::error_code write(platform::OpenFile file, std::string_view bytes, std::size_t& put) noexcept override {
    return real_.write(file, bytes, put);
  }
  std::error_code resize(platform::OpenFile file, std::int64_t expected, std::int64_t size) noexcept override {
    return real_.resize(file, expected, size);
  }
  std::error_code sync(platform::OpenFile file) noexcept override { return real_.sync(file); }
  std::error_code close(platform::OpenFile file) noexcept override { return real_.close(file); }
  std::error_code copy_attributes(platform::Attributes which, const std::string& from,
                                  const std::string& to) noexcept override {
    return real_.copy_attributes(which, from, to);
  }
  std::error_code rename(const std::string& from, const std::string& to) noexcept override {
    return real_.rename(from, to);
  }
  std::error_code link(const std::string& from, const std::string& to) noexcept override {
    return real_.link(from, to);
  }
  std::error_code make_unique(const std::string& folder, const std::string& prefix,
                              std::string& path) noexcept override {
    return real_.make_unique(folder, prefix, path);
  }
  std::error_code sync_folder_of(const std::string& path) noexcept override { return real_.sync_folder_of(path); }
  std::error_code remove(const std::string& path) noexcept override { return real_.remove(path); }

 private:
  platform::FileSystem& real_ = platform::real_file_system();
  platform::Opening how_;
  int number_;
  int seen_ = 0;
};

}  // namespace vellobar::tests

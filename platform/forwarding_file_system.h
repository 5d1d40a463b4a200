// A file system that hands every call on to the operating system's own. What deviates in a few calls derives from it
// and overrides those.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "platform/file_system.h"

namespace vellobar::platform {

class ForwardingFileSystem : public FileSystem {
 public:
  std::error_code open(const std::string& path, Opening how, OpenFile& file) noexcept override {
    return real_.open(path, how, file);
  }
  std::error_code read(OpenFile file, std::int64_t position, void* to, std::size_t count,
                       std::size_t& got) noexcept override {
    return real_.read(file, position, to, count, got);
  }
  std::error_code write(OpenFile file, std::string_view bytes, std::size_t& put) noexcept override {
    return real_.write(file, bytes, put);
  }
  std::error_code resize(OpenFile file, std::int64_t expected, std::int64_t size) noexcept override {
    return real_.resize(file, expected, size);
  }
  std::error_code sync(OpenFile file) noexcept override { return real_.sync(file); }
  std::error_code close(OpenFile file) noexcept override { return real_.close(file); }
  std::error_code copy_attributes(Attributes which, const std::string& from, const std::string& to) noexcept override {
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
  std::error_code leave_note(const std::string& path, const std::string& text) noexcept override {
    return real_.leave_note(path, text);
  }
  std::error_code remove(const std::string& path) noexcept override { return real_.remove(path); }

 private:
  FileSystem& real_ = real_file_system();
};

}  // namespace vellobar::platform

// What the tests of the scan share: streams on disk, and a memory that can be watched and can fail.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <memory_resource>
#include <new>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "mailbox/extent.h"
#include "mailbox/scanner.h"
#include "platform/file.h"
#include "tests/mailbox/literal_scan.h"

namespace vellobar::mailbox {

/// Gives an extent a readable form in messages of failed tests.
inline void PrintTo(const Extent& extent, std::ostream* out) {
  *out << "{" << extent.start << ", " << extent.end << ", " << extent.lines << ", " << extent.has_separator << "}";
}

namespace scanner_tests {

/// A file in the temporary folder that is deleted with the object. The path is narrow.
class StreamOnDisk {
 public:
  explicit StreamOnDisk(std::string_view content = {}) {
    path_ = std::filesystem::temp_directory_path() / ("vellobar_test_" + std::to_string(std::random_device()()));
    std::ofstream(path_, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
  }
  ~StreamOnDisk() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  StreamOnDisk(const StreamOnDisk&) = delete;
  StreamOnDisk& operator=(const StreamOnDisk&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::shared_ptr<platform::File> open() const { return platform::File::open(path_.string()); }

 private:
  std::filesystem::path path_;
};

/// Scans a whole mailbox.
inline Scanned scan_mailbox(std::string_view content, const ScanOptions& options = {}) {
  const StreamOnDisk stream(content);
  const auto file = stream.open();
  return scan_file(*file, 0, file->size(), "From ", options);
}

/// Watches allocations, checks that everything comes back wiped, and refuses those above a number.
class WatchedMemory final : public std::pmr::memory_resource {
 public:
  explicit WatchedMemory(int allocations_allowed = 1 << 30) : allowed_(allocations_allowed) {}

  const std::vector<std::size_t>& sizes() const { return sizes_; }
  std::size_t peak() const { return peak_; }
  std::size_t held() const { return held_; }
  bool all_came_back_wiped() const { return wiped_; }

 private:
  void* do_allocate(std::size_t bytes, std::size_t alignment) override {
    if (static_cast<int>(sizes_.size()) >= allowed_) throw std::bad_alloc();
    sizes_.push_back(bytes);
    held_ += bytes;
    peak_ = std::max(peak_, held_);
    void* given = std::pmr::new_delete_resource()->allocate(bytes, alignment);
    std::fill_n(static_cast<char*>(given), bytes, 'u');
    return given;
  }
  void do_deallocate(void* given, std::size_t bytes, std::size_t alignment) override {
    const char* at = static_cast<const char*>(given);
    wiped_ = wiped_ && std::all_of(at, at + bytes, [](char byte) { return byte == 0; });
    held_ -= bytes;
    std::pmr::new_delete_resource()->deallocate(given, bytes, alignment);
  }
  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  int allowed_;
  std::vector<std::size_t> sizes_;
  std::size_t held_ = 0;
  std::size_t peak_ = 0;
  bool wiped_ = true;
};

}  // namespace scanner_tests
}  // namespace vellobar::mailbox

// What the tests of the scan share: streams on disk, a memory that can be watched and can fail, and a second, literal
// counting of a stream held in memory, against which the scan of the same bytes is compared.
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

struct Scanned {
  std::vector<Extent> extents;
  ScanResult result;
};

inline Scanned scan_file(platform::File& file, std::int64_t from, std::int64_t limit, std::string_view separator,
                         const ScanOptions& options = {}) {
  ExtentTable table;
  const ScanResult result = scan(file, from, limit, separator, table, options);
  return {{table.begin(), table.end()}, result};
}

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

/// The rule, word for word: chunks are appended to the bytes held, lines are taken from them one by one.
class LiteralScan {
 public:
  LiteralScan(std::string_view stream, std::int64_t from, const ScanOptions& options)
      : stream_(stream), read_position_(static_cast<std::size_t>(from)), position_(from), options_(options) {}

  Scanned run(std::int64_t limit, std::string_view separator) {
    while (position_ < limit && next_line()) {
      const std::int64_t line_start = position_;
      position_ += length_;
      const bool matched = text_.substr(0, separator.size()) == separator;
      if (matched || extents_.empty()) {
        if (!extents_.empty()) extents_.back().end = line_start;
        extents_.push_back({.start = line_start, .has_separator = matched});
      }
      ++extents_.back().lines;
    }
    if (!extents_.empty()) extents_.back().end = position_;
    return {extents_, {position_, position_ >= limit}};
  }

 private:
  bool next_line() {
    if (take_line()) return true;
    const auto came = stream_.substr(std::min(read_position_, stream_.size()), static_cast<std::size_t>(chunk_));
    if (came.empty()) return take_rest();
    read_position_ += came.size();
    held_ = held_.substr(taken_) + std::string(came);
    taken_ = 0;
    rest_counted_ = false;
    if (chunk_ < options_.chunk_doubles_below) chunk_ *= 2;
    return take_line() || take_rest();
  }

  bool take_line() {
    const std::size_t line_feed = held_.find('\n', taken_);
    if (line_feed == std::string::npos) return false;
    text_ = held_.substr(taken_, line_feed - taken_);
    length_ = static_cast<std::int64_t>(text_.size()) + 1;
    if (text_.ends_with('\r')) text_.pop_back();
    taken_ = line_feed + 1;
    return true;
  }

  /// The bytes held without a line feed, which stay held; nothing when there are none or they were counted.
  bool take_rest() {
    if (rest_counted_ || taken_ == held_.size()) return false;
    text_ = held_.substr(taken_);
    length_ = static_cast<std::int64_t>(text_.size());
    rest_counted_ = true;
    return true;
  }

  const std::string_view stream_;
  std::size_t read_position_;
  std::int64_t position_;
  const ScanOptions options_;
  std::int64_t chunk_ = options_.first_chunk;
  std::string held_;
  std::size_t taken_ = 0;
  bool rest_counted_ = false;
  std::string text_;
  std::int64_t length_ = 0;
  std::vector<Extent> extents_;
};

/// The levels of the line search that this processor can run.
inline std::vector<SearchLevel> available_levels() {
  std::vector<SearchLevel> levels;
  for (const SearchLevel level : {SearchLevel::scalar, SearchLevel::sse2, SearchLevel::avx2, SearchLevel::avx512}) {
    if (level <= best_search_level()) levels.push_back(level);
  }
  return levels;
}

}  // namespace scanner_tests
}  // namespace vellobar::mailbox

// A second, literal counting of a stream held in memory, against which the scan of the same bytes is compared.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "mailbox/extent.h"
#include "mailbox/scanner.h"
#include "platform/file.h"

namespace vellobar::mailbox::scanner_tests {

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

}  // namespace vellobar::mailbox::scanner_tests

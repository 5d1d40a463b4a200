// The two ends of a stream codec: a file read block by block, and what was made of it on its way to the sink. Both keep
// their bytes in fixed memory of their own, small enough for a thread with a stack of 256 KB.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "codecs/strings.h"
#include "platform/file.h"

namespace vellobar::codecs {

inline constexpr std::int64_t kToEndOfFile = std::numeric_limits<std::int64_t>::max();

/// Blocks of a range of a file, from front to back.
class FileBlocks {
 public:
  static constexpr std::size_t kCapacity = 32 * 1024;

  /// `block_size` is at most kCapacity.
  FileBlocks(platform::File& file, std::int64_t start, std::int64_t end, std::size_t block_size = kCapacity)
      : file_(file), position_(start), end_(end), block_size_(block_size) {}

  /// The next block, as large as asked for but at the end of the range; empty when nothing is left. Valid until the
  /// next call, and the caller may write to it.
  std::span<unsigned char> next() {
    if (position_ >= end_) return {};
    const std::int64_t wanted = std::min<std::int64_t>(end_ - position_, static_cast<std::int64_t>(block_size_));
    const std::size_t size = file_.read(position_, bytes_.data(), static_cast<std::size_t>(wanted));
    position_ += static_cast<std::int64_t>(size);
    return {bytes_.data(), size};
  }

 private:
  platform::File& file_;
  std::int64_t position_;
  std::int64_t end_;
  std::size_t block_size_;
  std::array<unsigned char, kCapacity> bytes_;
};

/// Where a range ends when its source counts in blocks of 1024 bytes and uses whole the last one that begins inside.
constexpr std::int64_t end_of_started_blocks(std::int64_t start, std::int64_t end) {
  constexpr std::int64_t kBlock = 1024;
  if (end <= start) return start;
  const std::int64_t over = (end - start) % kBlock;
  const std::int64_t missing = over == 0 ? 0 : kBlock - over;
  return end > kToEndOfFile - missing ? kToEndOfFile : end + missing;
}

/// Bytes on their way to a sink. What is pending at the end is written by `flush`.
class OutputPieces {
 public:
  static constexpr std::size_t kCapacity = 48 * 1024;

  explicit OutputPieces(platform::ByteSink& sink) : sink_(sink) {}

  /// Memory for `size` more bytes, at most kCapacity. Valid until the next call.
  unsigned char* room_for(std::size_t size) {
    if (size > kCapacity - used_) flush();
    return bytes_.data() + used_;
  }

  /// Tells how many bytes were put into the room.
  void add(std::size_t size) { used_ += size; }

  void flush() {
    if (used_ > 0) sink_.write(view_of(bytes_.data(), used_));
    used_ = 0;
  }

 private:
  platform::ByteSink& sink_;
  std::size_t used_ = 0;
  std::array<unsigned char, kCapacity> bytes_;
};

}  // namespace vellobar::codecs

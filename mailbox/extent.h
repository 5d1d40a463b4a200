// Where one message lies in a stream, and the table in which a scan leaves such extents. An extent is a plain value: it
// knows positions and counts, not the stream and not the message made of it. The table grows block by block, so that
// a mailbox of a million messages is never copied to make room.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

namespace vellobar::mailbox {

/// One message as the scan counted it. The bytes counted are always `end - start`.
struct Extent {
  /// Position of the first line. Bytes.
  std::int64_t start = 0;
  /// Position just behind the last line. Runs ahead of the file behind a line longer than a read chunk. Bytes.
  std::int64_t end = 0;
  /// Lines counted, the separator line among them.
  std::int64_t lines = 0;
  /// The first line matched the separator; false only for a leading message that starts without one.
  bool has_separator = false;

  friend bool operator==(const Extent&, const Extent&) = default;
};

/// An extent in 24 bytes, for tables of what mail can have a million of, with a few marks for whoever keeps the table.
class PackedExtent {
 public:
  static constexpr int kMarks = 7;

  PackedExtent() = default;
  explicit PackedExtent(const Extent& extent) noexcept
      : start_(extent.start),
        end_(extent.end),
        numbers_(static_cast<std::uint64_t>(extent.lines) << (kMarks + 1) | (extent.has_separator ? 1 : 0)) {}

  std::int64_t start() const noexcept { return start_; }
  bool has_separator() const noexcept { return (numbers_ & 1) != 0; }
  Extent extent() const noexcept {
    return {start_, end_, static_cast<std::int64_t>(numbers_ >> (kMarks + 1)), has_separator()};
  }

  unsigned marks() const noexcept { return static_cast<unsigned>(numbers_ >> 1 & kAllMarks); }
  void set_marks(unsigned marks) noexcept {
    numbers_ = (numbers_ & ~(kAllMarks << 1)) | static_cast<std::uint64_t>(marks) << 1;
  }

 private:
  static constexpr std::uint64_t kAllMarks = (1 << kMarks) - 1;

  std::int64_t start_ = 0;
  std::int64_t end_ = 0;
  std::uint64_t numbers_ = 0;  ///< the lines, the marks, whether there is a separator line
};

/// Takes the messages of a scan in the order of the file, each one complete.
class ExtentSink {
 public:
  virtual ~ExtentSink() = default;
  virtual void found(const Extent& extent) = 0;
};

/// Keeps what a scan found: 32 bytes a message and a little for the blocks.
class ExtentTable final : public ExtentSink {
 public:
  void found(const Extent& extent) override { extents_.push_back(extent); }

  std::size_t size() const noexcept { return extents_.size(); }
  const Extent& operator[](std::size_t index) const { return extents_[index]; }
  auto begin() const noexcept { return extents_.begin(); }
  auto end() const noexcept { return extents_.end(); }

 private:
  std::deque<Extent> extents_;
};

}  // namespace vellobar::mailbox

// Bytes on their way to becoming lines: a storage that never gives mail back to the system unwiped, and the growable
// buffer on top of it that hands out one line after the other. Both own their memory alone. Text is counted: a NUL is
// an ordinary byte.
#pragma once

#include <cstddef>
#include <memory_resource>
#include <optional>
#include <string_view>

namespace vellobar::mailbox {

/// A fixed number of bytes, not initialised, overwritten with zeros before they are freed.
class WipedStorage {
 public:
  /// The storage begins at a multiple of this.
  static constexpr std::size_t kAlignment = 64;

  WipedStorage() = default;
  /// Takes `size` bytes from `memory`, which must outlive the storage. Throws std::bad_alloc.
  WipedStorage(std::size_t size, std::pmr::memory_resource* memory);
  ~WipedStorage();
  WipedStorage(WipedStorage&& other) noexcept;
  WipedStorage& operator=(WipedStorage&& other) noexcept;

  char* data() noexcept { return data_; }
  const char* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }

 private:
  char* data_ = nullptr;
  std::size_t size_ = 0;
  std::pmr::memory_resource* memory_ = nullptr;
};

/// One line taken from a buffer.
struct Line {
  /// The text without its line feed and without a carriage return just before it. A zero byte follows it.
  std::string_view text;
  /// The bytes of the whole line, terminator included.
  std::size_t length = 0;
};

class LineBuffer {
 public:
  /// An empty buffer of 4096 bytes.
  explicit LineBuffer(std::pmr::memory_resource* memory = std::pmr::new_delete_resource());

  /// Stores the bytes behind the unread ones. Views handed out before become invalid. Throws std::bad_alloc and then
  /// holds what it held.
  void append(std::string_view bytes);

  /// Consumes the unread bytes up to and including the next line feed. Nothing when no line feed is held. The line
  /// stays valid until the next `append`.
  std::optional<Line> take_line();

  /// Everything not consumed yet; a zero byte that is not counted follows it.
  std::string_view unread() const noexcept { return {storage_.data() + read_, write_ - read_}; }

  std::size_t capacity() const noexcept { return storage_.size(); }

 private:
  void make_room(std::size_t count);
  void grow(std::size_t count);

  std::pmr::memory_resource* memory_;
  WipedStorage storage_;
  std::size_t growth_step_;
  std::size_t read_ = 0;
  std::size_t write_ = 0;
};

}  // namespace vellobar::mailbox

// Files as bytes. Paths are narrow: what the platform's C runtime would take (on Windows in the system's ANSI code
// page).
//
// A `File` is open for reading and shared by every record whose text lies in it. Reads name their position, so sharing
// needs no seek state. Whoever owns the file closes it; a closed file reads as empty, so a record that outlives it is
// safe. An `OutputFile` is written from front to back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/file_handle.h"

namespace vellobar::platform {

class File {
 public:
  /// Opens a file for reading. Null when it cannot be opened or has no end to measure (a folder, a pipe).
  static std::shared_ptr<File> open(const std::string& path);
  /// The same with a file that was opened for reading.
  static std::shared_ptr<File> of(FileHandle handle);

  File(const File&) = delete;
  File& operator=(const File&) = delete;

  /// The size measured when the file was opened; 0 once closed. Bytes.
  std::int64_t size() const noexcept { return size_; }
  /// The size now, -1 when it cannot be told (closed, or an error). Bytes.
  std::int64_t current_size() const noexcept { return handle_.size(); }

  /// Reads up to `count` bytes from `position`. Fewer only at the end of the file, after an error (`failed` then
  /// tells), or when closed.
  std::size_t read(std::int64_t position, void* to, std::size_t count) noexcept;

  /// The furthest position that was read so far.
  std::int64_t read_up_to() const noexcept { return read_up_to_; }

  /// True once a read failed for another reason than the end of the file, until that is forgotten.
  bool failed() const noexcept { return failed_; }

  /// Forgets that a read failed, to try again.
  void forget_failure() noexcept { failed_ = false; }

  /// True when the path names this very file (same volume and file, links followed).
  bool is_same_file(const std::string& path) const noexcept { return handle_.is_file(path); }

  bool is_open() const noexcept { return handle_.valid(); }
  void close() noexcept;

  /// Lets go of the open file for a moment, keeping what was measured, and opens it again. While let go it reads as
  /// empty.
  void suspend() noexcept { handle_ = FileHandle(); }
  void resume(const std::string& path) noexcept { handle_ = FileHandle::open(path, Opening::read); }

 private:
  File(FileHandle handle, std::int64_t size) noexcept;

  FileHandle handle_;
  std::int64_t size_ = 0;
  std::int64_t read_up_to_ = 0;
  bool failed_ = false;
};

/// Where bytes go. Every failure is thrown as std::system_error.
class ByteSink {
 public:
  virtual ~ByteSink() = default;
  virtual void write(std::string_view bytes) = 0;
};

/// Writes all from `position` to just before `end` to a sink. Throws std::system_error when the file ends before that,
/// cannot be read, or the sink fails.
void copy_bytes(File& from, std::int64_t position, std::int64_t end, ByteSink& to);

/// A file being written from front to back, buffered.
class OutputFile : public ByteSink {
 public:
  /// Creates or empties the file. Null when it cannot be opened for writing.
  static std::unique_ptr<OutputFile> create(const std::string& path) { return open(path, Opening::create); }
  /// Opens the file this way. Null when it cannot be opened; without memory nothing is done to it.
  static std::unique_ptr<OutputFile> open(const std::string& path, Opening how);
  /// Writes through an open handle from where it stands.
  explicit OutputFile(FileHandle handle);

  /// Closes without writing what is still buffered; call `close` to finish and to learn of failures.
  ~OutputFile() override = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void write(std::string_view bytes) override;
  /// Hands buffered bytes to the system.
  void flush();
  /// Hands over buffered bytes and waits until they are on the disk.
  void sync();
  /// Hands over buffered bytes, and cuts or extends the file; false when it has not the expected size.
  bool resize(std::int64_t expected, std::int64_t size);
  /// Hands over buffered bytes and closes.
  void close();

 private:
  FileHandle handle_;
  std::string buffer_;
};

}  // namespace vellobar::platform

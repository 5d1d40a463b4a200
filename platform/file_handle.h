// One open file of the operating system, closed with its owner, and the few calls on paths that replacing a mailbox
// needs. Paths are narrow: what the platform's C runtime would take. Whatever says nothing else throws
// std::system_error when the system refuses. This is the only place through which the component changes files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vellobar::platform {

class FileHandle {
 public:
  FileHandle() noexcept = default;
  FileHandle(FileHandle&& other) noexcept;
  FileHandle& operator=(FileHandle&& other) noexcept;
  ~FileHandle();

  /// Each gives an invalid handle when the file cannot be opened that way.
  static FileHandle open_to_read(const std::string& path) noexcept;
  /// An existing regular file, to be overwritten in place; its content stays.
  static FileHandle open_to_overwrite(const std::string& path) noexcept;
  /// A file created, or emptied when it exists.
  static FileHandle create(const std::string& path) noexcept;
  /// A file that did not exist before, readable by its owner only.
  static FileHandle create_new(const std::string& path) noexcept;

  bool valid() const noexcept { return handle_ != kNone; }
  /// The size now in bytes, -1 when there is none to tell (a folder, a pipe, an invalid handle).
  std::int64_t size() const noexcept;
  /// Reads up to `count` bytes from `position`; fewer only at the end of the file or when `failed` is set.
  std::size_t read_at(std::int64_t position, void* to, std::size_t count, bool& failed) const noexcept;
  /// True when the path names this very file, links followed.
  bool is_file(const std::string& path) const noexcept;

  void write(std::string_view bytes);
  void truncate(std::int64_t size);
  /// Waits until everything written is on the disk.
  void sync();
  void close();

 private:
  static constexpr std::intptr_t kNone = -1;
  explicit FileHandle(std::intptr_t handle) noexcept : handle_(handle) {}

  std::intptr_t handle_ = kNone;
};

/// What replacing a file must know about it.
struct FileFacts {
  bool is_regular = false;
  std::uint64_t links = 0;
};

/// Facts about an existing file, links followed; not regular when it cannot be told.
FileFacts facts_of(const std::string& path) noexcept;

/// The path with symbolic links followed; the path itself where that cannot be told.
std::string followed_path(const std::string& path);

/// Gives `to` the owner, mode, access lists and extended attributes of `from`. False when any of them cannot be given.
bool copy_attributes(const std::string& from, const std::string& to) noexcept;

/// Puts `from` in the place of `to` in one step.
void rename_over(const std::string& from, const std::string& to);

/// Waits until the folder that holds the path has its entries on the disk, where the system offers it.
void sync_folder_of(const std::string& path) noexcept;

/// Deletes a file; false when it could not be deleted.
bool remove_file(const std::string& path) noexcept;

/// True when both paths name the same existing file.
bool same_file(const std::string& left, const std::string& right) noexcept;

}  // namespace vellobar::platform

// One open file, closed with its owner, and the calls on paths that replacing a mailbox needs, with interrupted calls
// repeated and short ones continued. Whatever says nothing else throws std::system_error when the system refuses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/file_system.h"

namespace vellobar::platform {

class FileHandle {
 public:
  FileHandle() noexcept = default;
  FileHandle(FileHandle&& other) noexcept;
  FileHandle& operator=(FileHandle&& other) noexcept;
  ~FileHandle();

  /// An invalid handle when the file cannot be opened that way; `failure`, when given, then tells why.
  static FileHandle open(const std::string& path, Opening how, std::error_code* failure = nullptr) noexcept;

  bool valid() const noexcept { return file_ != kNoFile; }
  /// The size now in bytes, -1 when there is none to tell (a folder, a pipe, an invalid handle).
  std::int64_t size() const noexcept { return valid() ? size_of(file_) : -1; }
  /// Reads up to `count` bytes from `position`; fewer only at the end of the file or when `failed` is set.
  std::size_t read_at(std::int64_t position, void* to, std::size_t count, bool& failed) const noexcept;
  /// True when the path names this very file, links followed.
  bool is_file(const std::string& path) const noexcept { return valid() && platform::is_file(file_, path); }

  /// See platform::try_lock.
  bool try_lock() noexcept { return platform::try_lock(file_); }

  /// Writes behind what was written before, from the front of the file on.
  void write(std::string_view bytes);
  /// Cuts or extends; false, with nothing done, when the file has not the expected size.
  bool resize(std::int64_t expected, std::int64_t size);
  /// Waits until everything written is on the disk.
  void sync();
  void close();

 private:
  explicit FileHandle(OpenFile file) noexcept : file_(file) {}

  OpenFile file_ = kNoFile;
};

/// Gives `to` the owner, mode, access lists and extended attributes of `from`. False when any of them cannot be given.
/// Throws std::bad_alloc where there is no memory for it.
bool copy_attributes(const std::string& from, const std::string& to);

/// Puts `from` in the place of `to` in one step.
void rename_over(const std::string& from, const std::string& to);

/// Gives a file a second name, one that does not exist; the failure when that cannot be done.
std::error_code add_name(const std::string& path, const std::string& name) noexcept;

/// Makes an empty file under a new name that begins with `prefix`, readable by the user only; none when it cannot.
std::optional<std::string> make_unique_file(const std::string& folder, const std::string& prefix);

/// Waits until the folder that holds the path has its entries on the disk, where the system offers it.
void sync_folder_of(const std::string& path);
/// The same; the failure when that cannot be done.
std::error_code try_sync_folder_of(const std::string& path) noexcept;

/// See FileSystem::leave_note; false when it could not be left.
bool leave_note(const std::string& path, const std::string& text) noexcept;

/// Deletes a file; the failure when it could not be deleted.
std::error_code try_remove_file(const std::string& path) noexcept;
/// Deletes a file; false when it could not be deleted.
bool remove_file(const std::string& path) noexcept;

}  // namespace vellobar::platform

// The operating system's calls on files, one function for each kind: all that the component reads and changes on a disk
// goes through these. `posix/` and `windows/` hold the real ones; a test puts others in their place, to fail or stop at
// any call or to record them. Paths are narrow: what the platform's C runtime would take. A call does no more than the
// system's own: it may be interrupted, and may move fewer bytes than asked for; `FileHandle` deals with that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace vellobar::platform {

/// A file as the system holds it open.
using OpenFile = std::intptr_t;
inline constexpr OpenFile kNoFile = -1;

/// What a file is opened for.
enum class Opening {
  read,        ///< not waiting for a pipe's other end
  overwrite,   ///< an existing file is written in place; its content stays
  append,      ///< an existing file gets more at its end, wherever that is then
  create,      ///< made, or emptied when it exists, and written
  create_new,  ///< made, never an existing one, readable by its owner only, and held until it is closed
  claim,       ///< a file that nobody holds is read and held: the user's own and no link, as a died process leaves it;
               ///< `resource_unavailable_try_again` when somebody holds it
};

/// What a new file takes over from an old one before it stands in its place. The mode of a file is set after its owner,
/// whose change may clear bits of it.
enum class Attributes {
  owner,     ///< owner and group
  access,    ///< mode or access list; on Windows the attribute bits and the time of creation as well
  extended,  ///< extended attributes and POSIX access lists; refused where there are some that cannot be copied
};
inline constexpr Attributes kAllAttributes[] = {Attributes::owner, Attributes::access, Attributes::extended};

/// Every function returns why it failed, nothing when it did not.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  virtual std::error_code open(const std::string& path, Opening how, OpenFile& file) noexcept = 0;
  /// Reads at a position, without moving the one that is written at; none at the end of the file.
  virtual std::error_code read(OpenFile file, std::int64_t position, void* to, std::size_t count,
                               std::size_t& got) noexcept = 0;
  /// Writes behind what was written before, from the front of the file on.
  virtual std::error_code write(OpenFile file, std::string_view bytes, std::size_t& put) noexcept = 0;
  /// Cuts or extends a file that has the expected size still, with as little as the system allows between looking and
  /// doing; `resource_unavailable_try_again` when it has another one. The position that is written at stays.
  virtual std::error_code resize(OpenFile file, std::int64_t expected, std::int64_t size) noexcept = 0;
  /// Waits until everything written is on the disk.
  virtual std::error_code sync(OpenFile file) noexcept = 0;
  /// The file is closed whatever this returns.
  virtual std::error_code close(OpenFile file) noexcept = 0;

  virtual std::error_code copy_attributes(Attributes which, const std::string& from,
                                          const std::string& to) noexcept = 0;
  /// Puts `from` in the place of `to` in one step.
  virtual std::error_code rename(const std::string& from, const std::string& to) noexcept = 0;
  /// Gives a file a second name, one that does not exist.
  virtual std::error_code link(const std::string& from, const std::string& to) noexcept = 0;
  /// Makes an empty file under a new name that begins with `prefix`, readable by the user only.
  virtual std::error_code make_unique(const std::string& folder, const std::string& prefix,
                                      std::string& path) noexcept = 0;
  /// Waits until the folder that holds the path has its entries on the disk, where the system offers it.
  virtual std::error_code sync_folder_of(const std::string& path) noexcept = 0;
  /// Leaves a note with the file itself, to be found by each of its names, in the place of the one before; an empty one
  /// takes it away. Syncing the file syncs the note. Refused where the file system keeps none.
  virtual std::error_code leave_note(const std::string& path, const std::string& text) noexcept = 0;
  virtual std::error_code remove(const std::string& path) noexcept = 0;
};

/// The operating system's own.
FileSystem& real_file_system() noexcept;

/// The one in force: the operating system's own unless a test put another in its place.
FileSystem& file_system() noexcept;

/// Puts another file system in force until the object dies, and then the one before. For tests.
class FixedFileSystem {
 public:
  explicit FixedFileSystem(FileSystem& fixed) noexcept;
  ~FixedFileSystem();
  FixedFileSystem(const FixedFileSystem&) = delete;
  FixedFileSystem& operator=(const FixedFileSystem&) = delete;

 private:
  FileSystem* before_;
};

/// True where a file can be replaced while somebody holds it open.
extern const bool kReplacesOpenFiles;

/// Locks a file that is open for writing against everybody else who locks it, until it is closed: on POSIX as programs
/// that deliver mail do (fcntl), on Windows against this component in other processes (a byte far behind the end).
/// False when somebody else has it locked; a file that cannot be locked at all counts as locked.
bool try_lock(OpenFile file) noexcept;

/// True for a disk that is full and for a user whose share of it is used up.
bool is_out_of_room(const std::error_code& failure) noexcept;

/// What separates the folders of a path.
extern const char* const kPathSeparators;

/// What replacing a file must know about it.
struct FileFacts {
  bool is_regular = false;
  std::uint64_t links = 0;
};

/// Facts about an existing file, links followed; not regular when it cannot be told.
FileFacts facts_of(const std::string& path) noexcept;

/// False only when it is certain that nothing has this name. Links are not followed.
bool may_exist(const std::string& path) noexcept;

/// The size now in bytes, -1 when there is none to tell (a folder, a pipe).
std::int64_t size_of(OpenFile file) noexcept;

/// True when the path names this very file, links followed.
bool is_file(OpenFile file, const std::string& path) noexcept;

/// True when both paths name the same existing file.
bool same_file(const std::string& left, const std::string& right) noexcept;

/// The other names that the file of this path has in the same folder.
std::vector<std::string> names_beside(const std::string& path);

/// The note that was left with a file, empty when there is none. Whoever may write to the file may have left it.
std::string note_on(const std::string& path);

/// The path with symbolic links followed; the path itself where that cannot be told.
std::string followed_path(const std::string& path);

}  // namespace vellobar::platform

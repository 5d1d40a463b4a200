#include "platform/file_system.h"

#include <windows.h>

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

namespace vellobar::platform {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::size_t kLargestPiece = std::size_t{1} << 30;
constexpr int kRenameTries = 5;
constexpr DWORD kRenamePause = 20;  // milliseconds, doubled from try to try

/// The upper half of a position that no file reaches: what is locked there can still be read and written.
constexpr DWORD kLockedByteHigh = 0x40000000;

/// ERROR_DISK_QUOTA_EXCEEDED, which MinGW's headers lack.
constexpr DWORD kDiskQuotaExceeded = 1295;

/// What a new file cannot be given.
constexpr DWORD kLostAttributes = FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_ENCRYPTED;

/// As the C++ library's own errors on files are: so that they compare with std::errc.
std::error_code error(DWORD number) noexcept { return {static_cast<int>(number), std::system_category()}; }

std::error_code result(BOOL succeeded) noexcept { return succeeded != 0 ? std::error_code() : error(::GetLastError()); }

HANDLE native(OpenFile file) noexcept { return reinterpret_cast<HANDLE>(file); }

struct Way {
  DWORD access, share, how;
};

Way way_of(Opening how) noexcept {
  switch (how) {
    case Opening::read:
      return {GENERIC_READ, kShareAll, OPEN_EXISTING};
    case Opening::overwrite:
      return {GENERIC_WRITE, kShareAll, OPEN_EXISTING};
    case Opening::append:
      return {FILE_APPEND_DATA | GENERIC_READ, kShareAll, OPEN_EXISTING};
    case Opening::create:
      return {GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS};
    case Opening::create_new:
      // May be renamed while it is held; a claim does not share writing, and so is refused.
      return {GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, CREATE_NEW};
    case Opening::claim:
      break;
  }
  return {GENERIC_READ, FILE_SHARE_DELETE, OPEN_EXISTING};
}

/// Whether a file is there that is marked read-only and would be written. Windows refuses to open it; Wine lets a
/// privileged user write it, but not delete it once it was replaced.
bool would_write_read_only(const std::string& path, const Way& way) noexcept {
  if ((way.access & (GENERIC_WRITE | FILE_APPEND_DATA)) == 0 || way.how == CREATE_NEW) return false;
  const DWORD attributes = ::GetFileAttributesA(path.c_str());
  // A link has attributes of its own.
  return attributes != INVALID_FILE_ATTRIBUTES &&
         (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_REPARSE_POINT)) == FILE_ATTRIBUTE_READONLY;
}

OpenFile refused(DWORD why) noexcept {
  ::SetLastError(why);
  return kNoFile;
}

/// Opens a path as a whole: one with a NUL inside names no file, and is not cut there.
OpenFile open_whole(const std::string& path, const Way& way) noexcept {
  if (path.find('\0') != std::string::npos) return refused(ERROR_INVALID_NAME);
  if (would_write_read_only(path, way)) return refused(ERROR_ACCESS_DENIED);
  return reinterpret_cast<OpenFile>(
      ::CreateFileA(path.c_str(), way.access, way.share, nullptr, way.how, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool same(const BY_HANDLE_FILE_INFORMATION& left, const BY_HANDLE_FILE_INFORMATION& right) noexcept {
  return left.dwVolumeSerialNumber == right.dwVolumeSerialNumber && left.nFileIndexHigh == right.nFileIndexHigh &&
         left.nFileIndexLow == right.nFileIndexLow;
}

bool identify(const std::string& path, BY_HANDLE_FILE_INFORMATION& info) noexcept {
  const HANDLE handle = native(open_whole(path, {FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING}));
  if (handle == INVALID_HANDLE_VALUE) return false;
  const bool told = ::GetFileInformationByHandle(handle, &info) != 0;
  ::CloseHandle(handle);
  return told;
}

std::error_code copy_security(SECURITY_INFORMATION which, const std::string& from, const std::string& to) {
  DWORD size = 0;
  ::GetFileSecurityA(from.c_str(), which, nullptr, 0, &size);
  if (size == 0) return {};  // a volume without access lists
  std::vector<unsigned char> descriptor(size);
  if (::GetFileSecurityA(from.c_str(), which, descriptor.data(), size, &size) == 0) return error(::GetLastError());
  return result(::SetFileSecurityA(to.c_str(), which, descriptor.data()));
}

/// What tells a file's age stays with the name.
std::error_code copy_creation_time(const BY_HANDLE_FILE_INFORMATION& from, const std::string& to) noexcept {
  const HANDLE handle = native(open_whole(to, {FILE_WRITE_ATTRIBUTES, kShareAll, OPEN_EXISTING}));
  if (handle == INVALID_HANDLE_VALUE) return error(::GetLastError());
  const std::error_code copied = result(::SetFileTime(handle, &from.ftCreationTime, nullptr, nullptr));
  ::CloseHandle(handle);
  return copied;
}

std::error_code copy_access(const std::string& from, const std::string& to) {
  BY_HANDLE_FILE_INFORMATION info{};
  if (!identify(from, info)) return error(::GetLastError());
  if (const std::error_code failure = copy_security(DACL_SECURITY_INFORMATION, from, to)) return failure;
  if (const std::error_code failure = copy_creation_time(info, to)) return failure;
  return result(::SetFileAttributesA(to.c_str(), info.dwFileAttributes));
}

/// True when the file holds more than its one unnamed stream.
bool has_named_streams(const std::string& path) {
  const int size = ::MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, nullptr, 0);
  std::vector<wchar_t> wide(static_cast<std::size_t>(std::max(size, 1)));
  ::MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, wide.data(), size);
  WIN32_FIND_STREAM_DATA stream{};
  const HANDLE found = ::FindFirstStreamW(wide.data(), FindStreamInfoStandard, &stream, 0);
  if (found == INVALID_HANDLE_VALUE) return false;  // a volume without streams
  const bool has_second = ::FindNextStreamW(found, &stream) != 0;
  ::FindClose(found);
  return has_second;
}

std::error_code copy_extended_attributes(const std::string& from) {
  const DWORD attributes = ::GetFileAttributesA(from.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return error(::GetLastError());
  const bool would_lose = (attributes & kLostAttributes) != 0 || has_named_streams(from);
  return would_lose ? error(ERROR_NOT_SUPPORTED) : std::error_code();
}

class WindowsFileSystem final : public FileSystem {
 public:
  std::error_code open(const std::string& path, Opening how, OpenFile& file) noexcept override {
    file = open_whole(path, way_of(how));
    const std::error_code failure = result(file != kNoFile);
    const bool is_held = how == Opening::claim && failure.value() == ERROR_SHARING_VIOLATION;
    return is_held ? std::make_error_code(std::errc::resource_unavailable_try_again) : failure;
  }

  std::error_code read(OpenFile file, std::int64_t position, void* to, std::size_t count,
                       std::size_t& got) noexcept override {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(position & 0xFFFFFFFF);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD done = 0;
    const BOOL succeeded = ::ReadFile(native(file), to, static_cast<DWORD>(std::min(count, kLargestPiece)), &done, &at);
    got = done;
    return succeeded == 0 && ::GetLastError() == ERROR_HANDLE_EOF ? std::error_code() : result(succeeded);
  }

  std::error_code write(OpenFile file, std::string_view bytes, std::size_t& put) noexcept override {
    DWORD done = 0;
    const DWORD piece = static_cast<DWORD>(std::min(bytes.size(), kLargestPiece));
    const BOOL succeeded = ::WriteFile(native(file), bytes.data(), piece, &done, nullptr);
    put = done;
    return result(succeeded);
  }

  std::error_code resize(OpenFile file, std::int64_t expected, std::int64_t size) noexcept override {
    if (size_of(file) != expected) return std::make_error_code(std::errc::resource_unavailable_try_again);
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = size;
    return result(::SetFileInformationByHandle(native(file), FileEndOfFileInfo, &end, sizeof end));
  }

  std::error_code sync(OpenFile file) noexcept override { return result(::FlushFileBuffers(native(file))); }

  std::error_code close(OpenFile file) noexcept override { return result(::CloseHandle(native(file))); }

  std::error_code copy_attributes(Attributes which, const std::string& from, const std::string& to) noexcept override {
    try {
      switch (which) {
        case Attributes::owner:
          // Only a privileged user may give a file to another one; the access list decides who may do what.
          static_cast<void>(copy_security(GROUP_SECURITY_INFORMATION, from, to));
          static_cast<void>(copy_security(OWNER_SECURITY_INFORMATION, from, to));
          return {};
        case Attributes::access:
          return copy_access(from, to);
        case Attributes::extended:
          break;
      }
      return copy_extended_attributes(from);
    } catch (const std::bad_alloc&) {
      return error(ERROR_NOT_ENOUGH_MEMORY);
    }
  }

  std::error_code rename(const std::string& from, const std::string& to) noexcept override {
    // A virus scanner or an indexer may hold the file for a moment.
    for (int attempt = 1;; ++attempt) {
      const BOOL moved = ::MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
      const std::error_code failure = result(moved);
      const bool is_passing = failure.value() == ERROR_SHARING_VIOLATION || failure.value() == ERROR_LOCK_VIOLATION ||
                              failure.value() == ERROR_ACCESS_DENIED;
      if (!is_passing || attempt == kRenameTries) return failure;
      ::Sleep(kRenamePause << attempt);
    }
  }

  std::error_code link(const std::string& from, const std::string& to) noexcept override {
    return result(::CreateHardLinkA(to.c_str(), from.c_str(), nullptr));
  }

  std::error_code make_unique(const std::string& folder, const std::string& prefix,
                              std::string& path) noexcept override {
    char name[MAX_PATH];
    if (::GetTempFileNameA(folder.c_str(), prefix.c_str(), 0, name) == 0) return error(::GetLastError());
    try {
      path = name;
    } catch (const std::bad_alloc&) {
      ::DeleteFileA(name);
      return error(ERROR_NOT_ENOUGH_MEMORY);
    }
    return {};
  }

  std::error_code sync_folder_of(const std::string&) noexcept override { return {}; }  // renaming writes through

  std::error_code leave_note(const std::string&, const std::string&) noexcept override {
    return error(ERROR_NOT_SUPPORTED);
  }

  std::error_code remove(const std::string& path) noexcept override { return result(::DeleteFileA(path.c_str())); }
};

}  // namespace

const char* const kPathSeparators = "\\/";

FileSystem& real_file_system() noexcept {
  static WindowsFileSystem system;
  return system;
}

const bool kReplacesOpenFiles = false;

bool try_lock(OpenFile file) noexcept {
  OVERLAPPED at{};
  at.OffsetHigh = kLockedByteHigh;
  return ::LockFileEx(native(file), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &at) != 0 ||
         ::GetLastError() != ERROR_LOCK_VIOLATION;
}

bool is_out_of_room(const std::error_code& failure) noexcept {
  return failure == std::errc::no_space_on_device || failure == error(ERROR_DISK_FULL) ||
         failure == error(ERROR_HANDLE_DISK_FULL) || failure == error(kDiskQuotaExceeded);
}

FileFacts facts_of(const std::string& path) noexcept {
  BY_HANDLE_FILE_INFORMATION info{};
  if (!identify(path, info)) return {};
  return {(info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0, info.nNumberOfLinks};
}

bool may_exist(const std::string& path) noexcept {
  if (::GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) return true;
  const DWORD failure = ::GetLastError();
  return failure != ERROR_FILE_NOT_FOUND && failure != ERROR_PATH_NOT_FOUND;
}

std::int64_t size_of(OpenFile file) noexcept {
  LARGE_INTEGER size{};
  if (::GetFileType(native(file)) != FILE_TYPE_DISK) return -1;
  return ::GetFileSizeEx(native(file), &size) != 0 ? size.QuadPart : -1;
}

bool is_file(OpenFile file, const std::string& path) noexcept {
  BY_HANDLE_FILE_INFORMATION mine{}, theirs{};
  return ::GetFileInformationByHandle(native(file), &mine) != 0 && identify(path, theirs) && same(mine, theirs);
}

bool same_file(const std::string& left, const std::string& right) noexcept {
  BY_HANDLE_FILE_INFORMATION first{}, second{};
  return identify(left, first) && identify(right, second) && same(first, second);
}

std::vector<std::string> names_beside(const std::string& path) {
  const std::string folder = path.substr(0, path.find_last_of(kPathSeparators) + 1);
  std::vector<std::string> names;
  WIN32_FIND_DATAA entry{};
  const HANDLE found = ::FindFirstFileA((folder + "*").c_str(), &entry);
  if (found == INVALID_HANDLE_VALUE) return names;
  try {
    do {
      std::string name = folder + entry.cFileName;
      if (name != path && same_file(name, path)) names.push_back(std::move(name));
    } while (::FindNextFileA(found, &entry) != 0);
  } catch (...) {
    ::FindClose(found);
    throw;
  }
  ::FindClose(found);
  return names;
}

std::string note_on(const std::string&) { return {}; }

std::string followed_path(const std::string& path) {
  // First, so that no lack of memory leaves the file open.
  std::string real(32768, '\0');
  const HANDLE handle = native(open_whole(path, {FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING}));
  if (handle == INVALID_HANDLE_VALUE) return path;
  const DWORD size = ::GetFinalPathNameByHandleA(handle, real.data(), static_cast<DWORD>(real.size()), 0);
  ::CloseHandle(handle);
  if (size == 0 || size >= real.size()) return path;
  real.resize(size);
  // A name that the ANSI code page cannot hold comes back damaged: then the path as given is the better one.
  return facts_of(real).is_regular ? real : path;
}

}  // namespace vellobar::platform

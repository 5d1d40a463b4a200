#include "platform/file_handle.h"

#include <windows.h>

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

namespace vellobar::platform {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::size_t kLargestPiece = std::size_t{1} << 30;
constexpr int kRenameTries = 5;
constexpr DWORD kRenamePause = 20;  // milliseconds, doubled from try to try

[[noreturn]] void fail(const char* doing) {
  throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), doing);
}

HANDLE native(std::intptr_t handle) noexcept { return reinterpret_cast<HANDLE>(handle); }

/// Opens a path as a whole: one with a NUL inside names no file, and is not cut there.
std::intptr_t open(const std::string& path, DWORD access, DWORD share, DWORD how) noexcept {
  if (path.find('\0') != std::string::npos) return -1;
  return reinterpret_cast<std::intptr_t>(
      ::CreateFileA(path.c_str(), access, share, nullptr, how, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool same(const BY_HANDLE_FILE_INFORMATION& left, const BY_HANDLE_FILE_INFORMATION& right) noexcept {
  return left.dwVolumeSerialNumber == right.dwVolumeSerialNumber && left.nFileIndexHigh == right.nFileIndexHigh &&
         left.nFileIndexLow == right.nFileIndexLow;
}

bool identify(const std::string& path, BY_HANDLE_FILE_INFORMATION& info) noexcept {
  const HANDLE handle = native(open(path, FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING));
  if (handle == INVALID_HANDLE_VALUE) return false;
  const bool told = ::GetFileInformationByHandle(handle, &info) != 0;
  ::CloseHandle(handle);
  return told;
}

bool copy_access_list(const std::string& from, const std::string& to) {
  DWORD size = 0;
  ::GetFileSecurityA(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  if (size == 0) return true;  // a volume without access lists
  std::vector<unsigned char> descriptor(size);
  return ::GetFileSecurityA(from.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), size, &size) != 0 &&
         ::SetFileSecurityA(to.c_str(), DACL_SECURITY_INFORMATION, descriptor.data()) != 0;
}

}  // namespace

FileHandle::FileHandle(FileHandle&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
  if (this != &other) {
    if (valid()) ::CloseHandle(native(handle_));
    handle_ = std::exchange(other.handle_, kNone);
  }
  return *this;
}

FileHandle::~FileHandle() {
  if (valid()) ::CloseHandle(native(handle_));
}

FileHandle FileHandle::open_to_read(const std::string& path) noexcept {
  return FileHandle(open(path, GENERIC_READ, kShareAll, OPEN_EXISTING));
}

FileHandle FileHandle::open_to_overwrite(const std::string& path) noexcept {
  return FileHandle(open(path, GENERIC_WRITE, kShareAll, OPEN_EXISTING));
}

FileHandle FileHandle::create(const std::string& path) noexcept {
  return FileHandle(open(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS));
}

FileHandle FileHandle::create_new(const std::string& path) noexcept {
  return FileHandle(open(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW));
}

std::int64_t FileHandle::size() const noexcept {
  LARGE_INTEGER size{};
  if (!valid() || ::GetFileType(native(handle_)) != FILE_TYPE_DISK) return -1;
  return ::GetFileSizeEx(native(handle_), &size) != 0 ? size.QuadPart : -1;
}

std::size_t FileHandle::read_at(std::int64_t position, void* to, std::size_t count, bool& failed) const noexcept {
  std::size_t done = 0;
  while (done < count) {
    const std::int64_t from = position + static_cast<std::int64_t>(done);
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(from & 0xFFFFFFFF);
    at.OffsetHigh = static_cast<DWORD>(from >> 32);
    DWORD got = 0;
    const DWORD piece = static_cast<DWORD>(std::min(count - done, kLargestPiece));
    if (::ReadFile(native(handle_), static_cast<char*>(to) + done, piece, &got, &at) == 0) {
      failed = failed || ::GetLastError() != ERROR_HANDLE_EOF;
      break;
    }
    if (got == 0) break;
    done += got;
  }
  return done;
}

bool FileHandle::is_file(const std::string& path) const noexcept {
  BY_HANDLE_FILE_INFORMATION mine{}, theirs{};
  return valid() && ::GetFileInformationByHandle(native(handle_), &mine) != 0 && identify(path, theirs) &&
         same(mine, theirs);
}

void FileHandle::write(std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD put = 0;
    const DWORD piece = static_cast<DWORD>(std::min(bytes.size(), kLargestPiece));
    if (::WriteFile(native(handle_), bytes.data(), piece, &put, nullptr) == 0) fail("WriteFile");
    bytes.remove_prefix(put);
  }
}

void FileHandle::truncate(std::int64_t size) {
  LARGE_INTEGER end{};
  end.QuadPart = size;
  if (::SetFilePointerEx(native(handle_), end, nullptr, FILE_BEGIN) == 0 || ::SetEndOfFile(native(handle_)) == 0) {
    fail("SetEndOfFile");
  }
}

void FileHandle::sync() {
  if (::FlushFileBuffers(native(handle_)) == 0) fail("FlushFileBuffers");
}

void FileHandle::close() {
  if (::CloseHandle(native(std::exchange(handle_, kNone))) == 0) fail("CloseHandle");
}

FileFacts facts_of(const std::string& path) noexcept {
  BY_HANDLE_FILE_INFORMATION info{};
  if (!identify(path, info)) return {};
  return {(info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0, info.nNumberOfLinks};
}

std::string followed_path(const std::string& path) {
  const HANDLE handle = native(open(path, FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING));
  if (handle == INVALID_HANDLE_VALUE) return path;
  std::string real(32768, '\0');
  const DWORD size = ::GetFinalPathNameByHandleA(handle, real.data(), static_cast<DWORD>(real.size()), 0);
  ::CloseHandle(handle);
  if (size == 0 || size >= real.size()) return path;
  real.resize(size);
  // A name that the ANSI code page cannot hold comes back damaged: then the path as given is the better one.
  return facts_of(real).is_regular ? real : path;
}

bool copy_attributes(const std::string& from, const std::string& to) noexcept {
  const DWORD attributes = ::GetFileAttributesA(from.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  try {
    if (!copy_access_list(from, to)) return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
  return ::SetFileAttributesA(to.c_str(), attributes) != 0;
}

void rename_over(const std::string& from, const std::string& to) {
  // A virus scanner or an indexer may hold the file for a moment.
  for (int attempt = 1;; ++attempt) {
    if (::MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) return;
    const DWORD reason = ::GetLastError();
    const bool passing =
        reason == ERROR_SHARING_VIOLATION || reason == ERROR_LOCK_VIOLATION || reason == ERROR_ACCESS_DENIED;
    if (!passing || attempt == kRenameTries) fail("MoveFileEx");
    ::Sleep(kRenamePause << attempt);
  }
}

void sync_folder_of(const std::string&) noexcept {}  // renaming writes through

bool remove_file(const std::string& path) noexcept { return ::DeleteFileA(path.c_str()) != 0; }

bool same_file(const std::string& left, const std::string& right) noexcept {
  BY_HANDLE_FILE_INFORMATION first{}, second{};
  return identify(left, first) && identify(right, second) && same(first, second);
}

}  // namespace vellobar::platform

#include "platform/file_handle.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

namespace vellobar::platform {

namespace {

constexpr mode_t kPermissionBits = 07777;

[[noreturn]] void fail(const char* doing) { throw std::system_error(errno, std::generic_category(), doing); }

/// Opens a path as a whole: one with a NUL inside names no file, and is not cut there.
int open_whole(const std::string& path, int flags, mode_t mode = 0) noexcept {
  if (path.find('\0') == std::string::npos) return ::open(path.c_str(), flags | O_CLOEXEC, mode);
  errno = EINVAL;
  return -1;
}

int number(std::intptr_t handle) noexcept { return static_cast<int>(handle); }

bool same(const struct stat& left, const struct stat& right) noexcept {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

bool copy_extended_attributes(const char* from, const char* to) {
  const ssize_t size = ::listxattr(from, nullptr, 0);
  if (size <= 0) return size == 0 || errno == ENOTSUP;
  std::string names(static_cast<std::size_t>(size), '\0');
  const ssize_t listed = ::listxattr(from, names.data(), names.size());
  if (listed < 0) return false;
  names.resize(static_cast<std::size_t>(listed));
  for (std::size_t at = 0; at < names.size(); at += std::char_traits<char>::length(&names[at]) + 1) {
    const char* name = &names[at];
    const ssize_t value_size = ::getxattr(from, name, nullptr, 0);
    if (value_size < 0) return false;
    std::string value(static_cast<std::size_t>(value_size), '\0');
    if (::getxattr(from, name, value.data(), value.size()) != value_size) return false;
    if (::setxattr(to, name, value.data(), value.size(), 0) != 0) return false;
  }
  return true;
}

}  // namespace

FileHandle::FileHandle(FileHandle&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
  if (this != &other) {
    if (valid()) ::close(number(handle_));
    handle_ = std::exchange(other.handle_, kNone);
  }
  return *this;
}

FileHandle::~FileHandle() {
  if (valid()) ::close(number(handle_));
}

FileHandle FileHandle::open_to_read(const std::string& path) noexcept {
  // Not blocking: a pipe without a writer must be refused by its missing size, not waited for.
  return FileHandle(open_whole(path, O_RDONLY | O_NONBLOCK));
}

FileHandle FileHandle::open_to_overwrite(const std::string& path) noexcept {
  return FileHandle(open_whole(path, O_WRONLY));
}

FileHandle FileHandle::create(const std::string& path) noexcept {
  return FileHandle(open_whole(path, O_WRONLY | O_CREAT | O_TRUNC, 0666));
}

FileHandle FileHandle::create_new(const std::string& path) noexcept {
  return FileHandle(open_whole(path, O_WRONLY | O_CREAT | O_EXCL, 0600));
}

std::int64_t FileHandle::size() const noexcept {
  struct stat info {};
  if (!valid() || ::fstat(number(handle_), &info) != 0) return -1;
  if (S_ISDIR(info.st_mode) || S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode)) return -1;
  return S_ISREG(info.st_mode) ? info.st_size : ::lseek(number(handle_), 0, SEEK_END);
}

std::size_t FileHandle::read_at(std::int64_t position, void* to, std::size_t count, bool& failed) const noexcept {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got = ::pread(number(handle_), static_cast<char*>(to) + done, count - done,
                                static_cast<off_t>(position + static_cast<std::int64_t>(done)));
    if (got == 0) break;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      failed = true;
      break;
    }
    done += static_cast<std::size_t>(got);
  }
  return done;
}

bool FileHandle::is_file(const std::string& path) const noexcept {
  struct stat mine {};
  struct stat theirs {};
  return valid() && ::fstat(number(handle_), &mine) == 0 && ::stat(path.c_str(), &theirs) == 0 && same(mine, theirs);
}

void FileHandle::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t put = ::write(number(handle_), bytes.data(), bytes.size());
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) fail("write");
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
}

void FileHandle::truncate(std::int64_t size) {
  if (::ftruncate(number(handle_), static_cast<off_t>(size)) != 0) fail("truncate");
}

void FileHandle::sync() {
  if (::fsync(number(handle_)) != 0) fail("sync");
}

void FileHandle::close() {
  if (::close(number(std::exchange(handle_, kNone))) != 0) fail("close");
}

FileFacts facts_of(const std::string& path) noexcept {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return {};
  return {S_ISREG(info.st_mode), info.st_nlink};
}

std::string followed_path(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? std::string(real.get()) : path;
}

bool copy_attributes(const std::string& from, const std::string& to) noexcept {
  struct stat source {};
  struct stat made {};
  if (::stat(from.c_str(), &source) != 0 || ::stat(to.c_str(), &made) != 0) return false;
  const bool owner_differs = source.st_uid != made.st_uid || source.st_gid != made.st_gid;
  if (owner_differs && ::chown(to.c_str(), source.st_uid, source.st_gid) != 0) return false;
  // The mode comes after the owner, whose change may clear bits of it.
  if (::chmod(to.c_str(), source.st_mode & kPermissionBits) != 0) return false;
  try {
    return copy_extended_attributes(from.c_str(), to.c_str());
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void rename_over(const std::string& from, const std::string& to) {
  if (::rename(from.c_str(), to.c_str()) != 0) fail("rename");
}

void sync_folder_of(const std::string& path) noexcept {
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  // What is in place stays in place whatever this says; it only shortens the time in which a power loss could undo it.
  static_cast<void>(::fsync(descriptor));
  ::close(descriptor);
}

bool remove_file(const std::string& path) noexcept { return ::unlink(path.c_str()) == 0; }

bool same_file(const std::string& left, const std::string& right) noexcept {
  struct stat first {};
  struct stat second {};
  return ::stat(left.c_str(), &first) == 0 && ::stat(right.c_str(), &second) == 0 && same(first, second);
}

}  // namespace vellobar::platform

#include "platform/file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace vellobar::platform {

namespace {

constexpr mode_t kPermissionBits = 07777;

/// The extended attribute that holds a note.
constexpr char kNote[] = "user.vellobar.interrupted";

std::error_code error(int number) noexcept { return {number, std::generic_category()}; }

std::error_code result(bool succeeded) noexcept { return succeeded ? std::error_code() : error(errno); }

int number(OpenFile file) noexcept { return static_cast<int>(file); }

bool same(const struct stat& left, const struct stat& right) noexcept {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

/// Holds a new file. Between its making and this it looks like one that a died process left: false when somebody took
/// it for that. A file system that has no such locks does without.
bool hold_new(int descriptor, const std::string& path) noexcept {
  const bool is_taken = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  return !is_taken && is_file(descriptor, path);
}

/// Holds a regular file of this user that nobody else holds and the path still names.
std::error_code hold_left(int descriptor, const std::string& path) noexcept {
  struct stat info {};
  if (::fstat(descriptor, &info) != 0) return error(errno);
  if (!S_ISREG(info.st_mode) || info.st_uid != ::geteuid()) return error(EBUSY);
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) return error(errno);
  return is_file(descriptor, path) ? std::error_code() : error(EBUSY);
}

std::error_code hold(Opening how, int descriptor, const std::string& path) noexcept {
  if (how == Opening::create_new) return hold_new(descriptor, path) ? std::error_code() : error(EBUSY);
  return how == Opening::claim ? hold_left(descriptor, path) : std::error_code();
}

int flags_for(Opening how) noexcept {
  switch (how) {
    case Opening::read:
      // Not blocking: a pipe without a writer must be refused by its missing size, not waited for.
      return O_RDONLY | O_NONBLOCK;
    case Opening::overwrite:
      return O_WRONLY;
    case Opening::append:
      return O_WRONLY | O_APPEND;
    case Opening::create:
      return O_WRONLY | O_CREAT | O_TRUNC;
    case Opening::create_new:
      return O_WRONLY | O_CREAT | O_EXCL;
    case Opening::claim:
      break;
  }
  return O_RDONLY | O_NONBLOCK | O_NOFOLLOW;
}

struct CloseFolder {
  void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

std::error_code copy_extended_attributes(const char* from, const char* to) {
  const ssize_t size = ::listxattr(from, nullptr, 0);
  if (size <= 0) return size == 0 || errno == ENOTSUP ? std::error_code() : error(errno);
  std::string names(static_cast<std::size_t>(size), '\0');
  const ssize_t listed = ::listxattr(from, names.data(), names.size());
  if (listed < 0) return error(errno);
  names.resize(static_cast<std::size_t>(listed));
  for (std::size_t at = 0; at < names.size(); at += std::char_traits<char>::length(&names[at]) + 1) {
    const char* name = &names[at];
    // Is about the old file.
    if (std::string_view(name) == kNote) continue;
    const ssize_t value_size = ::getxattr(from, name, nullptr, 0);
    if (value_size < 0) return error(errno);
    std::string value(static_cast<std::size_t>(value_size), '\0');
    if (::getxattr(from, name, value.data(), value.size()) != value_size) return error(EIO);
    if (::setxattr(to, name, value.data(), value.size(), 0) != 0) return error(errno);
  }
  return {};
}

class PosixFileSystem final : public FileSystem {
 public:
  std::error_code open(const std::string& path, Opening how, OpenFile& file) noexcept override {
    // A path with a NUL inside names no file, and is not cut there.
    if (path.find('\0') != std::string::npos) return error(EINVAL);
    const int descriptor = ::open(path.c_str(), flags_for(how) | O_CLOEXEC, how == Opening::create_new ? 0600 : 0666);
    if (descriptor < 0) return error(errno);
    if (const std::error_code refused = hold(how, descriptor, path)) {
      ::close(descriptor);
      return refused;
    }
    file = descriptor;
    return {};
  }

  std::error_code read(OpenFile file, std::int64_t position, void* to, std::size_t count,
                       std::size_t& got) noexcept override {
    const ssize_t done = ::pread(number(file), to, count, static_cast<off_t>(position));
    got = done > 0 ? static_cast<std::size_t>(done) : 0;
    return result(done >= 0);
  }

  std::error_code write(OpenFile file, std::string_view bytes, std::size_t& put) noexcept override {
    const ssize_t done = ::write(number(file), bytes.data(), bytes.size());
    put = done > 0 ? static_cast<std::size_t>(done) : 0;
    return result(done >= 0);
  }

  std::error_code resize(OpenFile file, std::int64_t expected, std::int64_t size) noexcept override {
    if (size_of(file) != expected) return error(EAGAIN);
    return result(::ftruncate(number(file), static_cast<off_t>(size)) == 0);
  }

  std::error_code sync(OpenFile file) noexcept override { return result(::fsync(number(file)) == 0); }

  std::error_code close(OpenFile file) noexcept override { return result(::close(number(file)) == 0); }

  std::error_code copy_attributes(Attributes which, const std::string& from, const std::string& to) noexcept override {
    struct stat source {};
    struct stat made {};
    if (::stat(from.c_str(), &source) != 0 || ::stat(to.c_str(), &made) != 0) return error(errno);
    switch (which) {
      case Attributes::owner:
        if (source.st_uid == made.st_uid && source.st_gid == made.st_gid) return {};
        return result(::chown(to.c_str(), source.st_uid, source.st_gid) == 0);
      case Attributes::access:
        return result(::chmod(to.c_str(), source.st_mode & kPermissionBits) == 0);
      case Attributes::extended:
        break;
    }
    try {
      return copy_extended_attributes(from.c_str(), to.c_str());
    } catch (const std::bad_alloc&) {
      return error(ENOMEM);
    }
  }

  std::error_code rename(const std::string& from, const std::string& to) noexcept override {
    return result(::rename(from.c_str(), to.c_str()) == 0);
  }

  std::error_code link(const std::string& from, const std::string& to) noexcept override {
    return result(::link(from.c_str(), to.c_str()) == 0);
  }

  std::error_code make_unique(const std::string& folder, const std::string& prefix,
                              std::string& path) noexcept override {
    static constexpr char kSuffix[] = ".tmp";
    try {
      path = folder + prefix + "XXXXXX" + kSuffix;
    } catch (const std::bad_alloc&) {
      return error(ENOMEM);
    }
    const int descriptor = ::mkstemps(path.data(), sizeof kSuffix - 1);
    if (descriptor < 0) return error(errno);
    ::close(descriptor);
    return {};
  }

  std::error_code sync_folder_of(const std::string& path) noexcept override {
    try {
      const std::size_t slash = path.rfind('/');
      const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
      const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
      if (descriptor < 0) return error(errno);
      const std::error_code synced = result(::fsync(descriptor) == 0);
      ::close(descriptor);
      // Not every file system can sync a folder.
      return synced == std::errc::invalid_argument || synced == std::errc::not_supported ? std::error_code() : synced;
    } catch (const std::bad_alloc&) {
      return error(ENOMEM);
    }
  }

  std::error_code leave_note(const std::string& path, const std::string& text) noexcept override {
    if (!text.empty()) return result(::setxattr(path.c_str(), kNote, text.data(), text.size(), 0) == 0);
    return result(::removexattr(path.c_str(), kNote) == 0 || errno == ENODATA);
  }

  std::error_code remove(const std::string& path) noexcept override { return result(::unlink(path.c_str()) == 0); }
};

}  // namespace

const char* const kPathSeparators = "/";

FileSystem& real_file_system() noexcept {
  static PosixFileSystem system;
  return system;
}

const bool kReplacesOpenFiles = true;

bool try_lock(OpenFile file) noexcept {
#ifdef F_OFD_SETLK
  // Belongs to the open file: closing another one of the same path does not give it up.
  constexpr int kSetLock = F_OFD_SETLK;
#else
  constexpr int kSetLock = F_SETLK;
#endif
  struct flock whole {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  return ::fcntl(number(file), kSetLock, &whole) == 0 || (errno != EAGAIN && errno != EACCES);
}

bool is_out_of_room(const std::error_code& failure) noexcept {
  return failure == std::errc::no_space_on_device || failure == error(EDQUOT);
}

FileFacts facts_of(const std::string& path) noexcept {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return {};
  return {S_ISREG(info.st_mode), info.st_nlink};
}

bool may_exist(const std::string& path) noexcept {
  struct stat info {};
  return ::lstat(path.c_str(), &info) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

std::int64_t size_of(OpenFile file) noexcept {
  struct stat info {};
  if (::fstat(number(file), &info) != 0) return -1;
  if (S_ISDIR(info.st_mode) || S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode)) return -1;
  return S_ISREG(info.st_mode) ? info.st_size : ::lseek(number(file), 0, SEEK_END);
}

bool is_file(OpenFile file, const std::string& path) noexcept {
  struct stat mine {};
  struct stat theirs {};
  return ::fstat(number(file), &mine) == 0 && ::stat(path.c_str(), &theirs) == 0 && same(mine, theirs);
}

bool same_file(const std::string& left, const std::string& right) noexcept {
  struct stat first {};
  struct stat second {};
  return ::stat(left.c_str(), &first) == 0 && ::stat(right.c_str(), &second) == 0 && same(first, second);
}

std::vector<std::string> names_beside(const std::string& path) {
  const std::size_t base = path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1;
  const std::string folder = path.substr(0, base);
  const std::unique_ptr<DIR, CloseFolder> listed(::opendir(base == 0 ? "." : folder.c_str()));
  std::vector<std::string> names;
  if (!listed) return names;
  while (const struct dirent* entry = ::readdir(listed.get())) {
    std::string name = folder + entry->d_name;
    if (name != path && same_file(name, path)) names.push_back(std::move(name));
  }
  return names;
}

std::string note_on(const std::string& path) {
  char text[PATH_MAX];
  const ssize_t size = ::getxattr(path.c_str(), kNote, text, sizeof text);
  return {text, size > 0 ? static_cast<std::size_t>(size) : 0};
}

std::string followed_path(const std::string& path) {
  if (path.find('\0') != std::string::npos) return path;
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? std::string(real.get()) : path;
}

}  // namespace vellobar::platform

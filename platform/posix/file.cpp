#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace vellobar::platform {

namespace {

constexpr std::size_t kOutputBuffer = 256 * 1024;

/// One file descriptor, closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  int get() const noexcept { return number_; }
  int release() noexcept { return std::exchange(number_, -1); }

 private:
  int number_;
};

bool same(const struct stat& left, const struct stat& right) noexcept {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

[[noreturn]] void fail(const char* doing) { throw std::system_error(errno, std::generic_category(), doing); }

}  // namespace

struct File::Handle {
  Descriptor descriptor;
};

File::File(std::unique_ptr<Handle> handle, std::int64_t size) : handle_(std::move(handle)), size_(size) {}

File::~File() = default;

std::shared_ptr<File> File::open(const std::string& path) {
  // Not blocking: a pipe without a writer must be refused below, not waited for.
  Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat info {};
  if (descriptor.get() < 0 || ::fstat(descriptor.get(), &info) != 0 || S_ISDIR(info.st_mode)) return nullptr;
  const off_t end = ::lseek(descriptor.get(), 0, SEEK_END);
  if (end < 0) return nullptr;
  return std::shared_ptr<File>(new File(std::make_unique<Handle>(Handle{std::move(descriptor)}), end));
}

std::int64_t File::current_size() const noexcept {
  struct stat info {};
  if (!handle_ || ::fstat(handle_->descriptor.get(), &info) != 0) return -1;
  return info.st_size;
}

std::size_t File::read(std::int64_t position, void* to, std::size_t count) noexcept {
  if (!handle_) return 0;
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got = ::pread(handle_->descriptor.get(), static_cast<char*>(to) + done, count - done,
                                static_cast<off_t>(position + static_cast<std::int64_t>(done)));
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      failed_ = true;
      break;
    }
    done += static_cast<std::size_t>(got);
  }
  return done;
}

bool File::is_same_file(const std::string& path) const noexcept {
  struct stat mine {}, theirs {};
  return handle_ && ::fstat(handle_->descriptor.get(), &mine) == 0 && ::stat(path.c_str(), &theirs) == 0 &&
         same(mine, theirs);
}

void File::close() noexcept {
  handle_.reset();
  size_ = 0;
}

bool File::is_open() const noexcept { return handle_ != nullptr; }

struct OutputFile::Handle {
  Descriptor descriptor;
};

OutputFile::OutputFile(std::unique_ptr<Handle> handle) : handle_(std::move(handle)) { buffer_.reserve(kOutputBuffer); }

OutputFile::~OutputFile() = default;

std::unique_ptr<OutputFile> OutputFile::create(const std::string& path) {
  Descriptor descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (descriptor.get() < 0) return nullptr;
  return std::unique_ptr<OutputFile>(new OutputFile(std::make_unique<Handle>(Handle{std::move(descriptor)})));
}

namespace {

void write_all(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t put = ::write(descriptor, bytes.data(), bytes.size());
    if (put < 0) {
      if (errno == EINTR) continue;
      fail("write");
    }
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
}

}  // namespace

void OutputFile::write(std::string_view bytes) {
  if (buffer_.size() + bytes.size() > kOutputBuffer) {
    write_all(handle_->descriptor.get(), buffer_);
    buffer_.clear();
  }
  if (bytes.size() >= kOutputBuffer) {
    write_all(handle_->descriptor.get(), bytes);
  } else {
    buffer_.append(bytes);
  }
}

void OutputFile::close() {
  write_all(handle_->descriptor.get(), buffer_);
  buffer_.clear();
  if (::close(handle_->descriptor.release()) != 0) fail("close");
}

bool remove_file(const std::string& path) noexcept { return ::unlink(path.c_str()) == 0; }

bool same_file(const std::string& left, const std::string& right) noexcept {
  struct stat a {}, b {};
  return ::stat(left.c_str(), &a) == 0 && ::stat(right.c_str(), &b) == 0 && same(a, b);
}

}  // namespace vellobar::platform

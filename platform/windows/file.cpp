#include "platform/file.h"

#include <windows.h>

#include <algorithm>
#include <memory>
#include <system_error>
#include <utility>

namespace vellobar::platform {

namespace {

constexpr std::size_t kOutputBuffer = 256 * 1024;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// One file handle, closed with its owner.
class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) noexcept : handle_(handle) {}
  FileHandle(FileHandle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  ~FileHandle() {
    if (valid()) ::CloseHandle(handle_);
  }
  bool valid() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const noexcept { return handle_; }
  HANDLE release() noexcept { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

 private:
  HANDLE handle_;
};

[[noreturn]] void fail(const char* doing) {
  throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), doing);
}

bool identify(HANDLE handle, BY_HANDLE_FILE_INFORMATION& info) noexcept {
  return ::GetFileInformationByHandle(handle, &info) != 0;
}

bool same(const BY_HANDLE_FILE_INFORMATION& left, const BY_HANDLE_FILE_INFORMATION& right) noexcept {
  return left.dwVolumeSerialNumber == right.dwVolumeSerialNumber && left.nFileIndexHigh == right.nFileIndexHigh &&
         left.nFileIndexLow == right.nFileIndexLow;
}

FileHandle open_to_identify(const std::string& path) noexcept {
  return FileHandle(
      ::CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

struct File::Handle {
  FileHandle handle;
};

File::File(std::unique_ptr<Handle> handle, std::int64_t size) : handle_(std::move(handle)), size_(size) {}

File::~File() = default;

std::shared_ptr<File> File::open(const std::string& path) {
  FileHandle handle(
      ::CreateFileA(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size{};
  if (!handle.valid() || ::GetFileSizeEx(handle.get(), &size) == 0) return nullptr;
  return std::shared_ptr<File>(new File(std::make_unique<Handle>(Handle{std::move(handle)}), size.QuadPart));
}

std::int64_t File::current_size() const noexcept {
  LARGE_INTEGER size{};
  if (!handle_ || ::GetFileSizeEx(handle_->handle.get(), &size) == 0) return -1;
  return size.QuadPart;
}

std::size_t File::read(std::int64_t position, void* to, std::size_t count) noexcept {
  if (!handle_) return 0;
  std::size_t done = 0;
  while (done < count) {
    const std::int64_t from = position + static_cast<std::int64_t>(done);
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(from & 0xFFFFFFFF);
    at.OffsetHigh = static_cast<DWORD>(from >> 32);
    DWORD got = 0;
    const DWORD piece = static_cast<DWORD>(std::min<std::size_t>(count - done, 1u << 30));
    if (::ReadFile(handle_->handle.get(), static_cast<char*>(to) + done, piece, &got, &at) == 0) {
      failed_ = failed_ || ::GetLastError() != ERROR_HANDLE_EOF;
      break;
    }
    if (got == 0) break;
    done += got;
  }
  return done;
}

bool File::is_same_file(const std::string& path) const noexcept {
  const FileHandle other = open_to_identify(path);
  BY_HANDLE_FILE_INFORMATION mine{}, theirs{};
  return handle_ && other.valid() && identify(handle_->handle.get(), mine) && identify(other.get(), theirs) &&
         same(mine, theirs);
}

void File::close() noexcept {
  handle_.reset();
  size_ = 0;
}

bool File::is_open() const noexcept { return handle_ != nullptr; }

struct OutputFile::Handle {
  FileHandle handle;
};

OutputFile::OutputFile(std::unique_ptr<Handle> handle) : handle_(std::move(handle)) { buffer_.reserve(kOutputBuffer); }

OutputFile::~OutputFile() = default;

std::unique_ptr<OutputFile> OutputFile::create(const std::string& path) {
  FileHandle handle(::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!handle.valid()) return nullptr;
  return std::unique_ptr<OutputFile>(new OutputFile(std::make_unique<Handle>(Handle{std::move(handle)})));
}

namespace {

void write_all(HANDLE handle, std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD put = 0;
    const DWORD piece = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1u << 30));
    if (::WriteFile(handle, bytes.data(), piece, &put, nullptr) == 0) fail("WriteFile");
    bytes.remove_prefix(put);
  }
}

}  // namespace

void OutputFile::write(std::string_view bytes) {
  if (buffer_.size() + bytes.size() > kOutputBuffer) {
    write_all(handle_->handle.get(), buffer_);
    buffer_.clear();
  }
  if (bytes.size() >= kOutputBuffer) {
    write_all(handle_->handle.get(), bytes);
  } else {
    buffer_.append(bytes);
  }
}

void OutputFile::close() {
  write_all(handle_->handle.get(), buffer_);
  buffer_.clear();
  if (::CloseHandle(handle_->handle.release()) == 0) fail("CloseHandle");
}

bool remove_file(const std::string& path) noexcept { return ::DeleteFileA(path.c_str()) != 0; }

bool same_file(const std::string& left, const std::string& right) noexcept {
  const FileHandle a = open_to_identify(left), b = open_to_identify(right);
  BY_HANDLE_FILE_INFORMATION first{}, second{};
  return a.valid() && b.valid() && identify(a.get(), first) && identify(b.get(), second) && same(first, second);
}

}  // namespace vellobar::platform

#include "platform/file_handle.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace vellobar::platform {

namespace {

/// More than signals do to one call, so that a file system that always says so ends nobody's patience.
constexpr int kMostInterruptions = 1000;

/// Makes a call until it is not interrupted.
template <typename Call>
std::error_code uninterrupted(Call call) noexcept {
  std::error_code failure = call();
  for (int i = 0; i < kMostInterruptions && failure == std::errc::interrupted; ++i) failure = call();
  return failure;
}

template <typename Call>
void require(const char* doing, Call call) {
  if (const std::error_code failure = uninterrupted(call)) throw std::system_error(failure, doing);
}

}  // namespace

FileHandle::FileHandle(FileHandle&& other) noexcept : file_(std::exchange(other.file_, kNoFile)) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
  // What was open before is closed with the one that moves out.
  FileHandle moved(std::move(other));
  std::swap(file_, moved.file_);
  return *this;
}

FileHandle::~FileHandle() {
  // Whoever must know that all went well closes before.
  if (valid()) static_cast<void>(file_system().close(file_));
}

FileHandle FileHandle::open(const std::string& path, Opening how, std::error_code* failure) noexcept {
  OpenFile file = kNoFile;
  const std::error_code refused = uninterrupted([&] { return file_system().open(path, how, file); });
  if (failure != nullptr) *failure = refused;
  return FileHandle(refused ? kNoFile : file);
}

std::size_t FileHandle::read_at(std::int64_t position, void* to, std::size_t count, bool& failed) const noexcept {
  std::size_t done = 0;
  while (done < count) {
    std::size_t got = 0;
    const std::error_code failure = uninterrupted([&] {
      return file_system().read(file_, position + static_cast<std::int64_t>(done), static_cast<char*>(to) + done,
                                count - done, got);
    });
    failed = failed || failure;
    if (failure || got == 0) break;
    done += got;
  }
  return done;
}

void FileHandle::write(std::string_view bytes) {
  while (!bytes.empty()) {
    std::size_t put = 0;
    require("write", [&] { return file_system().write(file_, bytes, put); });
    // A system that takes nothing and gives no reason has no room; asking again could go on for ever.
    if (put == 0) throw std::system_error(std::make_error_code(std::errc::no_space_on_device), "write");
    bytes.remove_prefix(put);
  }
}

bool FileHandle::resize(std::int64_t expected, std::int64_t size) {
  const std::error_code failure = uninterrupted([&] { return file_system().resize(file_, expected, size); });
  if (failure == std::errc::resource_unavailable_try_again) return false;
  if (failure) throw std::system_error(failure, "resize");
  return true;
}

void FileHandle::sync() {
  require("sync", [&] { return file_system().sync(file_); });
}

void FileHandle::close() {
  // Not repeated: an interrupted call has closed the file as well.
  if (const std::error_code failure = file_system().close(std::exchange(file_, kNoFile))) {
    throw std::system_error(failure, "close");
  }
}

bool copy_attributes(const std::string& from, const std::string& to) {
  return std::none_of(std::begin(kAllAttributes), std::end(kAllAttributes), [&](Attributes which) {
    const std::error_code failure = uninterrupted([&] { return file_system().copy_attributes(which, from, to); });
    // Says nothing about the attributes, and what would be done without them needs memory as well.
    if (failure == std::errc::not_enough_memory) throw std::bad_alloc();
    return static_cast<bool>(failure);
  });
}

void rename_over(const std::string& from, const std::string& to) {
  require("rename", [&] { return file_system().rename(from, to); });
}

std::error_code add_name(const std::string& path, const std::string& name) noexcept {
  return uninterrupted([&] { return file_system().link(path, name); });
}

std::optional<std::string> make_unique_file(const std::string& folder, const std::string& prefix) {
  std::string path;
  if (uninterrupted([&] { return file_system().make_unique(folder, prefix, path); })) return std::nullopt;
  return path;
}

void sync_folder_of(const std::string& path) {
  if (const std::error_code failure = try_sync_folder_of(path)) throw std::system_error(failure, "sync folder");
}

std::error_code try_sync_folder_of(const std::string& path) noexcept {
  return uninterrupted([&] { return file_system().sync_folder_of(path); });
}

bool leave_note(const std::string& path, const std::string& text) noexcept {
  return !uninterrupted([&] { return file_system().leave_note(path, text); });
}

std::error_code try_remove_file(const std::string& path) noexcept {
  return uninterrupted([&] { return file_system().remove(path); });
}

bool remove_file(const std::string& path) noexcept { return !try_remove_file(path); }

}  // namespace vellobar::platform

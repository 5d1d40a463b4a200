#include "platform/file.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace vellobar::platform {

namespace {

constexpr std::size_t kOutputBuffer = 256 * 1024;
constexpr std::int64_t kCopyBlock = 256 * 1024;

}  // namespace

File::File(FileHandle handle, std::int64_t size) noexcept : handle_(std::move(handle)), size_(size) {}

std::shared_ptr<File> File::open(const std::string& path) { return of(FileHandle::open(path, Opening::read)); }

std::shared_ptr<File> File::of(FileHandle handle) {
  const std::int64_t size = handle.size();
  if (size < 0) return nullptr;
  return std::shared_ptr<File>(new File(std::move(handle), size));
}

std::size_t File::read(std::int64_t position, void* to, std::size_t count) noexcept {
  if (!handle_.valid()) return 0;
  const std::size_t got = handle_.read_at(position, to, count, failed_);
  read_up_to_ = std::max(read_up_to_, position + static_cast<std::int64_t>(got));
  return got;
}

void File::close() noexcept {
  handle_ = FileHandle();
  size_ = 0;
}

void copy_bytes(File& from, std::int64_t position, std::int64_t end, ByteSink& to) {
  std::string block(static_cast<std::size_t>(std::clamp<std::int64_t>(end - position, 0, kCopyBlock)), '\0');
  while (position < end) {
    const std::int64_t wanted = std::min(end - position, kCopyBlock);
    const std::size_t got = from.read(position, block.data(), static_cast<std::size_t>(wanted));
    if (got == 0) throw std::system_error(std::make_error_code(std::errc::io_error), "the file cannot be read whole");
    to.write(std::string_view(block).substr(0, got));
    position += static_cast<std::int64_t>(got);
  }
}

std::unique_ptr<OutputFile> OutputFile::open(const std::string& path, Opening how) {
  // Memory first: what cannot be written must be neither emptied nor made.
  auto output = std::make_unique<OutputFile>(FileHandle());
  output->buffer_.reserve(kOutputBuffer);
  output->handle_ = FileHandle::open(path, how);
  return output->handle_.valid() ? std::move(output) : nullptr;
}

OutputFile::OutputFile(FileHandle handle) : handle_(std::move(handle)) {}

void OutputFile::write(std::string_view bytes) {
  if (buffer_.size() + bytes.size() > kOutputBuffer) flush();
  if (bytes.size() >= kOutputBuffer) {
    handle_.write(bytes);
  } else {
    buffer_.append(bytes);
  }
}

void OutputFile::flush() {
  handle_.write(buffer_);
  buffer_.clear();
}

void OutputFile::sync() {
  flush();
  handle_.sync();
}

bool OutputFile::resize(std::int64_t expected, std::int64_t size) {
  flush();
  return handle_.resize(expected, size);
}

void OutputFile::close() {
  flush();
  handle_.close();
}

}  // namespace vellobar::platform

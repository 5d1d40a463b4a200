#include "tests/support/faulty_file_system.h"

namespace vellobar::tests {

using platform::OpenFile;
using platform::Opening;

namespace {

std::size_t written_of(std::size_t size, Fault fault) noexcept {
  switch (fault) {
    case Fault::writes_nothing:
      return 0;
    case Fault::writes_one_byte:
      return 1;
    case Fault::writes_half:
      return size / 2;
    case Fault::writes_all_but_one_byte:
      return size - 1;
    default:
      return size;
  }
}

}  // namespace

FaultyFileSystem::FaultyFileSystem(Fault fault, std::int64_t at, std::error_code failure)
    : fault_(fault), at_(at), failure_(failure) {}

template <typename Call>
std::error_code FaultyFileSystem::change(Call call) noexcept {
  const std::int64_t number = changes_++;
  if (before_change_) before_change_(number);
  const bool is_here = number == at_ && !is_dead_;
  if (is_here && fault_ == Fault::fails) return failure_;
  if (number >= at_ && fault_ == Fault::fails_from) return failure_;
  if (is_here && fault_ == Fault::dies_before) is_dead_ = true;
  if (is_dead_) return std::make_error_code(std::errc::io_error);
  if (is_here && fault_ == Fault::dies_after) is_dead_ = true;
  return call();
}

std::error_code FaultyFileSystem::open(const std::string& path, Opening how, OpenFile& file) noexcept {
  if (how == Opening::read || how == Opening::claim) return ForwardingFileSystem::open(path, how, file);
  return change([&] {
    const std::error_code failure = ForwardingFileSystem::open(path, how, file);
    if (!failure) written_.insert(file);
    return failure;
  });
}

std::error_code FaultyFileSystem::read(OpenFile file, std::int64_t position, void* to, std::size_t count,
                                       std::size_t& got) noexcept {
  if (position >= unreadable_from_) return std::make_error_code(std::errc::io_error);
  const std::int64_t readable = unreadable_from_ - position;
  if (static_cast<std::int64_t>(count) > readable) count = static_cast<std::size_t>(readable);
  return ForwardingFileSystem::read(file, position, to, count, got);
}

std::error_code FaultyFileSystem::write(OpenFile file, std::string_view bytes, std::size_t& put) noexcept {
  writes_.push_back(changes_);
  const std::size_t count = changes_ == at_ ? written_of(bytes.size(), fault_) : bytes.size();
  return change([&] { return ForwardingFileSystem::write(file, bytes.substr(0, count), put); });
}

std::error_code FaultyFileSystem::resize(OpenFile file, std::int64_t expected, std::int64_t size) noexcept {
  return change([&] { return ForwardingFileSystem::resize(file, expected, size); });
}

std::error_code FaultyFileSystem::sync(OpenFile) noexcept {
  return change([] { return std::error_code(); });
}

std::error_code FaultyFileSystem::close(OpenFile file) noexcept {
  // Closed it is in any case, also by the end of a process.
  const std::error_code closed = ForwardingFileSystem::close(file);
  return written_.erase(file) > 0 ? change([&] { return closed; }) : closed;
}

std::error_code FaultyFileSystem::copy_attributes(platform::Attributes which, const std::string& from,
                                                  const std::string& to) noexcept {
  return change([&] { return ForwardingFileSystem::copy_attributes(which, from, to); });
}

std::error_code FaultyFileSystem::rename(const std::string& from, const std::string& to) noexcept {
  return change([&] { return ForwardingFileSystem::rename(from, to); });
}

std::error_code FaultyFileSystem::link(const std::string& from, const std::string& to) noexcept {
  return change([&] { return ForwardingFileSystem::link(from, to); });
}

std::error_code FaultyFileSystem::make_unique(const std::string& folder, const std::string& prefix,
                                              std::string& path) noexcept {
  return change([&] { return ForwardingFileSystem::make_unique(folder, prefix, path); });
}

std::error_code FaultyFileSystem::sync_folder_of(const std::string&) noexcept {
  return change([] { return std::error_code(); });
}

std::error_code FaultyFileSystem::leave_note(const std::string& path, const std::string& text) noexcept {
  if (!keeps_notes_) return std::make_error_code(std::errc::not_supported);
  return change([&] { return ForwardingFileSystem::leave_note(path, text); });
}

std::error_code FaultyFileSystem::remove(const std::string& path) noexcept {
  return change([&] { return ForwardingFileSystem::remove(path); });
}

}  // namespace vellobar::tests

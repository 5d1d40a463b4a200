#include "mailbox/spool.h"

#include <system_error>

namespace vellobar::mailbox {

namespace {

constexpr std::size_t kMostInMemory = 1024 * 1024;

}  // namespace

void Spool::write(std::string_view bytes) {
  if (!file_ && !stays_in_memory_ && bytes_.size() + bytes.size() > kMostInMemory) open_file();
  if (file_) {
    file_->write(bytes);
  } else {
    bytes_ += bytes;
  }
}

/// Where no temporary file can be made there still is memory.
void Spool::open_file() {
  scratch_.emplace();
  file_ = platform::OutputFile::create(scratch_->path());
  stays_in_memory_ = !file_;
  if (!file_) return;
  file_->write(bytes_);
  std::string().swap(bytes_);
}

void Spool::move_to(platform::ByteSink& to) {
  if (!file_) return to.write(bytes_);
  file_->close();
  const std::shared_ptr<platform::File> file = platform::File::open(scratch_->path());
  if (!file) throw std::system_error(std::make_error_code(std::errc::io_error), "open what was put together");
  platform::copy_bytes(*file, 0, file->size(), to);
}

}  // namespace vellobar::mailbox

#include "platform/overwriting.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/lock_file.h"

namespace vellobar::platform {

namespace {

constexpr std::int64_t kBlock = 64 * 1024;

[[noreturn]] void refuse(std::errc reason, const char* doing) {
  throw std::system_error(std::make_error_code(reason), doing);
}

std::shared_ptr<File> open(const std::string& path) {
  std::shared_ptr<File> file = File::open(path);
  if (!file) refuse(std::errc::io_error, "open to copy");
  return file;
}

/// Blocks of a file from front to back, followed by zeros.
class Blocks {
 public:
  explicit Blocks(File& file) : file_(file), bytes_(kBlock, '\0') {}

  std::string_view at(std::int64_t position, std::size_t size) {
    const std::size_t got = file_.read(position, bytes_.data(), size);
    std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(got), bytes_.end(), '\0');
    return std::string_view(bytes_).substr(0, size);
  }

 private:
  File& file_;
  std::string bytes_;
};

/// True when each byte is one of the old or of the new content.
bool is_mixed(std::string_view bytes, std::string_view old, std::string_view fresh) {
  if (bytes == old || bytes == fresh) return true;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] != old[i] && bytes[i] != fresh[i]) return false;
  }
  return true;
}

/// True when the file is what overwriting the old content with the new one may leave, with or without more behind it.
bool is_half_overwritten(File& file, File& old, File& fresh) {
  const std::int64_t size = std::max(old.size(), fresh.size());
  if (file.size() < size) return false;
  Blocks blocks(file), old_blocks(old), fresh_blocks(fresh);
  for (std::int64_t at = 0; at < size; at += kBlock) {
    const std::size_t count = static_cast<std::size_t>(std::min(size - at, kBlock));
    if (!is_mixed(blocks.at(at, count), old_blocks.at(at, count), fresh_blocks.at(at, count))) return false;
  }
  return !file.failed() && !old.failed() && !fresh.failed();
}

bool starts_with(File& file, File& content) {
  Blocks blocks(file), wanted(content);
  for (std::int64_t at = 0; at < content.size(); at += kBlock) {
    const std::size_t count = static_cast<std::size_t>(std::min(content.size() - at, kBlock));
    if (blocks.at(at, count) != wanted.at(at, count)) return false;
  }
  return file.size() >= content.size();
}

void overwrite_front(const std::string& path, File& content) {
  FileHandle handle = FileHandle::open(path, Opening::overwrite);
  if (!handle.valid()) refuse(std::errc::permission_denied, "open to overwrite");
  OutputFile output(std::move(handle));
  copy_bytes(content, 0, content.size(), output);
  output.sync();
  output.close();
}

/// Completes the larger of the two contents. A file that is neither a mixture nor one of the two was changed by
/// somebody since: then the old content is kept.
void complete(const std::string& path, const StagingFiles& files, File& old, File& fresh) {
  const std::shared_ptr<File> file = File::open(path);
  if (!file) return;
  // Mail that came before the overwriting began may be the end of the old content only.
  if (old.size() >= fresh.size() && starts_with(*file, old)) return;
  if (is_half_overwritten(*file, old, fresh)) {
    overwrite_front(path, old.size() > fresh.size() ? old : fresh);
  } else if (!starts_with(*file, old) && !starts_with(*file, fresh)) {
    rename_over(files.old, unused_name(files.kept));
  }
}

/// The second name of the old file, of which nobody but the process that gave it makes use. Where open files are not
/// replaced that process holds the new one as long as it lives.
void remove_second_name(const std::string& path, const StagingFiles& files) {
  if (!FileHandle::open(files.replaced, Opening::read).valid()) return;
  if (kReplacesOpenFiles || FileHandle::open(path, Opening::overwrite).valid()) remove_file(files.replaced);
}

/// A file that nobody holds, or none; false for one that must be left alone.
bool claim(const std::string& path, std::shared_ptr<File>& file) {
  std::error_code failure;
  file = File::of(FileHandle::open(path, Opening::claim, &failure));
  return file || failure == std::errc::no_such_file_or_directory;
}

void finish_with(const std::string& path, const StagingFiles& files) {
  std::shared_ptr<File> fresh, old, copy;
  if (!claim(files.fresh, fresh) || !claim(files.old, old) || !claim(files.copy, copy)) return;
  // Without the new content nothing was overwritten.
  if (old) complete(path, files, *old, fresh ? *fresh : *old);
  remove_second_name(path, files);
  if (old && !remove_staged(files.old)) return;
  if (copy) remove_file(files.copy);
  if (fresh) remove_file(files.fresh);
}

/// Finishes what was begun when the file was opened by this path, with its links followed.
void finish(const std::string& path) {
  finish_with(path, staging_files_beside(path));
  finish_with(path, staging_files_elsewhere(path));
  LockFile::remove_left(path);
}

/// Whether the file may be half overwritten by a process that opened it by this path.
bool may_be_torn(const std::string& path) {
  return may_exist(staging_files_beside(path).old) || may_exist(staging_files_elsewhere(path).old);
}

/// Finishes what was begun when the file was opened by the path of a note.
void finish_noted(const std::string& path, const std::string& noted) {
  const bool is_path = std::filesystem::path(noted).is_absolute() && noted.find('\0') == noted.npos;
  const bool is_its_name = is_path && same_file(noted, path) && followed_path(noted) == noted;
  if (is_its_name) finish(noted);
  const bool is_torn = is_path && may_be_torn(noted);
  if (!is_torn) leave_note(path, {});
  if (is_torn && !is_its_name) refuse(std::errc::device_or_resource_busy, "find what completes the file");
}

}  // namespace

Overwriting::Overwriting(const std::string& path, const StagingFiles& files, std::int64_t end, OutputFile& old,
                         OutputFile& fresh)
    : path_(path),
      end_(end),
      old_{files.old, &old, open(files.old)->size()},
      fresh_{files.fresh, &fresh, open(files.fresh)->size()} {}

void Overwriting::put_new_content() {
  leave_note();
  write(fresh_);
  take_note_away();
}

void Overwriting::put_back_old_content() {
  if (has_begun_) write(old_);
  take_note_away();
}

void Overwriting::leave_note() {
  if (facts_of(path_).links < 2) return;
  has_note_ = platform::leave_note(path_, path_);
  if (!has_note_) return;
  FileHandle handle = FileHandle::open(path_, Opening::overwrite);
  if (!handle.valid()) refuse(std::errc::permission_denied, "open to overwrite");
  handle.sync();
}

void Overwriting::take_note_away() noexcept {
  // One that stays leads to nothing.
  if (has_note_) platform::leave_note(path_, {});
}

void Overwriting::write(const Content& content) {
  FileHandle handle = FileHandle::open(path_, Opening::overwrite);
  if (!handle.valid()) refuse(std::errc::permission_denied, "open to overwrite");
  extend(handle, content);
  has_begun_ = true;
  OutputFile output(std::move(handle));
  copy_bytes(*open(content.path), 0, content.size, output);
  output.sync();
  cut(output, content);
  output.close();
}

void Overwriting::extend(FileHandle& handle, const Content& content) {
  if (content.size <= end_) return;
  while (!handle.resize(end_, content.size)) keep_late_mail();
  has_begun_ = true;
  end_ = content.size;
  handle.sync();
}

void Overwriting::cut(OutputFile& output, const Content& content) {
  if (content.size >= end_) return;
  std::int64_t written = content.size;
  while (!output.resize(end_, written)) {
    keep_late_mail();
    copy_bytes(*open(path_), end_ - (content.size - written), end_, output);
    written = content.size;
    output.sync();
  }
  end_ = written;
  output.sync();
}

/// What was appended to the file is the end of both contents from now on.
void Overwriting::keep_late_mail() {
  const std::shared_ptr<File> file = open(path_);
  const std::int64_t count = file->size() - end_;
  if (count < 0) refuse(std::errc::io_error, "the file was cut while it was being overwritten");
  for (const Content* content : {&old_, &fresh_}) {
    copy_bytes(*file, end_, file->size(), *content->output);
    content->output->sync();
  }
  end_ += count;
  old_.size += count;
  fresh_.size += count;
}

bool remove_staged(const std::string& path) noexcept {
  const std::error_code failure = try_remove_file(path);
  const bool is_gone = !failure || failure == std::errc::no_such_file_or_directory;
  return is_gone && !try_sync_folder_of(path);
}

void finish_interrupted_replacement(const std::string& path) {
  const std::string followed = followed_path(path);
  finish(followed);
  const std::string noted = note_on(followed);
  if (!noted.empty()) finish_noted(followed, noted);
  if (facts_of(followed).links < 2) return;
  for (const std::string& name : names_beside(followed)) {
    if (may_be_torn(name)) finish(name);
  }
}

}  // namespace vellobar::platform

#include "platform/file_replacement.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/overwriting.h"

namespace vellobar::platform {

namespace {

constexpr std::chrono::milliseconds kPatience{1000};
constexpr std::chrono::milliseconds kFirstPause{1};
constexpr std::chrono::milliseconds kLongestPause{20};

[[noreturn]] void refuse(std::errc reason, const char* doing) {
  throw std::system_error(std::make_error_code(reason), doing);
}

/// Tries until it succeeds or too much time has passed.
template <typename Try>
bool succeeds_in_time(Try attempt) {
  std::chrono::milliseconds waited{0};
  for (auto pause = kFirstPause; !attempt(); pause = std::min(2 * pause, kLongestPause)) {
    if (waited >= kPatience) return false;
    std::this_thread::sleep_for(pause);
    waited += pause;
  }
  return true;
}

bool is_held(const std::string& path) noexcept {
  std::error_code failure;
  FileHandle::open(path, Opening::claim, &failure);
  return failure == std::errc::resource_unavailable_try_again;
}

}  // namespace

FileReplacement::FileReplacement(const std::string& path, Staging where)
    : path_(followed_path(path)), lock_file_(path_) {
  const FileFacts facts = facts_of(path_);
  if (!facts.is_regular) refuse(std::errc::no_such_file_or_directory, "replace");
  if (!FileHandle::open(path_, Opening::overwrite).valid()) refuse(std::errc::permission_denied, "open for writing");
  const StagingFiles beside = staging_files_beside(path_);
  const bool is_beside = where == Staging::beside && stage(beside);
  if (!is_beside && is_held(beside.fresh)) refuse(std::errc::device_or_resource_busy, "replace");
  if (!is_beside && !stage(staging_files_elsewhere(path_))) refuse(std::errc::permission_denied, "stage");
  can_rename_ = is_beside && facts.links == 1;
}

FileReplacement::~FileReplacement() {
  if (second_name_is_spare_) remove_file(files_.replaced);
  if (!leaves_files_) remove_file(files_.fresh);
}

bool FileReplacement::stage(StagingFiles files) {
  staged_ = OutputFile::open(files.fresh, Opening::create_new);
  if (!staged_) return false;
  files_ = std::move(files);
  return true;
}

void FileReplacement::write(std::string_view bytes) { staged_->write(bytes); }

void FileReplacement::sync() { staged_->sync(); }

void FileReplacement::lock() {
  locked_ = FileHandle::open(path_, Opening::overwrite);
  if (!locked_.valid()) refuse(std::errc::permission_denied, "open to lock");
  if (!succeeds_in_time([&] { return try_lock(); })) refuse(std::errc::timed_out, "lock");
}

bool FileReplacement::try_lock() {
  if (!lock_file_.try_make()) return false;
  if (locked_.try_lock()) return true;
  // Whoever has locked the file may be waiting for the lock file.
  lock_file_.remove();
  return false;
}

void FileReplacement::commit(File& old_file, std::int64_t copied) {
  const bool is_in_place = can_rename_ && put_in_place_by_renaming(old_file, copied);
  if (!is_in_place) rewrite_in_place(copied);
}

bool FileReplacement::put_in_place_by_renaming(File& old_file, std::int64_t copied) {
  if (!copy_attributes(path_, files_.fresh)) return false;
  staged_->sync();
  // Where the old file must be closed, what comes to it at the last moment is found by its second name only.
  has_second_name_ = !add_name(path_, files_.replaced);
  if (!has_second_name_ && !kReplacesOpenFiles) return false;
  let_go(old_file);
  try {
    rename_over(files_.fresh, path_);
  } catch (const std::system_error&) {
    // Who kept the file from being replaced may keep this name as well, for a moment.
    second_name_is_spare_ = has_second_name_ && !remove_file(files_.replaced);
    take_back(old_file);
    return false;
  }
  leaves_files_ = true;
  // What is in place stays in place whatever this says; it only shortens the time in which a power loss could undo it.
  static_cast<void>(try_sync_folder_of(path_));
  carry_over_or_undo(old_file, copied);
  return true;
}

void FileReplacement::let_go(File& old_file) {
  if (kReplacesOpenFiles) return;
  old_file.suspend();
  locked_ = FileHandle();
}

void FileReplacement::take_back(File& old_file) {
  if (kReplacesOpenFiles) return;
  old_file.resume(path_);
  lock();
}

void FileReplacement::carry_over_or_undo(File& old_file, std::int64_t copied) {
  std::shared_ptr<File> replaced;
  staged_.reset();
  try {
    if (!kReplacesOpenFiles) replaced = File::open(files_.replaced);
    if (!kReplacesOpenFiles && !replaced) refuse(std::errc::io_error, "open the old file");
    carry_over(replaced ? *replaced : old_file, copied);
  } catch (...) {
    replaced.reset();
    undo(old_file);
    throw;
  }
  replaced.reset();
  remove_other_names();
}

void FileReplacement::undo(File& old_file) {
  if (!has_second_name_) return;
  rename_over(files_.replaced, path_);
  remove_other_names();
  if (!kReplacesOpenFiles) old_file.resume(path_);
}

void FileReplacement::remove_other_names() noexcept {
  if (!kept_.empty()) remove_file(kept_);
  if (has_second_name_) remove_file(files_.replaced);
}

void FileReplacement::carry_over(File& from, std::int64_t copied) {
  if (from.current_size() <= copied) return;
  // A death in here leaves the old file under a name that nobody removes.
  const std::string kept = unused_name(files_.kept);
  if (has_second_name_ && !add_name(files_.replaced, kept)) kept_ = kept;
  FileHandle handle = FileHandle::open(path_, Opening::append);
  if (!handle.valid()) refuse(std::errc::io_error, "open to append");
  // In between the new file may have been locked by others, who append whole messages.
  static_cast<void>(succeeds_in_time([&] { return handle.try_lock(); }));
  OutputFile output(std::move(handle));
  for (std::int64_t end = from.current_size(); copied < end; end = from.current_size()) {
    copy_bytes(from, copied, end, output);
    copied = end;
  }
  output.sync();
  output.close();
}

std::unique_ptr<OutputFile> FileReplacement::keep_old_content(std::int64_t copied) {
  remove_file(files_.copy);
  FileHandle handle = FileHandle::open(files_.copy, Opening::create_new);
  if (!handle.valid()) refuse(std::errc::permission_denied, "keep the old content");
  auto copy = std::make_unique<OutputFile>(std::move(handle));
  try {
    const std::shared_ptr<File> old_file = File::open(path_);
    if (!old_file) refuse(std::errc::io_error, "open to copy");
    copy_bytes(*old_file, 0, copied, *copy);
    copy->sync();
    rename_over(files_.copy, files_.old);
    sync_folder_of(files_.old);
  } catch (...) {
    copy.reset();
    remove_file(files_.copy);
    remove_file(files_.old);
    throw;
  }
  return copy;
}

void FileReplacement::rewrite_in_place(std::int64_t copied) {
  std::unique_ptr<OutputFile> old = keep_old_content(copied);
  std::optional<Overwriting> overwriting;
  try {
    overwriting.emplace(path_, files_, copied, *old, *staged_);
  } catch (...) {
    old.reset();
    remove_file(files_.old);
    throw;
  }
  leaves_files_ = true;
  try {
    overwriting->put_new_content();
  } catch (...) {
    // Should putting back fail as well, its exception leaves both files to recover from.
    overwriting->put_back_old_content();
    old.reset();
    leaves_files_ = !remove_staged(files_.old);
    throw;
  }
  old.reset();
  leaves_files_ = !remove_staged(files_.old);
}

}  // namespace vellobar::platform

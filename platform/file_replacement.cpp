#include "platform/file_replacement.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/overwriting.h"

namespace vellobar::platform {

namespace {

constexpr std::chrono::milliseconds kPatience{1000};
constexpr std::chrono::milliseconds kPause{20};

[[noreturn]] void refuse(std::errc reason, const char* doing) {
  throw std::system_error(std::make_error_code(reason), doing);
}

}  // namespace

FileReplacement::FileReplacement(const std::string& path, Staging where) : path_(followed_path(path)) {
  const FileFacts facts = facts_of(path_);
  if (!facts.is_regular) refuse(std::errc::no_such_file_or_directory, "replace");
  if (!FileHandle::open(path_, Opening::overwrite).valid()) refuse(std::errc::permission_denied, "open for writing");
  const bool is_beside = where == Staging::beside && stage(staging_files_beside(path_));
  if (!is_beside && !stage(staging_files_elsewhere(path_))) refuse(std::errc::permission_denied, "stage");
  can_rename_ = is_beside && facts.links == 1;
}

FileReplacement::~FileReplacement() {
  if (!leaves_files_) remove_file(files_.fresh);
}

bool FileReplacement::stage(StagingFiles files) {
  FileHandle handle = FileHandle::open(files.fresh, Opening::create_new);
  if (!handle.valid()) return false;
  staged_ = std::make_unique<OutputFile>(std::move(handle));
  files_ = std::move(files);
  return true;
}

void FileReplacement::write(std::string_view bytes) { staged_->write(bytes); }

void FileReplacement::sync() { staged_->sync(); }

void FileReplacement::lock() {
  locked_ = FileHandle::open(path_, Opening::overwrite);
  if (!locked_.valid()) refuse(std::errc::permission_denied, "open to lock");
  for (auto waited = kPause; !locked_.try_lock(); waited += kPause) {
    if (waited > kPatience) refuse(std::errc::timed_out, "lock");
    std::this_thread::sleep_for(kPause);
  }
}

void FileReplacement::commit(File& old_file, std::int64_t copied) {
  if (can_rename_ && put_in_place_by_renaming(old_file)) {
    carry_over(old_file, copied);
  } else {
    rewrite_in_place();
  }
}

bool FileReplacement::put_in_place_by_renaming(File& old_file) {
  if (!copy_attributes(path_, files_.fresh)) return false;
  staged_->sync();
  if (!kReplacesOpenFiles) {
    old_file.suspend();
    locked_ = FileHandle();
  }
  try {
    rename_over(files_.fresh, path_);
  } catch (const std::system_error&) {
    if (kReplacesOpenFiles) return false;
    old_file.resume(path_);
    lock();
    return false;
  }
  leaves_files_ = true;
  // What is in place stays in place whatever this says; it only shortens the time in which a power loss could undo it.
  static_cast<void>(file_system().sync_folder_of(path_));
  return true;
}

void FileReplacement::carry_over(File& old_file, std::int64_t copied) {
  const std::int64_t end = old_file.current_size();
  if (end <= copied) return;
  FileHandle handle = FileHandle::open(path_, Opening::append);
  if (!handle.valid()) refuse(std::errc::io_error, "open to append");
  OutputFile output(std::move(handle));
  copy_bytes(old_file, copied, end, output);
  output.sync();
  output.close();
}

void FileReplacement::keep_old_content() {
  remove_file(files_.copy);
  FileHandle handle = FileHandle::open(files_.copy, Opening::create_new);
  if (!handle.valid()) refuse(std::errc::permission_denied, "keep the old content");
  try {
    OutputFile copy(std::move(handle));
    copy_file(path_, copy);
    copy.sync();
    copy.close();
    rename_over(files_.copy, files_.old);
    sync_folder_of(files_.old);
  } catch (...) {
    remove_file(files_.copy);
    remove_file(files_.old);
    throw;
  }
}

void FileReplacement::rewrite_in_place() {
  keep_old_content();
  leaves_files_ = true;
  try {
    overwrite(path_, files_.fresh);
  } catch (...) {
    // Should putting back fail as well, its exception leaves both files to recover from.
    overwrite(path_, files_.old);
    leaves_files_ = !remove_staged(files_.old);
    throw;
  }
  leaves_files_ = !remove_staged(files_.old);
}

}  // namespace vellobar::platform

#include "platform/file_replacement.h"

#include <system_error>
#include <utility>

#include "platform/clock.h"
#include "platform/temporary_file.h"

namespace vellobar::platform {

namespace {

constexpr std::size_t kCopyBlock = 256 * 1024;
constexpr int kNameTries = 100;
#ifdef _WIN32
constexpr char kSeparators[] = "\\/";
#else
constexpr char kSeparators[] = "/";
#endif

[[noreturn]] void refuse(std::errc reason, const char* doing) {
  throw std::system_error(std::make_error_code(reason), doing);
}

/// A new file in the folder of `path`, hidden behind a leading dot; its name goes to `name`. Invalid when none can be
/// made.
FileHandle create_beside(const std::string& path, const char* role, std::string& name) {
  const std::size_t slash = path.find_last_of(kSeparators);
  const std::size_t base = slash == std::string::npos ? 0 : slash + 1;
  const std::string stem = path.substr(0, base) + "." + path.substr(base) + ".vellobar-" + role + "-" +
                           std::to_string(process_identifier()) + "-";
  const std::uint32_t seed = tick_count();
  for (std::uint32_t attempt = 0; attempt < kNameTries; ++attempt) {
    name = stem + std::to_string(seed + attempt);
    FileHandle handle = FileHandle::create_new(name);
    if (handle.valid()) return handle;
  }
  name.clear();
  return {};
}

FileHandle create_in_temporary_folder(std::string& name) {
  name = temporary_file_name();
  return FileHandle::create(name);
}

void copy_content(const std::string& from, OutputFile& to) {
  const FileHandle source = FileHandle::open_to_read(from);
  const std::int64_t size = source.size();
  if (size < 0) refuse(std::errc::io_error, "open to copy");
  std::string block(kCopyBlock, '\0');
  std::int64_t position = 0;
  bool failed = false;
  while (position < size) {
    const std::size_t got = source.read_at(position, block.data(), block.size(), failed);
    if (failed || got == 0) refuse(std::errc::io_error, "read to copy");
    to.write(std::string_view(block).substr(0, got));
    position += static_cast<std::int64_t>(got);
  }
}

/// Gives an existing file the content of another one, and waits until it is on the disk.
void overwrite(const std::string& path, const std::string& content_path) {
  const std::int64_t size = FileHandle::open_to_read(content_path).size();
  FileHandle handle = FileHandle::open_to_overwrite(path);
  if (!handle.valid() || size < 0) refuse(std::errc::permission_denied, "open to overwrite");
  OutputFile output(std::move(handle));
  copy_content(content_path, output);
  output.truncate_and_sync(size);
  output.close();
}

}  // namespace

FileReplacement::FileReplacement(const std::string& path) : path_(followed_path(path)) {
  const FileFacts facts = facts_of(path_);
  if (!facts.is_regular) refuse(std::errc::no_such_file_or_directory, "replace");
  if (!FileHandle::open_to_overwrite(path_).valid()) refuse(std::errc::permission_denied, "open for writing");
  rename_ = facts.links == 1 && stage_beside();
  if (!rename_) stage_elsewhere();
}

FileReplacement::~FileReplacement() {
  staged_.reset();
  if (!staged_path_.empty()) remove_file(staged_path_);
}

bool FileReplacement::stage_beside() {
  FileHandle handle = create_beside(path_, "new", staged_path_);
  if (!handle.valid()) return false;
  if (!copy_attributes(path_, staged_path_)) {
    handle = FileHandle();
    remove_file(staged_path_);
    return false;
  }
  staged_ = std::make_unique<OutputFile>(std::move(handle));
  return true;
}

void FileReplacement::stage_elsewhere() {
  FileHandle handle = create_beside(path_, "new", staged_path_);
  if (!handle.valid()) handle = create_in_temporary_folder(staged_path_);
  if (!handle.valid()) refuse(std::errc::permission_denied, "stage");
  staged_ = std::make_unique<OutputFile>(std::move(handle));
}

void FileReplacement::write(std::string_view bytes) { staged_->write(bytes); }

void FileReplacement::sync() { staged_->sync(); }

void FileReplacement::commit(File& old_file) {
  staged_->close();
  if (!rename_ || !put_in_place_by_renaming(old_file)) rewrite_in_place();
}

bool FileReplacement::put_in_place_by_renaming(File& old_file) {
  // Windows does not replace a file that somebody holds open.
  old_file.suspend();
  try {
    rename_over(staged_path_, path_);
  } catch (const std::system_error&) {
    old_file.resume(path_);
    return false;
  }
  staged_path_.clear();
  sync_folder_of(path_);
  return true;
}

void FileReplacement::rewrite_in_place() {
  std::string backup_path;
  FileHandle handle = create_beside(path_, "old", backup_path);
  if (!handle.valid()) handle = create_in_temporary_folder(backup_path);
  if (!handle.valid()) refuse(std::errc::permission_denied, "keep the old content");
  try {
    OutputFile backup(std::move(handle));
    copy_content(path_, backup);
    backup.sync();
    backup.close();
  } catch (...) {
    remove_file(backup_path);
    throw;
  }
  sync_folder_of(backup_path);
  try {
    overwrite(path_, staged_path_);
  } catch (...) {
    // Should putting back fail as well, its exception leaves the copy where it is.
    overwrite(path_, backup_path);
    remove_file(backup_path);
    throw;
  }
  remove_file(backup_path);
}

}  // namespace vellobar::platform

#include "command/output/output.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <filesystem>
#include <system_error>
#include <utility>

#include "command/output/failure.h"
#include "command/output/path.h"
#include "command/output/standard_streams.h"
#include "platform/overwriting.h"

namespace vellobar::command {

namespace fs = std::filesystem;

namespace {

/// A staged file is its owner's alone; in its place it is what any new file is.
void open_to_others(const std::string& path) {
#ifdef _WIN32
  static_cast<void>(path);
#else
  const mode_t masked = ::umask(0);
  ::umask(masked);
  ::chmod(path.c_str(), 0666 & ~masked);
#endif
}

}  // namespace

std::string why_unwritable(const std::string& path) {
  std::error_code ignored;
  const fs::path wanted = library_path(path);
  const fs::path folder = wanted.has_parent_path() ? wanted.parent_path() : fs::path(".");
  if (fs::is_directory(wanted, ignored)) return ": it is a folder";
  if (!fs::exists(folder, ignored)) return ": there is no such folder";
  if (!fs::is_directory(folder, ignored)) return ": " + from_library_path(folder) + " is no folder";
  return {};
}

Output::Output(const std::string& path, Existing existing) : path_(path) {
  if (is_standard_stream(path)) {
    make_standard_output_binary();
    return;
  }
  std::error_code ignored;
  const fs::file_status status = fs::status(library_path(path), ignored);
  if (fs::is_directory(status)) fail();
  if (fs::exists(status) && existing == Existing::is_refused) {
    throw Failure("cannot write " + path + ": it is there already (--replace replaces it)");
  }
  do_or_fail([&] {
    if (fs::exists(status) && !fs::is_regular_file(status)) {
      file_ = platform::OutputFile::create(system_path(path));
      if (!file_) fail();
      return;
    }
    unfinished_.emplace();
    platform::finish_interrupted_replacement(system_path(path));
    if (fs::exists(status)) {
      replacement_ = std::make_unique<platform::FileReplacement>(system_path(path));
    } else {
      open_new();
    }
  });
}

Output::~Output() {
  file_.reset();
  replacement_.reset();
  if (!staged_path_.empty()) platform::remove_file(staged_path_);
}

void Output::open_new() {
  std::string staged = platform::staging_files_beside(system_path(path_)).fresh;
  platform::FileHandle handle = platform::FileHandle::open(staged, platform::Opening::create_new);
  if (!handle.valid()) fail();
  staged_path_ = std::move(staged);
  file_ = std::make_unique<platform::OutputFile>(std::move(handle));
}

void Output::write(std::string_view bytes) {
  if (!file_ && !replacement_) return write_standard_output(bytes);
  do_or_fail([&] {
    if (replacement_) {
      replacement_->write(bytes);
    } else {
      file_->write(bytes);
    }
  });
}

void Output::finish() {
  if (!file_ && !replacement_) return flush_standard_output();
  do_or_fail([&] {
    if (replacement_) {
      const std::shared_ptr<platform::File> old_file = platform::File::open(system_path(path_));
      if (!old_file) fail();
      replacement_->sync();
      const CompletingWork from_here;
      replacement_->commit(*old_file, old_file->size());
      replacement_.reset();
    } else {
      put_new_in_place();
    }
    unfinished_.reset();
  });
}

void Output::put_new_in_place() {
  if (staged_path_.empty()) {
    file_->close();
    file_.reset();
    return;
  }
  file_->sync();
  open_to_others(staged_path_);
  file_->close();
  file_.reset();
  platform::rename_over(staged_path_, system_path(path_));
  staged_path_.clear();
}

template <typename Work>
void Output::do_or_fail(Work work) const {
  try {
    work();
  } catch (const std::system_error& error) {
    stop_if_interrupted();
    if (platform::is_out_of_room(error.code())) throw Failure("cannot write " + path_ + ": the disk is full");
    fail();
  }
}

void Output::fail() const { throw Failure("cannot write " + path_ + why_unwritable(path_)); }

}  // namespace vellobar::command

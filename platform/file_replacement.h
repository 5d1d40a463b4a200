// Replacing the content of a file so that a crash, a full disk or a refusal at any moment leaves either the old content
// or the new one, never a mixture and never less.
//
// The new content is written whole to a staging file beside the old one, which gets the old file's owner, mode, access
// lists and extended attributes; it is synced, and then takes the old file's place in one step. Symbolic links are
// followed, so the link stays a link.
//
// Where that cannot be done without loss (the file has several hard links, its attributes cannot be given to another
// file, no file can be made beside it, or the system does not let it be replaced because somebody holds it open) the
// file is rewritten in place instead: the new content is staged and synced, then the old content is copied to a second
// file and synced, and only then is the file overwritten. When the overwriting fails, the old content is put back from
// its copy.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/file.h"

namespace vellobar::platform {

class FileReplacement : public ByteSink {
 public:
  /// Prepares to replace an existing regular file. Throws std::system_error, with nothing touched, when the path is
  /// none, when it cannot be opened for writing, or when there is nowhere to stage the new content.
  explicit FileReplacement(const std::string& path);
  /// Without a commit, removes what was staged; the old file is as it was.
  ~FileReplacement() override;
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  /// Appends to the new content.
  void write(std::string_view bytes) override;

  /// Waits until what was written so far is on the disk. More may be written afterwards.
  void sync();

  /// Puts the new content in place, which must be synced. `old_file` is the caller's open view of the old one: it is
  /// let go for the moment of replacing and, when that fails, opened again. Throws std::system_error when the old
  /// content is still (or again) in force.
  void commit(File& old_file);

 private:
  bool stage_beside();
  void stage_elsewhere();
  bool put_in_place_by_renaming(File& old_file);
  void rewrite_in_place();

  std::string path_;
  std::string staged_path_;
  std::unique_ptr<OutputFile> staged_;
  bool rename_ = false;
};

}  // namespace vellobar::platform

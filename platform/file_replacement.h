// Replacing the content of a file so that a crash, a full disk or a refusal at any moment leaves either the old content
// or the new one, never a mixture and never less.
//
// The new content is written whole to a file beside the old one and synced. That file gets the old one's owner, mode,
// access lists and extended attributes, and then takes its place in one step. Symbolic links are followed, so the link
// stays a link. On Windows it gets owner and group where the user may give them, the access list, the attribute bits
// and the time of creation.
//
// Where that cannot be done without loss, the file is overwritten in place: it has several hard links, its attributes
// cannot be given to another file (on Windows: it has named streams, is compressed or encrypted), no file can be made
// beside it, or the system does not let it be replaced because somebody holds it open. Before that the old content is
// copied to a second file, which is synced and only then gets the name that says so. From there to the end of the
// overwriting both contents are on the disk: when a call fails the old one is put back, and when the process or the
// system dies `finish_interrupted_replacement` completes one or the other.
//
// For the moment of putting the new content in place the file is locked against programs that deliver mail: with a lock
// file, which some of them look at, and a lock on the file itself, which others do. On Windows, where no file is
// replaced while it is open, that lock is given up right before the renaming. What anybody appends to the old file
// until then, with or without a lock, is carried over to the new one: the old file has a second name until that is
// done, by which it also comes back when it cannot be done.
//
// The files go by fixed names (see staging_files.h) and are held while they are used: of two processes that replace one
// file at the same time the second one is refused.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "platform/lock_file.h"
#include "platform/staging_files.h"

namespace vellobar::platform {

class FileReplacement : public ByteSink {
 public:
  /// Where the new content is staged: in the file's own folder as long as a file can be made there, or in the folder
  /// for temporary files.
  enum class Staging { beside, elsewhere };

  /// Prepares to replace an existing regular file. Throws std::system_error, with nothing touched, when the path is
  /// none, when it cannot be opened for writing, when somebody else is replacing it, or when there is nowhere to stage
  /// the new content.
  explicit FileReplacement(const std::string& path, Staging where = Staging::beside);
  /// Without a commit, removes what was staged; the old file is as it was.
  ~FileReplacement() override;
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  /// Appends to the new content.
  void write(std::string_view bytes) override;

  /// Waits until what was written so far is on the disk. More may be written afterwards.
  void sync();

  /// Locks the file against everybody else who locks it to write to it, until the end. Waits a second for whoever has
  /// it locked, and then throws std::system_error.
  void lock();

  /// Puts the new content in place, which must be synced and stand for the first `copied` bytes of the old file.
  /// `old_file` is the caller's open view of that: where the system needs it, it is let go for the moment of replacing
  /// and, when that fails, opened again. What somebody wrote to the old file behind `copied` meanwhile is carried over.
  /// Throws std::system_error when the old content is still, or again, in force.
  void commit(File& old_file, std::int64_t copied);

 private:
  bool stage(StagingFiles files);
  bool try_lock();
  bool put_in_place_by_renaming(File& old_file, std::int64_t copied);
  void let_go(File& old_file);
  void take_back(File& old_file);
  void carry_over_or_undo(File& old_file, std::int64_t copied);
  void undo(File& old_file);
  void remove_other_names() noexcept;
  void carry_over(File& from, std::int64_t copied);
  std::unique_ptr<OutputFile> keep_old_content(std::int64_t copied);
  void rewrite_in_place(std::int64_t copied);

  std::string path_;
  StagingFiles files_;
  std::unique_ptr<OutputFile> staged_;
  LockFile lock_file_;
  FileHandle locked_;
  bool can_rename_ = false;
  std::string kept_;                   ///< a name of the old file that outlives a death while mail is carried over
  bool has_second_name_ = false;       ///< the old file, by files_.replaced
  bool second_name_is_spare_ = false;  ///< it could not be removed, and is not needed
  bool leaves_files_ = false;          ///< the staged file has another name now, or is needed to recover
};

}  // namespace vellobar::platform

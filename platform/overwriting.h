// Overwriting a file in place while its old and its new content lie complete in two other files, and finishing that
// when it was interrupted.
//
// A file that grows is extended first, and one that shrinks is cut last, each synced apart from the writing. So an
// interrupted file is either as long as the larger content, and then each of its bytes is that of the old content, that
// of the new one or, where it was extended, zero; or it is whole. What is appended to it after the interruption stands
// behind the larger content, and so stays when that one is written over the front again.
//
// A file with several names may be opened next by another one than this time. So that the two other files are found
// then, the name of this time is left as a note with the file while it is overwritten. Where the file system keeps no
// notes, its other names in the same folder are tried. A note may come from anybody who may write to the file: it leads
// to files beside a path that names this very file, and to no others. When the path no longer does, since the file was
// moved, the file is refused as long as those that are needed to complete it stand beside that path.
//
// What somebody who looks at no lock appends meanwhile belongs to both contents: it stays behind the one that is
// written in the end, and is never cut away.
#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "platform/staging_files.h"

namespace vellobar::platform {

class Overwriting {
 public:
  /// The file holds the old content up to `end`, and behind it what came meanwhile. Both contents are complete and
  /// synced in their staging files, and are given more through these outputs.
  Overwriting(const std::string& path, const StagingFiles& files, std::int64_t end, OutputFile& old, OutputFile& fresh);

  /// Gives the file the new content and waits until it is on the disk. Throws std::system_error.
  void put_new_content();
  /// Gives it the old one, when that failed. Throws std::system_error.
  void put_back_old_content();

 private:
  struct Content {
    std::string path;
    OutputFile* output;
    std::int64_t size;
  };

  void write(const Content& content);
  void extend(FileHandle& handle, const Content& content);
  void cut(OutputFile& output, const Content& content);
  void keep_late_mail();
  void leave_note();
  void take_note_away() noexcept;

  std::string path_;
  std::int64_t end_;  ///< in the file, of the contents; what is behind it was appended
  Content old_, fresh_;
  bool has_begun_ = false;
  bool has_note_ = false;
};

/// Removes the copy of the old content. False when it may still stand there, also after a power loss: the new content
/// must then stay as well.
bool remove_staged(const std::string& path) noexcept;

/// To be called before a file is opened, whether it exists or not: completes what a process that died left of a
/// replacement of this file, or removes it, by whichever of its names that process had opened it. What a living process
/// holds, or another user made, is left alone. Throws std::system_error when the file holds a mixture of contents that
/// cannot be completed, or may hold one.
void finish_interrupted_replacement(const std::string& path);

}  // namespace vellobar::platform

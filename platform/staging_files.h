// The files that stand beside a file while it is replaced: their names follow from its own, so that whoever opens it
// next finds what a died process left. None of them looks like mail to anybody who lists a folder: a leading dot hides
// them, and a mailbox is opened by its name alone.
#pragma once

#include <string>

namespace vellobar::platform {

struct StagingFiles {
  /// The new content. Made before the others and removed behind them; whoever holds it owns all three names.
  std::string fresh;
  /// The old content while it is being copied.
  std::string copy;
  /// The old content, complete and on the disk: from now on the file itself is being overwritten.
  std::string old;
  /// A second name of the old file, for the moment in which the new one takes its place.
  std::string replaced;
  /// Mail that was saved when nothing else could be done; nobody but the user removes it.
  std::string kept;
  /// The lock file until it is written.
  std::string lock;
};

/// For a path with its links followed: in its own folder, and in the folder for temporary files.
StagingFiles staging_files_beside(const std::string& path);
StagingFiles staging_files_elsewhere(const std::string& path);

/// The path, or with a number behind it when that is taken.
std::string unused_name(const std::string& path);

}  // namespace vellobar::platform

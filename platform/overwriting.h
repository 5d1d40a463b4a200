// Overwriting a file in place while its old and its new content lie complete in two other files, and finishing that
// when it was interrupted.
//
// A file that grows is extended first, and one that shrinks is cut last, each synced apart from the writing. So an
// interrupted file is either as long as the larger content, and then each of its bytes is that of the old content, that
// of the new one or, where it was extended, zero; or it is whole. What is appended to it after the interruption stands
// behind the larger content, and so stays when that one is written over the front again.
#pragma once

#include <string>

#include "platform/file.h"

namespace vellobar::platform {

/// Writes all of a file to a sink. Throws std::system_error.
void copy_file(const std::string& from, ByteSink& to);

/// Gives an existing file the content of another one and waits until it is on the disk. Throws std::system_error.
void overwrite(const std::string& path, const std::string& content_path);

/// Removes the copy of the old content. False when it may still stand there, also after a power loss: the new content
/// must then stay as well.
bool remove_staged(const std::string& path) noexcept;

/// To be called before a file is opened, whether it exists or not: completes what a process that died left of a
/// replacement of this file, or removes it. What a living process holds, or another user made, is left alone. Throws
/// std::system_error when the file holds a mixture of contents that cannot be completed.
void finish_interrupted_replacement(const std::string& path);

}  // namespace vellobar::platform

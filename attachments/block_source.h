// The temporary file that a UU block found in text is decoded from. It belongs to its attachment, which closes it and
// never deletes it. A few are kept open as long as they live; a text can hold thousands of blocks, and the others are
// opened when somebody decodes them, so that mail cannot use up the files that a process may have open.
#pragma once

#include <functional>
#include <string_view>

#include "attachments/attachment.h"

namespace vellobar::attachments {

/// How many of these files the process keeps open.
inline constexpr int kBlockFilesKeptOpen = 64;

/// Writes the block's lines to a file of their own, opens it for reading and gives it away: open, or by its path. When
/// `take` throws the file goes. False when it cannot be written; error 30012, reported by the control, when it cannot
/// be read again.
bool make_block_source(std::string_view lines, const std::function<void(const CodedRange&)>& take);

}  // namespace vellobar::attachments

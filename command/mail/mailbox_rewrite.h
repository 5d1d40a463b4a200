// Writing a mailbox anew, in one step: until the new content is whole and on the disk the old one stays, and mail that
// arrives meanwhile is carried over behind it.
#pragma once

#include <functional>
#include <string>

#include "platform/file.h"

namespace vellobar::command {

class MailboxFile;

/// Throws WrongUse for standard input, which has no place to write to.
void check_editable(const std::string& path);

/// Replaces a mailbox by what `write_content` writes. On a full disk it is called once more, to write elsewhere. Throws
/// Failure, with the mailbox as it was, when it cannot be written, is standard input, or was changed by somebody else.
void rewrite_mailbox(const MailboxFile& mailbox, const std::function<void(platform::ByteSink&)>& write_content);

}  // namespace vellobar::command

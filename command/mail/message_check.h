// What is doubtful or damaged in one message of a mailbox, found in one pass over its lines.
#pragma once

#include <cstdint>

#include "command/mail/findings.h"

namespace vellobar::command {

class MailboxFile;

/// Tells what is found, in no particular order.
void check_message(const MailboxFile& mailbox, std::int64_t index, const FindingSink& tell);

}  // namespace vellobar::command

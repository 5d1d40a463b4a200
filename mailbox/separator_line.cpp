#include "mailbox/separator_line.h"

#include "platform/code_page.h"

namespace vellobar::mailbox {

bool can_write_separator_lines() { return platform::process_bytes(kWideSeparator) == kSeparator; }

}  // namespace vellobar::mailbox

#include "mailbox/separator_line.h"

#include "platform/code_page.h"

namespace vellobar::mailbox {

bool can_write_separator_lines() { return platform::narrow(platform::process_code_page(), u"From ") == "From "; }

}  // namespace vellobar::mailbox

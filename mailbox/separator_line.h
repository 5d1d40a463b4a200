// The line that introduces each message of a mailbox.
#pragma once

namespace vellobar::mailbox {

/// False when the process code page turns "From " into other bytes, or into none: what is written with it would be no
/// mailbox.
bool can_write_separator_lines();

}  // namespace vellobar::mailbox

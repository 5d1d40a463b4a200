// Paths as the command line was given them.
#pragma once

#include <string>

namespace vellobar {
class CVellobar;
}

namespace vellobar::command {

/// A path as the core takes it. Any bytes come through unchanged, since the default code page keeps all 256 of them.
std::u16string core_path(const std::string& path);

/// Locks the mailbox at a path, or throws a Failure that says why it cannot be read.
void lock_mailbox(CVellobar& control, const std::string& path);

}  // namespace vellobar::command

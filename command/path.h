// Paths as the command line was given them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace vellobar {
class CMessage;
class CVellobar;
}  // namespace vellobar

namespace vellobar::command {

/// A path as the core takes it. Any bytes come through unchanged, since the default code page keeps all 256 of them.
std::u16string core_path(const std::string& path);

/// Locks the mailbox at a path, or throws a Failure that says why it cannot be read.
void lock_mailbox(CVellobar& control, const std::string& path);

/// The message at a position of a locked mailbox, or throws a Failure that says how many there are.
std::shared_ptr<CMessage> message_at(CVellobar& control, std::int64_t index, const std::string& path);

}  // namespace vellobar::command

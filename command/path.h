// Paths as the command line was given them: bytes that the system takes as they are, on Windows UTF-8.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace vellobar {
class CMessage;
class CVellobar;
}  // namespace vellobar

namespace vellobar::command {

/// A path as the core takes it. Away from Windows any bytes come through unchanged, since the default code page keeps
/// all 256 of them.
std::u16string core_path(const std::string& path);
/// A path as platform/ takes it: on Windows in the system's code page.
std::string system_path(const std::string& path);
/// A path as the standard library takes it, and back.
std::filesystem::path library_path(const std::string& path);
std::string from_library_path(const std::filesystem::path& path);

/// Locks the mailbox at a path, or throws a Failure that says why it cannot be read.
void lock_mailbox(CVellobar& control, const std::string& path);

/// The message at a position of a locked mailbox, or throws a Failure that says how many there are.
std::shared_ptr<CMessage> message_at(CVellobar& control, std::int64_t index, const std::string& path);

}  // namespace vellobar::command

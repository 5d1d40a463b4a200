// Paths as the command line was given them: bytes that the system takes as they are, on Windows UTF-8.
#pragma once

#include <filesystem>
#include <string>

namespace vellobar::command {

/// A path as the core takes it. Away from Windows any bytes come through unchanged, since the default code page keeps
/// all 256 of them.
std::u16string core_path(const std::string& path);
/// A path as platform/ takes it: on Windows in the system's code page.
std::string system_path(const std::string& path);
/// A path as the standard library takes it, and back.
std::filesystem::path library_path(const std::string& path);
std::string from_library_path(const std::filesystem::path& path);

/// Why a file cannot be opened for reading, as the end of a sentence.
std::string why_unreadable(const std::string& path);

}  // namespace vellobar::command

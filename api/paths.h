// The standard library's paths, and the component's file names, which are texts. Away from Windows a path is bytes, and
// the component makes bytes of a text with the process code page; the component takes a backslash for what ends the
// folder everywhere. These two get any path through.
#pragma once

#include <filesystem>
#include <string>

namespace vellobar {

class CMessage;

/// A path as the component takes file names, for a call made before CVellobar::SetCharSet is.
std::u16string filename(const std::filesystem::path& path);

/// Adds a file to a message as a Base64 part that is called like the file, in any characters. Errors 30007 (no path),
/// 30011 (the file cannot be read), 30012 and 30004 (temporary file).
void attach(CMessage& message, const std::filesystem::path& file);

}  // namespace vellobar

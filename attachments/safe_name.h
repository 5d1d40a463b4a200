// File names that mail suggests, made harmless: whoever wrote the mail may choose what a file is called, never where it
// stands and never a device. The same name comes out on every system, so that it stays harmless on a shared folder.
#pragma once

#include <string>
#include <string_view>

namespace vellobar::attachments {

/// The last path component of a name, without a drive prefix. Characters that a file system, or the code page in which
/// the file will be named, could read as a separator, a stream, a wildcard or a control become "_", so do dots and
/// blanks at the end, and a reserved device name gets a "_" in front. Empty only when the last component is.
std::u16string safe_file_name(std::u16string_view name, int code_page);

}  // namespace vellobar::attachments

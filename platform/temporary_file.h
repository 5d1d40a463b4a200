// Names of temporary files, identifiers of the running process, and the host's name.
#pragma once

#include <cstdint>
#include <string>

namespace vellobar::platform {

/// The system's temporary folder with its trailing separator; "./" (".\" on Windows) when there is none.
std::string temporary_folder();

/// A file that did not exist before, made empty in the temporary folder and readable by the user only. Its name begins
/// with the prefix "VLB". When the system cannot make one, a name of the form "%sVLB%u_%u.tmp" from the folder, the low
/// 16 bits of the tick count plus `tick_offset` and the low 16 bits of the thread identifier, each widened with its
/// sign; that file is not made.
std::string temporary_file_name(std::uint32_t tick_offset = 0);

std::uint32_t process_identifier() noexcept;
std::uint32_t thread_identifier() noexcept;

/// The host's name, "localhost" when the system does not tell.
std::string host_name();

/// Puts the temporary folder elsewhere (with trailing separator) until the object dies. For tests.
class FixedTemporaryFolder {
 public:
  explicit FixedTemporaryFolder(std::string folder);
  ~FixedTemporaryFolder();
  FixedTemporaryFolder(const FixedTemporaryFolder&) = delete;
  FixedTemporaryFolder& operator=(const FixedTemporaryFolder&) = delete;
};

/// Fixes the host name until the object dies; an empty name stands for a system that does not tell. For tests.
class FixedHostName {
 public:
  explicit FixedHostName(std::string name);
  ~FixedHostName();
  FixedHostName(const FixedHostName&) = delete;
  FixedHostName& operator=(const FixedHostName&) = delete;
};

}  // namespace vellobar::platform

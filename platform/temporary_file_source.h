// What the operating system itself says about temporary files and the host; `temporary_file.cpp` puts a test's fixed
// folder and host name in front of it and holds the fallbacks.
#pragma once

#include <string>

namespace vellobar::platform {

/// The folder with its trailing separator, empty when the system names none.
std::string system_temporary_folder();

/// Empty when the system does not tell, or tells a name that does not fit 100 bytes with its terminator.
std::string system_host_name();

/// The folder that stands for "here", with the system's separator.
extern const char* const kCurrentFolder;

}  // namespace vellobar::platform

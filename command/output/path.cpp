#include "command/output/path.h"

#include <system_error>

#include "platform/code_page.h"

namespace vellobar::command {

std::string why_unreadable(const std::string& path) {
  std::error_code problem;
  const std::filesystem::file_status status = std::filesystem::status(library_path(path), problem);
  if (!std::filesystem::exists(status)) return "there is no such file";
  if (std::filesystem::is_directory(status)) return "it is a folder";
  if (!std::filesystem::is_regular_file(status)) return "it is not a regular file";
  if (platform::widen(platform::kAnsiCodePage, system_path(path)) != core_path(path)) {
    return "its name has characters that the system's code page lacks";
  }
  return "permission denied";
}

#ifdef _WIN32

std::u16string core_path(const std::string& path) { return platform::widen(platform::kUtf8CodePage, path); }

std::string system_path(const std::string& path) { return platform::narrow(platform::kAnsiCodePage, core_path(path)); }

std::filesystem::path library_path(const std::string& path) {
  const std::u16string wide = core_path(path);
  return std::wstring(wide.begin(), wide.end());
}

std::string from_library_path(const std::filesystem::path& path) {
  const std::wstring wide = path.wstring();
  return platform::narrow(platform::kUtf8CodePage, std::u16string(wide.begin(), wide.end()));
}

#else

std::u16string core_path(const std::string& path) { return platform::widen(platform::process_code_page(), path); }

std::string system_path(const std::string& path) { return path; }

std::filesystem::path library_path(const std::string& path) { return path; }

std::string from_library_path(const std::filesystem::path& path) { return path.string(); }

#endif

}  // namespace vellobar::command

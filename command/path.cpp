#include "command/path.h"

#include <system_error>

#include "command/failure.h"
#include "errors/error.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/code_page.h"

namespace vellobar::command {

namespace {

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

}  // namespace

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

void lock_mailbox(CVellobar& control, const std::string& path) {
  control.SetFilename(core_path(path));
  try {
    control.Lock();
  } catch (const Error& error) {
    if (error.number() != ErrorNumber::cannot_open_mailbox) throw;
    throw Failure("cannot open mailbox " + path + ": " + why_unreadable(path));
  }
}

std::shared_ptr<CMessage> message_at(CVellobar& control, std::int64_t index, const std::string& path) {
  const std::int64_t count = control.Messages()->Count();
  if (index < 0 || index >= count) {
    throw Failure("there is no message " + std::to_string(index) + ": " + path + " holds " + std::to_string(count) +
                  (count == 1 ? " message" : " messages") + ", counted from 0");
  }
  return control.Messages()->Item(index);
}

}  // namespace vellobar::command

#include "platform/temporary_file.h"

#include <winsock2.h>
// winsock2.h must come before windows.h, which would pull in its predecessor.
#include <windows.h>

#include "platform/temporary_file_source.h"

namespace vellobar::platform {

namespace {

constexpr int kHostNameRoom = 100;

/// Windows Sockets, started when the first host name is asked for and kept for the life of the process.
bool sockets_started() {
  static const bool started = [] {
    WSADATA data;
    return ::WSAStartup(MAKEWORD(2, 0), &data) == 0;
  }();
  return started;
}

}  // namespace

const char* const kCurrentFolder = ".\\";

std::string system_temporary_folder() {
  char folder[MAX_PATH];
  const DWORD length = ::GetTempPathA(MAX_PATH, folder);
  return length > 0 && length < MAX_PATH ? std::string(folder, length) : std::string();
}

std::uint32_t process_identifier() noexcept { return ::GetCurrentProcessId(); }

std::uint32_t thread_identifier() noexcept { return ::GetCurrentThreadId(); }

std::string system_host_name() {
  char name[kHostNameRoom];
  if (!sockets_started() || ::gethostname(name, kHostNameRoom) != 0) return {};
  return name;
}

}  // namespace vellobar::platform

#include "platform/temporary_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/temporary_file_source.h"
#if defined(__linux__)
#include <sys/syscall.h>
#else
#include <pthread.h>
#endif

namespace vellobar::platform {

namespace {

// The room that Windows hosts always had for the name; a longer one counts as none on every system.
constexpr std::size_t kHostNameRoom = 100;

bool is_folder(const char* path) noexcept {
  struct stat info {};
  return ::stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

const char* const kCurrentFolder = "./";

std::string system_temporary_folder() {
  // TMPDIR is where POSIX systems keep the user's choice, as the system's own folder look-up does elsewhere.
  for (const char* path : {static_cast<const char*>(std::getenv("TMPDIR")), "/tmp"}) {
    if (path == nullptr || *path == '\0' || !is_folder(path)) continue;
    std::string folder = path;
    if (folder.back() != '/') folder += '/';
    return folder;
  }
  return {};
}

std::uint32_t process_identifier() noexcept { return static_cast<std::uint32_t>(::getpid()); }

std::uint32_t thread_identifier() noexcept {
#if defined(__linux__)
  return static_cast<std::uint32_t>(::syscall(SYS_gettid));
#else
  std::uint64_t identifier = 0;
  ::pthread_threadid_np(nullptr, &identifier);
  return static_cast<std::uint32_t>(identifier);
#endif
}

std::string system_host_name() {
  char name[256] = {};
  if (::gethostname(name, sizeof name - 1) != 0) return {};
  std::string host = name;
  if (host.size() >= kHostNameRoom) host.clear();
  return host;
}

}  // namespace vellobar::platform

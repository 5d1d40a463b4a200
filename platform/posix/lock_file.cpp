#include "platform/lock_file.h"

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/file.h"
#include "platform/staging_files.h"
#include "platform/temporary_file.h"

namespace vellobar::platform {

namespace {

using std::chrono::file_clock;

/// As long as other programs wait before they take away a lock file.
constexpr std::chrono::minutes kOld{5};

constexpr std::string_view kOurLine = "\nvellobar\n";

/// Process and host as most programs write them.
std::string our_text() { return std::to_string(process_identifier()) + ":" + host_name() + std::string(kOurLine); }

std::string lock_path(const std::string& path) { return path + ".lock"; }

struct Maker {
  pid_t process = 0;  ///< 0 when none is named
  std::string host;
};

/// "process:host", "process" or anything else, which names nobody.
Maker maker_in(std::string_view text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  Maker maker;
  const auto [end, failure] = std::from_chars(line.data(), line.data() + line.size(), maker.process);
  if (failure != std::errc() || maker.process <= 0) return {};
  const std::string_view rest = line.substr(static_cast<std::size_t>(end - line.data()));
  if (rest.starts_with(':')) maker.host = rest.substr(1);
  return maker;
}

bool has_ended(pid_t process) noexcept { return ::kill(process, 0) != 0 && errno == ESRCH; }

bool is_old(const std::string& path) {
  std::error_code failure;
  const auto written = std::filesystem::last_write_time(path, failure);
  return !failure && file_clock::now() - written >= kOld;
}

std::string text_of(File& file) {
  char text[512];
  return {text, file.read(0, text, sizeof text)};
}

/// Whether the maker of a lock file that nobody holds is gone.
bool is_left(const std::string& path, std::string_view text) {
  const Maker maker = maker_in(text);
  if (!maker.host.empty() && maker.host != host_name()) return false;
  if (maker.process > 0 && text.ends_with(kOurLine)) return true;
  return is_old(path) && (maker.process == 0 || has_ended(maker.process));
}

struct RemovedAtTheEnd {
  const std::string& path;
  ~RemovedAtTheEnd() { remove_file(path); }
};

/// Whether a mailbox must do without a lock file.
bool cannot_be_made(const std::error_code& failure) noexcept {
  static constexpr std::errc kReasons[] = {std::errc::permission_denied,       std::errc::operation_not_permitted,
                                           std::errc::read_only_file_system,   std::errc::filename_too_long,
                                           std::errc::operation_not_supported, std::errc::too_many_links};
  return is_out_of_room(failure) ||
         std::any_of(std::begin(kReasons), std::end(kReasons), [&](std::errc reason) { return failure == reason; });
}

}  // namespace

LockFile::LockFile(std::string path)
    : path_(std::move(path)), staged_(staging_files_beside(path_).lock), made_(lock_path(path_)) {}

bool LockFile::try_make() {
  if (held_.valid()) return true;
  remove_left(path_);
  const std::string text = our_text();
  std::error_code failure;
  FileHandle handle = FileHandle::open(staged_, Opening::create_new, &failure);
  if (handle.valid()) {
    const RemovedAtTheEnd staged{staged_};
    try {
      handle.write(text);
      handle.sync();
      failure = add_name(staged_, made_);
    } catch (const std::system_error& error) {
      failure = error.code();
    }
  }
  if (!failure) held_ = std::move(handle);
  if (!failure || cannot_be_made(failure)) return true;
  if (failure != std::errc::file_exists) throw std::system_error(failure, "make a lock file");
  return false;
}

void LockFile::remove() noexcept {
  // Somebody may have thought it left and made another one.
  if (held_.is_file(made_)) remove_file(made_);
  held_ = FileHandle();
}

void LockFile::remove_left(const std::string& path) noexcept {
  try {
    const std::string staged = staging_files_beside(path).lock;
    if (FileHandle::open(staged, Opening::claim).valid()) remove_file(staged);
    const std::string made = lock_path(path);
    const std::shared_ptr<File> file = File::of(FileHandle::open(made, Opening::claim));
    if (file && is_left(made, text_of(*file))) remove_file(made);
  } catch (const std::bad_alloc&) {
    // It is in the way of the next update, which tries again.
  }
}

}  // namespace vellobar::platform

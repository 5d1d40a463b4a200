#include "platform/temporary_file.h"

#include <cstdio>
#include <optional>
#include <utility>

#include "platform/clock.h"
#include "platform/file_handle.h"
#include "platform/temporary_file_source.h"

namespace vellobar::platform {

namespace {

constexpr char kPrefix[] = "VLB";

std::optional<std::string> fixed_folder;
std::optional<std::string> fixed_host;

/// The low 16 bits as a signed number, widened with that sign: 0x8000 prints as 4294934592.
unsigned sign_extended_low_16_bits(std::uint32_t value) noexcept {
  return static_cast<unsigned>(static_cast<std::int32_t>(static_cast<std::int16_t>(value)));
}

std::string fallback_name(const std::string& folder, std::uint32_t tick_offset) {
  char tail[40];
  std::snprintf(tail, sizeof tail, "%s%u_%u.tmp", kPrefix, sign_extended_low_16_bits(tick_count() + tick_offset),
                sign_extended_low_16_bits(thread_identifier()));
  return folder + tail;
}

}  // namespace

std::string temporary_folder() {
  std::string folder = fixed_folder ? *fixed_folder : system_temporary_folder();
  if (folder.empty()) folder = kCurrentFolder;
  return folder;
}

std::string temporary_file_name(std::uint32_t tick_offset) {
  const std::string folder = temporary_folder();
  std::optional<std::string> made = make_unique_file(folder, kPrefix);
  // Moved: a file that was made must not be lost for want of memory.
  return made ? std::move(*made) : fallback_name(folder, tick_offset);
}

std::string host_name() {
  std::string name = fixed_host ? *fixed_host : system_host_name();
  if (name.empty()) name = "localhost";
  return name;
}

FixedTemporaryFolder::FixedTemporaryFolder(std::string folder) { fixed_folder = std::move(folder); }

FixedTemporaryFolder::~FixedTemporaryFolder() { fixed_folder.reset(); }

FixedHostName::FixedHostName(std::string name) { fixed_host = std::move(name); }

FixedHostName::~FixedHostName() { fixed_host.reset(); }

}  // namespace vellobar::platform

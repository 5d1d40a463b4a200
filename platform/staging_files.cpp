#include "platform/staging_files.h"

#include <cstdint>
#include <cstdio>

#include "platform/file_system.h"
#include "platform/temporary_file.h"

namespace vellobar::platform {

namespace {

/// Tells paths apart whose last components are the same (FNV-1a).
std::string hash_of(const std::string& path) {
  std::uint64_t hash = 14695981039346656037u;
  for (const char c : path) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
  return digits;
}

std::size_t base_of(const std::string& path) {
  const std::size_t separator = path.find_last_of(kPathSeparators);
  return separator == std::string::npos ? 0 : separator + 1;
}

StagingFiles with_stem(const std::string& stem) {
  const std::string name = stem + ".vellobar-";
  return {name + "new", name + "copy", name + "old", name + "replaced", name + "old-kept", name + "lock"};
}

}  // namespace

StagingFiles staging_files_beside(const std::string& path) {
  return with_stem(path.substr(0, base_of(path)) + "." + path.substr(base_of(path)));
}

StagingFiles staging_files_elsewhere(const std::string& path) {
  return with_stem(temporary_folder() + "." + hash_of(path));
}

std::string unused_name(const std::string& path) {
  std::string name = path;
  for (int number = 2; facts_of(name).links > 0; ++number) name = path + "-" + std::to_string(number);
  return name;
}

}  // namespace vellobar::platform

#include "platform/lock_file.h"

#include <utility>

namespace vellobar::platform {

// Programs that deliver mail on Windows look at no lock file.

LockFile::LockFile(std::string path) : path_(std::move(path)) {}

bool LockFile::try_make() { return true; }

void LockFile::remove() noexcept {}

void LockFile::remove_left(const std::string&) noexcept {}

}  // namespace vellobar::platform

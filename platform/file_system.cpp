#include "platform/file_system.h"

#include <utility>

namespace vellobar::platform {

namespace {

FileSystem* fixed_file_system = nullptr;

}  // namespace

FileSystem& file_system() noexcept { return fixed_file_system != nullptr ? *fixed_file_system : real_file_system(); }

FixedFileSystem::FixedFileSystem(FileSystem& fixed) noexcept : before_(std::exchange(fixed_file_system, &fixed)) {}

FixedFileSystem::~FixedFileSystem() { fixed_file_system = before_; }

}  // namespace vellobar::platform

#include "platform/file_system.h"

namespace vellobar::platform {

namespace {

FileSystem* fixed_file_system = nullptr;

}  // namespace

FileSystem& file_system() noexcept { return fixed_file_system != nullptr ? *fixed_file_system : real_file_system(); }

FixedFileSystem::FixedFileSystem(FileSystem& fixed) noexcept { fixed_file_system = &fixed; }

FixedFileSystem::~FixedFileSystem() { fixed_file_system = nullptr; }

}  // namespace vellobar::platform

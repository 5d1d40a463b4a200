// The user's locale.
#pragma once

#include <cstdint>

namespace vellobar::platform {

/// The user's default locale identifier (a Windows LCID); away from Windows 1033, US English.
std::int32_t user_default_locale() noexcept;

}  // namespace vellobar::platform

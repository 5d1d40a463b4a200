#include "platform/locale.h"

#include <windows.h>

namespace vellobar::platform {

std::int32_t user_default_locale() noexcept { return static_cast<std::int32_t>(::GetUserDefaultLCID()); }

}  // namespace vellobar::platform

#include "platform/locale.h"

namespace vellobar::platform {

std::int32_t user_default_locale() noexcept { return 1033; }

}  // namespace vellobar::platform

// Comparing names without regard to case, as the platform's locale sees them.
#pragma once

#include <string>
#include <string_view>

namespace vellobar::platform {

/// Text narrowed with the thread's ANSI code page, lower-cased there, and widened again.
std::u16string fold_case(std::u16string_view text);

/// Equality by the user's default locale, no flags. Away from Windows: equality of the code units.
bool equal_in_user_locale(std::u16string_view left, std::u16string_view right);

}  // namespace vellobar::platform

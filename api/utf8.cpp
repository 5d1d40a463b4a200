#include "api/utf8.h"

#include "platform/code_page.h"

namespace vellobar {

std::string to_utf8(std::u16string_view text) { return platform::narrow(platform::kUtf8CodePage, text); }

std::u16string from_utf8(std::string_view text) { return platform::widen(platform::kUtf8CodePage, text); }

}  // namespace vellobar

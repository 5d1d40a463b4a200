// The identifier of a new message, RFC 5322 section 3.6.4: 32 hexadecimal digits and the host's name. The digits come
// from a small generator seeded with the tick count each time, so two messages made within one tick share them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vellobar::compose {

/// The identifier without its angle brackets. Blanks and angle brackets in the host's name become "_".
std::string message_identifier(std::uint32_t ticks, std::string_view host);

}  // namespace vellobar::compose

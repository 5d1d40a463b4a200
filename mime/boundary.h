// The boundary of a multipart message: how it is found in a Content-Type value, and how the delimiter line is made of
// it (RFC 2046, section 5.1.1, with this component's own tolerance). Pure rules on bytes; nothing here knows a message.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vellobar {
class CHeaders;
}

namespace vellobar::mime {

/// The longest boundary that is taken, in bytes.
inline constexpr std::size_t kLongestBoundary = 1021;

/// The delimiter line, "--" and the boundary, that a Content-Type value (as it stands, in the process code page) asks
/// for. Nothing when it names none, so that the next Content-Type header may; an empty one when its boundary is too
/// long, which ends the search. An unquoted boundary ends at a space; either kind is cut at a ";".
std::optional<std::string> delimiter_in_content_type(std::string_view value);

/// The delimiter of the first Content-Type header that names one; empty for a message without parts.
std::string delimiter_of(const CHeaders& headers);

}  // namespace vellobar::mime

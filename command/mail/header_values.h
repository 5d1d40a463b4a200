// Header values as they are meant: decoded.
#pragma once

#include <cstddef>
#include <string>

#include "command/output/json.h"

namespace vellobar {
class CHeaders;
}

namespace vellobar::command {

std::u16string decoded_value(const CHeaders& headers, std::size_t position);

/// The headers of a message as an array of objects with name and value.
Json headers_array(const CHeaders& headers);

}  // namespace vellobar::command

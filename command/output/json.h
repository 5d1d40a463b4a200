// JSON for other programs: one object a line, in UTF-8, whatever bytes the mail holds. Members come in the order in
// which they were put; docs/reference/json.md describes the shape of each verb's objects.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace vellobar::command {

using Json = nlohmann::ordered_json;

/// Text as JSON takes it: UTF-8, with U+FFFD in place of half a surrogate pair.
std::string json_text(std::u16string_view text);

/// The object as one line without its line end. Bytes that are no UTF-8 become U+FFFD.
std::string json_line(const Json& object);

/// Prints one line.
void print_json(const Json& object);

}  // namespace vellobar::command

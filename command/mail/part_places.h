// The parts of a message with their places, as they are listed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace vellobar {
class CMessage;
}

namespace vellobar::command {

/// Parts that lie deeper are not listed: the place of a part is as long as it is deep, and mail can nest its parts a
/// hundred thousand deep.
inline constexpr std::size_t kDeepestListed = 100;

/// Calls the visitor for each part with its place below the message ("1.0"). Returns how many lie too deep.
std::int64_t for_each_listed_part(CMessage& message,
                                  const std::function<void(CMessage& part, const std::string& place)>& visit);

}  // namespace vellobar::command

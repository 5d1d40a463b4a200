// Numbers of messages in sentences.
#pragma once

#include <cstdint>
#include <string>

namespace vellobar::command {

inline std::string counted_messages(std::int64_t count) {
  return std::to_string(count) + (count == 1 ? " message" : " messages");
}

}  // namespace vellobar::command

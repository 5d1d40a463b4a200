// Between the bytes of the codecs and the strings of their callers.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vellobar::codecs {

inline const unsigned char* bytes_of(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

inline std::string_view view_of(const unsigned char* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

/// A string that `write` fills: it gets `room` bytes and returns how many of them it used.
template <typename Write>
std::string string_of_size(std::size_t room, Write write) {
  std::string text(room, '\0');
  text.resize(write(reinterpret_cast<unsigned char*>(text.data())));
  return text;
}

}  // namespace vellobar::codecs

#include "headers/written_line.h"

#include <string_view>

#include "headers/header_block.h"

namespace vellobar::headers {

namespace {

/// The blank behind the colon, where the value is the same without it.
bool has_blank_to_drop(std::string_view line, std::size_t colon) {
  if (colon == std::string_view::npos) return false;
  const std::string_view value = line.substr(colon + 1);
  return value.starts_with(' ') && !value.starts_with("  ");
}

/// Appends a line with its line feed to the text up to `end`, inside which it stands further behind.
std::size_t move_line(std::string& text, std::size_t end, std::size_t at, std::size_t size, bool is_first) {
  const auto move = [&](std::size_t from, std::size_t count) {
    std::string::traits_type::move(text.data() + end, text.data() + from, count);
    end += count;
  };
  const std::string_view line(text.data() + at, size);
  const std::size_t too_much = size < kLongestLine ? 0 : size - (kLongestLine - 1);
  const bool has_cr = line.ends_with("\r\n");
  const std::size_t colon = line.find(':');
  const bool has_blank = is_first && has_blank_to_drop(line, colon);
  const bool drops_any = too_much > 0 && too_much <= std::size_t{has_cr} + std::size_t{has_blank};
  const bool drops_cr = drops_any && has_cr;
  const bool drops_blank = drops_any && too_much > std::size_t{has_cr};
  const std::size_t content = size - (drops_cr ? 2 : 1);
  if (drops_blank) {
    move(at, colon + 1);
    move(at + colon + 2, content - colon - 2);
  } else {
    move(at, content);
  }
  text[end] = '\n';
  return end + 1;
}

}  // namespace

void keep_readable(std::string& text, std::size_t begin) {
  if (text.size() - begin < kLongestLine) return;
  std::size_t end = begin;
  for (std::size_t at = begin; at < text.size();) {
    const std::size_t size = text.find('\n', at) + 1 - at;
    end = move_line(text, end, at, size, at == begin);
    at += size;
  }
  text.resize(end);
}

}  // namespace vellobar::headers

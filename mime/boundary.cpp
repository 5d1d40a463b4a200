#include "mime/boundary.h"

#include <cstdint>

#include "headers/headers.h"
#include "mime/ascii.h"

namespace vellobar::mime {

namespace {

constexpr std::string_view kMultipart = "multipart/";
constexpr std::string_view kParameter = "boundary=";
constexpr std::string_view kDashes = "--";

/// Control bytes, blanks and bytes from 128 up are passed over in front of a boundary. Deliberate; held by the test
/// control_bytes_blanks_and_bytes_above_127_in_front_of_a_boundary_are_passed_over.
bool is_passed_over(char c) { return static_cast<signed char>(c) <= ' '; }

/// The boundary that the text behind "boundary=" begins with; nothing when its closing quote is missing.
std::optional<std::string_view> boundary_at_start_of(std::string_view text) {
  while (!text.empty() && is_passed_over(text.front())) text.remove_prefix(1);
  if (!text.starts_with('"')) return text.substr(0, text.find(' '));
  text.remove_prefix(1);
  // A quoted boundary has at least one character, be it a quote.
  const std::size_t end = text.find('"', 1);
  if (end == std::string_view::npos) return std::nullopt;
  return text.substr(0, end);
}

}  // namespace

std::optional<std::string> delimiter_in_content_type(std::string_view value) {
  if (find_ignoring_case(value, kMultipart) == std::string_view::npos) return std::nullopt;
  const std::size_t parameter = find_ignoring_case(value, kParameter);
  if (parameter == std::string_view::npos) return std::nullopt;
  const std::optional<std::string_view> boundary = boundary_at_start_of(value.substr(parameter + kParameter.size()));
  if (!boundary) return std::nullopt;
  if (boundary->size() > kLongestBoundary) return std::string();
  return std::string(kDashes) += boundary->substr(0, boundary->find(';'));
}

std::string delimiter_of(const CHeaders& headers) {
  constexpr std::string_view kContentType = "content-type";
  for (std::size_t i = headers.find(kContentType); i != CHeaders::npos; i = headers.find(kContentType, i + 1)) {
    const std::optional<std::string> delimiter = delimiter_in_content_type(headers.narrow_value(i));
    if (delimiter) return *delimiter;
  }
  return {};
}

}  // namespace vellobar::mime

#include "attachments/description.h"

#include "mime/ascii.h"
#include "mime/encoded_word.h"
#include "platform/code_page.h"

namespace vellobar::attachments {

namespace {

/// A header value cut at its first ";".
struct CutValue {
  std::string_view front;
  std::string_view parameters;
};

CutValue cut(std::string_view value) {
  const std::size_t semicolon = value.find(';');
  if (semicolon == value.npos) return {value, {}};
  return {value.substr(0, semicolon), value.substr(semicolon + 1)};
}

std::u16string widen(std::string_view bytes) { return platform::widen(platform::process_code_page(), bytes); }

/// The name without its encoded words; one in which nothing was decoded reads like every other text.
std::u16string decoded_or_raw(std::string_view name) {
  const mime::DecodedValue decoded = mime::decode_encoded_words(name);
  if (decoded.bytes == name) return widen(name);
  std::u16string text = platform::widen(decoded.code_page, decoded.bytes);
  return text.empty() ? widen(name) : text;
}

}  // namespace

std::string_view name_parameter(std::string_view parameters) {
  constexpr std::string_view kName = "name=";
  const std::size_t found = mime::find_ignoring_case(parameters, kName);
  if (found == parameters.npos) return {};
  const std::string_view rest = parameters.substr(found + kName.size());
  if (rest.starts_with('"') || rest.starts_with('\'')) {
    const std::size_t closing = rest.find(rest.front(), 1);
    if (closing != rest.npos) return rest.substr(1, closing - 1);
  }
  const std::size_t semicolon = rest.find(';');
  return rest.substr(0, semicolon != rest.npos ? semicolon : rest.find(' '));
}

std::string_view filename_parameter(std::string_view parameters) {
  constexpr std::string_view kFilename = "filename=\"";
  const std::size_t found = mime::find_ignoring_case(parameters, kFilename);
  if (found == parameters.npos) return {};
  const std::string_view rest = parameters.substr(found + kFilename.size());
  return rest.substr(0, rest.find('"'));
}

Description describe(const std::optional<std::string>& content_type,
                     const std::optional<std::string>& content_disposition) {
  Description description;
  if (content_type) {
    const CutValue value = cut(*content_type);
    description.type = widen(value.front);
    description.name = decoded_or_raw(name_parameter(value.parameters));
  }
  if (!description.name.empty() || !content_disposition) return description;
  const CutValue value = cut(*content_disposition);
  // Deliberate: the type becomes "attachment" or "inline", see
  // a_name_from_the_disposition_makes_the_disposition_the_type.
  description.type = widen(value.front);
  description.name = widen(filename_parameter(value.parameters));
  return description;
}

}  // namespace vellobar::attachments

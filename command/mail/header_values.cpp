#include "command/mail/header_values.h"

#include "headers/headers.h"
#include "mime/encoded_word.h"

namespace vellobar::command {

std::u16string decoded_value(const CHeaders& headers, std::size_t position) {
  return mime::decode_header_value(headers.narrow_value(position));
}

Json headers_array(const CHeaders& headers) {
  Json objects = Json::array();
  for (std::size_t i = 0; i < static_cast<std::size_t>(headers.Count()); ++i) {
    objects.push_back({{"name", json_text(headers.name(i))}, {"value", json_text(decoded_value(headers, i))}});
  }
  return objects;
}

}  // namespace vellobar::command

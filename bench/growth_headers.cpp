// The headers of a message: encoded words, addresses, dates and header blocks.
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "growth.h"
#include "headers/address.h"
#include "headers/date.h"
#include "mime/encoded_word.h"

namespace vellobar::bench {
namespace {

std::string repeated(std::string_view piece, std::size_t size) {
  std::string text;
  while (text.size() < size) text += piece;
  return text;
}

// ---- Encoded words ----

GrowthWork decode(std::string value) {
  return [value = std::move(value)] { return mime::decode_header_value(value).size(); };
}

GrowthWork words(std::size_t size) { return decode(repeated("=?utf-8?Q?=C3=A9_a?= ", size)); }

GrowthWork tab_folds(std::size_t size) { return decode(repeated("a word\r\n\t", size)); }

// ---- Addresses ----

GrowthWork to_names_of_quotes(std::size_t size) {
  return [text = repeated("\"", size)] { return headers::from_each_address(text, headers::display_name_of).size(); };
}

constexpr std::array kFamilies = {
    GrowthFamily{"words", words},
    GrowthFamily{"tab_folds", tab_folds},
    GrowthFamily{"to_names_of_quotes", to_names_of_quotes},
};

}  // namespace

std::span<const GrowthFamily> header_growth_families() { return kFamilies; }

}  // namespace vellobar::bench

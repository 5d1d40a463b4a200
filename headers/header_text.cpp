#include "headers/header_text.h"

#include <algorithm>

#include "headers/room.h"
#include "platform/ascii.h"

namespace vellobar::headers {

Line split(std::string_view line, std::size_t colon) {
  const std::string_view value = line.substr(colon + 1);
  return {line.substr(0, colon), value.substr(value.starts_with(' ') ? 1 : 0)};
}

std::size_t HeaderText::add(std::string_view line, std::size_t colon) {
  const std::size_t place = text_.size();
  make_room(text_, line.size() + 1);
  text_.append(line).push_back('\n');
  has_plain_names_ = has_plain_names_ && platform::is_printable_ascii(line.substr(0, colon));
  return place;
}

std::size_t HeaderText::add_gap() {
  make_room(text_, 1);
  text_.push_back('\n');
  return text_.size() - 1;
}

void HeaderText::lengthen_last(std::string_view line) {
  const std::size_t end = text_.size() - 1;
  make_room(text_, line.size() + 2);
  text_.append("\n").append(line).push_back('\n');
  // Only now: without memory for the line the header is what it was.
  text_[end] = '\r';
}

void HeaderText::clear() {
  text_.clear();
  has_plain_names_ = true;
}

void HeaderText::shrink_to_fit() { give_back_room(text_); }

std::string_view HeaderText::whole_at(std::size_t place) const {
  std::size_t end = text_.find('\n', place);
  while (end > place && text_[end - 1] == '\r') end = text_.find('\n', end + 1);
  return std::string_view(text_).substr(place, end - place);
}

Line HeaderText::line_at(std::size_t place) const {
  const std::string_view whole = whole_at(place);
  return split(whole, whole.find(':'));
}

bool HeaderText::begins_with(std::size_t place, std::string_view name) const {
  return std::equal(name.begin(), name.end(), text_.data() + place,
                    [](char a, char b) { return platform::lower_ascii(a) == platform::lower_ascii(b); });
}

std::string_view HeaderText::name_at(std::size_t place) const {
  return std::string_view(text_).substr(place, text_.find(':', place) - place);
}

}  // namespace vellobar::headers

#include "headers/header.h"

#include <utility>

#include "platform/code_page.h"

namespace vellobar {

CHeader::CHeader(OwnerLink owner, std::u16string name, std::u16string value)
    : owner_(std::move(owner)), name_(std::move(name)), value_(std::move(value)) {}

void CHeader::SetName(std::u16string_view name) {
  name_ = name;
  mark_changed(owner_);
}

void CHeader::SetValue(std::u16string_view value) {
  value_ = value;
  mark_changed(owner_);
}

std::u16string CHeader::ToString() const {
  return platform::widen(platform::kThreadCodePage,
                         platform::narrow(platform::process_code_page(), name_ + u": " + value_));
}

bool CHeader::parse_line(std::u16string_view line) {
  const std::string text = platform::narrow(platform::process_code_page(), line);
  const std::size_t colon = text.find(": ");
  if (colon == std::string::npos) return false;
  name_ = platform::widen(platform::kThreadCodePage, std::string_view(text).substr(0, colon));
  value_ = platform::widen(platform::kThreadCodePage, std::string_view(text).substr(colon + 2));
  return true;
}

void CHeader::continue_value(std::u16string_view line) {
  value_ += u"\r\n";
  value_ += line;
}

}  // namespace vellobar

#include <string>
#include <string_view>

#include "headers/address.h"
#include "headers/date.h"
#include "mailbox/message.h"
#include "platform/code_page.h"

namespace vellobar {
namespace {

std::string narrow(std::u16string_view text) { return platform::narrow(platform::process_code_page(), text); }

std::u16string widen(std::string_view bytes) { return platform::widen(platform::kThreadCodePage, bytes); }

using Extract = std::string (*)(std::string_view);

/// What is taken from the text of a header, which can be long and is let go as soon as may be.
std::string taken_from(CMessage& message, std::string_view header, std::string (*take)(std::string_view, Extract),
                       Extract extract) {
  std::u16string text = message.header_text(header);
  const std::string bytes = narrow(text);
  std::u16string().swap(text);
  return take(bytes, extract);
}

std::string from_one_address(std::string_view text, Extract extract) { return extract(text); }

}  // namespace

double CMessage::Date() {
  const std::u16string text = decoded_header("Date");
  return text.empty() ? headers::current_date() : headers::parse_date(narrow(text));
}

void CMessage::SetDate(double date) { set_header_value("Date", widen(headers::format_date(date))); }

std::u16string CMessage::FromName() {
  return widen(taken_from(*this, "From", from_one_address, headers::display_name_of));
}

std::u16string CMessage::FromEmail() { return widen(taken_from(*this, "From", from_one_address, headers::address_of)); }

std::u16string CMessage::ToName() {
  return widen(taken_from(*this, "To", headers::from_each_address, headers::display_name_of));
}

std::u16string CMessage::ToEmail() {
  return widen(taken_from(*this, "To", headers::from_each_address, headers::address_of));
}

void CMessage::SetFrom(std::u16string_view addresses) {
  set_header_value("From", headers::address_list_text(addresses));
}

void CMessage::SetTo(std::u16string_view addresses) { set_header_value("To", headers::address_list_text(addresses)); }

void CMessage::SetCC(std::u16string_view addresses) { set_header_value("CC", headers::address_list_text(addresses)); }

void CMessage::SetBCC(std::u16string_view addresses) { set_header_value("BCC", headers::address_list_text(addresses)); }

}  // namespace vellobar

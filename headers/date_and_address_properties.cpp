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

}  // namespace

double CMessage::Date() {
  const std::u16string text = decoded_header("Date");
  return text.empty() ? headers::current_date() : headers::parse_date(narrow(text));
}

void CMessage::SetDate(double date) { set_header_value("Date", widen(headers::format_date(date))); }

std::u16string CMessage::FromName() { return widen(headers::display_name_of(narrow(From()))); }

std::u16string CMessage::FromEmail() { return widen(headers::address_of(narrow(From()))); }

std::u16string CMessage::ToName() { return widen(headers::from_each_address(narrow(To()), headers::display_name_of)); }

std::u16string CMessage::ToEmail() { return widen(headers::from_each_address(narrow(To()), headers::address_of)); }

void CMessage::SetFrom(std::u16string_view addresses) {
  set_header_value("From", headers::address_list_text(addresses));
}

void CMessage::SetTo(std::u16string_view addresses) { set_header_value("To", headers::address_list_text(addresses)); }

void CMessage::SetCC(std::u16string_view addresses) { set_header_value("CC", headers::address_list_text(addresses)); }

void CMessage::SetBCC(std::u16string_view addresses) { set_header_value("BCC", headers::address_list_text(addresses)); }

}  // namespace vellobar

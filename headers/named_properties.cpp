#include <string>
#include <string_view>

#include "headers/headers.h"
#include "mailbox/message.h"
#include "mime/charset_name.h"
#include "mime/encoded_word.h"
#include "platform/code_page.h"

namespace vellobar {

// ---- Reading and writing a header by its name ----

const std::u16string& CMessage::decoded_header(std::string_view name) {
  static const std::u16string kNone;
  CHeaders* headers = load_headers();
  return headers != nullptr ? headers->decoded(name) : kNone;
}

std::u16string CMessage::header_text(std::string_view name) {
  CHeaders* headers = load_headers();
  return headers != nullptr ? headers->take_decoded(name) : std::u16string();
}

void CMessage::set_header_value(std::string_view name, std::u16string_view value) {
  read_again();
  // Deliberate: a header block read only for this write is not searched; see
  // setting_a_property_before_anything_was_read_appends_a_second_header.
  const bool searches = loaded_headers() != nullptr || headers_were_read_;
  CHeaders* headers = load_headers();
  if (headers == nullptr) return;
  const std::size_t position = searches ? headers->find(name) : CHeaders::npos;
  if (position == CHeaders::npos) {
    if (!value.empty()) headers->append(platform::widen(platform::kThreadCodePage, name), value);
  } else if (value.empty()) {
    headers->erase(position);
  } else {
    headers->set_value(position, value);
  }
}

// ---- Properties that show a header's text ----

std::u16string CMessage::From() { return header_text("From"); }
std::u16string CMessage::To() { return header_text("To"); }
std::u16string CMessage::CC() { return header_text("CC"); }
std::u16string CMessage::BCC() { return header_text("BCC"); }

std::u16string CMessage::Subject() { return header_text("Subject"); }
void CMessage::SetSubject(std::u16string_view subject) {
  const bool is_encoded = mime::has_8_bit_bytes(platform::narrow(platform::process_code_page(), subject));
  set_header_value("Subject", is_encoded ? mime::utf8_encoded_word(subject) : std::u16string(subject));
}

std::u16string CMessage::ContentDescription() { return header_text("Content-Description"); }
void CMessage::SetContentDescription(std::u16string_view value) { set_header_value("Content-Description", value); }

std::u16string CMessage::ContentDisposition() { return header_text("Content-Disposition"); }
void CMessage::SetContentDisposition(std::u16string_view value) { set_header_value("Content-Disposition", value); }

std::u16string CMessage::ContentID() { return header_text("Content-ID"); }
void CMessage::SetContentID(std::u16string_view value) { set_header_value("Content-ID", value); }

std::u16string CMessage::ContentTransferEncoding() { return header_text("Content-Transfer-Encoding"); }
void CMessage::SetContentTransferEncoding(std::u16string_view value) {
  set_header_value("Content-Transfer-Encoding", value);
}

std::u16string CMessage::ContentType() { return header_text("Content-Type"); }
void CMessage::SetContentType(std::u16string_view value) { set_header_value("Content-Type", value); }

std::u16string CMessage::MessageID() { return header_text("Message-ID"); }
void CMessage::SetMessageID(std::u16string_view value) { set_header_value("Message-ID", value); }

std::u16string CMessage::MIMEVersion() { return header_text("MIME-Version"); }
void CMessage::SetMIMEVersion(std::u16string_view value) { set_header_value("MIME-Version", value); }

std::u16string CMessage::ContentSubtype() { return header_text("Content-Subtype"); }
void CMessage::SetContentSubtype(std::u16string_view value) { set_header_value("Content-Subtype", value); }

std::u16string CMessage::ContentSubtypeParameters() { return header_text("Content-Subtype-Parameters"); }
void CMessage::SetContentSubtypeParameters(std::u16string_view value) {
  set_header_value("Content-Subtype-Parameters", value);
}

// ---- The charset of a message ----

std::u16string CMessage::CharSet() {
  const std::string content_type = platform::process_bytes(ContentType());
  return platform::widen(platform::kThreadCodePage, mime::charset_in_content_type(content_type));
}

// Deliberately nothing: the charset is what the Content-Type says; see
// setting_char_set_changes_nothing_and_reading_gives_the_one_in_content_type.
void CMessage::SetCharSet(std::u16string_view) {}

int CMessage::code_page() {
  return mime::code_page_of_charset(platform::narrow(platform::process_code_page(), CharSet()));
}

}  // namespace vellobar

// Making a message multipart, for a part that a client adds and for composing messages of several texts.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/separator_line.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/temporary_file.h"

namespace vellobar {

namespace {

std::u16string thread_text(std::string_view bytes) { return platform::widen(platform::kThreadCodePage, bytes); }

std::u16string composed_boundary() {
  char boundary[64];
  std::snprintf(boundary, sizeof boundary, "----_=_Vellobar.%x.%X.%x.%X", static_cast<unsigned>(std::rand()),
                platform::tick_count(), platform::process_identifier(), platform::thread_identifier());
  return thread_text(boundary);
}

}  // namespace

void CMessage::become_multipart_for_added_part(CMessage* takes_delimiter) {
  load_parts();
  std::string type_line;
  std::u16string delimiter = parts_boundary_;
  if (delimiter.empty() && load_headers() != nullptr) {
    char boundary[64];
    std::snprintf(boundary, sizeof boundary, "----=_NextPart_%08X_%08X.%08X",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(this)), platform::tick_count(),
                  platform::thread_identifier());
    type_line = std::string("Content-Type: multipart/mixed; boundary=\"") + boundary + "\"";
    delimiter = thread_text(std::string("--") + boundary);
  }
  std::u16string separator = delimiter;
  std::u16string mail_info = delimiter;
  if (!type_line.empty()) {
    const std::size_t content_type = headers_->find(std::string_view("content-type"));
    headers_->add_line(type_line);
    if (content_type != CHeaders::npos) headers_->erase(content_type);
  }
  // From here on nothing needs memory.
  parts_boundary_ = std::move(delimiter);
  // A boundary that no delimiter line ever followed: what is added comes between the first two.
  const bool has_default = parts_->separator() == mailbox::kWideSeparator;
  if (!separator.empty() && has_default) parts_->set_separator(std::move(separator));
  if (takes_delimiter != nullptr) takes_delimiter->store_mail_info(std::move(mail_info));
}

void CMessage::make_multipart(std::u16string_view subtype) {
  if (ContentType().find(u"multipart/") != std::u16string::npos) return;
  // What the message holds by now becomes its preamble; a later load would take the new boundary for one of the file.
  load_body();
  const std::u16string boundary = composed_boundary();
  parts_boundary_ = boundary;
  store_mail_info(boundary);
  ensure_parts();
  parts_->set_separator(u"--" + boundary);
  SetContentType(u"multipart/" + std::u16string(subtype) + u";\r\n\t boundary=\"" + boundary + u"\"");
}

void CMessage::set_text_part(std::u16string_view content_type, std::u16string_view text) {
  SetMIMEVersion(u"1.0");
  if (find_part(u"multipart/alternative") == nullptr) make_multipart(u"alternative");
  std::shared_ptr<CMessage> part = find_part(content_type);
  if (part == nullptr) {
    part = Parts()->append_empty();
    part->SetContentType(content_type);
  }
  part->SetText(text);
}

}  // namespace vellobar

#include "compose/composition.h"

#include <string>

#include "attachments/attachments.h"
#include "codecs/attachment_encoding.h"
#include "compose/message_identifier.h"
#include "headers/date.h"
#include "mailbox/message.h"
#include "mailbox/vellobar.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/temporary_file.h"

namespace vellobar::compose {

std::shared_ptr<CMessage> new_message(std::u16string_view from, std::u16string_view to, std::u16string_view subject) {
  auto message = std::make_shared<CMessage>();
  message->SetFrom(from);
  message->SetTo(to);
  message->SetSubject(subject);
  message->SetDate(headers::current_date());
  return message;
}

void add_component_headers(CMessage& message) {
  const std::u16string component = u"Quorvane! Vellobar Component " + std::u16string(CVellobar::Version());
  message.set_header_value("X-Mailer", component);
  // Deliberate: the value names its header again; see the_component_headers_are_exact.
  message.set_header_value("X-MimeOLE", u"X-MimeOLE: Produced by " + component);
  const std::string identifier = message_identifier(platform::tick_count(), platform::host_name());
  message.SetMessageID(platform::widen(platform::kThreadCodePage, "<" + identifier + ">"));
}

void attach(CMessage& message, std::u16string_view name, std::u16string_view filename) {
  message.Attachments()->add_as(name, filename, static_cast<int>(codecs::AttachmentEncoding::base64));
}

}  // namespace vellobar::compose

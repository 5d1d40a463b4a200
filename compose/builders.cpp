// The builders of the control: each writes one new message to a file of its own.
#include <memory>
#include <string>

#include "attachments/attachments.h"
#include "codecs/attachment_encoding.h"
#include "compose/message_identifier.h"
#include "errors/error.h"
#include "headers/date.h"
#include "mailbox/message.h"
#include "mailbox/vellobar.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/temporary_file.h"

namespace vellobar {

namespace {

constexpr std::u16string_view kPlainText = u"text/plain";
constexpr std::u16string_view kHtml = u"text/html";

/// A message that stands alone, with its first headers.
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
  const std::string identifier = compose::message_identifier(platform::tick_count(), platform::host_name());
  message.SetMessageID(platform::widen(platform::kThreadCodePage, "<" + identifier + ">"));
}

void attach(CMessage& message, std::u16string_view filename) {
  message.Attachments()->add_reporting_numbers(filename, static_cast<int>(codecs::AttachmentEncoding::base64));
}

/// The message has no owner that would keep it from replacing the locked mailbox.
void save(const CVellobar& control, CMessage& message, std::u16string_view filename) {
  if (control.is_locked_file(platform::narrow(platform::process_code_page(), filename))) {
    throw Error(ErrorNumber::cannot_update_mailbox, Reporter::message);
  }
  message.Save(filename);
}

}  // namespace

void CVellobar::CreateSimpleMessage(std::u16string_view save_as, std::u16string_view from, std::u16string_view to,
                                    std::u16string_view subject, std::u16string_view text) {
  const std::shared_ptr<CMessage> message = new_message(from, to, subject);
  message->SetText(text);
  message->SetContentType(kPlainText);
  add_component_headers(*message);
  save(*this, *message, save_as);
}

void CVellobar::CreateTextHtmlMessage(std::u16string_view save_as, std::u16string_view from, std::u16string_view to,
                                      std::u16string_view subject, std::u16string_view plain_text,
                                      std::u16string_view html_text) {
  const std::shared_ptr<CMessage> message = new_message(from, to, subject);
  message->set_text_part(kPlainText, plain_text);
  message->set_text_part(kHtml, html_text);
  add_component_headers(*message);
  save(*this, *message, save_as);
}

void CVellobar::CreateSimpleAttachmentMessage(std::u16string_view save_as, std::u16string_view from,
                                              std::u16string_view to, std::u16string_view subject,
                                              std::u16string_view text, std::u16string_view attachment) {
  const std::shared_ptr<CMessage> message = new_message(from, to, subject);
  if (message->find_part(u"multipart/mixed") == nullptr) message->make_multipart(u"mixed");
  message->set_text_part(kPlainText, text);
  add_component_headers(*message);
  attach(*message, attachment);
  save(*this, *message, save_as);
}

void CVellobar::CreateTextHtmlAttachmentMessage(std::u16string_view save_as, std::u16string_view from,
                                                std::u16string_view to, std::u16string_view subject,
                                                std::u16string_view plain_text, std::u16string_view html_text,
                                                std::u16string_view attachment) {
  const std::shared_ptr<CMessage> message = new_message(from, to, subject);
  // Deliberate: the attachment becomes a third part beside the two texts; see
  // an_attachment_beside_two_texts_is_the_third_part_of_the_alternative.
  message->set_text_part(kPlainText, plain_text);
  message->set_text_part(kHtml, html_text);
  add_component_headers(*message);
  attach(*message, attachment);
  save(*this, *message, save_as);
}

}  // namespace vellobar

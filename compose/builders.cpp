// The builders of the control: each writes one new message to a file of its own.
#include <memory>

#include "attachments/attachments.h"
#include "compose/composition.h"
#include "errors/error.h"
#include "mailbox/message.h"
#include "mailbox/vellobar.h"
#include "platform/code_page.h"

namespace vellobar {

using compose::add_component_headers;
using compose::new_message;

namespace {

constexpr std::u16string_view kPlainText = u"text/plain";
constexpr std::u16string_view kHtml = u"text/html";

void attach(CMessage& message, std::u16string_view filename) {
  compose::attach(message, CAttachments::name_for(filename), filename);
}

/// The message has no owner that would keep it from replacing the locked mailbox.
void save(const CVellobar& control, CMessage& message, std::u16string_view filename) {
  if (control.is_locked_file(platform::process_bytes(filename))) {
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

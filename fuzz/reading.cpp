#include "fuzz/reading.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "codecs/attachment_encoding.h"
#include "errors/error.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::fuzz {

namespace {

std::string shown(std::u16string_view text) { return "'" + platform::narrow(platform::kUtf8CodePage, text) + "' "; }
std::string shown(std::int64_t number) { return std::to_string(number) + ' '; }
std::string shown(double number) { return std::to_string(number) + ' '; }

template <typename Call>
std::string told(Call call) {
  try {
    return shown(call());
  } catch (const Error& error) {
    return "error " + shown(std::int64_t{static_cast<int>(error.number())});
  }
}

std::string told_by_headers(CMessage& message) {
  const CHeaders* headers = message.load_headers();
  if (headers == nullptr) return "unreadable";
  std::string text = platform::narrow(platform::kUtf8CodePage, headers->ToString());
  for (std::size_t i = 0; i < static_cast<std::size_t>(headers->Count()); ++i) {
    text += shown(headers->name(i)) + shown(headers->value(i));
  }
  return text;
}

}  // namespace

std::string told_by_tree(CMessage& top) {
  std::string text;
  std::vector<std::pair<std::shared_ptr<CMessage>, int>> waiting{{top.shared_from_this(), 0}};
  while (!waiting.empty()) {
    const auto [message, depth] = waiting.back();
    waiting.pop_back();
    const std::shared_ptr<CMessages> parts = message->Parts();
    for (const std::int64_t number : {std::int64_t{depth}, message->StartPosition(), message->EndPosition(),
                                      message->Bytes(), message->Lines(), parts->Count()}) {
      text += shown(number);
    }
    text += shown(message->MailInfo()) + shown(message->PartsBoundary()) + shown(parts->separator());
    text += told_by_headers(*message) + told([&read = *message] { return read.Text(); }) + "\n";
    for (std::int64_t i = parts->Count(); i-- > 0;) waiting.push_back({parts->Item(i), depth + 1});
  }
  return text;
}

std::string told_by_texts(CMessage& message) {
  using Property = std::u16string (CMessage::*)();
  static constexpr Property kProperties[] = {
      &CMessage::From,        &CMessage::Subject,   &CMessage::CC,      &CMessage::BCC,       &CMessage::To,
      &CMessage::ContentType, &CMessage::MessageID, &CMessage::CharSet, &CMessage::FromName,  &CMessage::FromEmail,
      &CMessage::ToName,      &CMessage::ToEmail,   &CMessage::Body,    &CMessage::PlainText, &CMessage::HTMLText};
  std::string text;
  for (const Property property : kProperties) text += told([&] { return (message.*property)(); });
  text += told([&] { return message.Date(); });
  for (const auto encoding : {codecs::AttachmentEncoding::base64, codecs::AttachmentEncoding::quoted_printable}) {
    text += told([&] { return message.DecodedText(encoding); });
  }
  return text;
}

std::string told_by_attachments(CMessage& message) {
  std::string text = told([&] { return message.Attachments()->Count(); });
  try {
    const auto attachments = message.Attachments();
    for (std::int64_t i = 0; i < attachments->Count(); ++i) {
      const auto attachment = attachments->Item(i);
      text += shown(attachment->Name()) + shown(attachment->Type()) + shown(attachment->Size());
      text += shown(std::int64_t{attachment->Encoding()});
    }
  } catch (const Error&) {
    text += "no attachments";
  }
  return text;
}

std::string told_by_properties(CMessage& message) { return told_by_texts(message) + told_by_attachments(message); }

}  // namespace vellobar::fuzz

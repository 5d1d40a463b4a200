#include "command/mail/attachment_rows.h"

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "mailbox/message.h"

namespace vellobar::command {

const char* encoding_name(int encoding) {
  constexpr const char* kNames[] = {"unknown", "base64", "binhex", "uuencode", "quoted-printable", "7bit"};
  return kNames[encoding];
}

Json attachment_object(std::int64_t number, const CAttachment& attachment) {
  return {{"attachment", number},
          {"name", json_text(attachment.Name())},
          {"type", json_text(attachment.Type())},
          {"encoding", encoding_name(attachment.Encoding())},
          {"size", attachment.Size()}};
}

Json attachments_array(CMessage& message) {
  Json objects = Json::array();
  const auto attachments = message.Attachments();
  for (std::int64_t i = 0; i < attachments->Count(); ++i) {
    objects.push_back(attachment_object(i, *attachments->Item(i)));
  }
  return objects;
}

}  // namespace vellobar::command

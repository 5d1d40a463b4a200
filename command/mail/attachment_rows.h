// Attachments as lines and objects.
#pragma once

#include <cstdint>

#include "command/output/json.h"

namespace vellobar {
class CAttachment;
class CMessage;
}  // namespace vellobar

namespace vellobar::command {

/// What an encoding of attachments is called.
const char* encoding_name(int encoding);

/// Name, type, encoding and estimated size of an attachment, with its number in its message.
Json attachment_object(std::int64_t number, const CAttachment& attachment);
/// Those of a message.
Json attachments_array(CMessage& message);

}  // namespace vellobar::command
